/// SharedWorkspace.h: what the desktop's shared workspace does for programs that have no windows.
///
///     [SharedWorkspace() unmountAndEjectDeviceAtPath:@"/media/anna/Backup"];
#pragma once
#ifdef __OBJC__
#import <Foundation/Foundation.h>

@protocol SharedWorkspace
/// Unmounts the disk image that is mounted at the path and lets go of its device. NO when nothing from an image is mounted
/// there, a program has a file or folder of it open, or the user may not. Blocks until it is done; any thread.
- (BOOL)unmountAndEjectDeviceAtPath:(NSString *)path;
@end

/// AppKit's shared workspace in a process that has AppKit, otherwise one of our own. Never nil, not owned by the caller.
FOUNDATION_EXPORT id<SharedWorkspace> SharedWorkspace(void);
#endif
