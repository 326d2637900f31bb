#import <Foundation/Foundation.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/text/NSString+AppleEvents.h>

#include <string>
#include <vector>

namespace {

NSString *textIn(const std::string &bytes, NSStringEncoding encoding)
{
    return [[[NSString alloc] initWithBytes:bytes.data() length:bytes.size() encoding:encoding] autorelease];
}

NSString *textIn(DescType type, const std::string &bytes)
{
    switch (type) {
    case typeText: {
        NSString *text = tarvik::nsstring(bytes);
        return text ? text : textIn(bytes, NSMacOSRomanStringEncoding);
    }
    case typeUTF8Text: return tarvik::nsstring(bytes);
    case typeUnicodeText: {
        std::vector<unichar> units(bytes.size() / sizeof(unichar));
        if (bytes.size() % sizeof(unichar))
            return nil;
        std::copy(bytes.begin(), bytes.end(), reinterpret_cast<char *>(units.data()));
        return [NSString stringWithCharacters:units.data() length:units.size()];
    }
    default: return nil;
    }
}

}  // namespace

@implementation NSString (FoundationXAppleEvents)

- (id)initWithAEDesc:(const AEDesc *)desc
{
    std::string bytes(size_t(AEGetDescDataSize(desc)), '\0');
    NSString *text = nil;
    if (desc && AEGetDescData(desc, bytes.data(), Size(bytes.size())) == noErr)
        text = textIn(desc->descriptorType, bytes);
    if (!text) {
        [self release];
        return nil;
    }
    return [self initWithString:text];
}

+ (id)stringWithAEDesc:(const AEDesc *)desc
{
    return [[[self alloc] initWithAEDesc:desc] autorelease];
}

@end
