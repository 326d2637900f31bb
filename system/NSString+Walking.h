/// \file
/// Whole trees. The receiver is the path of a folder; no tilde is expanded.
///
///     [@"/usr/share/doc" subfilepaths]      "bash/README", "bash/Tools.app", ...
///     [@"/usr/share/doc" logicalSize]       -> 40122311
///
/// Thread: one, as for the item flags.
#pragma once
#ifdef __OBJC__
#import <Foundation/NSArray.h>
#import <Foundation/NSString.h>
#import <Foundation/NSValue.h>

#include <stdint.h>

@interface NSString (FoundationXWalking)

/// The subpaths of everything below that is neither invisible nor a folder nor a volume, in the file manager's order: files, and packages as one
/// entry. After a package, every subpath that begins with the package's as plain text is left out, its neighbour "Ink.app.old" too; callers
/// rely on it. Files in an invisible folder are listed. Empty for what is no folder. Autoreleased. One walk, without a look at each file.
- (NSMutableArray *)subfilepaths;

/// The bytes of both forks: of everything below a container, itself not counted, or of the item. 0 when there is none.
- (uint64_t)logicalSize;
- (NSNumber *)logicalSizeNumber;

@end
#endif
