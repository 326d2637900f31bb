#include <Tarvik/crypto/CCRC32.h>
#include <Tarvik/crypto/private/CRC32Kernels.h>

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <numeric>
#include <random>
#include <string>

namespace {

static_assert(sizeof(CCRC32) == 257 * sizeof(uint32_t),
              "the object owns the table and its flag, nothing else");

// One bit after the other.
uint32_t nextRemainder(uint32_t remainder, uint8_t byte)
{
    remainder ^= byte;
    for (int bit = 0; bit < 8; ++bit)
        remainder = remainder >> 1 ^ (remainder & 1 ? 0xEDB88320 : 0);
    return remainder;
}

// Random bytes between two pages that nobody may touch.
class FencedBytes {
public:
    explicit FencedBytes(size_t pages) : mLength{(pages + 2) * mPage}
    {
        mMap = static_cast<uint8_t *>(
            mmap(nullptr, mLength, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        std::mt19937 random{20261122};
        for (uint8_t *byte = begin(); byte != end(); ++byte)
            *byte = static_cast<uint8_t>(random());
        mprotect(mMap, mPage, PROT_NONE);
        mprotect(end(), mPage, PROT_NONE);
    }
    FencedBytes(const FencedBytes &) = delete;
    ~FencedBytes() { munmap(mMap, mLength); }

    uint8_t *begin() const { return mMap + mPage; }
    uint8_t *end() const { return mMap + mLength - mPage; }

private:
    const size_t mPage = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    size_t mLength;
    uint8_t *mMap;
};

void expectEveryKernelToGive(uint32_t expected, const uint8_t *data, size_t length)
{
    for (const auto &kernel : tarvik::crc32::kernels()) {
        if (kernel.runsHere()) {
            ASSERT_EQ(kernel.checksum(data, length), expected) << kernel.name << ", " << length << " bytes";
        }
    }
}

void expectEveryKernelToGiveTheReference(const uint8_t *data, size_t length)
{
    expectEveryKernelToGive(~std::accumulate(data, data + length, ~0u, nextRemainder), data, length);
}

}  // namespace

TEST(CRC32, KnownValues)
{
    const struct {
        std::string data;
        uint32_t crc;
    } cases[] = {{"", 0}, {{"\0", 1}, 0xD202EF8D}, {"abc", 0x352441C2}, {"123456789", 0xCBF43926}};
    CCRC32 initialized;
    initialized.Initialize();
    for (const auto &[data, crc] : cases) {
        const auto length = static_cast<uint32_t>(data.size());
        EXPECT_EQ(CCRC32().Calculate(data.data(), length), crc) << data;
        EXPECT_EQ(initialized.Calculate(data.data(), length), crc) << data;
        EXPECT_TRUE(CCRC32().Verify(data.data(), length, crc)) << data;
        EXPECT_FALSE(CCRC32().Verify(data.data(), length, crc ^ 1)) << data;
    }
    EXPECT_EQ(CCRC32().Calculate(nullptr, 100), 0u);
}

// Lengths around every vector, stride and threshold, from each place in a cache line; the first and the last
// ones touch a fence.
TEST(CRC32, EveryKernelAtEveryLengthAndAlignment)
{
    const FencedBytes bytes{1};
    CCRC32 object;
    for (size_t offset = 0; offset < 64; ++offset) {
        uint32_t remainder = ~0u;
        for (uint32_t length = 1; length <= 1100; ++length) {
            const uint8_t *data = bytes.begin() + offset;
            remainder = nextRemainder(remainder, data[length - 1]);
            ASSERT_EQ(object.Calculate(data, length), ~remainder) << length;
            if (length >= tarvik::crc32::kShortestForKernels) {
                ASSERT_NO_FATAL_FAILURE(expectEveryKernelToGive(~remainder, data, length));
            }
        }
    }
    for (size_t length = tarvik::crc32::kShortestForKernels; length <= 1100; ++length)
        ASSERT_NO_FATAL_FAILURE(expectEveryKernelToGiveTheReference(bytes.end() - length, length));
    const FencedBytes many{80};
    for (size_t length : {65535, 65536, 65537, 262143, 262144, 327679, 327680})
        ASSERT_NO_FATAL_FAILURE(expectEveryKernelToGiveTheReference(many.end() - length, length));
}

// 4 GiB - 2 zeros and a one. The zeros cost no memory: they are all the same page. The expected value is from
// x^(2^32 - 1) = 1.
TEST(CRC32, TheLargestLength)
{
    constexpr uint32_t kLength = UINT32_MAX;
    void *map =
        mmap(nullptr, kLength, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(map, MAP_FAILED);
    static_cast<uint8_t *>(map)[kLength - 1] = 1;
    EXPECT_EQ(CCRC32().Calculate(map, kLength), 0x77073096u);
    munmap(map, kLength);
}

TEST(CRC32, Reflect)
{
    const struct {
        uint32_t value;
        int8_t bits;
        uint32_t result;
    } cases[] = {
        {1, 8, 0x80},
        {0xFFFFFF01, 8, 0x80},
        {0x80000000, 32, 1},
        {0x12345678, 32, 0x1E6A2C48},  // within the word
        {0x12345678, 40, 0x6A2C4800},
        {0xFFFFFFFF, 63, 0x80000000},
        {0xFFFFFFFF, 64, 0},
        {0xFFFFFFFF, 127, 0},  // beyond it
        {0x12345678, 0, 0},
        {0x12345678, -1, 0},
        {0x12345678, -128, 0},
    };
    for (const auto &[value, bits, result] : cases)
        EXPECT_EQ(CCRC32::Reflect(value, bits), result) << std::hex << value << ", " << std::dec << int{bits};
}
