#include "platform/AppleEvents/private/Coercions.h"
#include "platform/TextEncoding/private/Encodings.h"

#include <CoreFoundation/CFString.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <variant>

namespace tarvik::ae {

namespace {

struct Code {
    OSType code;
};
using Text = std::u16string;
using Value = std::variant<bool, int64_t, uint64_t, double, Code, Text>;

// --- text

std::optional<Text> decoded(std::string_view bytes, uint32_t encoding, bool external = false)
{
    return encodings::decode(*encodings::find(encoding), reinterpret_cast<const uint8_t *>(bytes.data()),
                             bytes.size(), external);
}

/// Text of the older types: UTF-8, or what it was before.
std::optional<Text> systemText(std::string_view bytes)
{
    auto text = decoded(bytes, kCFStringEncodingUTF8);
    return text ? text : decoded(bytes, kCFStringEncodingMacRoman);
}

bool isBigEndianMarkless(std::string_view bytes)
{
    return bytes.substr(0, 2) != "\xFF\xFE" && bytes.substr(0, 2) != "\xFE\xFF";
}

std::optional<Text> readText(DescType type, std::string_view bytes)
{
    constexpr size_t kScriptAndLanguage = 4;
    switch (type) {
    case typeText: return systemText(bytes);
    case typeUTF8Text:
    case typeApplicationBundleID: return decoded(bytes, kCFStringEncodingUTF8);
    case typeUnicodeText: {
        if (bytes.size() % sizeof(char16_t))
            return std::nullopt;
        Text units(bytes.size() / sizeof(char16_t), u'\0');
        std::memcpy(units.data(), bytes.data(), bytes.size());
        return units;
    }
    case typeUTF16ExternalRepresentation:
        return decoded(bytes, isBigEndianMarkless(bytes) ? kCFStringEncodingUTF16BE : kCFStringEncodingUTF16,
                       true);
    case typeIntlText:
        return bytes.size() < kScriptAndLanguage ? std::nullopt
                                                 : systemText(bytes.substr(kScriptAndLanguage));
    case typeCString: return systemText(bytes.substr(0, bytes.find('\0')));
    case typePString:
        if (bytes.empty() || size_t(uint8_t(bytes[0])) > bytes.size() - 1)
            return std::nullopt;
        return systemText(bytes.substr(1, uint8_t(bytes[0])));
    default: return std::nullopt;
    }
}

std::string encoded(const Text &text, uint32_t encoding, bool external = false)
{
    const auto &row = *encodings::find(encoding);
    const auto *units = reinterpret_cast<const uint16_t *>(text.data());
    std::string bytes(encodings::encode(row, units, text.size(), '?', external, nullptr, 0).bytes, '\0');
    encodings::encode(row, units, text.size(), '?', external, reinterpret_cast<uint8_t *>(bytes.data()),
                      bytes.size());
    return bytes;
}

std::optional<OwnedDesc> writeText(const Text &text, DescType type)
{
    switch (type) {
    case typeText:
    case typeUTF8Text:
    case typeApplicationBundleID: return newValue(type, encoded(text, kCFStringEncodingUTF8));
    case typeUnicodeText:
        return newValue(type, {reinterpret_cast<const char *>(text.data()), text.size() * sizeof(char16_t)});
    case typeUTF16ExternalRepresentation: return newValue(type, encoded(text, kCFStringEncodingUTF16, true));
    case typeIntlText: return newValue(type, std::string(4, '\0') + encoded(text, kCFStringEncodingUTF8));
    case typeCString: return newValue(type, encoded(text, kCFStringEncodingUTF8) + '\0');
    case typePString: {
        const std::string bytes = encoded(text, kCFStringEncodingUTF8);
        if (bytes.size() > 255)
            return std::nullopt;
        return newValue(type, char(bytes.size()) + bytes);
    }
    default: return std::nullopt;
    }
}

/// Text of plain ASCII without the spaces around it: what a number or a word is read from.
std::optional<std::string> word(const Text &text)
{
    constexpr size_t kLongestNumber = 400;
    const auto isSpace = [](char16_t c) { return c == ' ' || (c >= 9 && c <= 13) || c == 0xA0; };
    auto first = std::find_if_not(text.begin(), text.end(), isSpace);
    const auto last = std::find_if_not(text.rbegin(), std::make_reverse_iterator(first), isSpace).base();
    if (last - first > long(kLongestNumber) || std::any_of(first, last, [](char16_t c) { return c > 0x7E; }))
        return std::nullopt;
    std::string ascii;
    std::transform(first, last, std::back_inserter(ascii),
                   [](char16_t c) { return char(c >= 'A' && c <= 'Z' ? c + 32 : c); });
    return ascii;
}

Text wide(std::string_view ascii) { return Text(ascii.begin(), ascii.end()); }

// --- numbers

template <class Number>
std::optional<Value> readNumber(std::string_view bytes)
{
    Number number;
    if (bytes.size() != sizeof number)
        return std::nullopt;
    std::memcpy(&number, bytes.data(), sizeof number);
    if constexpr (std::is_floating_point_v<Number>)
        return Value(double(number));
    else if constexpr (std::is_same_v<Number, uint64_t>)
        return number > uint64_t(std::numeric_limits<int64_t>::max()) ? Value(number)
                                                                      : Value(int64_t(number));
    else
        return Value(int64_t(number));
}

std::optional<Value> numberIn(const Text &text)
{
    const auto ascii = word(text);
    if (!ascii || ascii->empty())
        return std::nullopt;
    std::string_view digits = *ascii;
    if (digits[0] == '+' && digits.size() > 1 && digits[1] != '-')
        digits.remove_prefix(1);
    const char *const end = digits.data() + digits.size();
    int64_t whole;
    if (auto [at, error] = std::from_chars(digits.data(), end, whole); error == std::errc() && at == end)
        return Value(whole);
    double real;
    const bool isNumber = digits.find_first_not_of("0123456789+-.e") == digits.npos;
    if (auto [at, error] = std::from_chars(digits.data(), end, real);
        isNumber && error == std::errc() && at == end)
        return Value(real);
    return std::nullopt;
}

template <class Number, class From>
std::optional<OwnedDesc> writeAs(From value, DescType type)
{
    Number number;
    if constexpr (std::is_floating_point_v<Number>) {
        number = Number(value);
        if (std::isinf(number) && !std::isinf(double(value)))
            return std::nullopt;
    } else if constexpr (std::is_floating_point_v<From>) {
        // The bounds are powers of two, which a double holds exactly.
        const double rounded = std::nearbyint(value),
                     above = std::ldexp(1.0, std::numeric_limits<Number>::digits);
        if (!(rounded >= double(std::numeric_limits<Number>::min()) && rounded < above))
            return std::nullopt;
        number = Number(rounded);
    } else {
        if (!std::in_range<Number>(value))
            return std::nullopt;
        number = Number(value);
    }
    return newValue(type, {reinterpret_cast<const char *>(&number), sizeof number});
}

template <class From>
std::optional<OwnedDesc> writeNumber(From value, DescType type)
{
    switch (type) {
    case typeSInt16: return writeAs<int16_t>(value, type);
    case typeUInt16: return writeAs<uint16_t>(value, type);
    case typeSInt32: return writeAs<int32_t>(value, type);
    case typeUInt32: return writeAs<uint32_t>(value, type);
    case typeSInt64: return writeAs<int64_t>(value, type);
    case typeUInt64: return writeAs<uint64_t>(value, type);
    case typeIEEE32BitFloatingPoint: return writeAs<float>(value, type);
    case typeIEEE64BitFloatingPoint: return writeAs<double>(value, type);
    default: return std::nullopt;
    }
}

template <class Number>
Text numberText(Number value)
{
    char text[64];
    return wide({text, std::to_chars(text, text + sizeof text, value).ptr});
}

// --- the classes of types

bool isNumber(DescType type)
{
    switch (type) {
    case typeSInt16:
    case typeUInt16:
    case typeSInt32:
    case typeUInt32:
    case typeSInt64:
    case typeUInt64:
    case typeIEEE32BitFloatingPoint:
    case typeIEEE64BitFloatingPoint: return true;
    default: return false;
    }
}
bool isBoolean(DescType type) { return type == typeBoolean || type == typeTrue || type == typeFalse; }
bool isCode(DescType type)
{
    switch (type) {
    case typeType:
    case typeEnumerated:
    case typeKeyword:
    case typeProperty:
    case typeApplSignature: return true;
    default: return false;
    }
}
bool isText(DescType type)
{
    switch (type) {
    case typeText:
    case typeUTF8Text:
    case typeUnicodeText:
    case typeUTF16ExternalRepresentation:
    case typeIntlText:
    case typeCString:
    case typePString:
    case typeApplicationBundleID: return true;
    default: return false;
    }
}

std::optional<Value> read(DescType type, std::string_view bytes)
{
    switch (type) {
    case typeSInt16: return readNumber<int16_t>(bytes);
    case typeUInt16: return readNumber<uint16_t>(bytes);
    case typeSInt32: return readNumber<int32_t>(bytes);
    case typeUInt32: return readNumber<uint32_t>(bytes);
    case typeSInt64: return readNumber<int64_t>(bytes);
    case typeUInt64: return readNumber<uint64_t>(bytes);
    case typeIEEE32BitFloatingPoint: return readNumber<float>(bytes);
    case typeIEEE64BitFloatingPoint: return readNumber<double>(bytes);
    case typeTrue: return Value(true);
    case typeFalse: return Value(false);
    case typeBoolean:
        if (bytes.size() != 1)
            return std::nullopt;
        return Value(bytes[0] != 0);
    default: break;
    }
    if (isCode(type)) {
        Code code;
        if (bytes.size() != sizeof code)
            return std::nullopt;
        std::memcpy(&code, bytes.data(), sizeof code);
        return Value(code);
    }
    if (auto text = readText(type, bytes))
        return Value(std::move(*text));
    return std::nullopt;
}

// --- from each kind of value to a type

std::optional<OwnedDesc> writeBoolean(bool value, DescType type)
{
    if (type == typeBoolean)
        return newValue(type, {value ? "\1" : "\0", 1});
    return type == (value ? DescType(typeTrue) : DescType(typeFalse)) ? std::optional(newValue(type, {}))
                                                                      : std::nullopt;
}

struct Write {
    DescType type;

    std::optional<OwnedDesc> operator()(bool value) const
    {
        if (isBoolean(type))
            return writeBoolean(value, type);
        return isText(type) ? writeText(value ? u"true" : u"false", type) : writeNumber(int64_t(value), type);
    }
    template <class Number>
    std::optional<OwnedDesc> operator()(Number value) const
    {
        if (isBoolean(type))
            return writeBoolean(value != 0, type);
        return isText(type) ? writeText(numberText(value), type) : writeNumber(value, type);
    }
    std::optional<OwnedDesc> operator()(Code value) const
    {
        if (isCode(type))
            return newValue(type, {reinterpret_cast<const char *>(&value), sizeof value});
        if (!isText(type))
            return std::nullopt;
        char letters[4];
        const OSType ordered = __builtin_bswap32(value.code);
        std::memcpy(letters, &ordered, sizeof ordered);
        const auto text = decoded({letters, 4}, kCFStringEncodingMacRoman);
        return text ? writeText(*text, type) : std::nullopt;
    }
    std::optional<OwnedDesc> operator()(const Text &value) const
    {
        if (isText(type))
            return writeText(value, type);
        if (isNumber(type)) {
            const auto number = numberIn(value);
            return number ? std::visit(*this, *number) : std::nullopt;
        }
        if (isBoolean(type)) {
            const auto ascii = word(value);
            return ascii == "true" || ascii == "false" ? writeBoolean(ascii == "true", type) : std::nullopt;
        }
        const std::string letters = encoded(value, kCFStringEncodingMacRoman);
        if (!isCode(type) || value.size() != 4 || letters.size() != 4)
            return std::nullopt;
        OSType code;
        std::memcpy(&code, letters.data(), sizeof code);
        return (*this)(Code{__builtin_bswap32(code)});
    }
};

}  // namespace

bool isScalar(DescType type) { return isNumber(type) || isBoolean(type) || isCode(type) || isText(type); }

std::optional<std::string> textOf(DescType type, std::string_view bytes)
{
    const auto text = readText(type, bytes);
    return text ? std::optional(encoded(*text, kCFStringEncodingUTF8)) : std::nullopt;
}

std::optional<OwnedDesc> coerceScalar(DescType from, std::string_view bytes, DescType to)
{
    if (!isScalar(from) || !isScalar(to))
        return std::nullopt;
    const auto value = read(from, bytes);
    return value ? std::visit(Write{to}, *value) : std::nullopt;
}

}  // namespace tarvik::ae
