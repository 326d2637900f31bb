#if defined(__x86_64__)

#include <immintrin.h>

#include <array>

#include "text/private/UTF8Kernels.h"

#define TARVIK_SSE4 __attribute__((target("sse4.2,popcnt")))
#define TARVIK_SSE4_PART __attribute__((target("sse4.2,popcnt"), always_inline)) inline
#define TARVIK_AVX2 __attribute__((target("avx2,bmi,bmi2,popcnt")))
#define TARVIK_AVX2_PART __attribute__((target("avx2,bmi,bmi2,popcnt"), always_inline)) inline

namespace tarvik::utf8 {
namespace {

using Shuffle = std::array<uint8_t, 16>;
constexpr uint8_t kNothing = 0x80;

/// Shuffles that bring the words whose bit is set in the index to the front.
constexpr auto kFront = [] {
    std::array<Shuffle, 256> table{};
    for (size_t bits = 0; bits < 256; bits++) {
        table[bits].fill(kNothing);
        size_t to = 0;
        for (size_t word = 0; word < 8; word++) {
            if ((bits >> word & 1) != 0) {
                table[bits][to++] = static_cast<uint8_t>(2 * word);
                table[bits][to++] = static_cast<uint8_t>(2 * word + 1);
            }
        }
    }
    return table;
}();

/// Shuffles that press together the UTF-8 of four elements of zero to three bytes: bit k of the index is bit
/// 0 of the length of element k, bit k + 4 its bit 1.
constexpr auto kPress = [] {
    std::array<Shuffle, 256> table{};
    for (size_t key = 0; key < 256; key++) {
        table[key].fill(kNothing);
        size_t to = 0;
        for (size_t element = 0; element < 4; element++) {
            const size_t length = (key >> element & 1) | (key >> (element + 4) & 1) << 1;
            for (size_t i = 3 - length; i < 3; i++)
                table[key][to++] = static_cast<uint8_t>(4 * element + i);
        }
    }
    return table;
}();

constexpr auto kPressedLength = [] {
    std::array<uint8_t, 256> table{};
    for (size_t key = 0; key < 256; key++) {
        for (size_t element = 0; element < 4; element++)
            table[key] =
                static_cast<uint8_t>(table[key] + ((key >> element & 1) | (key >> (element + 4) & 1) << 1));
    }
    return table;
}();

TARVIK_SSE4_PART __m128i load16(const void *from)
{
    return _mm_loadu_si128(static_cast<const __m128i *>(from));
}

TARVIK_SSE4_PART void store16(void *to, __m128i value)
{
    _mm_storeu_si128(static_cast<__m128i *>(to), value);
}

/// What one bit for each of 64 bytes can tell.
struct BlockMasks {
    uint64_t high;           ///< bytes from 0x80
    uint64_t continuations;  ///< bytes 0x80-0xBF
    uint64_t from3;          ///< bytes from 0xE0
    uint64_t from4;          ///< bytes from 0xF0
    uint64_t zeros;          ///< bytes 0
};

/// True when every continuation byte belongs to a lead and every lead has all of its own; those beyond the
/// block don't count.
inline bool isRegular(const BlockMasks &masks)
{
    const uint64_t from2 = masks.high & ~masks.continuations;
    return (from2 << 1 | masks.from3 << 2 | masks.from4 << 3) == masks.continuations;
}

TARVIK_SSE4_PART uint64_t signs(__m128i bytes) { return static_cast<uint32_t>(_mm_movemask_epi8(bytes)); }

TARVIK_SSE4_PART __m128i isFrom(uint8_t limit, __m128i bytes)
{
    return _mm_cmpeq_epi8(_mm_max_epu8(bytes, _mm_set1_epi8(static_cast<char>(limit))), bytes);
}

TARVIK_SSE4_PART uint64_t bytesFrom(uint8_t limit, __m128i bytes) { return signs(isFrom(limit, bytes)); }

TARVIK_SSE4_PART BlockMasks masksSSE4(const uint8_t *block)
{
    BlockMasks masks{};
    for (int at = 0; at < 64; at += 16) {
        const __m128i bytes = load16(block + at);
        masks.high |= signs(bytes) << at;
        masks.continuations |= signs(_mm_cmplt_epi8(bytes, _mm_set1_epi8(-0x40))) << at;
        masks.from3 |= bytesFrom(0xE0, bytes) << at;
        masks.from4 |= bytesFrom(0xF0, bytes) << at;
        masks.zeros |= signs(_mm_cmpeq_epi8(bytes, _mm_setzero_si128())) << at;
    }
    return masks;
}

TARVIK_AVX2_PART uint64_t signs(__m256i bytes) { return static_cast<uint32_t>(_mm256_movemask_epi8(bytes)); }

TARVIK_AVX2_PART uint64_t bytesFrom(uint8_t limit, __m256i bytes)
{
    return signs(
        _mm256_cmpeq_epi8(_mm256_max_epu8(bytes, _mm256_set1_epi8(static_cast<char>(limit))), bytes));
}

TARVIK_AVX2_PART BlockMasks masksAVX2(const uint8_t *block)
{
    BlockMasks masks{};
    for (int at = 0; at < 64; at += 32) {
        const __m256i bytes = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(block + at));
        masks.high |= signs(bytes) << at;
        masks.continuations |= signs(_mm256_cmpgt_epi8(_mm256_set1_epi8(-0x40), bytes)) << at;
        masks.from3 |= bytesFrom(0xE0, bytes) << at;
        masks.from4 |= bytesFrom(0xF0, bytes) << at;
        masks.zeros |= signs(_mm256_cmpeq_epi8(bytes, _mm256_setzero_si256())) << at;
    }
    return masks;
}

TARVIK_SSE4_PART void widen16(__m128i bytes, wchar_t *out)
{
    store16(out, _mm_cvtepu8_epi32(bytes));
    store16(out + 4, _mm_cvtepu8_epi32(_mm_srli_si128(bytes, 4)));
    store16(out + 8, _mm_cvtepu8_epi32(_mm_srli_si128(bytes, 8)));
    store16(out + 12, _mm_cvtepu8_epi32(_mm_srli_si128(bytes, 12)));
}

/// Every byte shifted left by `count` and masked.
template <int count>
TARVIK_SSE4_PART __m128i shiftedLeft(__m128i bytes, uint8_t mask)
{
    return _mm_and_si128(_mm_slli_epi16(bytes, count), _mm_set1_epi8(static_cast<char>(mask)));
}

/// Every byte shifted right by `count` and masked.
template <int count>
TARVIK_SSE4_PART __m128i shiftedRight(__m128i bytes, uint8_t mask)
{
    return _mm_and_si128(_mm_srli_epi16(bytes, count), _mm_set1_epi8(static_cast<char>(mask)));
}

TARVIK_SSE4_PART __m128i lowSix(__m128i bytes) { return _mm_and_si128(bytes, _mm_set1_epi8(0x3F)); }

/// Writes the elements of eight positions, of which those with a bit in `leads` count; `words` are their low
/// halves.
TARVIK_SSE4_PART wchar_t *writeFront(__m128i words, __m128i tops, uint64_t leads, wchar_t *out)
{
    const __m128i front = load16(kFront[leads & 0xFF].data());
    words = _mm_shuffle_epi8(words, front);
    tops = _mm_shuffle_epi8(tops, front);
    store16(out, _mm_unpacklo_epi16(words, tops));
    store16(out + 4, _mm_unpackhi_epi16(words, tops));
    return out + _mm_popcnt_u32(static_cast<uint32_t>(leads & 0xFF));
}

/// Decodes the characters that begin in a regular block, which is done where they stand: for every byte
/// position, as if a character began there, the low, middle and top byte of its code point are formed; the
/// positions where characters really begin are then brought to the front. Reads up to 67 bytes. Answers
/// false, with the cursor as it was, when a code point is 0.
TARVIK_SSE4_PART bool decodeRegular(const BlockMasks &masks, DecodeCursor &cursor)
{
    const uint64_t leads = ~masks.continuations;
    wchar_t *out = cursor.out;
    for (int at = 0; at < 64; at += 16) {
        const uint8_t *const in = cursor.in + at;
        const __m128i v0 = load16(in);
        const __m128i v1 = load16(in + 1);
        const __m128i from2 = isFrom(0xC0, v0);
        __m128i low = _mm_blendv_epi8(v0, _mm_or_si128(shiftedLeft<6>(v0, 0xC0), lowSix(v1)), from2);
        __m128i mid = _mm_and_si128(from2, shiftedRight<2>(v0, 0x07));
        __m128i top = _mm_setzero_si128();
        if (masks.from3 != 0) {
            const __m128i v2 = load16(in + 2);
            const __m128i from3 = isFrom(0xE0, v0);
            low = _mm_blendv_epi8(low, _mm_or_si128(shiftedLeft<6>(v1, 0xC0), lowSix(v2)), from3);
            mid = _mm_blendv_epi8(mid, _mm_or_si128(shiftedLeft<4>(v0, 0xF0), shiftedRight<2>(v1, 0x0F)),
                                  from3);
            if (masks.from4 != 0) {
                const __m128i v3 = load16(in + 3);
                const __m128i from4 = isFrom(0xF0, v0);
                low = _mm_blendv_epi8(low, _mm_or_si128(shiftedLeft<6>(v2, 0xC0), lowSix(v3)), from4);
                mid = _mm_blendv_epi8(mid, _mm_or_si128(shiftedLeft<4>(v1, 0xF0), shiftedRight<2>(v2, 0x0F)),
                                      from4);
                top = _mm_and_si128(from4, _mm_or_si128(shiftedLeft<2>(v0, 0x1C), shiftedRight<4>(v1, 0x03)));
            }
        }
        const __m128i any = _mm_or_si128(_mm_or_si128(low, mid), top);
        if ((signs(_mm_cmpeq_epi8(any, _mm_setzero_si128())) & leads >> at) != 0)
            return false;
        const __m128i zero = _mm_setzero_si128();
        out = writeFront(_mm_unpacklo_epi8(low, mid), _mm_unpacklo_epi8(top, zero), leads >> at, out);
        out = writeFront(_mm_unpackhi_epi8(low, mid), _mm_unpackhi_epi8(top, zero), leads >> (at + 8), out);
    }
    const uint64_t from2 = masks.high & ~masks.continuations;
    const uint64_t takenBeyond = from2 >> 63 | masks.from3 >> 62 | masks.from4 >> 61;
    cursor.in += 64 + _mm_popcnt_u64(takenBeyond);
    cursor.out = out;
    return true;
}

inline bool hasBlock(const DecodeCursor &cursor)
{
    return cursor.inEnd - cursor.in >= 67 && cursor.outEnd - cursor.out >= static_cast<ptrdiff_t>(kBlockRoom);
}

/// Encodes four elements; writes sixteen bytes of which the UTF-8 is the first.
TARVIK_SSE4_PART char *encodeFour(__m128i elements, char *out)
{
    const __m128i above1 = _mm_cmpgt_epi32(elements, _mm_set1_epi32(0x7F));
    const __m128i above2 = _mm_cmpgt_epi32(elements, _mm_set1_epi32(0x7FF));
    const __m128i above3 = _mm_cmpgt_epi32(elements, _mm_set1_epi32(0xFFFF));
    const __m128i first = _mm_srli_epi32(elements, 12);
    const __m128i second = _mm_and_si128(_mm_slli_epi32(elements, 2), _mm_set1_epi32(0x3F00));
    const __m128i third = _mm_and_si128(_mm_slli_epi32(elements, 16), _mm_set1_epi32(0x3F0000));
    const __m128i parts = _mm_or_si128(first, _mm_or_si128(second, third));
    const __m128i marks = _mm_blendv_epi8(_mm_set1_epi32(0x80C000), _mm_set1_epi32(0x8080E0), above2);
    const __m128i plain = _mm_and_si128(_mm_slli_epi32(elements, 16), _mm_set1_epi32(0x7F0000));
    const __m128i bytes = _mm_blendv_epi8(plain, _mm_or_si128(parts, marks), above1);
    // Lengths: 1, 2, 3 and, for what is dropped, 0.
    const __m128i bit0 =
        _mm_or_si128(_mm_andnot_si128(above1, _mm_set1_epi32(-1)), _mm_andnot_si128(above3, above2));
    const __m128i bit1 = _mm_andnot_si128(above3, above1);
    const int key = _mm_movemask_ps(_mm_castsi128_ps(bit0)) | _mm_movemask_ps(_mm_castsi128_ps(bit1)) << 4;
    store16(out, _mm_shuffle_epi8(bytes, load16(kPress[static_cast<size_t>(key)].data())));
    return out + kPressedLength[static_cast<size_t>(key)];
}

}  // namespace

TARVIK_SSE4 void decodeSSE4(DecodeCursor &cursor)
{
    while (hasBlock(cursor)) {
        const BlockMasks masks = masksSSE4(cursor.in);
        if ((masks.high | masks.zeros) == 0) {
            for (int at = 0; at < 64; at += 16)
                widen16(load16(cursor.in + at), cursor.out + at);
            cursor.in += 64;
            cursor.out += 64;
        } else if (!isRegular(masks) || !decodeRegular(masks, cursor)) {
            return;
        }
    }
}

TARVIK_AVX2 void decodeAVX2(DecodeCursor &cursor)
{
    while (hasBlock(cursor)) {
        const BlockMasks masks = masksAVX2(cursor.in);
        if ((masks.high | masks.zeros) == 0) {
            for (int at = 0; at < 64; at += 8) {
                const __m128i bytes = _mm_loadl_epi64(reinterpret_cast<const __m128i *>(cursor.in + at));
                _mm256_storeu_si256(reinterpret_cast<__m256i *>(cursor.out + at),
                                    _mm256_cvtepu8_epi32(bytes));
            }
            cursor.in += 64;
            cursor.out += 64;
        } else if (!isRegular(masks) || !decodeRegular(masks, cursor)) {
            return;
        }
    }
}

TARVIK_SSE4 void encodeSSE4(EncodeCursor &cursor)
{
    const wchar_t *in = cursor.in;
    char *out = cursor.out;
    while (cursor.inEnd - in >= 16 && cursor.outEnd - out >= static_cast<ptrdiff_t>(kBlockRoom)) {
        const __m128i e0 = load16(in);
        const __m128i e1 = load16(in + 4);
        const __m128i e2 = load16(in + 8);
        const __m128i e3 = load16(in + 12);
        const __m128i all = _mm_or_si128(_mm_or_si128(e0, e1), _mm_or_si128(e2, e3));
        if (_mm_testz_si128(all, _mm_set1_epi32(~0x7F)) != 0) {
            store16(out, _mm_packus_epi16(_mm_packus_epi32(e0, e1), _mm_packus_epi32(e2, e3)));
            out += 16;
        } else {
            out = encodeFour(e3, encodeFour(e2, encodeFour(e1, encodeFour(e0, out))));
        }
        in += 16;
    }
    cursor.in = in;
    cursor.out = out;
}

TARVIK_AVX2 void encodeAVX2(EncodeCursor &cursor)
{
    const wchar_t *in = cursor.in;
    char *out = cursor.out;
    while (cursor.inEnd - in >= 32 && cursor.outEnd - out >= static_cast<ptrdiff_t>(2 * kBlockRoom)) {
        const auto *from = reinterpret_cast<const __m256i *>(in);
        const __m256i e0 = _mm256_loadu_si256(from);
        const __m256i e1 = _mm256_loadu_si256(from + 1);
        const __m256i e2 = _mm256_loadu_si256(from + 2);
        const __m256i e3 = _mm256_loadu_si256(from + 3);
        const __m256i all = _mm256_or_si256(_mm256_or_si256(e0, e1), _mm256_or_si256(e2, e3));
        if (_mm256_testz_si256(all, _mm256_set1_epi32(~0x7F)) != 0) {
            // Packing works on each half of a register by itself: put the fours back in order afterwards.
            const __m256i packed =
                _mm256_packus_epi16(_mm256_packus_epi32(e0, e1), _mm256_packus_epi32(e2, e3));
            const __m256i order = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
            _mm256_storeu_si256(reinterpret_cast<__m256i *>(out), _mm256_permutevar8x32_epi32(packed, order));
            out += 32;
        } else {
            for (int at = 0; at < 32; at += 4)
                out = encodeFour(load16(in + at), out);
        }
        in += 32;
    }
    cursor.in = in;
    cursor.out = out;
    encodeSSE4(cursor);
}

}  // namespace tarvik::utf8

#endif
