#import <AppKit/AppKit.h>
#import <Tarvik/TarvikUI.h>
#import <Tarvik/support/Bridge.h>
#include <Workspace/SharedWorkspace.h>
#include <gtest/gtest.h>
#include <tests/support/Program.h>
#include <tests/support/TemporaryFolder.h>

#include <unistd.h>

@interface UnmountWatcher : NSObject {
@public
    int mWill, mDid;
}
@end
@implementation UnmountWatcher
- (void)will:(NSNotification *)notification
{
    EXPECT_TRUE([[notification userInfo] objectForKey:@"NSDevicePath"] != nil);
    ++mWill;
}
- (void)did:(NSNotification *)notification
{
    (void)notification;
    ++mDid;
}
@end

namespace {

// In a process with windows the toolkit asks AppKit's workspace, which does the real thing here too, and tells of it.
TEST(Ejection, AppKitsWorkspaceUnmountsImages)
{
    if (geteuid() != 0 && access("/dev/fuse", R_OK | W_OK) != 0)
        GTEST_SKIP() << "this user may use neither loop devices nor FUSE";
    TemporaryFolder folder;
    std::filesystem::create_directory(folder / "source");
    NSWorkspace *workspace = [NSWorkspace sharedWorkspace];
    ASSERT_EQ((id)SharedWorkspace(), workspace);
    UnmountWatcher *watcher = [[[UnmountWatcher alloc] init] autorelease];
    NSNotificationCenter *centre = [workspace notificationCenter];
    [centre addObserver:watcher selector:@selector(will:) name:NSWorkspaceWillUnmountNotification object:nil];
    [centre addObserver:watcher selector:@selector(did:) name:NSWorkspaceDidUnmountNotification object:nil];

    const std::string path = folder / (folder.path().filename().native() + ".img");
    DiskImage *image = [DiskImage diskImageWithFilepath:tarvik::nsstring(path)];
    ASSERT_TRUE([image createFromDirectory:tarvik::nsstring((folder / "source").native())]);
    ASSERT_NE([image mount], nil);
    EXPECT_TRUE([image unmount]);
    EXPECT_EQ(watcher->mWill, 1);
    EXPECT_EQ(watcher->mDid, 1);
    EXPECT_FALSE([workspace unmountAndEjectDeviceAtPath:@"/"]);
    EXPECT_FALSE([workspace unmountAndEjectDeviceAtPath:nil]);
    EXPECT_EQ(watcher->mDid, 1);
    [centre removeObserver:watcher];
}

}  // namespace
