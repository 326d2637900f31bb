/// Search for byte strings of any length, linear in the text whatever the two are. Not installed.
#pragma once

#include "BlockKernels.h"

namespace tarvik::xml {

/// First occurrence of the marker at or after `from` (at most the text's length), or npos. An empty marker
/// occurs everywhere up to the text's end.
std::size_t findFirst(std::string_view text, const Marker &marker, std::size_t from = 0);

/// Last occurrence of the marker that begins at or after `from` (at most the text's length), or npos. The
/// last place of an empty marker is the text's end.
std::size_t findLast(std::string_view text, const Marker &marker, std::size_t from = 0);

/// Pairs a start marker with the first end marker behind it, as BlockKernels::findPairs does, for markers of
/// any length. Two empty markers find nothing.
std::size_t findPairs(std::string_view text, const Marker &start, const Marker &end, std::size_t &position,
                      std::span<Stretch> found);

}  // namespace tarvik::xml
