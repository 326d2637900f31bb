#if defined(__x86_64__)

#include <immintrin.h>

#include <algorithm>

#include "text/private/UTF8Kernels.h"

// The compiler takes the "undefined" vectors of its own intrinsics for a mistake
// (https://gcc.gnu.org/PR105593).
#ifndef __clang__
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#define TARVIK_AVX512                                                                                        \
    __attribute__((target("avx512f,avx512bw,avx512dq,avx512vl,avx512vbmi,avx512vbmi2,gfni,bmi,bmi2,"         \
                          "popcnt")))

namespace tarvik::utf8 {
namespace {

/// The matrix by which an affine transformation shifts every byte left by `count` (right when negative) and
/// masks it.
constexpr int64_t byteShift(int count, uint8_t mask)
{
    uint64_t matrix = 0;
    for (int bit = 0; bit < 8; bit++) {
        const int source = bit - count;
        if ((mask >> bit & 1) != 0 && source >= 0 && source < 8)
            matrix |= uint64_t{1} << source << 8 * (7 - bit);
    }
    return static_cast<int64_t>(matrix);
}

/// Every byte shifted (left by `count`, or right when it is negative) and masked.
template <int count, uint8_t mask>
TARVIK_AVX512 inline __m512i shifted(__m512i bytes)
{
    return _mm512_gf2p8affine_epi64_epi8(bytes, _mm512_set1_epi64(byteShift(count, mask)), 0);
}

/// The same for the bytes of `where`; the others become 0.
template <int count, uint8_t mask>
TARVIK_AVX512 inline __m512i shifted(__m512i bytes, __mmask64 where)
{
    return _mm512_maskz_gf2p8affine_epi64_epi8(where, bytes, _mm512_set1_epi64(byteShift(count, mask)), 0);
}

/// `a` and, below it, the low six bits of `b`.
TARVIK_AVX512 inline __m512i overLowSix(__m512i a, __m512i b)
{
    return _mm512_ternarylogic_epi64(a, b, _mm512_set1_epi8(0x3F), 0xF8);
}

constexpr uint64_t lowBits(size_t count) { return count >= 64 ? ~uint64_t{0} : (uint64_t{1} << count) - 1; }

/// Indexes that place byte k of one vector and byte k of another in element k, for the first sixteen
/// elements.
TARVIK_AVX512 inline __m512i elementIndexes()
{
    const __m512i k = _mm512_set_epi32(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0);
    return _mm512_add_epi32(_mm512_mullo_epi32(k, _mm512_set1_epi32(0x00010101)),
                            _mm512_set1_epi32(0x00004000));
}

/// The 64 bytes from in[skip] on, of which `left` - `skip` can be read; the others are zeros.
TARVIK_AVX512 inline __m512i bytesAt(const uint8_t *in, size_t left, size_t skip)
{
    if (left >= 64 + skip)
        return _mm512_loadu_si512(in + skip);
    return _mm512_maskz_loadu_epi8(lowBits(left - std::min(left, skip)), in + std::min(left, skip));
}

TARVIK_AVX512 inline void widen(__m512i bytes, wchar_t *out)
{
    _mm512_storeu_si512(out, _mm512_cvtepu8_epi32(_mm512_castsi512_si128(bytes)));
    _mm512_storeu_si512(out + 16, _mm512_cvtepu8_epi32(_mm512_extracti32x4_epi32(bytes, 1)));
    _mm512_storeu_si512(out + 32, _mm512_cvtepu8_epi32(_mm512_extracti32x4_epi32(bytes, 2)));
    _mm512_storeu_si512(out + 48, _mm512_cvtepu8_epi32(_mm512_extracti32x4_epi32(bytes, 3)));
}

/// True when the 64 bytes at `in` are all in 1-127: as signed bytes, those above 0.
TARVIK_AVX512 inline bool isPlainASCII(const uint8_t *in)
{
    return _mm512_cmpgt_epi8_mask(_mm512_loadu_si512(in), _mm512_setzero_si512()) == ~uint64_t{0};
}

/// The code points of up to 64 characters, taken apart into bytes.
struct Planes {
    __m512i low, mid, top;
};

/// Writes the sixteen elements that `group` chooses.
TARVIK_AVX512 inline void writeSixteen(const Planes &planes, __m512i group, bool hasTops, wchar_t *out)
{
    __m512i elements = _mm512_maskz_permutex2var_epi8(0x3333333333333333, planes.low, group, planes.mid);
    if (hasTops)
        elements = _mm512_mask_permutexvar_epi8(elements, 0x4444444444444444, group, planes.top);
    _mm512_storeu_si512(out, elements);
}

/// Decodes a long run of ASCII with stores that go around the caches. Returns how many bytes (and elements)
/// it took.
TARVIK_AVX512 inline size_t streamASCII(const uint8_t *in, size_t inCount, wchar_t *out, size_t room)
{
    const size_t usable = std::min(inCount, room);
    // Only a run that fills several cache lines is worth it: a line that is written in part costs more than
    // it saves.
    if (usable < 320 || !isPlainASCII(in) || !isPlainASCII(in + 64) || !isPlainASCII(in + 128) ||
        !isPlainASCII(in + 192))
        return 0;
    size_t at = (0 - reinterpret_cast<uintptr_t>(out) % 64 / sizeof(wchar_t)) % 16;
    _mm512_storeu_si512(out, _mm512_cvtepu8_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i *>(in))));
    for (; usable - at >= 64 && isPlainASCII(in + at); at += 64) {
        for (size_t group = 0; group < 64; group += 16) {
            const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i *>(in + at + group));
            _mm512_stream_si512(reinterpret_cast<__m512i *>(out + at + group), _mm512_cvtepu8_epi32(bytes));
        }
    }
    return at;
}

}  // namespace

// Each block of 64 bytes is decoded where it stands: for every byte position, as if a character began there,
// the low, high and top byte of its code point are formed from the four bytes from there on, in the way that
// the lead byte asks for. The positions where characters really begin are then pressed together, and low,
// high and top bytes merged to elements.
TARVIK_AVX512 void decodeAVX512(DecodeCursor &cursor)
{
    const uint8_t *const in = cursor.in;
    const size_t count = static_cast<size_t>(cursor.inEnd - in);
    const size_t room = static_cast<size_t>(cursor.outEnd - cursor.out);
    wchar_t *const out = cursor.out;
    const __m512i group0 = elementIndexes();
    const __m512i group1 = _mm512_add_epi8(group0, _mm512_set1_epi8(16));
    const __m512i group2 = _mm512_add_epi8(group0, _mm512_set1_epi8(32));
    const __m512i group3 = _mm512_add_epi8(group0, _mm512_set1_epi8(48));

    size_t at = 0;
    size_t done = 0;
    uint64_t taken = 0;  // bytes at the head of the block that belong to a character of the one before
    bool streamed = false;
    while (at < count && room - done >= kBlockRoom) {
        const size_t left = count - at;
        const uint64_t inside = lowBits(left);
        const __m512i v0 = bytesAt(in + at, left, 0);

        const uint64_t high = _mm512_movepi8_mask(v0);
        if ((high | taken) == 0) {
            if (_mm512_mask_test_epi8_mask(inside, v0, v0) != inside)
                break;
            if (cursor.streams) {
                const size_t run = streamASCII(in + at, left, out + done, room - done);
                streamed = streamed || run != 0;
                at += run;
                done += run;
                if (run != 0)
                    continue;
            }
            widen(v0, out + done);
            done += std::min<size_t>(left, 64);
            at += 64;
            continue;
        }

        const uint64_t continuations = _mm512_cmplt_epi8_mask(v0, _mm512_set1_epi8(-0x40));
        const uint64_t from2 = high & ~continuations;
        const uint64_t from3 = _mm512_cmpge_epu8_mask(v0, _mm512_set1_epi8(static_cast<char>(0xE0)));
        const uint64_t from4 = _mm512_cmpge_epu8_mask(v0, _mm512_set1_epi8(static_cast<char>(0xF0)));
        const uint64_t expected = from2 << 1 | from3 << 2 | from4 << 3 | taken;
        if (((continuations ^ expected) & inside) != 0)
            break;
        const uint64_t leads = ~continuations & inside;

        __m512i low = v0;
        __m512i mid = _mm512_setzero_si512();
        __m512i top = _mm512_setzero_si512();
        const __m512i v1 = bytesAt(in + at, left, 1);
        const uint64_t just2 = from2 & ~from3;
        const uint64_t just3 = from3 & ~from4;
        if (just2 != 0) {
            low = _mm512_mask_mov_epi8(low, just2, overLowSix(shifted<6, 0xC0>(v0), v1));
            mid = shifted<-2, 0x07>(v0, just2);
        }
        if (just3 != 0) {
            const __m512i v2 = bytesAt(in + at, left, 2);
            low = _mm512_mask_mov_epi8(low, just3, overLowSix(shifted<6, 0xC0>(v1), v2));
            mid = _mm512_mask_mov_epi8(mid, just3,
                                       _mm512_or_si512(shifted<4, 0xF0>(v0), shifted<-2, 0x0F>(v1)));
        }
        if (from4 != 0) {
            const __m512i v2 = bytesAt(in + at, left, 2);
            const __m512i v3 = bytesAt(in + at, left, 3);
            low = _mm512_mask_mov_epi8(low, from4, overLowSix(shifted<6, 0xC0>(v2), v3));
            mid = _mm512_mask_mov_epi8(mid, from4,
                                       _mm512_or_si512(shifted<4, 0xF0>(v1), shifted<-2, 0x0F>(v2)));
            top = _mm512_or_si512(shifted<2, 0x1C>(v0, from4), shifted<-4, 0x03>(v1, from4));
        }
        // A code point 0 has a low byte 0, but so have one in 256 others.
        const uint64_t suspects = _mm512_mask_testn_epi8_mask(leads, low, low);
        if (suspects != 0) [[unlikely]] {
            const __m512i above = _mm512_or_si512(mid, top);
            if (_mm512_mask_testn_epi8_mask(suspects, above, above) != 0)
                break;
        }

        // No store that nobody needs, since they lie across cache lines.
        const size_t characters = static_cast<size_t>(_mm_popcnt_u64(leads));
        const Planes pressed{_mm512_maskz_compress_epi8(leads, low), _mm512_maskz_compress_epi8(leads, mid),
                             from4 != 0 ? _mm512_maskz_compress_epi8(leads, top) : top};
        writeSixteen(pressed, group0, from4 != 0, out + done);
        if (characters > 16)
            writeSixteen(pressed, group1, from4 != 0, out + done + 16);
        if (characters > 32)
            writeSixteen(pressed, group2, from4 != 0, out + done + 32);
        if (characters > 48)
            writeSixteen(pressed, group3, from4 != 0, out + done + 48);
        done += characters;
        at += 64;
        taken = from2 >> 63 | from3 >> 62 | from4 >> 61;
    }
    if (streamed)
        _mm_sfence();
    cursor.in = in + std::min(count, at + static_cast<size_t>(_mm_popcnt_u64(taken)));
    cursor.out = out + done;
}

namespace {

/// Encodes 32 elements below 0x800, given as words. Writes 64 bytes, of which those before the result count.
TARVIK_AVX512 inline char *encodeWords(__m512i words, char *out)
{
    const __m512i last = _mm512_slli_epi16(words, 8);
    const __m512i first = _mm512_srli_epi16(words, 6);
    const __m512i parts = _mm512_ternarylogic_epi64(first, last, _mm512_set1_epi16(0x3F00), 0xF8);
    const __m512i marked = _mm512_or_si512(parts, _mm512_set1_epi16(static_cast<int16_t>(0x80C0)));
    const __mmask32 one = _mm512_cmplt_epu16_mask(words, _mm512_set1_epi16(0x80));
    const __m512i bytes = _mm512_mask_mov_epi16(marked, one, last);
    const uint64_t kept = _mm512_movepi8_mask(bytes) | 0xAAAAAAAAAAAAAAAA;
    _mm512_storeu_si512(out, _mm512_maskz_compress_epi8(kept, bytes));
    return out + _mm_popcnt_u64(kept);
}

/// Encodes the elements of `inside`, whatever they are. Writes 64 bytes, of which those before the result
/// count.
TARVIK_AVX512 inline char *encodeAny(__m512i elements, __mmask16 inside, char *out)
{
    // In every element: bits 12-19, 6-13 and 0-7.
    const __m512i parts = _mm512_multishift_epi64_epi8(_mm512_set1_epi64(0x2020262C0000060C), elements);
    const __mmask16 one = _mm512_cmplt_epi32_mask(elements, _mm512_set1_epi32(0x80));
    const __mmask16 two = _mm512_cmplt_epi32_mask(elements, _mm512_set1_epi32(0x800));
    const __mmask16 written = _mm512_mask_cmple_epi32_mask(inside, elements, _mm512_set1_epi32(0xFFFF));
    const __m512i masks =
        _mm512_mask_mov_epi32(_mm512_set1_epi32(0x003F3F0F), one, _mm512_set1_epi32(0x007F0000));
    __m512i marks = _mm512_mask_mov_epi32(_mm512_set1_epi32(0x008080E0), two, _mm512_set1_epi32(0x0080C000));
    marks = _mm512_mask_mov_epi32(marks, one, _mm512_setzero_si512());
    const __m512i bytes = _mm512_ternarylogic_epi32(marks, parts, masks, 0xF8);
    uint64_t kept = _mm512_movepi8_mask(marks) | 0x4444444444444444;
    if (written != 0xFFFF)
        kept &= _mm512_movepi8_mask(_mm512_movm_epi32(written));
    _mm512_storeu_si512(out, _mm512_maskz_compress_epi8(kept, bytes));
    return out + _mm_popcnt_u64(kept);
}

/// Indexes of the lowest byte of every element of two vectors side by side, for the first half of the result.
TARVIK_AVX512 inline __m512i lowByteIndexes()
{
    const __m512i k = _mm512_set_epi32(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0);
    return _mm512_add_epi32(_mm512_mullo_epi32(k, _mm512_set1_epi32(0x10101010)),
                            _mm512_set1_epi32(0x0C080400));
}

/// Indexes of the low word of every element of two vectors side by side.
TARVIK_AVX512 inline __m512i lowWordIndexes()
{
    const __m512i k = _mm512_set_epi32(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0);
    return _mm512_add_epi32(_mm512_mullo_epi32(k, _mm512_set1_epi32(0x00040004)),
                            _mm512_set1_epi32(0x00020000));
}

}  // namespace

TARVIK_AVX512 void encodeAVX512(EncodeCursor &cursor)
{
    const wchar_t *in = cursor.in;
    char *out = cursor.out;
    const __m512i lowBytes = lowByteIndexes();
    const __m512i lowWords = lowWordIndexes();
    const auto hasRoom = [&](size_t blocks) {
        return cursor.outEnd - out >= static_cast<ptrdiff_t>(blocks * kBlockRoom);
    };

    while (cursor.inEnd - in >= 64 && hasRoom(4)) {
        const __m512i e0 = _mm512_loadu_si512(in);
        const __m512i e1 = _mm512_loadu_si512(in + 16);
        const __m512i e2 = _mm512_loadu_si512(in + 32);
        const __m512i e3 = _mm512_loadu_si512(in + 48);
        const __m512i all = _mm512_or_si512(_mm512_or_si512(e0, e1), _mm512_or_si512(e2, e3));
        if (_mm512_cmpge_epu32_mask(all, _mm512_set1_epi32(0x80)) == 0) {
            const __m512i front = _mm512_permutex2var_epi8(e0, lowBytes, e1);
            const __m512i back = _mm512_permutex2var_epi8(e2, lowBytes, e3);
            _mm512_storeu_si512(out, _mm512_inserti64x4(front, _mm512_castsi512_si256(back), 1));
            out += 64;
        } else if (_mm512_cmpge_epu32_mask(all, _mm512_set1_epi32(0x800)) == 0) {
            out = encodeWords(_mm512_permutex2var_epi16(e0, lowWords, e1), out);
            out = encodeWords(_mm512_permutex2var_epi16(e2, lowWords, e3), out);
        } else {
            out = encodeAny(e0, 0xFFFF, out);
            out = encodeAny(e1, 0xFFFF, out);
            out = encodeAny(e2, 0xFFFF, out);
            out = encodeAny(e3, 0xFFFF, out);
        }
        in += 64;
    }
    while (in != cursor.inEnd && hasRoom(1)) {
        const size_t count = std::min<size_t>(static_cast<size_t>(cursor.inEnd - in), 16);
        const auto inside = static_cast<__mmask16>(lowBits(count));
        out = encodeAny(_mm512_maskz_loadu_epi32(inside, in), inside, out);
        in += count;
    }
    cursor.in = in;
    cursor.out = out;
}

}  // namespace tarvik::utf8

#endif
