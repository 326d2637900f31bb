#include "platform/Foundation/private/PropertyLists.h"

#include "platform/CoreFoundation/private/Text.h"
#include "platform/TextEncoding/private/Encodings.h"

#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/Guard.h>
#import <Tarvik/support/Pool.h>

#include <algorithm>

namespace tarvik::plist {
namespace {

/// How deep the brackets of the older text form are nested. Foundation's reader of it recurses, so that it must be known before.
int depthOf(NSString *text)
{
    const cf::Units units(text);
    int depth = 0, deepest = 0;
    bool isQuoted = false;
    for (size_t i = 0; i < units.size(); ++i) {
        const unichar c = units.data()[i];
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

/// Whether the text is a list of its own: it begins, comments aside, with a bracket.
bool beginsWithBracket(NSString *text)
{
    const cf::Units units(text);
    const unichar *at = units.data(), *const end = at + units.size();
    while (at < end) {
        if (at + 1 < end && at[0] == '/' && at[1] == '*') {
            for (at += 2; at + 1 < end && !(at[0] == '*' && at[1] == '/'); ++at) {
            }
            at += 2;
        } else if (at + 1 < end && at[0] == '/' && at[1] == '/') {
            while (at < end && *at != '\n')
                ++at;
        } else if (*at == ' ' || (*at >= '\t' && *at <= '\r')) {
            ++at;
        } else {
            return *at == '{' || *at == '(' || *at == '<';
        }
    }
    return false;
}

NSString *newText(const uint8_t *bytes, size_t count)
{
    const bool isWide = count >= 2 && ((bytes[0] == 0xFE && bytes[1] == 0xFF) || (bytes[0] == 0xFF && bytes[1] == 0xFE));
    const auto units = encodings::decode(*encodings::find(isWide ? 0x0100 : 0x08000100), bytes, count, true);
    return units ? cf::newString(*units) : nil;
}

} // namespace

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
    if (count >= 6 && std::equal(bytes, bytes + 6, "bplist")) {
        why = "a binary property list";
        return nil;
    }
    auto text = adopt<NSString>(newText(bytes, count));
    if (!text) {
        why = "neither XML nor text";
        return nil;
    }
    if (depthOf(text.get()) > kDeepest) {
        why = "nested deeper than " + std::to_string(kDeepest) + " levels";
        return nil;
    }
    id list = nil;
    Retained<NSException *> raised;
    Pool pool;
    const bool passed = attempt(
        [&] {
            id found = beginsWithBracket(text.get()) ? [text.get() propertyList] : [text.get() propertyListFromStringsFileFormat];
            list = found ? newDeepCopy(found, mutability, why) : nil;
        },
        &raised);
    if (!passed)
        why = utf8([raised.get() reason]).value_or("no property list");
    else if (!list && why.empty())
        why = "no property list";
    return list;
}

} // namespace tarvik::plist
