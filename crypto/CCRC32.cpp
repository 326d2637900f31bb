#include <Tarvik/crypto/CCRC32.h>

#include <Tarvik/crypto/private/CRC32Field.h>
#include <Tarvik/crypto/private/CRC32Kernels.h>

#include <algorithm>

using namespace tarvik::crc32;

void CCRC32::Initialize()
{
    if (mInitialized)
        return;
    std::ranges::copy(kByteTable, mTable);
    mInitialized = true;
}

uint32_t CCRC32::Calculate(const void *data, uint32_t length)
{
    if (!mInitialized)
        Initialize();
    if (data == nullptr || length == 0)
        return 0;

    const auto *bytes = static_cast<const uint8_t *>(data);
    if (length >= kShortestForKernels)
        return checksum(bytes, length);

    uint32_t remainder = ~uint32_t{0};
    for (const uint8_t *end = bytes + length; bytes != end; ++bytes)
        remainder = remainder >> 8 ^ mTable[(remainder ^ *bytes) & 0xFF];
    return ~remainder;
}

bool CCRC32::Verify(const void *data, uint32_t length, uint32_t expected)
{
    return Calculate(data, length) == expected;
}

uint32_t CCRC32::Reflect(uint32_t value, int8_t bits)
{
    if (bits <= 0 || bits >= 64)
        return 0;
    const uint32_t reversed = reflected(value);
    return bits <= 32 ? reversed >> (32 - bits) : reversed << (bits - 32);
}
