/// \file
/// Whether something is there and what may be done with it, by the file manager. The receiver is the path; a leading tilde is expanded.
#pragma once
#ifdef __OBJC__
#import <Foundation/NSString.h>

@interface NSString (FoundationXFileTests)

- (BOOL)exists;
- (BOOL)existsDirectory;  ///< a folder, also through a link
- (BOOL)isReadableFile;
- (BOOL)isWritableFile;
- (BOOL)isExecutableFile;
- (BOOL)isDeletableFile;

@end
#endif
