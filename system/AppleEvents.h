/// \file
/// Apple events from plain data: sending, handling, and getting data out again.
///
///     const char title[] = "Emma";
///     AppleEventSendData(typeApplicationBundleID, "org.example.library", 19, 'book', 'borw', NULL, typeUTF8Text, title, 4);
///     -> true: the event is on its way; its direct object is the text
///
/// A Boolean result is true exactly when the platform's call returned no error; a failed send writes a line to standard error, nothing
/// else is logged. Result descriptors are the null descriptor before any work, and the caller's to dispose of.
/// Thread: any; handlers run on the main thread's run loop.
#pragma once
#include <Carbon/AEInteraction.h>
#include <Carbon/Files.h>
#include <CoreFoundation/CFData.h>

#ifdef __cplusplus
extern "C" {
#endif

/// One parameter of an event. Without data, or with a size of 0 or less, it is left out.
struct AppleEventParam {
    AEKeyword keyword;
    DescType type;
    const void *data;
    SInt32 size;
};
typedef struct AppleEventParam AppleEventParam;

/// Sends an event with parameters. The target is an address type (AEInteraction.h) and its data, of at least one byte. With a reply
/// descriptor the answer is asked for in the queue: it comes as an event 'aevt' 'ansr', and stands in the descriptor at once only when
/// the event was for this process itself. Without one no answer is wanted. A parameter that can't be put is left out.
Boolean AppleEventSendDataArray(DescType targetType, const void *targetData, Size targetSize,
                                AEEventClass eventClass, AEEventID eventID, AppleEvent *reply,
                                const AppleEventParam *params, CFIndex count);
/// The same with one parameter, the direct object.
Boolean AppleEventSendData(DescType targetType, const void *targetData, Size targetSize,
                           AEEventClass eventClass, AEEventID eventID, AppleEvent *reply, DescType type,
                           const void *data, SInt32 size);
/// The same without a parameter.
Boolean AppleEventSend(DescType targetType, const void *targetData, Size targetSize, AEEventClass eventClass,
                       AEEventID eventID, AppleEvent *reply);
/// Sends 'aevt' with the identifier (kAEShutDown ...) to the system process. No answer is wanted.
Boolean AppleEventSendToSystemProcess(AEEventID eventID);

/// Puts a parameter into an event under its keyword. False for one that is left out.
Boolean AppleEventPutAppleEventParam(AppleEvent *event, const AppleEventParam *param);

/// Installs, and removes, a handler of this application. False for a null handler, and when it isn't installed.
Boolean AppleEventInstallHandler(AEEventClass eventClass, AEEventID eventID, AEEventHandlerProcPtr handler,
                                 SRefCon refcon);
Boolean AppleEventUninstallHandler(AEEventClass eventClass, AEEventID eventID, AEEventHandlerProcPtr handler);

/// Copies a parameter's data, coerced to the type. False without a buffer, for a size below 1, and when there is more data than fits.
Boolean AppleEventGetParamDescData(const AppleEvent *event, AEKeyword keyword, DescType type, void *buffer,
                                   Size size);
/// The data of all items of the type in the list, and in the lists within it, in their order. Null when there is none.
CFDataRef AppleEventCopyData(const AEDescList *list, DescType type);

/// An 'alis' descriptor of the target; from: what the alias is relative to, may be null.
Boolean AECreateAliasDescWithFSRef(AEDesc *desc, const FSRef *from, const FSRef *target);

/// Fills in the item of an index, a null descriptor at first. False ends the list before it.
typedef Boolean (*AECreateDescListProc)(AEDesc *item, CFIndex index, void *context);
/// A list of the items that the function makes for 0 to count - 1. True also when it ended the list early; false for a null argument,
/// and when an item can't be appended: the list holds what came before it then.
Boolean AECreateDescListWithFunction(AEDescList *list, AECreateDescListProc function, CFIndex count,
                                     void *context);

#ifdef __cplusplus
}
#endif
