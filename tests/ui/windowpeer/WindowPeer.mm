// An application with a window for each title that its environment names (WINDOW_PEER=one,two), until it is ended. The windows have their
// titles when it is up: while it starts, AppKit brings it to the front more than once.
#import <AppKit/AppKit.h>

#include <unistd.h>

int main()
{
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    alarm(60);  // whoever started it may have crashed
    [NSApplication sharedApplication];
    NSString *const titles = [[[NSProcessInfo processInfo] environment] objectForKey:@"WINDOW_PEER"];
    CGFloat at = 100;
    for (NSUInteger i = 0; i < [[titles componentsSeparatedByString:@","] count]; ++i, at += 40) {
        NSWindow *window = [[NSWindow alloc] initWithContentRect:NSMakeRect(at, at, 300, 200)
                                                       styleMask:NSTitledWindowMask
                                                         backing:NSBackingStoreBuffered
                                                           defer:NO];
        [window makeKeyAndOrderFront:nil];
        [window performSelector:@selector(setTitle:)
                     withObject:[[titles componentsSeparatedByString:@","] objectAtIndex:i]
                     afterDelay:0.5];
    }
    [NSApp run];
    [pool drain];
}
