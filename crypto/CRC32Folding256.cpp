#if defined(__x86_64__)

#define CRC32_TARGET "pclmul,vpclmulqdq,avx2"
#include <Tarvik/crypto/private/CRC32Folding.h>

namespace tarvik::crc32 {

namespace {

struct Vector256 {
    static constexpr size_t kSize = 32;

    __m256i value;

    static CRC32_INLINE __m256i multipliers(Multiplier by)
    {
        return _mm256_broadcastsi128_si256(Vector128::multipliers(by));
    }

    static CRC32_INLINE Vector256 load(const uint8_t *data)
    {
        return {_mm256_loadu_si256(reinterpret_cast<const __m256i *>(data))};
    }

    CRC32_INLINE Vector256 foldedOnto(Vector256 next, __m256i by) const
    {
        return {_mm256_xor_si256(_mm256_xor_si256(_mm256_clmulepi64_epi128(value, by, 0x00), next.value),
                                 _mm256_clmulepi64_epi128(value, by, 0x11))};
    }

    /// The first lane, and the second one when the number of lanes is even.
    static CRC32_INLINE Vector256 first(const uint8_t *&data, size_t length)
    {
        const __m128i lane = Vector128::first(data, length).value;
        if ((length + 15) / 16 % 2)
            return {_mm256_inserti128_si256(_mm256_setzero_si256(), lane, 1)};
        const __m128i next = Vector128::load(data).value;
        data += Vector128::kSize;
        return {_mm256_set_m128i(next, lane)};
    }

    CRC32_INLINE Vector128 lastLane() const
    {
        const Vector128 first{_mm256_castsi256_si128(value)}, last{_mm256_extracti128_si256(value, 1)};
        return first.foldedOnto(last, Vector128::multipliers(kMultiplier<16>));
    }
};

}  // namespace

__attribute__((target(CRC32_TARGET))) uint32_t checksumByFolding256(const uint8_t *data, size_t length)
{
    if (length < Vector128::kSize)
        return complementedRemainder(Vector128::only(data, length));
    if (length < 4 * Vector256::kSize)
        return checksumByFolding<Vector128>(data, length);
    return checksumByFolding<Vector256>(data, length);
}

}  // namespace tarvik::crc32

#endif
