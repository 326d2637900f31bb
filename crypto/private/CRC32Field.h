#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

/// The arithmetic behind the check: polynomials over GF(2), taken modulo P = x^32 + 0x04C11DB7.
///
/// Everything is reflected: in a word of w bits, bit i is the coefficient of x^(w-1-i). The first bit of a
/// message is its highest coefficient and the lowest bit of the first byte, so that no bit ever has to be
/// turned round.
namespace tarvik::crc32 {

constexpr uint32_t reflected(uint32_t value)
{
    value = (value >> 1 & 0x55555555u) | (value & 0x55555555u) << 1;
    value = (value >> 2 & 0x33333333u) | (value & 0x33333333u) << 2;
    value = (value >> 4 & 0x0F0F0F0Fu) | (value & 0x0F0F0F0Fu) << 4;
    value = (value >> 8 & 0x00FF00FFu) | (value & 0x00FF00FFu) << 8;
    return value >> 16 | value << 16;
}

/// P without its highest term.
inline constexpr uint32_t kPolynomial = reflected(0x04C11DB7);

/// value * x mod P.
constexpr uint32_t timesX(uint32_t value) { return value >> 1 ^ (value & 1 ? kPolynomial : 0); }

/// x^exponent mod P.
constexpr uint32_t powerOfX(unsigned exponent)
{
    uint32_t power = 0x80000000u;
    while (exponent--)
        power = timesX(power);
    return power;
}

/// The next register for each value of the register's low byte.
inline constexpr auto kByteTable = [] {
    std::array<uint32_t, 256> table{};
    for (uint32_t byte = 0; byte < 256; ++byte) {
        table[byte] = byte;
        for (int bit = 0; bit < 8; ++bit)
            table[byte] = timesX(table[byte]);
    }
    return table;
}();

}  // namespace tarvik::crc32
