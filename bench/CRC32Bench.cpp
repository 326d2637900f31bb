// CRC-32 against libdeflate and ISA-L. The rows of one width run the kernels that a lesser processor would
// choose, beside the peers' code for the same width. "read" is the limit: the same bytes only loaded and
// added up.
#include <Tarvik/crypto/CCRC32.h>
#include <Tarvik/crypto/private/CRC32Kernels.h>

#include <benchmark/benchmark.h>
#include <isa-l/crc.h>
#include <libdeflate.h>

#include <string>
#include <vector>

// ISA-L's code for the 128-bit multiplier, which it exports beside the name that chooses.
extern "C" uint32_t crc32_gzip_refl_by8_02(uint32_t crc, const unsigned char *data, uint64_t length);

namespace {

using tarvik::crc32::Checksum;

constexpr struct {
    const char *name;
    size_t length;
} kSizes[] = {{"16B", 16},         {"64B", 64},         {"1KiB", 1 << 10},
              {"64KiB", 64 << 10}, {"16MiB", 16 << 20}, {"1GiB", 1 << 30}};

// Filled once, at a page's begin.
const uint8_t *data(size_t length)
{
    constexpr size_t kPage = 4096;
    static std::vector<uint8_t> buffer;
    if (buffer.size() < length + kPage) {
        buffer.resize(length + kPage);
        uint32_t random = 1;
        for (uint8_t &byte : buffer)
            byte = uint8_t((random = random * 1664525 + 1013904223) >> 24);
    }
    return buffer.data() + (kPage - reinterpret_cast<uintptr_t>(buffer.data()) % kPage);
}

void measure(benchmark::State &state, Checksum checksum, size_t length)
{
    const uint8_t *bytes = data(length);
    for (auto _ : state)
        benchmark::DoNotOptimize(checksum(bytes, length));
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(length));
}

void add(const std::string &topic, const std::string &who, size_t least, size_t most, Checksum checksum)
{
    for (const auto &[size, length] : kSizes) {
        if (length < least || length > most)
            continue;
        const size_t bytes = length;
        benchmark::RegisterBenchmark((topic + "/" + size + ":" + who).c_str(),
                                     [=](benchmark::State &state) { measure(state, checksum, bytes); });
    }
}

uint32_t tarvik(const uint8_t *bytes, size_t length)
{
    static CCRC32 crc;
    return crc.Calculate(bytes, uint32_t(length));
}

uint32_t libdeflate(const uint8_t *bytes, size_t length) { return libdeflate_crc32(0, bytes, length); }

uint32_t isal(const uint8_t *bytes, size_t length)
{
    return crc32_gzip_refl(0, const_cast<uint8_t *>(bytes), length);
}

uint32_t isal128(const uint8_t *bytes, size_t length) { return crc32_gzip_refl_by8_02(0, bytes, length); }

// Four cache lines at a time, in the processor's widest vectors.
__attribute__((target_clones("avx512f", "avx2", "default"))) uint32_t read(const uint8_t *bytes,
                                                                           size_t length)
{
    typedef uint64_t Line __attribute__((vector_size(64), aligned(1), may_alias));
    const auto *line = reinterpret_cast<const Line *>(bytes);
    Line a{}, b{}, c{}, d{};
    for (const Line *end = line + length / sizeof(Line); line != end; line += 4) {
        a ^= line[0];
        b ^= line[1];
        c ^= line[2];
        d ^= line[3];
    }
    a ^= b ^ c ^ d;
    return uint32_t(a[0] ^ a[1] ^ a[2] ^ a[3] ^ a[4] ^ a[5] ^ a[6] ^ a[7]);
}

const bool gRegistered = [] {
    constexpr size_t kAll = SIZE_MAX;
    add("crc32", "tarvik", 0, kAll, tarvik);
    add("crc32", "libdeflate", 0, kAll, libdeflate);
    add("crc32", "isa-l", 0, kAll, isal);
    add("crc32", "read", 64 << 10, kAll, read);
    for (const auto &kernel : tarvik::crc32::kernels()) {
        if (!kernel.runsHere())
            continue;
        const std::string topic = "crc32 by " + std::string(kernel.name);
        add(topic, "tarvik", 0, 16 << 20, kernel.checksum);
        if (topic.find("128") != topic.npos) {
            add(topic, "libdeflate", 0, 16 << 20, libdeflate);
            add(topic, "isa-l", 0, 16 << 20, isal128);
        }
    }
    return true;
}();

}  // namespace
