/// \file
/// Making, copying and removing files and folders. The receiver is the path; a tilde is expanded only where it is said.
///
///     [@"/tmp/a/b/c" createDirectories]                       YES, also when they are there
///     [@"/tmp/report" createCopyOfPath:@"/backup/today/report"]    makes /backup/today, replaces what stands there
#pragma once
#ifdef __OBJC__
#import <Foundation/NSString.h>

@interface NSString (FoundationXFileChanges)

/// Removes the item, a folder with all it holds; the tilde is expanded. NO when nothing is there or it could not be.
- (BOOL)remove;
/// Makes one folder: YES also when there is one already. NO for a file in its place.
- (BOOL)createDirectory;
/// Makes all folders of the path that are missing: YES for the empty path. An exception is logged and gives NO.
- (BOOL)createDirectories;
/// Copies the item, making the destination's folders and removing what stands in its place. NO for nil.
- (BOOL)createCopyOfPath:(NSString *)destination;
/// Makes an empty file. A path in the home is abbreviated with a tilde before the file manager gets it; callers rely on that.
- (BOOL)createEmptyFile;

@end
#endif
