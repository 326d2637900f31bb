#import <Foundation/Foundation.h>
#import <Tarvik/core/Guard.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/text/NSString+Parsing.h>

#include "text/private/OwnText.h"
#include "text/private/Units.h"

#include <algorithm>
#include <cctype>
#include <cstdint>

namespace {

constexpr NSUInteger kCodeLength = 4;

bool isDigit(char16_t unit) { return unit >= u'0' && unit <= u'9'; }

int32_t firstNumber(const std::u16string &text)
{
    auto digit = std::find_if(text.begin(), text.end(), isDigit);
    int64_t value = 0;
    // The platform's own conversion wraps around here: the limit is kept at each digit.
    for (; digit != text.end() && isDigit(*digit); ++digit)
        value = std::min<int64_t>(value * 10 + (*digit - u'0'), INT32_MAX);
    return int32_t(value);
}

}  // namespace

@implementation NSString (FoundationXParsing)

- (NSNumber *)intNumber
{
    return tarvik::guarded("-[NSString(FoundationX) intNumber]", __LINE__, [NSNumber numberWithInt:0],
                           [&] { return [NSNumber numberWithInt:firstNumber(tarvik::units(self))]; });
}

- (NSMutableArray *)lines
{
    return tarvik::guarded(
        "-[NSString(FoundationX) lines]", __LINE__, static_cast<NSMutableArray *>(nil), [&] {
            NSMutableArray *lines = [NSMutableArray array];
            NSString *text = [[self copy] autorelease];
            const std::u16string units = tarvik::units(text);
            for (size_t start = 0;;) {
                const size_t end = std::min(units.find_first_of(u"\r\n", start), units.size());
                [lines addObject:[text substringWithRange:NSMakeRange(start, end - start)]];
                if (end == units.size())
                    return lines;
                start = end + (units.compare(end, 2, u"\r\n") == 0 ? 2 : 1);
            }
        });
}

- (NSData *)dataFromHexadecimalString
{
    const auto digits = tarvik::ownText(self);
    if (!digits ||
        !std::all_of(digits->begin(), digits->end(), [](unsigned char c) { return std::isxdigit(c); }))
        return nil;
    auto value = [](char digit) { return std::isdigit(digit) ? digit - '0' : (digit | 0x20) - 'a' + 10; };
    NSMutableData *data = [NSMutableData dataWithLength:digits->size() / 2];
    auto *bytes = static_cast<uint8_t *>([data mutableBytes]);
    for (size_t i = 0; i < digits->size() / 2; ++i)
        bytes[i] = uint8_t(value((*digits)[2 * i]) << 4 | value((*digits)[2 * i + 1]));
    return data;
}

- (OSType)OSType
{
    if ([self length] != kCodeLength)
        return 0;
    return OSType(NSHFSTypeCodeFromFileType([NSString stringWithFormat:@"'%@'", self]));
}

- (NSNumber *)OSTypeNumber
{
    return [NSNumber numberWithUnsignedInt:[self OSType]];
}

- (id)initWithOSType:(OSType)code
{
    NSString *quoted = NSFileTypeForHFSTypeCode(code);
    if ([quoted length] != kCodeLength + 2) {
        [self release];
        return nil;
    }
    return [self initWithString:[quoted substringWithRange:NSMakeRange(1, kCodeLength)]];
}

+ (id)stringWithOSType:(OSType)code
{
    return [[[self alloc] initWithOSType:code] autorelease];
}

- (BOOL)isEqualToOSType:(OSType)code
{
    return [self isEqualToString:[NSString stringWithOSType:code]];
}

- (void)devideAtIndex:(uint32_t)index front:(NSMutableString **)front back:(NSMutableString **)back
{
    if (!front || !back || index > [self length])
        return;
    tarvik::guarded("-[NSString(FoundationX) devideAtIndex:front:back:]", __LINE__, [&] {
        // Cut from copies: a constant string has no substring that ends within a surrogate pair.
        NSMutableString *head = [[self mutableCopy] autorelease], *tail = [[self mutableCopy] autorelease];
        [head deleteCharactersInRange:NSMakeRange(index, [head length] - index)];
        [tail deleteCharactersInRange:NSMakeRange(0, index)];
        *front = head;
        *back = tail;
    });
}

@end
