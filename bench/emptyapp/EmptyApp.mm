// An application of AppKit's that only shows a window, as big as Shelf's.
#import <AppKit/AppKit.h>

@interface EmptyApp : NSObject
@end
@implementation EmptyApp
- (void)applicationDidFinishLaunching:(NSNotification *)notification
{
    (void)notification;
    NSWindow *window = [[NSWindow alloc]
        initWithContentRect:NSMakeRect(160, 240, 960, 560)
                  styleMask:NSTitledWindowMask | NSClosableWindowMask | NSResizableWindowMask
                    backing:NSBackingStoreBuffered
                      defer:NO];
    [window setTitle:@"Empty"];
    [window makeKeyAndOrderFront:nil];
}
@end

int main()
{
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    [[NSApplication sharedApplication] setDelegate:(id)[[EmptyApp alloc] init]];
    [NSApp run];
    [pool release];
    return 0;
}
