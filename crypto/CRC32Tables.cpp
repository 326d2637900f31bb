#include <Tarvik/crypto/private/CRC32Field.h>
#include <Tarvik/crypto/private/CRC32Kernels.h>

#include <bit>
#include <cstring>

namespace tarvik::crc32 {

namespace {

constexpr size_t kSlices = 16;

// kTables[k][b] is byte b followed by k bytes of zero: sixteen bytes are looked up at once, each at its own
// distance from the end.
constexpr auto kTables = [] {
    std::array<std::array<uint32_t, 256>, kSlices> tables{kByteTable};
    for (size_t k = 1; k < kSlices; ++k)
        for (size_t byte = 0; byte < 256; ++byte)
            tables[k][byte] = tables[k - 1][byte] >> 8 ^ kByteTable[tables[k - 1][byte] & 0xFF];
    return tables;
}();

inline uint32_t littleEndianWord(const uint8_t *bytes)
{
    uint32_t word;
    std::memcpy(&word, bytes, sizeof word);
    return std::endian::native == std::endian::little ? word : __builtin_bswap32(word);
}

// The part of four bytes that end `distance` bytes before the end of the sixteen.
template <size_t distance>
inline uint32_t sliced(uint32_t word)
{
    return kTables[distance + 3][word & 0xFF] ^ kTables[distance + 2][word >> 8 & 0xFF] ^
           kTables[distance + 1][word >> 16 & 0xFF] ^ kTables[distance][word >> 24];
}

}  // namespace

uint32_t checksumByTables(const uint8_t *data, size_t length)
{
    const uint8_t *end = data + length;
    uint32_t remainder = ~uint32_t{0};
    for (; end - data >= static_cast<ptrdiff_t>(kSlices); data += kSlices) {
        // What does not wait for the last round's remainder comes first.
        const uint32_t rest = sliced<8>(littleEndianWord(data + 4)) ^ sliced<4>(littleEndianWord(data + 8)) ^
                              sliced<0>(littleEndianWord(data + 12));
        remainder = rest ^ sliced<12>(littleEndianWord(data) ^ remainder);
    }
    for (; data != end; ++data)
        remainder = remainder >> 8 ^ kByteTable[(remainder ^ *data) & 0xFF];
    return ~remainder;
}

}  // namespace tarvik::crc32
