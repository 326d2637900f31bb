#import <Foundation/Foundation.h>
#import <Tarvik/support/Bridge.h>
#include <Tarvik/text/EncodingConversion.h>
#import <Tarvik/text/NSString+Encoding.h>

#include "text/private/OwnText.h"

#include <algorithm>
#include <cstring>

@implementation NSString (FoundationXEncoding)

- (UniChar *)allocCharacters
{
    return CFStringAllocUnicodeCharacters((CFStringRef)self);
}

- (char *)allocTECConvertedTextOfEncoding:(TextEncoding)encoding
                            characterSize:(UInt32)bytesPerCharacter
                                readBytes:(ByteCount *)readBytes
                               writeBytes:(ByteCount *)writtenBytes
                                 TECError:(OSStatus *)status
{
    return CFStringAllocTECConvertedText((CFStringRef)self, encoding, bytesPerCharacter, readBytes,
                                         writtenBytes, status);
}

- (BOOL)memmoveUTF8String:(void *)buffer maxLength:(uint32_t)length
{
    const auto bytes = tarvik::ownText(self);
    if (!bytes || !buffer || length == 0)
        return NO;
    std::memmove(buffer, bytes->data(), std::min<size_t>(bytes->size(), length));
    return bytes->size() <= length;
}

+ (NSMutableArray *)availableStringEncodingLocalizedNames
{
    NSMutableArray *names = [NSMutableArray array];
    for (const NSStringEncoding *encoding = [NSString availableStringEncodings]; *encoding; ++encoding)
        [names addObject:[NSString localizedNameOfStringEncoding:*encoding]];
    return names;
}

+ (NSStringEncoding)stringEncodingForLocalizedName:(NSString *)name
{
    for (const NSStringEncoding *encoding = [NSString availableStringEncodings]; name && *encoding;
         ++encoding) {
        if ([[NSString localizedNameOfStringEncoding:*encoding] isEqualToString:name])
            return *encoding;
    }
    return NSStringEncoding(0);
}

- (id)initWithPascalString:(ConstStringPtr)text encoding:(CFStringEncoding)encoding
{
    NSString *made =
        text ? (NSString *)CFStringCreateWithPascalString(kCFAllocatorDefault, text, encoding) : nil;
    self = made ? [self initWithString:made] : ([self release], nil);
    [made release];
    return self;
}

+ (id)stringWithPascalString:(ConstStringPtr)text encoding:(CFStringEncoding)encoding
{
    return [[[self alloc] initWithPascalString:text encoding:encoding] autorelease];
}

- (ConstStringPtr)pascalStringPtr:(CFStringEncoding)encoding
{
    return CFStringGetPascalStringPtr((CFStringRef)self, encoding);
}

- (BOOL)getPascalString:(StringPtr)buffer size:(uint32_t)size encoding:(CFStringEncoding)encoding
{
    return buffer && size && CFStringGetPascalString((CFStringRef)self, buffer, CFIndex(size), encoding);
}

@end
