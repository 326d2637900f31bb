#import <Foundation/Foundation.h>
#import <Tarvik/core/Guard.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/text/NSString+Searching.h>

#include "text/private/Occurrence.h"
#include "text/private/OwnText.h"

#include <algorithm>

@implementation NSString (FoundationXSearching)

- (BOOL)contains:(NSString *)text
{
    return [self contains:text options:0];
}

- (BOOL)contains:(NSString *)text options:(NSStringCompareOptions)options
{
    return tarvik::guarded("-[NSString(FoundationX) contains:options:]", __LINE__, false,
                           [&] { return tarvik::occurrence(self, text, options).has_value(); });
}

- (uint32_t)offsetAfterString:(NSString *)text
{
    return [self offsetAfterString:text options:0];
}

- (uint32_t)offsetAfterString:(NSString *)text options:(NSStringCompareOptions)options
{
    return tarvik::guarded("-[NSString(FoundationX) offsetAfterString:options:]", __LINE__,
                           uint32_t(kTarvikNotFound), [&] {
                               const auto found = tarvik::occurrence(self, text, options);
                               return found ? uint32_t(NSMaxRange(*found)) : uint32_t(kTarvikNotFound);
                           });
}

- (NSString *)substringAfterString:(NSString *)text options:(NSStringCompareOptions)options
{
    return tarvik::guarded("-[NSString(FoundationX) substringAfterString:options:]", __LINE__,
                           static_cast<NSString *>(nil), [&] {
                               const auto found = tarvik::occurrence(self, text, options);
                               return found ? [self substringFromIndex:NSMaxRange(*found)] : nil;
                           });
}

- (BOOL)allChracterIs:(int (*)(int))isInClass
{
    const auto bytes = tarvik::ownText(self);
    return isInClass && bytes && std::all_of(bytes->begin(), bytes->end(), [=](unsigned char byte) {
               return isInClass(byte) != 0;
           });
}

- (uint32_t)size
{
    const auto bytes = tarvik::ownText(self);
    return bytes ? uint32_t(bytes->size()) : 0;
}

@end
