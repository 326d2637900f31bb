/// \file
/// Text for the C library: commands, environment, scanning, UTF-8 in C buffers; and a bundle by its path.
///
///     [@"test -d /tmp" system]                             -> 0
///     [@"7 of 9" sscanf:"%d of %d", &seven, &nine]         -> 2
///     char *bytes = [@"é" allocUTF8String];                -> 0xC3 0xA9 0; free(bytes)
///
/// The receiver's UTF-8 form is used; the C library reads it up to its first zero byte.
/// Thread: `system` and `setenv:overwrite:` act on the whole process; the rest as the receiver.
#pragma once
#ifdef __OBJC__
#include <CoreFoundation/CFBase.h>
#import <Foundation/NSString.h>

#include <stdarg.h>
#include <stdint.h>

@interface NSString (FoundationXCLibrary)

/// Runs the receiver as a command line of the shell and answers system(3)'s status; -1 without a UTF-8 form.
/// What the receiver holds is executed: never build it from names that come from outside.
- (int)system;
/// setenv(3) of the variable that the receiver names; -1 for a null value and without a UTF-8 form.
- (int)setenv:(const char *)value overwrite:(int)overwrite;

/// sscanf(3) of the receiver: the number of items assigned; -1 for a null format or list and without a UTF-8 form.
- (int)sscanf:(const char *)format, ...;
- (int)vsscanf:(const char *)format arguments:(va_list)arguments;

/// A copy of the UTF-8 form, ended by a zero byte, that the caller frees with `free`. Null without a UTF-8 form or memory.
- (char *)allocUTF8String;
/// Copies the UTF-8 form and a zero byte into a buffer of so many bytes. NO when it does not fit: the first size - 1 bytes
/// are copied then, even if that cuts a character. NO, and nothing is written, for a null buffer, for size 0 and without a UTF-8 form.
- (BOOL)getUTF8String:(char *)buffer maxLength:(uint32_t)size;

/// The bundle in the folder at the POSIX path that the receiver is; the caller releases it. Null when there is no folder.
- (CFBundleRef)createCFBundle;

@end
#endif
