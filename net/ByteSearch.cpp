#include "private/ByteSearch.h"
#include "private/PairScan.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace tarvik::xml {
namespace {

bool fitsBlocks(const Marker &marker)
{
    return !marker.bytes.empty() && marker.bytes.size() <= kLongestBlockMarker;
}

/// Backwards search by the borders of the marker (Knuth, Morris and Pratt 1977): no byte of the text is read
/// twice.
std::size_t findLastByBorders(std::string_view text, std::string_view marker)
{
    const std::size_t size = marker.size();
    const auto fromEnd = [&](std::size_t i) { return marker[size - 1 - i]; };
    std::vector<std::size_t> borders(size, 0);  // of each end of the marker, by its length less one
    for (std::size_t i = 1, border = 0; i < size; ++i) {
        while (border > 0 && fromEnd(i) != fromEnd(border))
            border = borders[border - 1];
        if (fromEnd(i) == fromEnd(border))
            ++border;
        borders[i] = border;
    }
    for (std::size_t at = text.size(), matched = 0; at-- > 0;) {
        while (matched > 0 && text[at] != fromEnd(matched))
            matched = borders[matched - 1];
        if (text[at] == fromEnd(matched))
            ++matched;
        if (matched == size)
            return at;
    }
    return std::string_view::npos;
}

}  // namespace

std::size_t findFirst(std::string_view text, const Marker &marker, std::size_t from)
{
    if (fitsBlocks(marker))
        return blockKernels().findFirst(text, marker, from);
    const void *found =
        memmem(text.data() + from, text.size() - from, marker.bytes.data(), marker.bytes.size());
    return found == nullptr ? std::string_view::npos
                            : static_cast<std::size_t>(static_cast<const char *>(found) - text.data());
}

std::size_t findLast(std::string_view text, const Marker &marker, std::size_t from)
{
    if (fitsBlocks(marker))
        return blockKernels().findLast(text, marker, from);
    if (marker.bytes.empty())
        return text.size();
    const std::size_t found = findLastByBorders(text.substr(from), marker.bytes);
    return found == std::string_view::npos ? found : from + found;
}

std::size_t findPairs(std::string_view text, const Marker &start, const Marker &end, std::size_t &position,
                      std::span<Stretch> found)
{
    if (start.bytes.empty() && end.bytes.empty())
        return 0;
    if (fitsBlocks(start) && fitsBlocks(end))
        return blockKernels().findPairs(text, start, end, position, found);
    const auto find = [&](const Marker &marker, std::size_t from) { return findFirst(text, marker, from); };
    return scanPairs(find, start, end, position, found);
}

}  // namespace tarvik::xml
