#include "platform/Foundation/private/PropertyListTypes.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>

namespace tarvik::plist {
namespace {

constexpr int64_t kReferenceDay = 11323;  ///< 2001-01-01, in days since 1970

// Days since 1970-01-01 of a date of the proleptic Gregorian calendar, and back (H. Hinnant's civil
// algorithms).
constexpr int64_t daysFromCivil(int64_t year, unsigned month, unsigned day)
{
    year -= month <= 2;
    const int64_t era = (year >= 0 ? year : year - 399) / 400;
    const auto yearOfEra = unsigned(year - era * 400);
    const unsigned dayOfYear = (153 * (month + (month > 2 ? -3U : 9U)) + 2) / 5 + day - 1;
    const unsigned dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * 146097 + int64_t(dayOfEra) - 719468;
}

struct Civil {
    int64_t year;
    unsigned month, day;
};
constexpr Civil civilFromDays(int64_t days)
{
    days += 719468;
    const int64_t era = (days >= 0 ? days : days - 146096) / 146097;
    const auto dayOfEra = unsigned(days - era * 146097);
    const unsigned yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const unsigned dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const unsigned shifted = (5 * dayOfYear + 2) / 153;
    const unsigned month = shifted < 10 ? shifted + 3 : shifted - 9;
    return {int64_t(yearOfEra) + era * 400 + (month <= 2), month, dayOfYear - (153 * shifted + 2) / 5 + 1};
}
static_assert(daysFromCivil(2001, 1, 1) == kReferenceDay);

}  // namespace

Kind kindOf(id object)
{
    // A list holds few classes, many times each: the last ones asked for are remembered.
    struct Known {
        Class type;
        Kind kind;
    };
    thread_local std::array<Known, 64> known{};
    if (!object)
        return Kind::none;
    Class type = object_getClass(object);
    Known &slot = known[(reinterpret_cast<uintptr_t>(type) * 0x9E3779B97F4A7C15U) >> 58];
    if (slot.type == type)
        return slot.kind;

    Kind kind = Kind::none;
    if ([object isKindOfClass:[NSString class]]) {
        kind = Kind::string;
    } else if ([object isKindOfClass:[NSDictionary class]]) {
        kind = Kind::dictionary;
    } else if ([object isKindOfClass:[NSArray class]]) {
        kind = Kind::array;
    } else if ([object isKindOfClass:[[NSNumber numberWithBool:YES] class]]) {
        kind = Kind::boolean;
    } else if ([object isKindOfClass:[NSNumber class]]) {
        const char code = *[object objCType];
        if ([object isKindOfClass:[NSDecimalNumber class]])  // its class is not its kind: not remembered
            return Kind::real;
        kind = code == 'd' || code == 'f' ? Kind::real : Kind::integer;
    } else if ([object isKindOfClass:[NSDate class]]) {
        kind = Kind::date;
    } else if ([object isKindOfClass:[NSData class]]) {
        kind = Kind::data;
    }
    slot = {type, kind};
    return kind;
}

std::optional<double> parseDate(std::string_view text)
{
    const bool isNegative = text.starts_with('-');
    if (isNegative)
        text.remove_prefix(1);
    std::array<int64_t, 6> fields{};
    const char *at = text.data(), *const end = at + text.size();
    for (size_t i = 0; i < fields.size(); ++i) {
        const auto [next, error] = std::from_chars(at, end, fields[i]);
        if (error != std::errc() || *at == '-' || next == end || *next != "--T::Z"[i])
            return std::nullopt;
        at = next + 1;
    }
    auto [year, month, day, hour, minute, second] = fields;
    if (at != end || year > 99999999 || month < 1 || month > 12 || day < 1 || day > 31 || hour > 24 ||
        minute > 59 || second > 60)
        return std::nullopt;
    if (isNegative)
        year = -year;
    const int64_t days = daysFromCivil(year, unsigned(month), unsigned(day)) - kReferenceDay;
    return double(days * 86400 + hour * 3600 + minute * 60 + second);
}

std::string formatDate(double sinceReference)
{
    const double limited =
        std::isnan(sinceReference) ? 0 : std::fmin(std::fmax(std::floor(sinceReference), -3e15), 3e15);
    const auto seconds = int64_t(limited);
    const int64_t days = seconds / 86400 - (seconds % 86400 < 0);
    const auto rest = unsigned(seconds - days * 86400);
    const auto [year, month, day] = civilFromDays(days + kReferenceDay);
    char text[48];
    const int length =
        snprintf(text, sizeof text, "%s%04lld-%02u-%02uT%02u:%02u:%02uZ", year < 0 ? "-" : "",
                 (long long)std::abs(year), month, day, rest / 3600, rest / 60 % 60, rest % 60);
    return std::string(text, size_t(length));
}

std::optional<std::string> parseBase64(std::string_view text)
{
    static constexpr auto values = [] {
        std::array<int8_t, 256> table{};
        table.fill(-1);
        for (int i = 0; i < 64; ++i)
            table[uint8_t("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/"[i])] = int8_t(i);
        for (const char c : {' ', '\t', '\n', '\r'})
            table[uint8_t(c)] = -2;
        return table;
    }();
    std::string out;
    out.reserve(text.size() / 4 * 3);
    uint32_t group = 0;
    int count = 0, padding = 0;
    for (const char c : text) {
        const int value = values[uint8_t(c)];
        if (value == -2)
            continue;
        if (c == '=') {
            if (++padding > 2 || count + padding > 4)
                return std::nullopt;
            continue;
        }
        if (value < 0 || padding > 0)
            return std::nullopt;
        group = group << 6 | uint32_t(value);
        if (++count == 4) {
            out += {char(group >> 16), char(group >> 8), char(group)};
            group = 0;
            count = 0;
        }
    }
    if (count == 1 || (padding > 0 && count + padding != 4))
        return std::nullopt;
    if (count == 2)
        out += char(group >> 4);
    if (count == 3)
        out += {char(group >> 10), char(group >> 2)};
    return out;
}

}  // namespace tarvik::plist
