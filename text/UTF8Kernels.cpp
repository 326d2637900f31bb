#include "text/private/UTF8Kernels.h"

#include <algorithm>
#include <atomic>

#include "text/private/UTF8Scalar.h"

namespace tarvik::utf8 {
namespace {

/// Input bytes or elements that are taken one by one where a kernel has stopped before it is asked again.
constexpr ptrdiff_t kStretch = 64;

bool always() { return true; }

#if defined(__x86_64__)
bool hasSSE4() { return __builtin_cpu_supports("sse4.2") && __builtin_cpu_supports("popcnt"); }

bool hasAVX2()
{
    return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi") &&
           __builtin_cpu_supports("bmi2") && __builtin_cpu_supports("popcnt");
}

bool hasAVX512()
{
    return hasAVX2() && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
           __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl") &&
           __builtin_cpu_supports("avx512vbmi") && __builtin_cpu_supports("avx512vbmi2") &&
           __builtin_cpu_supports("gfni");
}
#endif

constexpr Kernel kKernels[] = {
    {"portable", always, decodePortable, encodePortable},
#if defined(__x86_64__)
    {"sse4", hasSSE4, decodeSSE4, encodeSSE4},
    {"avx2", hasAVX2, decodeAVX2, encodeAVX2},
    {"avx512", hasAVX512, decodeAVX512, encodeAVX512},
#endif
};

/// Decodes the characters that begin before `limit`, one by one; true when one of them is 0.
bool decodeStretch(DecodeCursor &cursor, const uint8_t *limit)
{
    // Locals, since the elements that are written could be any of the cursor's members for all the compiler
    // knows.
    const uint8_t *in = cursor.in;
    const uint8_t *const end = cursor.inEnd;
    wchar_t *out = cursor.out;
    uint32_t codePoint = 1;
    while (in < limit && (codePoint = nextCodePoint(in, end)) != 0)
        *out++ = static_cast<wchar_t>(codePoint);
    cursor.in = in;
    cursor.out = out;
    return codePoint == 0;
}

}  // namespace

std::span<const Kernel> kernels() { return kKernels; }

const Kernel &bestKernel()
{
    // Filled at the first call and not by a constructor, since other constructors may convert text before
    // ours has run.
    static constinit std::atomic<const Kernel *> best = nullptr;
    const Kernel *kernel = best.load(std::memory_order_relaxed);
    if (kernel == nullptr) {
        kernel = std::end(kKernels) - 1;
        while (!kernel->runsHere())
            kernel -= 1;
        best.store(kernel, std::memory_order_relaxed);
    }
    return *kernel;
}

Stop decode(const Kernel &kernel, DecodeCursor &cursor)
{
    for (;;) {
        kernel.decode(cursor);
        if (cursor.in == cursor.inEnd)
            return Stop::InputEnd;
        const ptrdiff_t stretch = std::min({kStretch, cursor.inEnd - cursor.in, cursor.outEnd - cursor.out});
        if (stretch == 0)
            return Stop::OutputFull;
        if (decodeStretch(cursor, cursor.in + stretch))
            return Stop::Zero;
    }
}

Stop encode(const Kernel &kernel, EncodeCursor &cursor)
{
    for (;;) {
        kernel.encode(cursor);
        if (cursor.in == cursor.inEnd)
            return Stop::InputEnd;
        const ptrdiff_t stretch =
            std::min({kStretch, cursor.inEnd - cursor.in, (cursor.outEnd - cursor.out) / 3});
        if (stretch == 0)
            return Stop::OutputFull;
        for (const wchar_t *limit = cursor.in + stretch; cursor.in < limit; cursor.in++)
            putCodePoint(*cursor.in, cursor.out);
    }
}

void decodePortable(DecodeCursor &cursor)
{
    const uint8_t *in = cursor.in;
    wchar_t *out = cursor.out;
    // A stretch of eight bytes may end in a character that reaches three bytes further.
    while (cursor.inEnd - in >= 11 && cursor.outEnd - out >= 8) {
        const uint64_t bytes = eightBytes(in);
        if (allASCII(bytes)) {
            widenEight(bytes, out);
            in += 8;
            out += 8;
            continue;
        }
        for (const uint8_t *limit = in + 8; in < limit;) {
            const uint32_t codePoint = codePointAt(in);
            if (codePoint == 0) {
                cursor.in = in;
                cursor.out = out;
                return;
            }
            in += sequenceLength(*in);
            *out++ = static_cast<wchar_t>(codePoint);
        }
    }
    cursor.in = in;
    cursor.out = out;
}

void encodePortable(EncodeCursor &cursor)
{
    const wchar_t *in = cursor.in;
    char *out = cursor.out;
    while (cursor.inEnd - in >= 8 && cursor.outEnd - out >= 24) {
        Elements8 elements;
        std::memcpy(&elements, in, sizeof elements);
        uint32_t all = 0;
        for (int i = 0; i < 8; i++)
            all |= elements[i];
        if (all < 0x80) {
            const Bytes8 bytes = __builtin_convertvector(elements, Bytes8);
            std::memcpy(out, &bytes, sizeof bytes);
            out += 8;
        } else {
            for (int i = 0; i < 8; i++)
                putCodePoint(in[i], out);
        }
        in += 8;
    }
    cursor.in = in;
    cursor.out = out;
}

}  // namespace tarvik::utf8
