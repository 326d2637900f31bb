/// \file
/// UTF-8, a character at a time. Header-only.
///
///     std::string out;
///     tarvik::appendUTF8(out, 0x20AC);          // "\xE2\x82\xAC"
///     tarvik::decodeUTF8("\xE2\x82\xACuro")     // {0x20AC, 3}
///     tarvik::decodeUTF8("\xFFx")               // {0, 0}
#pragma once

#ifdef __cplusplus
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tarvik {

/// The character at the front of a text and how many bytes it takes; 0 bytes for the empty text, and where
/// none starts (overlong forms and surrogates are none).
struct DecodedUTF8 {
    uint32_t character;
    size_t bytes;
};
inline DecodedUTF8 decodeUTF8(std::string_view text)
{
    const auto byte = [&](size_t i) { return uint8_t(text[i]); };
    if (text.empty())
        return {0, 0};
    const uint8_t lead = byte(0);
    if (lead < 0x80)
        return {lead, 1};
    const size_t count = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || text.size() < count)
        return {0, 0};
    uint32_t character = lead & (0xFF >> (count + 1));
    for (size_t i = 1; i < count; ++i) {
        if ((byte(i) & 0xC0) != 0x80)
            return {0, 0};
        character = character << 6 | (byte(i) & 0x3F);
    }
    constexpr uint32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    if (character < kLeast[count] || character > 0x10FFFF || (character >= 0xD800 && character < 0xE000))
        return {0, 0};
    return {character, count};
}

/// Appends a character, up to 0x10FFFF.
inline void appendUTF8(std::string &text, uint32_t character)
{
    const auto tail = [&](int shift) { return char(0x80 | (character >> shift & 0x3F)); };
    if (character < 0x80)
        text += char(character);
    else if (character < 0x800)
        text += {char(0xC0 | character >> 6), tail(0)};
    else if (character < 0x10000)
        text += {char(0xE0 | character >> 12), tail(6), tail(0)};
    else
        text += {char(0xF0 | character >> 18), tail(12), tail(6), tail(0)};
}

}  // namespace tarvik

#endif
