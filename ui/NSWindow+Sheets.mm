#import <AppKit/AppKit.h>
#import <Tarvik/support/Handle.h>
#import <Tarvik/ui/NSWindow+Sheets.h>

namespace {

struct WindowTraits {
    using Value = WindowRef;
    static Value empty() { return nullptr; }
    static void close(Value window) { DisposeWindow(window); }
};

}  // namespace

@implementation NSWindow (AppKitXSheets)

- (void)beginSheetForWindow:(NSWindow *)window
              modalDelegate:(id)delegate
             didEndSelector:(SEL)didEnd
                contextInfo:(void *)context
{
    [NSApp beginSheet:self
        modalForWindow:window
         modalDelegate:delegate
        didEndSelector:didEnd
           contextInfo:context];
}

- (void)closeSheet
{
    [NSApp endSheet:self];
    [self close];
}

- (void)closeSheetWithReturnCode:(int32_t)code
{
    [NSApp endSheet:self returnCode:code];
    [self close];
}

- (BOOL)reposition:(WindowPositionMethod)method parentWindow:(WindowRef)parent
{
    const NSRect frame = [self frame];
    const Rect bounds = {0, 0, SInt16(frame.size.height), SInt16(frame.size.width)};
    WindowRef made = nullptr;
    if (CreateNewWindow(kDocumentWindowClass, kWindowStandardDocumentAttributes, &bounds, &made) != noErr)
        return NO;
    const tarvik::Handle<WindowTraits> temporary(made);
    if (RepositionWindow(temporary.get(), parent, method) != noErr)
        return NO;
    NSWindow *wrapper = [[NSWindow alloc] initWithWindowRef:temporary.get()];
    if (!wrapper)
        return NO;
    const NSPoint origin = [wrapper frame].origin;
    [self setFrame:NSMakeRect(origin.x, origin.y, frame.size.width, frame.size.height) display:NO];
    [wrapper release];
    return YES;
}

@end
