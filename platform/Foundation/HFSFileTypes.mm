#import <Foundation/Foundation.h>

#include <cstdint>

namespace {
constexpr NSUInteger kCodeLength = 4;
constexpr unichar kQuote = '\'';
}  // namespace

NSString *NSFileTypeForHFSTypeCode(NSUInteger code)
{
    const uint8_t bytes[kCodeLength + 2] = {uint8_t(kQuote),    uint8_t(code >> 24), uint8_t(code >> 16),
                                            uint8_t(code >> 8), uint8_t(code),       uint8_t(kQuote)};
    return [[[NSString alloc] initWithBytes:bytes length:sizeof bytes
                                   encoding:NSMacOSRomanStringEncoding] autorelease];
}

NSUInteger NSHFSTypeCodeFromFileType(NSString *text)
{
    if ([text length] != kCodeLength + 2 || [text characterAtIndex:0] != kQuote ||
        [text characterAtIndex:kCodeLength + 1] != kQuote)
        return 0;
    NSData *characters =
        [[text substringWithRange:NSMakeRange(1, kCodeLength)] dataUsingEncoding:NSMacOSRomanStringEncoding];
    if ([characters length] != kCodeLength)
        return 0;  // not in MacRoman
    NSUInteger code = 0;
    for (NSUInteger i = 0; i < kCodeLength; ++i)
        code = code << 8 | static_cast<const uint8_t *>([characters bytes])[i];
    return code;
}

// The plain names too, for hosts compiled without our headers that link this library before gnustep-base.
extern "C" {
NSString *plainFileTypeForCode(NSUInteger) __asm__("NSFileTypeForHFSTypeCode")
    __attribute__((alias("TarvikFileTypeForHFSTypeCode")));
NSUInteger plainCodeFromFileType(NSString *) __asm__("NSHFSTypeCodeFromFileType")
    __attribute__((alias("TarvikHFSTypeCodeFromFileType")));
}
