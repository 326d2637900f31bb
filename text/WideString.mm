#import <Foundation/Foundation.h>

#include <algorithm>

#include <Tarvik/text/WideString.h>

namespace Utils {

wstring nsstring2wstring(NSString *text)
{
    constexpr NSUInteger kChunk = 1024;
    const NSUInteger length = [text length];
    wstring result;
    result.reserve(length);
    unichar units[kChunk];
    for (NSUInteger at = 0; at < length; at += kChunk) {
        const NSUInteger count = std::min(kChunk, length - at);
        [text getCharacters:units range:NSMakeRange(at, count)];
        result.append(units, units + count);
    }
    return result;
}

}  // namespace Utils
