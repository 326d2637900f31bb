/// \file
/// Cutting, filling and replacing text in place, and copies with an edit applied.
///
///     [text setLength:4 withFillString:@"ab"]               "x"   -> "xaba"
///     [text find:@"aa" andReplaceAll:@"b"]                  "aaa" -> "ab": 1 replacement, found from the end
///     [text deleteToSubstring:@"="]                         "k=v" -> "v", answers "k"
///     [@"12 34" chractersFilteredString:isdigit]                  -> "1234"
///
/// Lengths count UTF-16 units. New strings are autoreleased. Nothing raises. Thread: as the receiver.
#pragma once
#ifdef __OBJC__
#import <Foundation/NSString.h>

#include <stdint.h>

@interface NSMutableString (FoundationXEditing)

/// Makes it the empty text.
- (void)empty;
/// Takes over a UTF-8 C string; null or bytes that are not UTF-8 change nothing.
- (void)setUTF8String:(const char *)text;

/// Cuts to the length, or fills up to it with copies of the fill text, the last one cut. Nil and empty fill with blanks.
- (void)setLength:(uint32_t)length withFillString:(NSString *)fill;

/// Removes the text from the end (the start) when it stands there, unit for unit; YES when something was removed.
- (BOOL)deleteIfEndWith:(NSString *)text;
- (BOOL)deleteIfStartWith:(NSString *)text;

/// Removes all up to and with the first occurrence and answers what stood before it.
/// Nil, and nothing removed, for nil, without an occurrence, and after an exception.
- (NSMutableString *)deleteToSubstring:(NSString *)text;

/// Replaces every occurrence, unit for unit, and answers how many. Occurrences are found from the end, each before the one
/// found last: overlapping ones are resolved from the right, and a replacement is never searched. 0 for nil, for an empty
/// text to find, and after an exception, which is logged. Linear in the text.
- (uint32_t)find:(NSString *)text andReplaceAll:(NSString *)replacement;

/// Deletes the characters outside a C character class; YES when any was deleted, NO for a null function and for text
/// without a UTF-8 form. Made for ASCII, and callers rely on how it treats other text: the character at an index goes by
/// the UTF-8 form's byte at that index, as a signed char, from the last to the first. Linear in the text.
- (BOOL)filterChracters:(int (*)(int))isInClass;

/// Appends a path component behind one slash; nil and empty change nothing.
- (void)appendPathComponent:(NSString *)component;

@end

/// Copies with the edit applied; the receiver stays as it is.
@interface NSString (FoundationXEditing)
/// A plain copy for a null function.
- (NSMutableString *)chractersFilteredString:(int (*)(int))isInClass;
- (NSMutableString *)find:(NSString *)text andReplaceAllString:(NSString *)replacement;
- (NSMutableString *)stringBySetLength:(uint32_t)length withFillString:(NSString *)fill;
@end
#endif
