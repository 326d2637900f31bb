/// \file
/// Searching in text.
///
///     [@"Hello" contains:@"LL" options:NSCaseInsensitiveSearch]            -> YES
///     [@"key=value" offsetAfterString:@"="]                                -> 4
///     [@"key=value" substringAfterString:@"=" options:0]                   -> "value"
///     [@"beef" allChracterIs:isxdigit]                                     -> YES
///
/// Options are the platform's (NSCaseInsensitiveSearch, NSLiteralSearch, NSBackwardsSearch, NSAnchoredSearch); the short
/// forms pass none. With NSBackwardsSearch the occurrence is the last one. The empty text occurs nowhere.
/// Thread: as the receiver.
#pragma once
#ifdef __OBJC__
#import <Foundation/NSString.h>
#include <Tarvik/core/Types.h>

@interface NSString (FoundationXSearching)

/// Whether the text occurs; NO for nil, for the empty text, and after an exception, which is logged.
- (BOOL)contains:(NSString *)text;
- (BOOL)contains:(NSString *)text options:(NSStringCompareOptions)options;

/// The index just past the occurrence. kTarvikNotFound for nil, without an occurrence, and after an exception, which is logged.
- (uint32_t)offsetAfterString:(NSString *)text;
- (uint32_t)offsetAfterString:(NSString *)text options:(NSStringCompareOptions)options;

/// What follows the occurrence; nil for nil, without an occurrence, and after an exception, which is logged.
- (NSString *)substringAfterString:(NSString *)text options:(NSStringCompareOptions)options;

/// Whether a C character-class function (isxdigit, ...) holds for every byte of the UTF-8 form; the empty text: YES.
/// NO for a null function and for text without a UTF-8 form. ("Chracter" is the method's own spelling.)
- (BOOL)allChracterIs:(int (*)(int))isInClass;

/// The length of the UTF-8 form in bytes; 0 when there is none.
- (uint32_t)size;

@end
#endif
