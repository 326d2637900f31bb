#include "platform/Foundation/private/PropertyLists.h"

#include "platform/Foundation/private/BinaryPropertyList.h"
#include "platform/Foundation/private/TextPropertyList.h"
#include "platform/TextEncoding/private/Encodings.h"

#include <algorithm>
#include <optional>
#include <string>

namespace tarvik::plist {
namespace {

/// How deep the brackets of the older text form are nested.
int depthOf(std::u16string_view text)
{
    int depth = 0, deepest = 0;
    bool isQuoted = false;
    for (size_t i = 0; i < text.size(); ++i) {
        const char16_t c = text[i];
        if (isQuoted && c == '\\')
            ++i;
        else if (c == '"')
            isQuoted = !isQuoted;
        else if (!isQuoted && (c == '(' || c == '{'))
            deepest = std::max(deepest, ++depth);
        else if (!isQuoted && (c == ')' || c == '}'))
            --depth;
    }
    return deepest;
}

std::optional<std::u16string> textOf(NSData *data)
{
    const auto *bytes = static_cast<const uint8_t *>([data bytes]);
    const size_t count = [data length];
    const bool isWide =
        count >= 2 && ((bytes[0] == 0xFE && bytes[1] == 0xFF) || (bytes[0] == 0xFF && bytes[1] == 0xFE));
    return encodings::decode(*encodings::find(isWide ? 0x0100 : 0x08000100), bytes, count, true);
}

}  // namespace

bool isTextTooDeep(NSData *data)
{
    constexpr NSUInteger kHarmless = kDeepest;  // so many bytes hold no more brackets
    if ([data length] <= kHarmless)
        return false;
    const auto text = textOf(data);
    return text && depthOf(*text) > kDeepest;
}

id newFromData(NSData *data, Mutability mutability, std::string &why)
{
    const auto *bytes = static_cast<const uint8_t *>([data bytes]);
    const size_t count = [data length];
    if (count == 0) {
        why = "no data";
        return nil;
    }
    if (looksLikeXML(bytes, count))
        return newFromXML(bytes, count, mutability, why);
    if (looksBinary(bytes, count))
        return newFromBinary(bytes, count, mutability, why);
    const auto text = textOf(data);
    if (!text) {
        why = "neither XML nor text";
        return nil;
    }
    return newFromText(*text, mutability, why);
}

}  // namespace tarvik::plist
