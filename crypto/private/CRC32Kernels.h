#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>

/// The ways to compute the check. All give the same results; each processor runs some of them.
namespace tarvik::crc32 {

/// No kernel is called for fewer bytes: they take the first four for granted.
inline constexpr size_t kShortestForKernels = 4;

using Checksum = uint32_t (*)(const uint8_t *data, size_t length);

struct Kernel {
    const char *name;
    bool (*runsHere)();
    Checksum checksum;
};

/// Every kernel of this build, the fastest first; the last one, which works on tables, runs everywhere.
std::span<const Kernel> kernels();

/// The fastest kernel that this processor runs; until the first call, what looks for it.
[[gnu::visibility("hidden")]] extern std::atomic<Checksum> gFastest;

inline uint32_t checksum(const uint8_t *data, size_t length)
{
    return gFastest.load(std::memory_order_relaxed)(data, length);
}

uint32_t checksumByTables(const uint8_t *data, size_t length);
#if defined(__x86_64__)
uint32_t checksumByFolding128(const uint8_t *data, size_t length);
uint32_t checksumByFolding256(const uint8_t *data, size_t length);
uint32_t checksumByFolding512(const uint8_t *data, size_t length);
#endif

}  // namespace tarvik::crc32
