#include <Tarvik/crypto/private/CRC32Kernels.h>

namespace tarvik::crc32 {

namespace {

#if defined(__x86_64__)
bool has128() { return __builtin_cpu_supports("pclmul") && __builtin_cpu_supports("sse4.1"); }

bool has256() { return has128() && __builtin_cpu_supports("vpclmulqdq") && __builtin_cpu_supports("avx2"); }

bool has512()
{
    return has256() && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
           __builtin_cpu_supports("avx512vl");
}
#endif

constexpr Kernel kKernels[] = {
#if defined(__x86_64__)
    {"512-bit carry-less multiply", has512, checksumByFolding512},
    {"256-bit carry-less multiply", has256, checksumByFolding256},
    {"128-bit carry-less multiply", has128, checksumByFolding128},
#endif
    {"sliced tables", [] { return true; }, checksumByTables},
};

// Several threads may come here at once: they choose alike.
uint32_t chooseAndRun(const uint8_t *data, size_t length)
{
    const Kernel *kernel = kKernels;
    while (!kernel->runsHere())
        ++kernel;
    gFastest.store(kernel->checksum, std::memory_order_relaxed);
    return kernel->checksum(data, length);
}

}  // namespace

constinit std::atomic<Checksum> gFastest{chooseAndRun};

std::span<const Kernel> kernels() { return kKernels; }

}  // namespace tarvik::crc32
