#include "platform/Files/private/Names.h"

#include <CoreFoundation/CFString.h>
#include <Tarvik/support/CFOwned.h>
#include <Tarvik/support/UTF8.h>

#include <algorithm>
#include <cstring>

namespace tarvik::files {
namespace {

using String = CFOwned<CFStringRef>;

constexpr bool isHigh(uint32_t unit) { return (unit & 0xFC00) == 0xD800; }
constexpr bool isLow(uint32_t unit) { return (unit & 0xFC00) == 0xDC00; }

String copyText(std::string_view text)
{
    return String(CFStringCreateWithBytes(nullptr, reinterpret_cast<const UInt8 *>(text.data()),
                                          CFIndex(text.size()), kCFStringEncodingUTF8, false));
}

std::string swapped(std::string_view name, char from, char to)
{
    std::string out(name);
    std::replace(out.begin(), out.end(), from, to);
    return out;
}

}  // namespace

OSErr nameFromUnicode(const UniChar *units, size_t count, std::string &name)
{
    if (count == 0)
        return errFSMissingName;
    if (count > 255)
        return errFSNameTooLong;
    if (!units)
        return paramErr;
    name.clear();
    for (size_t i = 0; i < count; ++i) {
        const uint32_t unit = units[i];
        if (isHigh(unit) && i + 1 < count && isLow(units[i + 1]))
            appendUTF8(name, 0x10000 + ((unit & 0x3FF) << 10) + (units[++i] & 0x3FFu));
        else if (unit >= 0xDC80 && unit <= 0xDCFF)
            name += char(unit & 0xFF);
        else if (isHigh(unit) || isLow(unit) || unit == ':' || unit == 0)
            return bdNamErr;
        else
            appendUTF8(name, unit == '/' ? ':' : unit);
    }
    return name == "." || name == ".." ? OSErr(bdNamErr) : OSErr(noErr);
}

void unicodeFromName(std::string_view name, HFSUniStr255 &record)
{
    std::memset(&record, 0, sizeof record);
    const auto put = [&](uint32_t unit) { record.unicode[record.length++] = UniChar(unit); };
    while (!name.empty()) {
        const DecodedUTF8 next = decodeUTF8(name);
        const bool isPair = next.bytes == 4;
        if (record.length + size_t(isPair) >= std::size(record.unicode))
            return;
        if (next.bytes == 0) {
            put(0xDC00 | uint8_t(name.front()));
        } else if (isPair) {
            put(0xD800 | (next.character - 0x10000) >> 10);
            put(0xDC00 | (next.character & 0x3FF));
        } else {
            put(next.character == ':' ? '/' : next.character);
        }
        name.remove_prefix(std::max<size_t>(next.bytes, 1));
    }
}

std::vector<std::string> otherForms(const std::string &name)
{
    std::vector<std::string> forms;
    if (std::all_of(name.begin(), name.end(), [](char c) { return uint8_t(c) < 0x80; }))
        return forms;
    const String text = copyText(name);
    if (!text)
        return forms;
    for (CFStringNormalizationForm form : {kCFStringNormalizationFormC, kCFStringNormalizationFormD}) {
        const CFOwned<CFMutableStringRef> changed(CFStringCreateMutableCopy(nullptr, 0, text.get()));
        CFStringNormalize(changed.get(), form);
        char bytes[1024];
        if (CFStringGetCString(changed.get(), bytes, sizeof bytes, kCFStringEncodingUTF8) && bytes != name &&
            std::find(forms.begin(), forms.end(), bytes) == forms.end())
            forms.emplace_back(bytes);
    }
    return forms;
}

bool romanFromName(std::string_view name, size_t most, std::string &roman)
{
    const String text = copyText(swapped(name, ':', '/'));
    char bytes[1024];
    if (!text || !CFStringGetCString(text.get(), bytes, sizeof bytes, kCFStringEncodingMacRoman))
        return false;
    roman = bytes;
    return roman.size() <= most;
}

OSErr nameFromRoman(std::string_view roman, std::string &name)
{
    if (roman.empty())
        return errFSMissingName;
    if (roman.find(':') != roman.npos || roman.find('\0') != roman.npos)
        return bdNamErr;
    const String text(CFStringCreateWithBytes(nullptr, reinterpret_cast<const UInt8 *>(roman.data()),
                                              CFIndex(roman.size()), kCFStringEncodingMacRoman, false));
    char bytes[1024];
    if (!text || !CFStringGetCString(text.get(), bytes, sizeof bytes, kCFStringEncodingUTF8))
        return bdNamErr;
    name = swapped(bytes, '/', ':');
    return name == "." || name == ".." ? OSErr(bdNamErr) : OSErr(noErr);
}

}  // namespace tarvik::files
