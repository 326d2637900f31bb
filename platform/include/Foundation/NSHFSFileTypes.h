/// NSHFSFileTypes.h: file types as text, 'TEXT' with its quotes, and as four-character codes.
///
///     NSHFSTypeCodeFromFileType(@"'TEXT'")     -> 0x54455854
///     NSFileTypeForHFSTypeCode(0x54455854)     -> @"'TEXT'"
///
/// gnustep-base declares these calls but answers 0 and nil. The repaired ones stand under names of their own, which a host
/// compiled with these headers calls in whatever order it links its libraries.
#pragma once

#ifdef __OBJC__
#import <Foundation/NSString.h>
#include_next <Foundation/NSHFSFileTypes.h>

#ifdef __cplusplus
extern "C" {
#endif

/// The text of a code: its four characters (MacRoman) between single quotes.
extern NSString *NSFileTypeForHFSTypeCode(NSUInteger hfsFileTypeCode) __asm__("TarvikFileTypeForHFSTypeCode");
/// The code in a text of exactly that form, the first character in the most significant byte; 0 for nil and any other text.
extern NSUInteger NSHFSTypeCodeFromFileType(NSString *fileTypeString) __asm__("TarvikHFSTypeCodeFromFileType");

#ifdef __cplusplus
}
#endif
#endif
