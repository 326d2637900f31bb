/// \file
/// Paths and the File Manager's references. The receiver is the path; no tilde is expanded.
///
///     FSRef ref;
///     [path getFSRef:&ref];                 // leads to the file also after a rename
///     [NSString stringWithFSRef:&ref]       // where it is now
///
/// Results are autoreleased, but for those of init. Thread: any.
#pragma once
#ifdef __OBJC__
#include <Carbon/Files.h>
#import <Foundation/NSString.h>

@interface NSString (FoundationXFileReferences)

/// The POSIX path; nil when there is none, and for one of more than 1024 bytes.
- (id)initWithFSRef:(const FSRef *)ref;
+ (id)stringWithFSRef:(const FSRef *)ref;
- (BOOL)getFSRef:(FSRef *)ref;

@end
#endif
