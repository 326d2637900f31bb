/// \file
/// Bytes that are wiped before their memory is given back: keys, vectors, passwords.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include <openssl/crypto.h>

namespace cssm {

/// An allocator that wipes what it frees, so that a growing container leaves nothing behind either.
template <class T>
struct WipingAllocator {
    using value_type = T;

    WipingAllocator() = default;
    template <class U>
    WipingAllocator(const WipingAllocator<U> &)
    {
    }

    T *allocate(std::size_t count) { return std::allocator<T>().allocate(count); }
    void deallocate(T *memory, std::size_t count)
    {
        OPENSSL_cleanse(memory, count * sizeof(T));
        std::allocator<T>().deallocate(memory, count);
    }
    friend bool operator==(const WipingAllocator &, const WipingAllocator &) { return true; }
};

using SecureBytes = std::vector<uint8_t, WipingAllocator<uint8_t>>;

/// A copy of `length` bytes at `data`, which may be null when there are none.
inline SecureBytes secureCopy(const uint8_t *data, std::size_t length)
{
    return length == 0 ? SecureBytes() : SecureBytes(data, data + length);
}

}  // namespace cssm
