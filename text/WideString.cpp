#include <Tarvik/text/WideString.h>

#include <algorithm>

namespace {

size_t unitCount(const unsigned short *text)
{
    size_t count = 0;
    while (text && text[count] != 0)
        count += 1;
    return count;
}

}  // namespace

namespace Utils {

wstring string2wstring(const std::string &text)
{
    const auto *bytes = reinterpret_cast<const signed char *>(text.data());
    return wstring(bytes, bytes + text.size());
}

std::string wstring2string(const wstring &text) { return std::string(text.begin(), text.end()); }

wchar_t *wshort2wchar(const unsigned short *text)
{
    const size_t count = unitCount(text);
    auto *const copy = new wchar_t[count + 1];
    std::copy(text, text + count, copy);
    copy[count] = 0;
    return copy;
}

wstring wshort2wstring(const unsigned short *text) { return wstring(text, text + unitCount(text)); }

}  // namespace Utils
