/// \file
/// Text encodings on strings: Pascal strings, converted bytes, and the names of the available encodings.
///
/// Encodings of the Pascal methods are Core Foundation's identifiers; those of the names are NSStringEncoding's.
/// Thread: as the receiver.
#pragma once
#ifdef __OBJC__
#include <CoreFoundation/CFString.h>
#import <Foundation/NSArray.h>
#import <Foundation/NSString.h>

@interface NSString (FoundationXEncoding)

/// The UTF-16 units and a zero unit, freed with `free`.
- (UniChar *)allocCharacters;
/// CFStringAllocTECConvertedText of the receiver.
- (char *)allocTECConvertedTextOfEncoding:(TextEncoding)encoding
                            characterSize:(UInt32)bytesPerCharacter
                                readBytes:(ByteCount *)readBytes
                               writeBytes:(ByteCount *)writtenBytes
                                 TECError:(OSStatus *)status;
/// Copies the UTF-8 bytes, without a zero. NO when they do not fit (as many as do are copied, even if that cuts a
/// character), for a null buffer, for length 0 and without a UTF-8 form.
- (BOOL)memmoveUTF8String:(void *)buffer maxLength:(uint32_t)length;

/// The localised names of all available encodings, in the platform's order.
+ (NSMutableArray *)availableStringEncodingLocalizedNames;
/// The first available encoding of that name; 0 for nil and without one.
+ (NSStringEncoding)stringEncodingForLocalizedName:(NSString *)name;

/// Nil for null and for bytes that are no text in the encoding.
- (id)initWithPascalString:(ConstStringPtr)text encoding:(CFStringEncoding)encoding;
+ (id)stringWithPascalString:(ConstStringPtr)text encoding:(CFStringEncoding)encoding;
/// A pointer into the string, when it has one for the encoding; null otherwise.
- (ConstStringPtr)pascalStringPtr:(CFStringEncoding)encoding;
/// A Pascal string into a buffer of so many bytes; NO when it does not fit or lacks a character.
- (BOOL)getPascalString:(StringPtr)buffer size:(uint32_t)size encoding:(CFStringEncoding)encoding;

@end
#endif
