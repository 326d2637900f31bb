/// \file
/// The platform's one table of text encodings, and conversion between bytes and UTF-16 units.
///
///     const auto *japanese = encodings::find(kCFStringEncodingShiftJIS);
///     auto text = encodings::decode(*japanese, bytes, count, false);          // nothing: not Shift-JIS
///     auto done = encodings::encode(*japanese, units, length, '?', false, buffer, size);
///
/// An encoding is known by its platform identifier; the row names its iconv converter and its Foundation
/// encoding. Thread: any. Converters are kept open per thread, so that a short text costs no more than its
/// bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tarvik::encodings {

enum class Coder : uint8_t { ascii, latin1, utf8, utf16, utf32, nonLossy, iconv };
enum class Order : uint8_t { native, big, little };  ///< native: a byte order mark decides, and is written

struct Encoding {
    uint32_t identifier;  ///< kCFStringEncoding...
    uint32_t foundation;  ///< NSStringEncoding; 0: Foundation has none
    uint16_t codepage;    ///< Windows'; 0: none
    Coder coder;
    Order order;
    uint8_t maxBytes;       ///< for one UTF-16 unit, at most
    bool superset;          ///< an ASCII byte is that character, and nothing else
    const char *iconvName;  ///< null when the coder needs none
    const char *ianaName;
    const char *name;  ///< for people
};

constexpr uint32_t kInvalid = 0xFFFFFFFF;

/// The row of an identifier, if its converter is there; null otherwise.
const Encoding *find(uint32_t identifier);
/// By the name of a character set, without regard to case: IANA's, an alias of it, or iconv's.
const Encoding *findNamed(std::string_view name);
const Encoding *findFoundation(unsigned long foundation);
const Encoding *findCodepage(uint32_t codepage);
/// The available encodings' identifiers, in the order in which a text is tried in them, ended by kInvalid.
std::span<const uint32_t> available();
/// The encoding of the user's locale; UTF-8 where the locale is the C one or its character set is unknown.
const Encoding &system();

struct Written {
    size_t units;  ///< how many UTF-16 units were written
    size_t bytes;  ///< how many bytes that took
};

/// Writes units in the encoding, up to the first one that it lacks (lossByte 0) or that does not fit whole.
/// Another loss byte stands in for each character that is lacking. `external` puts a byte order mark in front
/// where the order is native. With a null buffer bytes are counted, without limit. Where an encoding has states, `ends` goes back to the
/// initial one after the last unit.
Written encode(const Encoding &encoding, const uint16_t *units, size_t count, uint8_t lossByte, bool external,
               uint8_t *buffer, size_t capacity, bool ends = true);

/// Reads bytes whole; nothing when they are not text in the encoding. `external` takes a byte order mark away
/// (with a native order it is heeded and taken away in any case).
std::optional<std::u16string> decode(const Encoding &encoding, const uint8_t *bytes, size_t count,
                                     bool external);

}  // namespace tarvik::encodings
