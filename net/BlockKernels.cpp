#include "private/BlockKernels.h"
#include "private/PairScan.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace tarvik::xml {
namespace {

template <class Word>
Word wordAt(const char *bytes)
{
    Word word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

/// Whether the marker stands here, its sieve having passed: two overlapping words say it for all but long
/// markers.
inline bool confirmed(const char *here, const Marker &marker)
{
    const std::size_t size = marker.bytes.size();
    const char *bytes = marker.bytes.data();
    if (size <= 4)
        return true;
    if (size <= 8)
        return wordAt<std::uint32_t>(here) == wordAt<std::uint32_t>(bytes) &&
               wordAt<std::uint32_t>(here + size - 4) == wordAt<std::uint32_t>(bytes + size - 4);
    if (size <= 16)
        return wordAt<std::uint64_t>(here) == wordAt<std::uint64_t>(bytes) &&
               wordAt<std::uint64_t>(here + size - 8) == wordAt<std::uint64_t>(bytes + size - 8);
    return std::memcmp(here, bytes, size) == 0;
}

/// What a byte becomes in escaped text. Eight bytes, so that one load and one store serve every byte, special
/// or not.
struct Escaped {
    char text[7];
    std::uint8_t length;
};

constexpr std::array<Escaped, 256> kEscaped = [] {
    std::array<Escaped, 256> table{};
    for (std::size_t byte = 0; byte < table.size(); ++byte)
        table[byte] = {{static_cast<char>(byte)}, 1};
    table['&'] = {"&amp;", 5};
    table['"'] = {"&quot;", 6};
    table['\''] = {"&apos;", 6};
    table['<'] = {"&lt;", 4};
    table['>'] = {"&gt;", 4};
    table['\r'] = {"&#13;", 5};
    table['\n'] = {"&#10;", 5};
    return table;
}();

/// Escapes without a branch on the bytes: the share of specials does not change its pace.
inline char *escapeBytes(const char *in, const char *end, char *out)
{
    for (; in < end; ++in) {
        const Escaped &escaped = kEscaped[static_cast<unsigned char>(*in)];
        std::memcpy(out, &escaped, sizeof escaped);
        out += escaped.length;
    }
    return out;
}

struct Entity {
    char character;
    std::size_t length;
};

template <std::size_t n>
bool startsWith(const char *here, const char *end, const char (&literal)[n])
{
    return static_cast<std::size_t>(end - here) >= n - 1 && std::memcmp(here, literal, n - 1) == 0;
}

/// What the ampersand at `here` stands for, and how much of the text that takes.
///
/// The five replacements are made in the order quot, amp, apos, lt, gt, each over the whole result of the one
/// before. No replacement but that of "&amp;" yields a byte of another entity, and an ampersand can only
/// begin one; so the order shows in one way alone: the ampersand from "&amp;" takes part in the three that
/// come later ("&amp;lt;" is "<"), not in the two that are done ("&amp;quot;" is "&quot;", "&amp;amp;" is
/// "&amp;").
inline Entity entityAt(const char *here, const char *end)
{
    if (startsWith(here, end, "&lt;"))
        return {'<', 4};
    if (startsWith(here, end, "&gt;"))
        return {'>', 4};
    if (startsWith(here, end, "&quot;"))
        return {'"', 6};
    if (startsWith(here, end, "&apos;"))
        return {'\'', 6};
    if (!startsWith(here, end, "&amp;"))
        return {'&', 1};
    if (startsWith(here + 5, end, "lt;"))
        return {'<', 8};
    if (startsWith(here + 5, end, "gt;"))
        return {'>', 8};
    if (startsWith(here + 5, end, "apos;"))
        return {'\'', 10};
    return {'&', 5};
}

/// The C++ library's search, and with it the C library's memchr.
namespace library {

std::size_t findFirst(std::string_view text, const Marker &marker, std::size_t from)
{
    return text.find(marker.bytes, from);
}

std::size_t findLast(std::string_view text, const Marker &marker, std::size_t from)
{
    const std::size_t place = text.substr(from).rfind(marker.bytes);
    return place == std::string_view::npos ? place : from + place;
}

std::size_t findPairs(std::string_view text, const Marker &start, const Marker &end, std::size_t &position,
                      std::span<Stretch> found)
{
    const auto find = [&](const Marker &marker, std::size_t from) { return text.find(marker.bytes, from); };
    return scanPairs(find, start, end, position, found);
}

}  // namespace library

namespace portable {

/// Eight bytes in a general register.
struct Lanes {
    using Bytes = std::uint64_t;
    using Hits = std::uint64_t;  // 0x80 in each byte
    static constexpr std::size_t kSize = 8;

    static constexpr Bytes all(char byte) { return 0x0101010101010101U * static_cast<unsigned char>(byte); }
    static Bytes load(const char *bytes)
    {
        const auto word = wordAt<std::uint64_t>(bytes);
        return std::endian::native == std::endian::big ? __builtin_bswap64(word) : word;
    }
    static Hits equal(Bytes bytes, Bytes wanted)
    {
        constexpr Bytes low = all(0x7F);
        const Bytes difference = bytes ^ wanted;
        return ~(((difference & low) + low) | difference | low);
    }
    static Hits both(Hits some, Hits others) { return some & others; }
    static Hits specials(Bytes bytes)
    {
        const Hits marks = equal(bytes | all(1), all('\'')) | equal(bytes, all('"'));  // & and ' differ by 1
        const Hits angles = equal(bytes | all(2), all('>'));                           // < and > by 2
        return marks | angles | equal(bytes, all('\r')) | equal(bytes, all('\n'));
    }
    static std::uint64_t bits(Hits hits) { return (hits >> 7) * 0x0102040810204080U >> 56; }
};

#include "private/BlockKernels.inc"

}  // namespace portable

#if defined(__x86_64__)

namespace sse2 {

struct Lanes {
    using Bytes = __m128i;
    using Hits = __m128i;
    static constexpr std::size_t kSize = 16;

    static Bytes all(char byte) { return _mm_set1_epi8(byte); }
    static Bytes load(const char *bytes) { return _mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes)); }
    static Hits equal(Bytes bytes, Bytes wanted) { return _mm_cmpeq_epi8(bytes, wanted); }
    static Hits both(Hits some, Hits others) { return _mm_and_si128(some, others); }
    static Hits either(Hits some, Hits others) { return _mm_or_si128(some, others); }
    static Hits specials(Bytes bytes)
    {
        const Hits marks = either(equal(either(bytes, all(1)), all('\'')), equal(bytes, all('"')));
        const Hits angles = equal(either(bytes, all(2)), all('>'));
        return either(either(marks, angles), either(equal(bytes, all('\r')), equal(bytes, all('\n'))));
    }
    static std::uint64_t bits(Hits hits) { return static_cast<std::uint32_t>(_mm_movemask_epi8(hits)); }
};

#include "private/BlockKernels.inc"

}  // namespace sse2

// The low four bits of the seven specials differ: in a table of sixteen, looked up by them, stands the only
// special that a byte can be. (A byte above 127 looks up a zero, to which it is not equal.)
#define SPECIALS_BY_LOW_BITS -1, -1, '"', -1, -1, -1, '&', '\'', -1, -1, '\n', -1, '<', '\r', '>', -1

#pragma GCC push_options
#pragma GCC target("avx2,bmi,bmi2")
namespace avx2 {

struct Lanes {
    using Bytes = __m256i;
    using Hits = __m256i;
    static constexpr std::size_t kSize = 32;

    static Bytes all(char byte) { return _mm256_set1_epi8(byte); }
    static Bytes load(const char *bytes)
    {
        return _mm256_loadu_si256(reinterpret_cast<const __m256i *>(bytes));
    }
    static Hits equal(Bytes bytes, Bytes wanted) { return _mm256_cmpeq_epi8(bytes, wanted); }
    static Hits both(Hits some, Hits others) { return _mm256_and_si256(some, others); }
    static Hits specials(Bytes bytes)
    {
        const __m256i table = _mm256_setr_epi8(SPECIALS_BY_LOW_BITS, SPECIALS_BY_LOW_BITS);
        return equal(_mm256_shuffle_epi8(table, bytes), bytes);
    }
    static std::uint64_t bits(Hits hits) { return static_cast<std::uint32_t>(_mm256_movemask_epi8(hits)); }
};

#include "private/BlockKernels.inc"

}  // namespace avx2
#pragma GCC pop_options

#endif

/// Eight bytes at a time find nothing quicker than the library's search does.
constexpr BlockKernels kPortable = [] {
    BlockKernels set = portable::kernels("portable");
    set.findFirst = library::findFirst;
    set.findLast = library::findLast;
    set.findPairs = library::findPairs;
    return set;
}();

// The 512-bit instructions have been tried: they are no quicker here.
constexpr BlockKernels kAllKernels[] = {
#if defined(__x86_64__)
    avx2::kernels("avx2"),
    sse2::kernels("sse2"),
#endif
    kPortable,
};

}  // namespace

std::span<const BlockKernels> allBlockKernels()
{
#if defined(__x86_64__)
    static const bool wide = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi2");
    return std::span(kAllKernels).subspan(wide ? 0 : 1);
#else
    return kAllKernels;
#endif
}

const BlockKernels &blockKernels()
{
    static const BlockKernels &best = allBlockKernels().front();
    return best;
}

}  // namespace tarvik::xml
