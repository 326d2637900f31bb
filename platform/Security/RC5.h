/// \file
/// RC5-32 (RFC 2040), which OpenSSL as Debian builds it does not have: the block cipher itself. Modes are in
/// SymmetricCipher.cpp.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "SecureBytes.h"

namespace cssm {

class RC5 {
public:
    static constexpr std::size_t kBlock = 8;
    static constexpr std::size_t kMaxKey = 255;
    static constexpr unsigned kMaxRounds = 255;
    static constexpr unsigned kUsualRounds = 12;

    /// A key of 0 to kMaxKey bytes, 0 to kMaxRounds rounds.
    RC5(std::span<const uint8_t> key, unsigned rounds);

    /// One block; `output` may be `input`.
    void encrypt(const uint8_t *input, uint8_t *output) const;
    void decrypt(const uint8_t *input, uint8_t *output) const;

private:
    std::vector<uint32_t, WipingAllocator<uint32_t>> subkeys_;  // two for the start, two for each round
};

}  // namespace cssm
