// An application with a window for each title that its environment names (WINDOW_PEER=one,two), until it is ended.
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
        [window setTitle:[[titles componentsSeparatedByString:@","] objectAtIndex:i]];
        [window makeKeyAndOrderFront:nil];
    }
    [NSApp run];
    [pool drain];
}
