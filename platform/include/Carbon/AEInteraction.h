/// AEInteraction.h: sending Apple events, to oneself and to the user's other processes, and receiving them.
///
///     pid_t other = ...;
///     AECreateDesc(typeKernelProcessID, &other, sizeof other, &target);
///     AECreateAppleEvent('book', 'borw', &target, kAutoGenerateReturnID, kAnyTransactionID, &event);
///     AESend(&event, &reply, kAEWaitReply, kAENormalPriority, 5 * 60, NULL, NULL);
///     AEGetParamDesc(&reply, keyDirectObject, typeUTF8Text, &answer);
///
/// A target is one of
///
///     'psn '   ProcessSerialNumber: a process, {0, kCurrentProcess}, or {0, kSystemProcess}: the session, which restarts, shuts
///              down, sleeps and logs out (AERegistry.h) through the login manager and the desktop
///     'kpid'   SInt32, a process identifier
///     'sign'   the creator code of a running application
///     'bund'   the bundle identifier of a running application
///     'aprl'   the file URL of a running application's folder (X.app), or of the executable of another program, on this machine
///
/// No target, or oneself: the handler is called directly, and has returned when the call does.
///
/// Receiving: a process receives events as soon as it has installed an application handler. They are delivered on the main thread by
/// its run loop (NSRunLoop, CFRunLoopRun; not while a menu or a drag is tracked), one after the other, as AEProcessAppleEvent does for
/// a host that has a loop of its own.
///
/// Between processes events go through a socket that only the same user can reach and whose peers' user is checked: in the folder
/// apple-events of XDG_RUNTIME_DIR, or /tmp/apple-events-UID where there is none (or it isn't the user's own). An event of more than
/// 64 MB is not sent (memFullErr), and not received.
///
/// Results: procNotFound: nobody receives events under that address; errAETimeout; connectionInvalid: the receiver ended before
/// it answered; errAECorruptData: what came back is no reply; errAEEventNotHandled: no handler for it (with kAEWaitReply, and for
/// oneself; the reply says so, too); errAEUnknownAddressType; errAEUnknownSendMode; errAENotAppleEvent. Any other failure of the handler
/// stands in the reply as keyErrorNumber.
///
/// Thread: any; events to oneself are handled on the thread that sends them.
#pragma once

#include <Carbon/AppleEvents.h>
#include <Carbon/Events.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef SInt32 AESendMode;
typedef SInt16 AESendPriority;

/// What is wanted of an answer: one of the first three.
enum {
    kAENoReply    = 0x00000001,
    kAEQueueReply = 0x00000002, ///< the answer comes as an event: kCoreEventClass, kAEAnswer, with the same return identifier
    kAEWaitReply  = 0x00000003, ///< the call waits for it

    kAENeverInteract    = 0x00000010,
    kAECanInteract      = 0x00000020,
    kAEAlwaysInteract   = 0x00000030,
    kAECanSwitchLayer   = 0x00000040,
    kAEDontReconnect    = 0x00000080,
    kAEWantReceipt      = 0x00000200,
    kAEDontRecord       = 0x00001000,
    kAEDontExecute      = 0x00002000,
    kAEProcessNonReplyEvents = 0x00008000 ///< serve the events that come while the call waits (on the main thread)
};

enum { kAENormalPriority = 0, kAEHighPriority = 1 };
enum { kAEDefaultTimeout = -1, kNoTimeOut = -2 }; ///< a minute; for ever. Others are ticks: 60 in a second

enum { noOutstandingHLE = -607 };

typedef struct OpaqueRgnHandle *RgnHandle;
/// Called while the call waits: at first, then whenever sleepTime ticks have passed. True ends the wait.
typedef Boolean (*AEIdleProcPtr)(EventRecord *theEvent, SInt32 *sleepTime, RgnHandle *mouseRgn);
/// Asked before an event is served while the call waits (kAEProcessNonReplyEvents): false leaves it for later.
typedef Boolean (*AEFilterProcPtr)(EventRecord *theEvent, SInt32 returnID, AETransactionID transactionID, const AEAddressDesc *sender);
typedef AEIdleProcPtr   AEIdleUPP;
typedef AEFilterProcPtr AEFilterUPP;
static inline AEIdleUPP   NewAEIdleUPP(AEIdleProcPtr function) { return function; }
static inline AEFilterUPP NewAEFilterUPP(AEFilterProcPtr function) { return function; }

/// Sends an event. The reply, which may be null with kAENoReply, is set to the null descriptor and to the answer of kAEWaitReply.
/// With kAEQueueReply it stays null, as the answer comes later: by way of the run loop, in any case (a receiver that dies or lets the time pass
/// gives an answer with that keyErrorNumber). Only an event to oneself is answered at once: its reply is handed out here, and
/// comes as an event where a handler for it is installed.
OSStatus AESend(const AppleEvent *theAppleEvent, AppleEvent *reply, AESendMode sendMode, AESendPriority sendPriority, SInt32 timeOutInTicks,
                AEIdleUPP idleProc, AEFilterUPP filterProc);

/// Dispatches the next event that waits, for a host with an event loop of its own (the record, which may be null, is only checked for its kind).
/// The handler's result; noOutstandingHLE when there is none.
OSErr AEProcessAppleEvent(const EventRecord *theEventRecord);

/// From within a handler (with its event or reply): the sender's time-out starts again.
OSErr AEResetTimer(const AppleEvent *reply);

/// The answer is given later: the handler keeps copies (AEDuplicateDesc) of event and reply, suspends, and returns. Only for
/// events of other processes (errAENotAppleEvent for one's own).
OSErr AESuspendTheCurrentEvent(const AppleEvent *theAppleEvent);
/// Answers a suspended event: with kAENoDispatch the reply goes as it is, with kAEUseStandardDispatch the handlers are asked again, and
/// another function is called as the handler, with the number. errAENotAppleEvent for one that doesn't wait.
OSErr AEResumeTheCurrentEvent(const AppleEvent *theAppleEvent, const AppleEvent *reply, AEEventHandlerUPP dispatcher, SRefCon handlerRefcon);
/// A copy of the event that this thread handles; the null descriptor outside.
OSErr AEGetTheCurrentEvent(AppleEvent *theAppleEvent);
/// Makes another event the one that is handled: nothing but AEGetTheCurrentEvent sees it.
OSErr AESetTheCurrentEvent(const AppleEvent *theAppleEvent);

#define kAENoDispatch          ((AEEventHandlerUPP)0)
#define kAEUseStandardDispatch ((AEEventHandlerUPP)-1)

#ifdef __cplusplus
}
#endif
