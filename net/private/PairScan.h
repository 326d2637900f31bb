/// The scan for values between two markers, over any way to find one. Not installed.
#pragma once

#include "BlockKernels.h"

namespace tarvik::xml {

/// See BlockKernels::findPairs; `find(marker, from)` answers the first occurrence at or after `from`, or
/// npos.
template <class Find>
std::size_t scanPairs(const Find &find, const Marker &start, const Marker &end, std::size_t &position,
                      std::span<Stretch> found)
{
    std::size_t count = 0;
    while (count < found.size()) {
        std::size_t begin = find(start, position);
        if (begin == std::string_view::npos)
            break;
        begin += start.bytes.size();
        const std::size_t close = find(end, begin);
        if (close == std::string_view::npos)
            break;
        found[count++] = {begin, close};
        position = close + end.bytes.size();
    }
    return count;
}

}  // namespace tarvik::xml
