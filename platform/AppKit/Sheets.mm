// gnustep-gui's sheets are modal panels: whoever begins one waits until it is answered, and the whole application with it.
// Here a sheet belongs to its window, as its interface says: beginning one returns at once, only that window takes no
// input, and the answer arrives through the selector.
#import <AppKit/AppKit.h>
#import <Tarvik/support/Retained.h>

#include "platform/Foundation/private/HiddenMethod.h"

#include <algorithm>
#include <vector>

@interface NSWindow (AttachedSheetOfGNUstep)
- (void)setAttachedSheet:(NSWindow *)sheet;
@end

/// A sheet that was begun and has not ended.
@interface BegunSheet : NSObject {
@public
    NSWindow *mSheet, *mParent;
    id mDelegate;
    SEL mDidEnd;
    void *mContext;
}
- (void)show;
- (void)place:(NSValue *)wanted;
- (void)endWithCode:(NSInteger)code;
- (void)parentWillClose:(NSNotification *)notification;
@end

namespace {

/// In the order in which they were begun; of those of one window, the first is shown.
std::vector<tarvik::Retained<BegunSheet *>> gSheets;

template <class Condition>
BegunSheet *firstSheet(Condition &&isIt)
{
    const auto found =
        std::find_if(gSheets.begin(), gSheets.end(), [&](const auto &each) { return isIt(each.get()); });
    return found == gSheets.end() ? nil : found->get();
}

BegunSheet *begun(NSWindow *sheet)
{
    return firstSheet([&](BegunSheet *each) { return each->mSheet == sheet; });
}
BegunSheet *shownOn(NSWindow *parent)
{
    return firstSheet([&](BegunSheet *each) { return each->mParent == parent; });
}

/// The one whose button speaks: that of the event, the key one, else the one begun last.
BegunSheet *answeredSheet()
{
    for (NSWindow *window : {[[NSApp currentEvent] window], [NSApp keyWindow]})
        if (BegunSheet *sheet = window ? begun(window) : nil)
            return sheet;
    return gSheets.empty() ? nil : gSheets.back().get();
}

bool isInput(NSEventType type)
{
    switch (type) {
    case NSLeftMouseDown:
    case NSLeftMouseUp:
    case NSLeftMouseDragged:
    case NSRightMouseDown:
    case NSRightMouseUp:
    case NSRightMouseDragged:
    case NSOtherMouseDown:
    case NSOtherMouseUp:
    case NSOtherMouseDragged:
    case NSScrollWheel:
    case NSKeyDown:
    case NSKeyUp: return true;
    default: return false;
    }
}

template <class Function>
Function original(Class type, SEL name)
{
    return tarvik::hiddenMethod<Function>(type, name);
}

}  // namespace

@implementation BegunSheet

- (void)dealloc
{
    [[NSNotificationCenter defaultCenter] removeObserver:self];
    [mSheet release];
    [mParent release];
    [mDelegate release];
    [super dealloc];
}

/// Hangs the sheet under its window's title bar, as far as the screen allows.
- (void)show
{
    [[NSNotificationCenter defaultCenter] addObserver:self
                                             selector:@selector(parentWillClose:)
                                                 name:NSWindowWillCloseNotification
                                               object:mParent];
    [mParent setAttachedSheet:mSheet];
    const NSRect content = [mParent contentRectForFrameRect:[mParent frame]];
    const NSSize size = [mSheet frame].size;
    NSPoint origin = NSMakePoint(NSMidX(content) - size.width / 2, NSMaxY(content) - size.height);
    if (NSScreen *screen = [mParent screen]) {
        const NSRect visible = [screen visibleFrame];
        origin.x = std::max(NSMinX(visible), std::min(origin.x, NSMaxX(visible) - size.width));
        origin.y = std::max(NSMinY(visible), std::min(origin.y, NSMaxY(visible) - size.height));
    }
    [mParent addChildWindow:mSheet ordered:NSWindowAbove];
    [mSheet makeKeyAndOrderFront:nil];
    NSValue *const wanted = [NSValue valueWithRect:NSMakeRect(origin.x, origin.y, size.width, size.height)];
    [self place:wanted];
    constexpr NSTimeInterval kManaged = 0.2;  // by then the window manager has it
    [self performSelector:@selector(place:) withObject:wanted afterDelay:kManaged];
}

/// The display gives a window that was there before the whole frame, title bar and all, for its content, until it is resized.
- (void)place:(NSValue *)wanted
{
    const NSRect frame = [wanted rectValue];
    if (begun(mSheet) != self || !NSEqualSizes([mSheet frame].size, frame.size))
        return;
    [mSheet setFrame:NSMakeRect(frame.origin.x, frame.origin.y, frame.size.width, frame.size.height - 1)
             display:NO];
    [mSheet setFrame:frame display:YES];
}

- (void)endWithCode:(NSInteger)code
{
    const auto kept = tarvik::retain(self);
    const bool wasShown = shownOn(mParent) == self;
    std::erase_if(gSheets, [&](const auto &each) { return each.get() == self; });
    if (wasShown) {
        [[NSNotificationCenter defaultCenter] removeObserver:self];
        [mParent removeChildWindow:mSheet];
        [mParent setAttachedSheet:nil];
    }
    if (mDidEnd && [mDelegate respondsToSelector:mDidEnd]) {
        using DidEnd = void (*)(id, SEL, NSWindow *, NSInteger, void *);
        reinterpret_cast<DidEnd>(reinterpret_cast<void (*)()>([mDelegate methodForSelector:mDidEnd]))(
            mDelegate, mDidEnd, mSheet, code, mContext);
    }
    BegunSheet *next = wasShown ? shownOn(mParent) : nil;
    if (next && [mParent attachedSheet] != next->mSheet)
        [next show];
}

- (void)parentWillClose:(NSNotification *)notification
{
    (void)notification;
    const auto kept = tarvik::retain(self);
    [mSheet orderOut:nil];
    [self endWithCode:NSRunAbortedResponse];
}

@end

@implementation NSApplication (Sheets)

- (void)beginSheet:(NSWindow *)sheet
    modalForWindow:(NSWindow *)parent
     modalDelegate:(id)delegate
    didEndSelector:(SEL)didEnd
       contextInfo:(void *)context
{
    // In a modal session no other window gets events: there the sheet has to be modal too.
    if (!sheet || !parent || [self modalWindow]) {
        using Begin = void (*)(id, SEL, NSWindow *, NSWindow *, id, SEL, void *);
        static const auto begin = original<Begin>([NSApplication class], _cmd);
        return begin(self, _cmd, sheet, parent, delegate, didEnd, context);
    }
    if (begun(sheet))
        return;
    BegunSheet *record = [[[BegunSheet alloc] init] autorelease];
    record->mSheet = [sheet retain];
    record->mParent = [parent retain];
    record->mDelegate = [delegate retain];
    record->mDidEnd = didEnd;
    record->mContext = context;
    gSheets.push_back(tarvik::retain(record));
    if (shownOn(parent) == record)
        [record show];
}

- (void)endSheet:(NSWindow *)sheet
{
    [self endSheet:sheet returnCode:NSRunStoppedResponse];
}

- (void)endSheet:(NSWindow *)sheet returnCode:(NSInteger)code
{
    if (BegunSheet *record = begun(sheet))
        [record endWithCode:code];
    else if (sheet && [self modalWindow] == sheet)
        [self stopModalWithCode:code];
}

// What the buttons of the platform's own panels send.
- (void)stopModalWithCode:(NSInteger)code
{
    BegunSheet *answered = [self modalWindow] ? nil : answeredSheet();
    if (answered)
        return [answered endWithCode:code];
    static const auto stop = original<void (*)(id, SEL, NSInteger)>([NSApplication class], _cmd);
    stop(self, _cmd, code);
}

@end

@implementation NSWindow (Sheets)

- (void)sendEvent:(NSEvent *)event
{
    NSWindow *sheet = gSheets.empty() ? nil : [self attachedSheet];
    if (sheet && begun(sheet) && isInput([event type])) {
        if ([event type] == NSLeftMouseDown)
            [sheet makeKeyAndOrderFront:nil];
        else if ([event type] == NSKeyDown)
            [sheet sendEvent:event];
        return;
    }
    static const auto send = original<void (*)(id, SEL, NSEvent *)>([NSWindow class], _cmd);
    send(self, _cmd, event);
}

@end
