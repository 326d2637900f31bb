#include <Tarvik/text/NumberText.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <limits>

namespace Utils {

std::string int2string(int32_t number)
{
    char text[11];
    const auto [end, error] = std::to_chars(std::begin(text), std::end(text), number);
    return std::string(text, end);
}

std::string long2string(int32_t number) { return int2string(number); }

wstring int2wstring(int32_t number) { return string2wstring(int2string(number)); }

wstring long2wstring(int32_t number) { return int2wstring(number); }

int32_t string2int(const std::string &text)
{
    using Limits = std::numeric_limits<int32_t>;
    return static_cast<int32_t>(
        std::clamp<long>(std::strtol(text.c_str(), nullptr, 10), Limits::min(), Limits::max()));
}

int32_t string2long(const std::string &text) { return string2int(text); }

int32_t wstring2int(const wstring &text) { return string2int(wstring2string(text)); }

int32_t wstring2long(const wstring &text) { return wstring2int(text); }

std::string bytesize2string(uint32_t size)
{
    if (size <= 1024)
        return std::to_string(size) + " Bytes";
    const uint32_t kilobytes = size / 1024;
    if (kilobytes <= 1024)
        return std::to_string(kilobytes) + " KB";
    return std::to_string(kilobytes / 1024) + " MB";
}

}  // namespace Utils
