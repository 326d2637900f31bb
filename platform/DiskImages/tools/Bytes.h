/// Numbers and stretches of an image.
#pragma once
#include "Failure.h"

#include <array>
#include <cstdint>
#include <unistd.h>

namespace diskimages {

/// A stretch of the file; zeros where the file has ended. Throws Failure.
template <size_t size>
std::array<unsigned char, size> stretch(int descriptor, uint64_t at)
{
    std::array<unsigned char, size> bytes{};
    for (size_t have = 0; have < size;) {
        const ssize_t got = pread(descriptor, bytes.data() + have, size - have, off_t(at + have));
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            throw systemFailure("reading the image");
        if (got == 0)
            break;
        have += size_t(got);
    }
    return bytes;
}

template <class Number>
uint64_t number(const unsigned char *littleEndian)
{
    uint64_t value = 0;
    for (size_t i = 0; i < sizeof(Number); ++i)
        value |= uint64_t(littleEndian[i]) << (8 * i);
    return value;
}

}  // namespace diskimages
