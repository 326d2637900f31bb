#if defined(__x86_64__)

#define CRC32_TARGET "pclmul,sse4.1"
#include <Tarvik/crypto/private/CRC32Folding.h>

namespace tarvik::crc32 {

__attribute__((target(CRC32_TARGET))) uint32_t checksumByFolding128(const uint8_t *data, size_t length)
{
    if (length < Vector128::kSize)
        return complementedRemainder(Vector128::only(data, length));
    return checksumByFolding<Vector128>(data, length);
}

}  // namespace tarvik::crc32

#endif
