#include <Tarvik/text/Version.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include <Tarvik/text/NumberText.h>

namespace {

std::vector<int32_t> split_version(const wstring &text)
{
    std::vector<int32_t> components;
    size_t begin = 0;
    while (begin < text.size()) {
        const size_t end = std::min(text.find(L'.', begin), text.size());
        if (end != begin)
            components.push_back(Utils::wstring2long(text.substr(begin, end - begin)));
        begin = end + 1;
    }
    return components;
}

}  // namespace

namespace Utils {

int compare_version(const wstring &a, const wstring &b)
{
    const auto order = split_version(a) <=> split_version(b);
    return order < 0 ? -1 : order > 0 ? 1 : 0;
}

}  // namespace Utils
