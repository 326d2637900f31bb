/// \file
/// A disk image by its path: made from a folder, mounted, found again, unmounted.
///
///     DiskImage *image = [DiskImage diskImageWithFilepath:@"/home/anna/Photos.img"];
///     [image createFromDirectory:@"/home/anna/Photos"];
///     NSString *folder = [image mount];      -> "/media/anna/Photos"
///     [image unmount];                       -> YES
///
/// The class keeps no state but the path: every question about mounts runs the report tool and blocks for its run.
/// Paths are compared as they stand, and the tools report full paths without symbolic links: give such ones.
/// The tools' own errors go to the caller's standard error. Thread: any.
#pragma once
#ifdef __OBJC__
#import <Foundation/Foundation.h>

/// The tools, where they are on the platform; elsewhere ones of the same names stand in for them.
FOUNDATION_EXPORT NSString *const kDiskImageEditorPath;   ///< "/usr/bin/hdiutil": report and creation
FOUNDATION_EXPORT NSString *const kDiskImageMounterPath;  ///< "/usr/bin/hdid": mounting

@interface DiskImage : NSObject {
    NSString *mFilePath;
    BOOL mLogToConsole;
}

/// The tool's report of attached images, a property list; nil when it could not be run, said nothing, or said no property
/// list. (The name's spelling is its own.)
+ (id)frameworkInfomation;
/// Image paths by mount point. An image with several mount points is there with the first; empty when nothing is attached.
+ (NSMutableDictionary *)mountingVolumes;
/// The image that is mounted there; nil for nil and when there is none.
+ (NSString *)filepathOfMountingVolume:(NSString *)mountPoint;
/// A mount point of the image; nil for nil and when it is not mounted.
+ (NSString *)mountingVolumeOfFilepath:(NSString *)path;

+ (id)diskImageWithFilepath:(NSString *)path;
+ (id)diskImageWithMountingVolume:(NSString *)mountPoint;

/// Refused: answers nil and says so on the console. (The receiver is not released.)
- (id)init;
/// Nil for a nil path.
- (id)initWithFilepath:(NSString *)path;
/// Nil when nothing from an image is mounted there.
- (id)initWithMountingVolume:(NSString *)mountPoint;

/// Whether what the tools print on creation and mounting is written to the console; NO at first.
- (BOOL)logToConsole;
- (void)setLogToConsole:(BOOL)flag;
- (NSString *)filepath;
/// Nil is ignored.
- (void)setFilepath:(NSString *)path;
/// Nil when the image is not mounted.
- (NSString *)mountPoint;

/// Makes the image file of the folder's contents. YES says that the tool ran, not that it was content: a file that is there
/// already is left as it is.
- (BOOL)createFromDirectory:(NSString *)folder;
/// Mounts the image unless it is mounted. The mount point, or nil.
- (NSString *)mount;
/// Unmounts and ejects the image. YES when it is not mounted afterwards (also when it was not before).
- (BOOL)unmount;

@end
#endif
