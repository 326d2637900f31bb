#include "RC5.h"

#include <algorithm>
#include <bit>

namespace cssm {
namespace {

constexpr uint32_t kP32 = 0xb7e15163;  // odd((e - 2) * 2^32)
constexpr uint32_t kQ32 = 0x9e3779b9;  // odd((phi - 1) * 2^32)

uint32_t load(const uint8_t *bytes)
{
    return uint32_t{bytes[0]} | uint32_t{bytes[1]} << 8 | uint32_t{bytes[2]} << 16 | uint32_t{bytes[3]} << 24;
}

void store(uint32_t word, uint8_t *bytes)
{
    for (int i = 0; i < 4; ++i)
        bytes[i] = static_cast<uint8_t>(word >> 8 * i);
}

/// Rotations take their count from the low five bits.
uint32_t rotateLeft(uint32_t word, uint32_t count) { return std::rotl(word, static_cast<int>(count & 31)); }
uint32_t rotateRight(uint32_t word, uint32_t count) { return std::rotr(word, static_cast<int>(count & 31)); }

}  // namespace

RC5::RC5(std::span<const uint8_t> key, unsigned rounds) : subkeys_(2 * (rounds + 1))
{
    std::vector<uint32_t, WipingAllocator<uint32_t>> words(std::max<std::size_t>(1, (key.size() + 3) / 4));
    for (std::size_t i = 0; i < key.size(); ++i)
        words[i / 4] |= uint32_t{key[i]} << 8 * (i % 4);

    subkeys_[0] = kP32;
    for (std::size_t i = 1; i < subkeys_.size(); ++i)
        subkeys_[i] = subkeys_[i - 1] + kQ32;

    uint32_t a = 0, b = 0;
    std::size_t i = 0, j = 0;
    for (std::size_t step = 3 * std::max(subkeys_.size(), words.size()); step > 0; --step) {
        a = subkeys_[i] = rotateLeft(subkeys_[i] + a + b, 3);
        b = words[j] = rotateLeft(words[j] + a + b, a + b);
        i = (i + 1) % subkeys_.size();
        j = (j + 1) % words.size();
    }
}

void RC5::encrypt(const uint8_t *input, uint8_t *output) const
{
    uint32_t a = load(input) + subkeys_[0];
    uint32_t b = load(input + 4) + subkeys_[1];
    for (std::size_t i = 2; i < subkeys_.size(); i += 2) {
        a = rotateLeft(a ^ b, b) + subkeys_[i];
        b = rotateLeft(b ^ a, a) + subkeys_[i + 1];
    }
    store(a, output);
    store(b, output + 4);
}

void RC5::decrypt(const uint8_t *input, uint8_t *output) const
{
    uint32_t a = load(input);
    uint32_t b = load(input + 4);
    for (std::size_t i = subkeys_.size() - 2; i >= 2; i -= 2) {
        b = rotateRight(b - subkeys_[i + 1], a) ^ a;
        a = rotateRight(a - subkeys_[i], b) ^ b;
    }
    store(a - subkeys_[0], output);
    store(b - subkeys_[1], output + 4);
}

}  // namespace cssm
