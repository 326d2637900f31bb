#include "platform/CoreFoundation/private/Text.h"

#include <Tarvik/support/Pool.h>

#include <vector>

namespace tarvik::cf {
namespace {

constexpr bool isHigh(unichar unit) { return (unit & 0xFC00) == 0xD800; }
constexpr bool isLow(unichar unit) { return (unit & 0xFC00) == 0xDC00; }

NSString *stringOf(const unichar *units, size_t count)
{
    if (count == 0 || (units[0] != 0xFEFF && units[0] != 0xFFFE))
        return [[NSString alloc] initWithCharacters:units length:count];
    // Foundation takes these two for a byte order mark and drops them, but only in the first place.
    std::vector<unichar> behind(units, units + count);
    behind.insert(behind.begin(), 'x');
    Pool pool;
    NSString *whole = [[[NSString alloc] initWithCharacters:behind.data() length:behind.size()] autorelease];
    return [[whole substringFromIndex:1] copy];
}

}  // namespace

// Foundation's initialisers refuse half a pair (they answer nil), although its strings can hold one: as a
// piece of a string that has the pair whole. Such a text, which is rare, is put together from pieces.
NSString *newString(std::u16string_view text)
{
    const auto *units = reinterpret_cast<const unichar *>(text.data());
    const size_t count = text.size();
    NSString *plain = stringOf(units, count);
    if (plain)
        return plain;

    Pool pool;
    NSMutableString *whole = [NSMutableString new];
    for (size_t start = 0, at = 0; at <= count; ++at) {
        if (at + 1 < count && isHigh(units[at]) && isLow(units[at + 1])) {
            ++at;
            continue;
        }
        if (at < count && !isHigh(units[at]) && !isLow(units[at]))
            continue;
        if (at > start)
            [whole appendString:[stringOf(units + start, at - start) autorelease]];
        if (at < count) {
            const unichar withLow[] = {units[at], 0xDC00}, withHigh[] = {0xD800, units[at]};
            NSString *pair = [stringOf(isHigh(units[at]) ? withLow : withHigh, 2) autorelease];
            [whole appendString:isHigh(units[at]) ? [pair substringToIndex:1] : [pair substringFromIndex:1]];
        }
        start = at + 1;
    }
    NSString *result = [whole copy];
    [whole release];
    return result;
}

}  // namespace tarvik::cf
