/// CFRunLoop.h: running a thread's run loop, for a program without one. A CFRunLoopRef is an NSRunLoop.
///
///     AEInstallEventHandler(kCoreEventClass, kAEQuitApplication, quit, 0, false);   // quit calls CFRunLoopStop(CFRunLoopGetMain())
///     CFRunLoopRun();
///
/// Sources are NSRunLoop's: timers, ports, Apple events. Thread: a loop is run by its own thread, and stopped from any.
#pragma once

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFDate.h>

CF_EXTERN_C_BEGIN

typedef struct __CFRunLoop *CFRunLoopRef;

enum {
    kCFRunLoopRunFinished      = 1, ///< there is nothing to wait for
    kCFRunLoopRunStopped       = 2,
    kCFRunLoopRunTimedOut      = 3,
    kCFRunLoopRunHandledSource = 4
};

CF_EXPORT const CFStringRef kCFRunLoopDefaultMode; ///< NSDefaultRunLoopMode

CF_EXPORT CFRunLoopRef CFRunLoopGetCurrent(void);
CF_EXPORT CFRunLoopRef CFRunLoopGetMain(void);
/// Runs this thread's loop in the default mode until it is stopped.
CF_EXPORT void CFRunLoopRun(void);
/// Runs it for so many seconds at most; not above 0: once, for what is there already.
CF_EXPORT SInt32 CFRunLoopRunInMode(CFStringRef mode, CFTimeInterval seconds, Boolean returnAfterSourceHandled);
/// Ends the innermost of the calls above on the loop's thread; without one, the next.
CF_EXPORT void CFRunLoopStop(CFRunLoopRef loop);
/// Lets the loop look at its sources again.
CF_EXPORT void CFRunLoopWakeUp(CFRunLoopRef loop);

CF_EXTERN_C_END
