/// The byte-crunching inner loops of XMLUtility, written once over 64-byte blocks and compiled for several
/// instruction sets; the best one that the processor has is chosen at run time. Not installed.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <string_view>

namespace tarvik::xml {

/// How many bytes of a marker sift the positions of a block.
inline constexpr std::size_t kSieve = 4;

/// A byte string to look for, with the places of the bytes by which a whole block of positions is sifted at
/// once. It refers to the bytes, which must outlive it.
struct Marker {
    explicit Marker(std::string_view marker) : bytes(marker)
    {
        const std::size_t last = marker.empty() ? 0 : marker.size() - 1;
        sieve = {0, std::min<std::size_t>(1, last), marker.size() / 2, last};
    }

    std::string_view bytes;
    std::array<std::size_t, kSieve> sieve;
};

/// Longest marker that the kernels take. The cost of a false candidate is bounded by it, so that a search
/// stays linear in the text whatever text and marker are; a longer marker goes another way (ByteSearch.h).
inline constexpr std::size_t kLongestBlockMarker = 64;

/// A stretch of a text.
struct Stretch {
    std::size_t begin;
    std::size_t end;
};

/// What one escaped byte can become at most ("&quot;"), and what a kernel may write behind the bytes that
/// count.
inline constexpr std::size_t kLongestEntity = 6;
inline constexpr std::size_t kKernelSlack = 64;

/// One set of kernels. Markers hold 1 to kLongestBlockMarker bytes; nothing outside the text is read.
struct BlockKernels {
    const char *name;

    /// First occurrence at or after `from` (at most the text's length), or npos.
    std::size_t (*findFirst)(std::string_view text, const Marker &marker, std::size_t from);

    /// Last occurrence that begins at or after `from`, or npos.
    std::size_t (*findLast)(std::string_view text, const Marker &marker, std::size_t from);

    /// Pairs a start marker with the first end marker behind it, from `position` on, never overlapping. Fills
    /// at most `found.size()` stretches (the values between the markers) and moves `position` behind the last
    /// pair; fewer than asked for means that there are no more.
    std::size_t (*findPairs)(std::string_view text, const Marker &start, const Marker &end,
                             std::size_t &position, std::span<Stretch> found);

    /// Writes `text` escaped to `out`, which has room for kLongestEntity bytes for each byte of the text and
    /// for kKernelSlack more; answers how many bytes of it count.
    std::size_t (*escape)(std::string_view text, char *out);

    /// Writes the text from `position` on with its five named entities resolved to `out`, which has room for
    /// `amount` and kKernelSlack bytes, until at least `amount` bytes of the text are read (an entity is
    /// never cut). Moves `position` and answers how many bytes of `out` count.
    std::size_t (*unescape)(std::string_view text, std::size_t &position, std::size_t amount, char *out);
};

/// The best set for this processor.
const BlockKernels &blockKernels();

/// Every set that this processor runs, best first; the last one is the portable one.
std::span<const BlockKernels> allBlockKernels();

}  // namespace tarvik::xml
