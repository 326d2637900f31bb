/// \file
/// Events of the older toolbox: made, given parameters, sent to targets, taken by handlers.
///
///     const EventTypeSpec commands[] = {{kEventClassCommand, kEventCommandProcess}};
///     InstallEventHandler(GetWindowEventTarget(window), &chosen, 1, commands, NULL, NULL);
///     -> chosen(call, event, NULL) when a command is sent to the window
///
/// A handler answers noErr when it took the event, eventNotHandledErr to let the one installed before it have it. An event
/// that a window's handlers leave goes to the application's.
/// Thread: main.
#pragma once
#include <Carbon/MacErrors.h>
#include <Carbon/MacWindows.h>
#include <CoreFoundation/CFBase.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct OpaqueEventRef *EventRef;
typedef struct OpaqueEventTargetRef *EventTargetRef;
typedef struct OpaqueEventHandlerRef *EventHandlerRef;
typedef struct OpaqueEventHandlerCallRef *EventHandlerCallRef;
typedef OSType EventParamName;
typedef OSType EventParamType;
typedef double EventTime;  ///< seconds
typedef UInt32 EventAttributes;

typedef struct EventTypeSpec {
    UInt32 eventClass;
    UInt32 eventKind;
} EventTypeSpec;

typedef struct HICommand {
    UInt32 attributes;
    UInt32 commandID;
    struct {
        void *menuRef;
        UInt16 menuItemIndex;
    } menu;
} HICommand;

enum {
    kEventClassCommand = 0x636D6473,       ///< 'cmds'
    kEventCommandProcess = 1,
    kEventProcessCommand = kEventCommandProcess,
    kEventParamDirectObject = 0x2D2D2D2D,  ///< '----'
    typeHICommand = 0x68636D64,            ///< 'hcmd', an HICommand
    kEventAttributeNone = 0,
    kHICommandOK = 0x6F6B2020,             ///< 'ok  '
    kHICommandCancel = 0x6E6F7421,         ///< 'not!'
    kHICommandOther = 0x6F746872,          ///< 'othr'
};
enum {
    eventParameterNotFoundErr = -9870,
    eventNotHandledErr = -9874,
};

/// Owned by the caller (ReleaseEvent). A time of 0 is the present. paramErr for a null result.
OSStatus CreateEvent(CFAllocatorRef allocator, UInt32 eventClass, UInt32 eventKind, EventTime when, EventAttributes attributes,
                     EventRef *outEvent);
EventRef RetainEvent(EventRef event);
void ReleaseEvent(EventRef event);
UInt32 GetEventClass(EventRef event);  ///< 0 for null
UInt32 GetEventKind(EventRef event);
EventTime GetEventTime(EventRef event);

/// Copies the value; it replaces one of the same name.
OSStatus SetEventParameter(EventRef event, EventParamName name, EventParamType type, ByteCount size, const void *data);
/// Copies up to bufferSize bytes. eventParameterNotFoundErr when there is none of the name and type; paramErr for null. Result pointers
/// may be null.
OSStatus GetEventParameter(EventRef event, EventParamName name, EventParamType type, EventParamType *outType,
                           ByteCount bufferSize, ByteCount *outSize, void *outData);

typedef OSStatus (*EventHandlerUPP)(EventHandlerCallRef call, EventRef event, void *userData);

EventTargetRef GetApplicationEventTarget(void);
/// Null for a window that is not known; gone with the window.
EventTargetRef GetWindowEventTarget(WindowRef window);

OSStatus InstallEventHandler(EventTargetRef target, EventHandlerUPP handler, UInt32 count, const EventTypeSpec *types,
                             void *userData, EventHandlerRef *outHandler);
OSStatus RemoveEventHandler(EventHandlerRef handler);
/// What the handler answers that took the event; eventNotHandledErr when none did.
OSStatus SendEventToEventTarget(EventRef event, EventTargetRef target);
/// Within a handler: the answer of those installed before it.
OSStatus CallNextEventHandler(EventHandlerCallRef call, EventRef event);

#ifdef __cplusplus
}
#endif
