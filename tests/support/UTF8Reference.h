// The conversion rules of UTF8.h in their plainest form, one byte after the other: what tests and fuzzing compare with.
#pragma once

#include <cstdint>
#include <string>

inline std::u32string referenceDecode(const std::string &text)
{
    std::u32string result;
    const auto byte = [&](size_t at) -> uint32_t {
        return at < text.size() ? static_cast<uint8_t>(text[at]) : 0;
    };
    size_t at = 0;
    while (at < text.size()) {
        const uint32_t b = byte(at), b1 = byte(at + 1) & 0x3F, b2 = byte(at + 2) & 0x3F,
                       b3 = byte(at + 3) & 0x3F;
        uint32_t codePoint = 0;
        if ((b & 0xF0) == 0xF0) {
            codePoint = (b & 0x07) << 18 | b1 << 12 | b2 << 6 | b3;
            at += 4;
        } else if ((b & 0xE0) == 0xE0) {
            codePoint = (b & 0x0F) << 12 | b1 << 6 | b2;
            at += 3;
        } else if ((b & 0xC0) == 0xC0) {
            codePoint = (b & 0x1F) << 6 | b1;
            at += 2;
        } else {
            codePoint = b & 0x7F;
            at += 1;
        }
        if (codePoint == 0)
            break;
        result += static_cast<char32_t>(codePoint);
    }
    return result;
}

inline std::string referenceEncode(const std::u32string &text)
{
    std::string result;
    for (const char32_t element : text) {
        const auto c = static_cast<int32_t>(element);
        if (c < 0x80) {
            result += static_cast<char>(c & 0x7F);
        } else if (c <= 0x7FF) {
            result += static_cast<char>(0xC0 | (c >> 6));
            result += static_cast<char>(0x80 | (c & 0x3F));
        } else if (c <= 0xFFFF) {
            result += static_cast<char>(0xE0 | (c >> 12));
            result += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
            result += static_cast<char>(0x80 | (c & 0x3F));
        }
    }
    return result;
}
