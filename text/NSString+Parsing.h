/// \file
/// Numbers, lines, bytes and four-character codes out of text.
///
///     [@"x007y8" intNumber]                       -> 7
///     [@"a\r\nb\rc\n" lines]                      -> "a", "b", "c", ""
///     [@"0aFf" dataFromHexadecimalString]         -> the bytes 0x0A 0xFF
///     [@"TEXT" OSType]                            -> 0x54455854
///     [@"xy" devideAtIndex:1 front:&f back:&b]    -> f "x", b "y"
///
/// Indexes and lengths count UTF-16 units. Results are autoreleased. Nothing raises. Thread: as the receiver.
#pragma once
#ifdef __OBJC__
#include <Carbon/MacTypes.h>
#import <Foundation/NSArray.h>
#import <Foundation/NSData.h>
#import <Foundation/NSString.h>
#import <Foundation/NSValue.h>

@interface NSString (FoundationXParsing)

/// The first run of the digits 0 to 9, as a signed 32-bit number that stops at 2147483647; 0 without a digit.
/// A sign is never read: "-5" gives 5, and callers rely on it. An exception is logged and gives 0.
- (NSNumber *)intNumber;

/// The lines, ended by CR LF, CR or LF, without their ends. A line end at the end of the text gives a last empty line,
/// the empty text one empty line. An exception is logged and gives nil. Linear in the text.
- (NSMutableArray *)lines;

/// The bytes that pairs of hexadecimal digits spell. Nil when a character is no such digit (blanks and "0x" are none);
/// an odd last digit is ignored; empty for the empty text.
- (NSData *)dataFromHexadecimalString;

/// The code of exactly four MacRoman characters, the first in the most significant byte; 0 for any other text.
- (OSType)OSType;
/// The same as an unsigned number.
- (NSNumber *)OSTypeNumber;
/// The four characters of a code (MacRoman).
- (id)initWithOSType:(OSType)code;
+ (id)stringWithOSType:(OSType)code;
/// Whether the receiver is the text of the code.
- (BOOL)isEqualToOSType:(OSType)code;

/// Splits at an index: the units before it, and the rest, in two new strings. An index beyond the end or a null pointer
/// leaves both results as they were. An exception is logged.
- (void)devideAtIndex:(uint32_t)index front:(NSMutableString **)front back:(NSMutableString **)back;

@end
#endif
