#if defined(__x86_64__)

#define CRC32_TARGET "pclmul,vpclmulqdq,avx512f,avx512bw,avx512vl"
#include <Tarvik/crypto/private/CRC32Folding.h>

namespace tarvik::crc32 {

namespace {

constexpr int kXorOfThree = 0x96;

struct Vector512 {
    static constexpr size_t kSize = 64;

    __m512i value;

    static CRC32_INLINE __m512i multipliers(Multiplier by)
    {
        return _mm512_set4_epi64(static_cast<int64_t>(by.second), static_cast<int64_t>(by.first),
                                 static_cast<int64_t>(by.second), static_cast<int64_t>(by.first));
    }

    static CRC32_INLINE Vector512 load(const uint8_t *data) { return {_mm512_loadu_si512(data)}; }

    CRC32_INLINE Vector512 foldedOnto(Vector512 next, __m512i by) const
    {
        return {_mm512_ternarylogic_epi64(_mm512_clmulepi64_epi128(value, by, 0x00),
                                          _mm512_clmulepi64_epi128(value, by, 0x11), next.value,
                                          kXorOfThree)};
    }

    /// Reads the bytes of the message only: the masked ones before it are never touched.
    static CRC32_INLINE Vector512 first(const uint8_t *&data, size_t length)
    {
        const size_t filled = filledOfFirst<kSize>(length), empty = kSize - filled;
        const __m512i bytes = _mm512_maskz_loadu_epi8(~uint64_t{0} << empty, data - empty);
        data += filled;
        return {_mm512_xor_si512(bytes, load(preset<kSize>(filled)).value)};
    }

    /// The first three lanes folded onto the last, side by side.
    CRC32_INLINE Vector128 lastLane() const
    {
        alignas(64) static constexpr Multiplier kByLane[4] = {
            kMultiplier<48>, kMultiplier<32>, kMultiplier<16>, {0, 0}};
        const __m512i by = _mm512_load_si512(kByLane);
        const __m512i last = _mm512_maskz_mov_epi64(0xC0, value);
        const __m512i lanes =
            _mm512_ternarylogic_epi64(_mm512_clmulepi64_epi128(value, by, 0x00),
                                      _mm512_clmulepi64_epi128(value, by, 0x11), last, kXorOfThree);
        const __m256i two = _mm256_xor_si256(_mm512_maskz_extracti64x4_epi64(0xF, lanes, 0),
                                             _mm512_maskz_extracti64x4_epi64(0xF, lanes, 1));
        return {_mm_xor_si128(_mm256_castsi256_si128(two), _mm256_extracti128_si256(two, 1))};
    }
};

/// The only lane of a message of 4 to 16 bytes.
CRC32_INLINE Vector128 onlyLane(const uint8_t *data, size_t length)
{
    const size_t empty = Vector128::kSize - length;
    const __m128i bytes = _mm_maskz_loadu_epi8(static_cast<__mmask16>(0xFFFF << empty), data - empty);
    return {_mm_xor_si128(bytes, Vector128::load(preset<Vector128::kSize>(length)).value)};
}

}  // namespace

__attribute__((target(CRC32_TARGET))) uint32_t checksumByFolding512(const uint8_t *data, size_t length)
{
    if (length <= Vector128::kSize)
        return complementedRemainder(onlyLane(data, length));
    return checksumByFolding<Vector512>(data, length);
}

}  // namespace tarvik::crc32

#endif
