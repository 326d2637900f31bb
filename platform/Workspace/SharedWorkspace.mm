#include <Workspace/SharedWorkspace.h>

#import <Tarvik/support/Guard.h>
#import <Tarvik/support/Retained.h>

@interface WindowlessWorkspace : NSObject <SharedWorkspace>
@end

@implementation WindowlessWorkspace

- (BOOL)unmountAndEjectDeviceAtPath:(NSString *)path
{
    if (!path)
        return NO;
    const auto task = tarvik::adopt([[NSTask alloc] init]);
    BOOL done = NO;
    tarvik::attempt([&] {
        NSFileHandle *nothing = [NSFileHandle fileHandleWithNullDevice];
        [task.get() setStandardOutput:nothing];
        [task.get() setLaunchPath:@"/usr/bin/hdiutil"];
        [task.get() setArguments:[NSArray arrayWithObjects:@"detach", path, nil]];
        [task.get() launch];
        [task.get() waitUntilExit];
        done = [task.get() terminationStatus] == 0;
    });
    return done;
}

@end

id<SharedWorkspace> SharedWorkspace(void)
{
    // By name: only a process that shows windows has the class.
    if (const Class workspace = NSClassFromString(@"NSWorkspace"))
        return [workspace performSelector:@selector(sharedWorkspace)];
    static WindowlessWorkspace *const shared = [[WindowlessWorkspace alloc] init];
    return shared;
}
