#import <Tarvik/core/NSData+BlockEncryption.h>
#import <Tarvik/core/NSString+BlockEncryption.h>
#import <Tarvik/support/Bridge.h>

#include <cstring>

@implementation NSString (FoundationXBlockEncryption)

- (NSData *)encryptedData:(const void *)key
{
    const auto text = tarvik::utf8(self);
    if (!text)
        return nil;
    return text->empty() ? [NSData data] : [tarvik::nsdata(*text) encryptedData:key];
}

- (id)initWithEncryptedData:(NSData *)data decryptKey:(const void *)key
{
    if ([data length] == 0)
        return [self initWithString:@""];
    NSData *text = [data decryptedData:key];
    if (!text) {
        [self release];
        return nil;
    }
    const auto *bytes = static_cast<const char *>([text bytes]);
    NSString *plain = tarvik::nsstring({bytes, strnlen(bytes, [text length])});
    if (!plain) {
        [self release];
        return nil;
    }
    return [self initWithString:plain];
}

+ (id)stringWithEncryptedData:(NSData *)data decryptKey:(const void *)key
{
    return [[[self alloc] initWithEncryptedData:data decryptKey:key] autorelease];
}

@end
