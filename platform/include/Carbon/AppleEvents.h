/// AppleEvents.h: the handlers that an application serves Apple events with.
///
///     OSErr borrow(const AppleEvent *event, AppleEvent *reply, SRefCon refcon);
///     AEInstallEventHandler('book', 'borw', NewAEEventHandlerUPP(borrow), 0, false);
///
/// A handler reads the event's parameters and puts its result into the reply under keyDirectObject (the reply is a null descriptor
/// when nobody waits for one). Its own result, when it is an error, goes into the reply as keyErrorNumber, unless it has put one
/// there; an exception that leaves it counts as errAEEventFailed.
///
/// For an event the application's handlers are asked first, then the system's, each time the most particular one first: class and
/// identifier, the class with any identifier, any class with the identifier, any event. errAEEventNotHandled passes the event on.
/// Where no handler is installed nothing happens: the event is answered with errAEEventNotHandled.
///
/// From its first application handler on, a process receives events from the user's other processes (AEInteraction.h). Both tables
/// are this process's. Thread: any; handlers run on the main thread, or on the thread that sends its own process an event.
#pragma once

#include <Carbon/AEDataModel.h>
#include <Carbon/AERegistry.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef OSErr (*AEEventHandlerProcPtr)(const AppleEvent *theAppleEvent, AppleEvent *reply, SRefCon handlerRefcon);
typedef AEEventHandlerProcPtr AEEventHandlerUPP;
static inline AEEventHandlerUPP NewAEEventHandlerUPP(AEEventHandlerProcPtr function) { return function; }
static inline void DisposeAEEventHandlerUPP(AEEventHandlerUPP function) { (void)function; }
static inline OSErr InvokeAEEventHandlerUPP(const AppleEvent *event, AppleEvent *reply, SRefCon refcon,
                                            AEEventHandlerUPP function) { return function(event, reply, refcon); }

enum {
    keyPreDispatch = 0x70686163 ///< 'phac': a special handler that is asked before all others
};

/// keyEventSourceAttr
enum {
    kAEUnknownSource = 0,
    kAEDirectCall    = 1, ///< sent by this process to itself
    kAESameProcess   = 2,
    kAELocalProcess  = 3, ///< sent by another process
    kAERemoteProcess = 4
};

/// Installs a handler in the place of an earlier one; class and identifier may be typeWildCard. paramErr for a null handler.
OSErr AEInstallEventHandler(AEEventClass eventClass, AEEventID eventID, AEEventHandlerUPP handler, SRefCon handlerRefcon, Boolean isSysHandler);
/// errAEHandlerNotFound unless it is installed for these very codes; a null handler removes whichever is.
OSErr AERemoveEventHandler(AEEventClass eventClass, AEEventID eventID, AEEventHandlerUPP handler, Boolean isSysHandler);
/// Results may be null. errAEHandlerNotFound.
OSErr AEGetEventHandler(AEEventClass eventClass, AEEventID eventID, AEEventHandlerUPP *handler, SRefCon *handlerRefcon, Boolean isSysHandler);

/// The same for a special handler: an AEEventHandlerProcPtr for keyPreDispatch. errAENotASpecialFunction for another keyword.
OSErr AEInstallSpecialHandler(AEKeyword functionClass, AEEventHandlerUPP handler, Boolean isSysHandler);
OSErr AERemoveSpecialHandler(AEKeyword functionClass, AEEventHandlerUPP handler, Boolean isSysHandler);
OSErr AEGetSpecialHandler(AEKeyword functionClass, AEEventHandlerUPP *handler, Boolean isSysHandler);

#ifdef __cplusplus
}
#endif
