#include <Tarvik/text/CStringConversion.h>

#include "text/private/EncodingOrder.h"

#include <CoreFoundation/CFStringEncodingExt.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>

char *CFStringAllocCString(CFStringRef string, CFStringEncoding encoding)
{
    if (!string)
        return nullptr;
    const CFIndex size = 2 * CFStringGetLength(string) + 1;
    auto *text = static_cast<char *>(std::calloc(1, size_t(size)));
    if (text && !CFStringGetCString(string, text, size, encoding)) {
        std::free(text);
        return nullptr;
    }
    return text;
}

/// UTF-16 and UTF-32 hold every text, but a C string in them ends with the first letter.
static bool isOfBytes(CFStringEncoding encoding)
{
    constexpr CFStringEncoding kBase = 0xFFFF;
    return (encoding & kBase) != kCFStringEncodingUnicode || encoding == kCFStringEncodingUTF8 ||
           encoding == kCFStringEncodingUTF7;
}

char *CFStringAllocConvertableCString(CFStringRef string)
{
    return tarvik::inFirstEncoding([=](CFStringEncoding encoding) {
        return isOfBytes(encoding) ? CFStringAllocCString(string, encoding) : nullptr;
    });
}

Boolean CFStringGetConvertableCString(CFStringRef string, char *buffer, CFIndex size)
{
    return string && buffer && size >= 1 && tarvik::inFirstEncoding([=](CFStringEncoding encoding) {
               return isOfBytes(encoding) && CFStringGetCString(string, buffer, size, encoding);
           });
}

CFIndex CFStringGetASCIICString(CFStringRef string, char *buffer, CFIndex size)
{
    if (!string || !buffer || size < 1)
        return 0;
    std::memset(buffer, 0, size_t(size));
    const CFIndex length = CFStringGetLength(string);
    CFIndex count = 0;
    UniChar units[256];
    for (CFIndex start = 0; start < length && count < size - 1; start += CFIndex(std::size(units))) {
        const CFIndex stretch = std::min<CFIndex>(length - start, CFIndex(std::size(units)));
        CFStringGetCharacters(string, CFRangeMake(start, stretch), units);
        for (CFIndex i = 0; i < stretch && count < size - 1; ++i) {
            if (units[i] < 0x80)
                buffer[count++] = char(units[i]);
        }
    }
    return count;
}

char *CFStringAllocASCIICString(CFStringRef string)
{
    if (!string)
        return nullptr;
    const CFIndex size = 2 * CFStringGetLength(string) + 1;
    auto *text = static_cast<char *>(std::calloc(1, size_t(size)));
    if (text)
        CFStringGetASCIICString(string, text, size);
    return text;
}
