// gnustep-gui's own runs a program `eject` on the mount point and never looks at what came of it.
#import <AppKit/AppKit.h>

@interface NSWorkspace (Ejection)
- (void)tell:(NSString *)name of:(NSString *)path;
@end

@implementation NSWorkspace (Ejection)

- (BOOL)unmountAndEjectDeviceAtPath:(NSString *)path
{
    if (!path)
        return NO;
    [self tell:NSWorkspaceWillUnmountNotification of:path];
    const Class windowless = NSClassFromString(@"WindowlessWorkspace");
    const BOOL done = [[[[windowless alloc] init] autorelease] unmountAndEjectDeviceAtPath:path];
    if (done)
        [self tell:NSWorkspaceDidUnmountNotification of:path];
    return done;
}

/// To this process's observers, at once: the workspace's centre by itself tells them by way of a daemon, when their run
/// loop turns next, which is too late for one that has files open there.
- (void)tell:(NSString *)name of:(NSString *)path
{
    NSDictionary *device = [NSDictionary dictionaryWithObject:path forKey:@"NSDevicePath"];
    NSNotification *told = [NSNotification notificationWithName:name object:self userInfo:device];
    using Post = void (*)(id, SEL, NSNotification *);
    const SEL post = @selector(postNotification:);
    reinterpret_cast<Post>(reinterpret_cast<void (*)()>(
        [NSNotificationCenter instanceMethodForSelector:post]))([self notificationCenter], post, told);
}

@end
