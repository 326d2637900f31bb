/// \file
/// Paths as text: parts, order, other styles. The receiver is the path; no tilde is expanded.
///
///     [@"/b" compareAsPath:@"/a/c"]        -> NSOrderedAscending: fewer parts come first
///     [@"/a/b" pathComponentsCount]        -> 2
///     [@"/usr/bin" HFSPath]                -> "Disk:usr:bin"
///
/// Results are autoreleased. Thread: as the receiver.
#pragma once
#ifdef __OBJC__
#import <Foundation/NSString.h>

#include <stdint.h>

@interface NSString (FoundationXPaths)

/// By the number of parts, then as plain text. A nil path answers 0x7FFFFFFF, which is no order.
- (NSComparisonResult)compareAsPath:(NSString *)other;
/// How many parts there are, "/" not counted.
- (uint32_t)pathComponentsCount;
/// The name that the file manager shows.
- (NSString *)displayName;
/// The path in the colon-separated style, as of a file; nil when it has none.
- (NSString *)HFSPath;

@end
#endif
