#import <Tarvik/support/Bridge.h>
#include <Tarvik/support/UTF8.h>

#include <algorithm>
#include <iterator>

namespace tarvik {
namespace {

constexpr unichar kFirstHighSurrogate = 0xD800, kFirstLowSurrogate = 0xDC00, kPastSurrogates = 0xE000;

bool isHigh(unichar unit) { return unit >= kFirstHighSurrogate && unit < kFirstLowSurrogate; }
bool isLow(unichar unit) { return unit >= kFirstLowSurrogate && unit < kPastSurrogates; }

}  // namespace

// Encoded here, unit by unit: the platform's own conversion raises on half a pair, and its C-string
// form ends at the first NUL.
std::optional<std::string> utf8(NSString *text)
{
    if (text == nil)
        return std::nullopt;
    const NSUInteger length = [text length];
    std::string out;
    out.reserve(length);
    unichar units[256];
    for (NSUInteger start = 0; start < length;) {
        NSUInteger count = std::min<NSUInteger>(length - start, std::size(units));
        [text getCharacters:units range:NSMakeRange(start, count)];
        if (count > 1 && isHigh(units[count - 1]))
            --count;  // keep a pair together: the rest begins the next stretch
        for (NSUInteger i = 0; i < count; ++i) {
            uint32_t c = units[i];
            if (isLow(units[i]) || (isHigh(units[i]) && (i + 1 == count || !isLow(units[i + 1]))))
                return std::nullopt;
            if (isHigh(units[i])) {
                ++i;
                c = 0x10000 + ((c - kFirstHighSurrogate) << 10) + (units[i] - kFirstLowSurrogate);
            }
            appendUTF8(out, c);
        }
        start += count;
    }
    return out;
}

NSString *nsstring(std::string_view bytes)
{
    // The platform takes U+FEFF for a byte order mark and drops it, but only in the first place.
    if (bytes.starts_with("\xEF\xBB\xBF"))
        return [nsstring(std::string("x").append(bytes)) substringFromIndex:1];
    return [[[NSString alloc] initWithBytes:bytes.data() length:bytes.size()
                                   encoding:NSUTF8StringEncoding] autorelease];
}

std::optional<std::string> bytes(NSData *data)
{
    if (data == nil)
        return std::nullopt;
    return std::string(static_cast<const char *>([data bytes]), [data length]);
}

NSData *nsdata(std::string_view bytes) { return [NSData dataWithBytes:bytes.data() length:bytes.size()]; }

}  // namespace tarvik
