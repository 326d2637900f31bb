#import "platform/AppKit/private/CommandRelay.h"
#import "platform/AppKit/private/ControlReference.h"

#import <AppKit/NSControl.h>
#import <AppKit/NSMenuItem.h>
#include <Carbon/CarbonEvents.h>
#import <Foundation/NSValue.h>

namespace {

OSStatus send(EventTargetRef target, UInt32 eventClass, UInt32 kind, EventParamType type, ByteCount size,
              const void *subject)
{
    EventRef event = nullptr;
    OSStatus status = CreateEvent(nullptr, eventClass, kind, 0, kEventAttributeNone, &event);
    if (status != noErr)
        return status;
    status = SetEventParameter(event, kEventParamDirectObject, type, size, subject);
    if (status == noErr)
        status = SendEventToEventTarget(event, target);
    ReleaseEvent(event);
    return status;
}

OSStatus sendCommand(EventTargetRef target, UInt32 command)
{
    HICommand subject = {};
    subject.commandID = command;
    return command ? send(target, kEventClassCommand, kEventCommandProcess, typeHICommand, sizeof subject,
                          &subject)
                   : OSStatus(eventNotHandledErr);
}

}  // namespace

@interface CommandRelay : NSObject
@end

@implementation CommandRelay

- (void)controlHit:(NSControl *)control
{
    const ControlRef hit = ReferenceOfView(control);
    const EventTargetRef target = GetWindowEventTarget(GetControlOwner(hit));
    if (target && send(target, kEventClassControl, kEventControlHit, typeControlRef, sizeof hit, &hit) ==
                      eventNotHandledErr)
        sendCommand(target, KnownControl(hit) ? hit->commandID : 0);  // a handler may have closed the window
}

- (void)commandChosen:(NSMenuItem *)item
{
    sendCommand(GetApplicationEventTarget(), [(NSNumber *)[item representedObject] unsignedIntValue]);
}

@end

namespace {

CommandRelay *relay()
{
    static CommandRelay *const shared = [[CommandRelay alloc] init];
    return shared;
}

}  // namespace

void RelayHits(NSControl *control)
{
    if ([control action])
        return;
    [control setTarget:relay()];
    [control setAction:@selector(controlHit:)];
}

void RelayCommand(NSMenuItem *item, UInt32 command)
{
    if ([item action])
        return;
    [item setRepresentedObject:[NSNumber numberWithUnsignedInt:command]];
    [item setTarget:relay()];
    [item setAction:@selector(commandChosen:)];
}
