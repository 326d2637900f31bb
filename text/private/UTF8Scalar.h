/// \file
/// The conversion rules, one character at a time: what every kernel must equal, and the road they leave to it.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tarvik::utf8 {

/// How many bytes the lead byte `lead` takes. All of 0xF0-0xFF lead four; a stray continuation byte stands for itself.
constexpr size_t sequenceLength(uint8_t lead)
{
    return lead < 0xC0 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
}

/// The code point at `in`, of which at least sequenceLength(*in) bytes can be read.
/// Continuation bytes are not looked at for their form: their low six bits count, whatever they are.
inline uint32_t codePointAt(const uint8_t *in)
{
    const uint32_t lead = in[0];
    if (lead < 0xC0)
        return lead & 0x7F;
    const uint32_t second = in[1] & 0x3F;
    if (lead < 0xE0)
        return (lead & 0x1F) << 6 | second;
    const uint32_t third = in[2] & 0x3F;
    if (lead < 0xF0)
        return (lead & 0x0F) << 12 | second << 6 | third;
    return (lead & 0x07) << 18 | second << 12 | third << 6 | (in[3] & 0x3F);
}

/// Reads the code point at `in` and moves past it. Bytes that are missing at `end` read as 0.
inline uint32_t nextCodePoint(const uint8_t *&in, const uint8_t *end)
{
    const size_t length = sequenceLength(*in);
    const size_t left = static_cast<size_t>(end - in);
    if (length <= left) {
        const uint32_t codePoint = codePointAt(in);
        in += length;
        return codePoint;
    }
    uint8_t sequence[4] = {};
    std::memcpy(sequence, in, left);
    in = end;
    return codePointAt(sequence);
}

/// Writes the UTF-8 of `element` at `out`, which has room for three bytes, and moves past it.
/// Negative elements count as ASCII, so that the sign-extended bytes of a narrow string give their low seven bits;
/// elements above U+FFFF write nothing.
inline void putCodePoint(int32_t element, char *&out)
{
    if (element < 0x80) {
        *out++ = static_cast<char>(element & 0x7F);
    } else if (element <= 0x7FF) {
        *out++ = static_cast<char>(0xC0 | element >> 6);
        *out++ = static_cast<char>(0x80 | (element & 0x3F));
    } else if (element <= 0xFFFF) {
        *out++ = static_cast<char>(0xE0 | element >> 12);
        *out++ = static_cast<char>(0x80 | (element >> 6 & 0x3F));
        *out++ = static_cast<char>(0x80 | (element & 0x3F));
    }
}

using Bytes8 [[gnu::vector_size(8)]] = uint8_t;
using Bytes16 [[gnu::vector_size(16)]] = uint8_t;
using Words8 [[gnu::vector_size(16)]] = uint16_t;
using Elements8 [[gnu::vector_size(32)]] = uint32_t;

inline uint64_t eightBytes(const uint8_t *in)
{
    uint64_t bytes;
    std::memcpy(&bytes, in, sizeof bytes);
    return bytes;
}

/// True when all eight bytes are in 1-127.
constexpr bool allASCII(uint64_t bytes)
{
    return ((bytes | (bytes - 0x0101010101010101)) & 0x8080808080808080) == 0;
}

/// Writes eight bytes as eight elements: zeros are interleaved with the bytes, and again with the words that this gives.
inline void widenEight(uint64_t bytes, wchar_t *out)
{
    using Quads2 [[gnu::vector_size(16)]] = uint64_t;
    static_assert(std::endian::native == std::endian::little);
    const auto narrow = reinterpret_cast<Bytes16>(Quads2{bytes, 0});
    const auto words = reinterpret_cast<Words8>(
        __builtin_shufflevector(narrow, Bytes16{}, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23));
    const Words8 front = __builtin_shufflevector(words, Words8{}, 0, 8, 1, 9, 2, 10, 3, 11);
    const Words8 back = __builtin_shufflevector(words, Words8{}, 4, 8, 5, 9, 6, 10, 7, 11);
    std::memcpy(out, &front, sizeof front);
    std::memcpy(out + 4, &back, sizeof back);
}

}  // namespace tarvik::utf8
