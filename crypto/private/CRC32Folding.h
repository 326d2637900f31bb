#pragma once

#include <Tarvik/crypto/private/CRC32Field.h>
#include <Tarvik/crypto/private/CRC32Kernels.h>

#include <immintrin.h>

#include <cstring>

/// The check by carry-less multiplication, for one width of the multiplier.
///
/// A message is a polynomial, and the check is its remainder modulo P. A lane of 128 bits that stands `d`
/// bytes before another is folded onto it by multiplying its halves with x^(8d+64) mod P and x^(8d) mod P:
/// the remainder stays what it was. So the whole message is folded onto its last lane, many lanes at a time,
/// and the last lane is then reduced to 32 bits (Gopal et al., "Fast CRC Computation for Generic Polynomials
/// Using PCLMULQDQ Instruction", 2009).
///
/// Bytes of zero before a message change nothing when the register starts with zero. The message is therefore
/// padded in front to whole vectors, in a register, and nothing is left over at its end. The preset of ones
/// is added to the first four bytes; when these do not all stand in the first vector, four bytes with the
/// same effect are put before the message.
///
/// A file that includes this header defines CRC32_TARGET, the processor's features that its kernel needs,
/// first.
#define CRC32_INLINE __attribute__((target(CRC32_TARGET), always_inline)) inline

namespace tarvik::crc32 {
namespace {

/// What the halves of a lane are multiplied with to move it on. A product of two reflected words of 64 bits
/// is one place short of the lane's 128, hence the exponents that are smaller by one.
struct Multiplier {
    uint64_t first, second;
};

template <size_t bytes>
constexpr Multiplier kMultiplier{uint64_t{powerOfX(8 * bytes + 63)} << 32,
                                 uint64_t{powerOfX(8 * bytes - 1)} << 32};

/// floor(x^95 / P), reflected in 64 bits.
constexpr uint64_t quotientOfX95()
{
    uint64_t quotient = 0;
    uint32_t remainder = powerOfX(31);
    for (int bit = 0; bit < 64; ++bit) {
        quotient |= uint64_t{remainder & 1} << bit;
        remainder = timesX(remainder);
    }
    return quotient;
}

/// The word that leaves a register of ones when the register before it is zero.
constexpr uint32_t wordForPreset()
{
    uint32_t word = ~uint32_t{0};
    for (int bit = 0; bit < 32; ++bit)
        word = word >> 31 ? (word ^ kPolynomial) << 1 | 1 : word << 1;
    return word;
}

/// What is added to the first vector, the last `filled` bytes of which begin the message: read at kWidest -
/// size + filled.
constexpr size_t kWidest = 64;

struct Window {
    uint8_t bytes[2 * kWidest];
};

constexpr Window window(uint32_t word, size_t offset)
{
    Window made{};
    for (size_t i = 0; i < 4; ++i)
        made.bytes[offset + i] = static_cast<uint8_t>(word >> 8 * i);
    return made;
}

alignas(64) constexpr Window kOnesInside = window(~uint32_t{0}, kWidest);
alignas(64) constexpr Window kOnesBefore = window(wordForPreset(), kWidest - 4);

template <size_t size>
inline const uint8_t *preset(size_t filled)
{
    return (filled >= 4 ? kOnesInside : kOnesBefore).bytes + kWidest - size + filled;
}

/// How many bytes of the message stand in its first vector.
template <size_t size>
inline size_t filledOfFirst(size_t length)
{
    return (length - 1) % size + 1;
}

/// One lane.
struct Vector128 {
    static constexpr size_t kSize = 16;

    __m128i value;

    static CRC32_INLINE __m128i multipliers(Multiplier by)
    {
        return _mm_set_epi64x(static_cast<int64_t>(by.second), static_cast<int64_t>(by.first));
    }

    static CRC32_INLINE Vector128 load(const uint8_t *data)
    {
        return {_mm_loadu_si128(reinterpret_cast<const __m128i *>(data))};
    }

    CRC32_INLINE Vector128 foldedOnto(Vector128 next, __m128i by) const
    {
        return {_mm_xor_si128(_mm_xor_si128(_mm_clmulepi64_si128(value, by, 0x00), next.value),
                              _mm_clmulepi64_si128(value, by, 0x11))};
    }

    /// The first vector of a message of at least 16 bytes.
    static CRC32_INLINE Vector128 first(const uint8_t *&data, size_t length)
    {
        static constexpr uint8_t kMoves[32] = {
            0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80,
            0,    1,    2,    3,    4,    5,    6,    7,    8,    9,    10,   11,   12,   13,   14,   15};
        const size_t filled = filledOfFirst<kSize>(length);
        const __m128i moved = _mm_shuffle_epi8(load(data).value, load(kMoves + filled).value);
        data += filled;
        return {_mm_xor_si128(moved, load(preset<kSize>(filled)).value)};
    }

    /// The only vector of a message of 4 to 15 bytes.
    static CRC32_INLINE Vector128 only(const uint8_t *data, size_t length)
    {
        unsigned __int128 bytes;
        if (length >= 8) {
            uint64_t begin, end;
            std::memcpy(&begin, data, 8);
            std::memcpy(&end, data + length - 8, 8);
            bytes = begin | static_cast<unsigned __int128>(end) << 8 * (length - 8);
        } else {
            uint32_t begin, end;
            std::memcpy(&begin, data, 4);
            std::memcpy(&end, data + length - 4, 4);
            bytes = begin | uint64_t{end} << 8 * (length - 4);
        }
        bytes = (bytes ^ 0xFFFFFFFFu) << 8 * (16 - length);
        return {_mm_set_epi64x(static_cast<int64_t>(bytes >> 64), static_cast<int64_t>(bytes))};
    }

    CRC32_INLINE Vector128 lastLane() const { return *this; }
};

/// The check of a message that is folded onto this lane: its remainder after multiplication with x^32
/// (Barrett).
CRC32_INLINE uint32_t complementedRemainder(Vector128 lane)
{
    constexpr int64_t kX95 = powerOfX(95), kQuotient = static_cast<int64_t>(quotientOfX95()),
                      kModulus = int64_t{kPolynomial} << 1;
    const __m128i by = _mm_set_epi64x(kX95, 0);
    const __m128i barrett = _mm_set_epi64x(kModulus, kQuotient);
    const __m128i folded =
        _mm_xor_si128(_mm_clmulepi64_si128(lane.value, by, 0x10), _mm_srli_si128(lane.value, 8));
    const __m128i quotient = _mm_clmulepi64_si128(folded, barrett, 0x00);
    const __m128i multiple = _mm_clmulepi64_si128(quotient, barrett, 0x10);
    return ~static_cast<uint32_t>(_mm_extract_epi32(_mm_xor_si128(folded, multiple), 2));
}

/// Folds vectors onto the `count` accumulators while there are enough, then halves their number, down to one.
template <class Vector, int count>
CRC32_INLINE Vector foldedToOne(Vector *sums, const uint8_t *data, const uint8_t *end)
{
    constexpr size_t kStride = count * Vector::kSize;
    // Measured: a hint far ahead gains a sixth on what the last cache holds, and costs a tenth on what it
    // can't.
    constexpr ptrdiff_t kLargestCached = 32 << 20, kFarAhead = 8192;
    const ptrdiff_t ahead = end - data <= kLargestCached ? kFarAhead : 0;

    const auto byStride = Vector::multipliers(kMultiplier<kStride>);
    while (static_cast<size_t>(end - data) >= kStride) {
#pragma GCC unroll 8
        for (int i = 0; i < count; ++i)
            sums[i] = sums[i].foldedOnto(Vector::load(data + i * Vector::kSize), byStride);
        if constexpr (count == 8) {
            for (size_t line = 0; line < kStride; line += 64)
                _mm_prefetch(reinterpret_cast<const char *>(data) + ahead + line, _MM_HINT_T0);
        }
        data += kStride;
    }
    if constexpr (count == 1) {
        return sums[0];
    } else {
        const auto byHalf = Vector::multipliers(kMultiplier<kStride / 2>);
#pragma GCC unroll 4
        for (int i = 0; i < count / 2; ++i)
            sums[i] = sums[i].foldedOnto(sums[i + count / 2], byHalf);
        return foldedToOne<Vector, count / 2>(sums, data, end);
    }
}

template <class Vector, int count>
CRC32_INLINE uint32_t checksumFrom(Vector first, const uint8_t *data, const uint8_t *end)
{
    Vector sums[count] = {first};
#pragma GCC unroll 8
    for (int i = 1; i < count; ++i, data += Vector::kSize)
        sums[i] = Vector::load(data);
    return complementedRemainder(foldedToOne<Vector, count>(sums, data, end).lastLane());
}

/// The check of a message that fills one vector at least.
template <class Vector>
CRC32_INLINE uint32_t checksumByFolding(const uint8_t *data, size_t length)
{
    const uint8_t *end = data + length;
    const Vector first = Vector::first(data, length);
    const size_t vectors = static_cast<size_t>(end - data) / Vector::kSize + 1;
    if (vectors >= 8)
        return checksumFrom<Vector, 8>(first, data, end);
    if (vectors >= 4)
        return checksumFrom<Vector, 4>(first, data, end);
    if (vectors >= 2)
        return checksumFrom<Vector, 2>(first, data, end);
    return checksumFrom<Vector, 1>(first, data, end);
}

}  // namespace
}  // namespace tarvik::crc32
