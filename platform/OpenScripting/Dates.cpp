// Dates on the wall clock, in the proleptic Gregorian calendar, shown and read in the English of the United States.
#include "private/Machine.h"

#include <array>
#include <cstdio>
#include <ctime>

namespace tarvik::osa {

namespace {

constexpr const char *kMonths[] = {"January", "February", "March",     "April",   "May",      "June",
                                   "July",    "August",   "September", "October", "November", "December"};
constexpr const char *kDays[] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                 "Thursday", "Friday", "Saturday"};

// Days since 1970-01-01, after Howard Hinnant's "chrono-Compatible Low-Level Date Algorithms".
int64_t daysFromCivil(int64_t year, int month, int day)
{
    year -= month <= 2;
    const int64_t era = (year >= 0 ? year : year - 399) / 400;
    const int64_t ofEra = year - era * 400;
    const int64_t ofYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    return era * 146097 + ofEra * 365 + ofEra / 4 - ofEra / 100 + ofYear - 719468;
}

int64_t floorDiv(int64_t a, int64_t b) { return a / b - (a % b < 0); }

/// How many letters of a name, three at least, the word has; -1: another word.
template <size_t N>
int indexOf(const char *const (&names)[N], std::string_view word)
{
    if (word.size() < 3)
        return -1;
    for (size_t i = 0; i < N; ++i) {
        const std::string_view name = names[i];
        bool same = word.size() <= name.size();
        for (size_t k = 0; same && k < word.size(); ++k)
            same = (word[k] | 32) == (name[k] | 32);
        if (same)
            return int(i);
    }
    return -1;
}

}  // namespace

int64_t currentSeconds()
{
    const time_t now = time(nullptr);
    tm local{};
    localtime_r(&now, &local);
    return int64_t(now) + local.tm_gmtoff;
}

DateParts partsOf(int64_t seconds)
{
    const int64_t days = floorDiv(seconds, 86400);
    const int64_t ofDay = seconds - days * 86400;
    const int64_t shifted = days + 719468;
    const int64_t era = floorDiv(shifted, 146097), ofEra = shifted - era * 146097;
    const int64_t yearOfEra = (ofEra - ofEra / 1460 + ofEra / 36524 - ofEra / 146096) / 365;
    const int64_t ofYear = ofEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const int64_t mp = (5 * ofYear + 2) / 153;
    DateParts parts{};
    parts.day = int(ofYear - (153 * mp + 2) / 5 + 1);
    parts.month = int(mp < 10 ? mp + 3 : mp - 9);
    parts.year = yearOfEra + era * 400 + (parts.month <= 2);
    parts.hour = int(ofDay / 3600);
    parts.minute = int(ofDay / 60 % 60);
    parts.second = int(ofDay % 60);
    parts.weekday = int(((days + 4) % 7 + 7) % 7);
    return parts;
}

int64_t secondsOf(const DateParts &parts)
{
    // Months beyond the year's carry over; days do so by themselves.
    const int64_t months = parts.year * 12 + parts.month - 1;
    const int64_t year = floorDiv(months, 12);
    return (daysFromCivil(year, int(months - year * 12) + 1, 1) + parts.day - 1) * 86400 +
           parts.hour * 3600LL + parts.minute * 60LL + parts.second;
}

std::string dateOnly(int64_t seconds)
{
    const DateParts parts = partsOf(seconds);
    return std::string(kDays[parts.weekday]) + ", " + kMonths[parts.month - 1] + " " +
           std::to_string(parts.day) + ", " + std::to_string(parts.year);
}

std::string shortDate(int64_t seconds)
{
    const DateParts parts = partsOf(seconds);
    char text[64];
    std::snprintf(text, sizeof text, "%d/%d/%02d", parts.month, parts.day,
                  int(((parts.year % 100) + 100) % 100));
    return text;
}

std::string timeText(int64_t seconds)
{
    const DateParts parts = partsOf(seconds);
    char text[32];
    std::snprintf(text, sizeof text, "%d:%02d:%02d %s", parts.hour % 12 ? parts.hour % 12 : 12, parts.minute,
                  parts.second, parts.hour < 12 ? "AM" : "PM");
    return text;
}

std::string dateText(int64_t seconds) { return dateOnly(seconds) + " at " + timeText(seconds); }

/// "November 23, 2026 at 1:05 PM", "23 Nov 2026", "11/23/2026 13:05", "2026-11-23 13:05:30", "1:05 PM" (today)
std::optional<int64_t> parseDate(std::string_view text)
{
    DateParts parts = partsOf(currentSeconds());
    const DateParts today = parts;
    parts.hour = parts.minute = parts.second = 0;
    int month = 0;
    bool hasTime = false, hasDate = false, am = false, pm = false;
    std::array<int64_t, 3> loose{};  // numbers beside the name of a month
    size_t looseCount = 0;
    for (size_t i = 0; i < text.size();) {
        const char c = text[i];
        if (c == ' ' || c == ',' || c == '\t') {
            ++i;
            continue;
        }
        if (c >= '0' && c <= '9') {
            int64_t numbers[3] = {};
            char between = 0;
            size_t count = 0;
            for (;;) {
                size_t digits = 0;
                int64_t number = 0;
                while (i < text.size() && text[i] >= '0' && text[i] <= '9' && digits < 6)
                    number = number * 10 + (text[i++] - '0'), ++digits;
                if (!digits || count == 3)
                    return std::nullopt;
                numbers[count++] = number;
                if (i + 1 < text.size() && (text[i] == ':' || text[i] == '/' || text[i] == '-') &&
                    (!between || text[i] == between) && text[i + 1] >= '0' && text[i + 1] <= '9')
                    between = text[i++];
                else
                    break;
            }
            if (between == ':') {
                if (hasTime || numbers[0] > 24 || numbers[1] > 59 || numbers[2] > 60)
                    return std::nullopt;
                hasTime = true;
                parts.hour = int(numbers[0]), parts.minute = int(numbers[1]), parts.second = int(numbers[2]);
            } else if (between) {
                if (hasDate || count < 2)
                    return std::nullopt;
                hasDate = true;
                const bool yearFirst = numbers[0] > 31;
                if (yearFirst && count < 3)
                    return std::nullopt;
                parts.year = yearFirst ? numbers[0] : count == 3 ? numbers[2] : today.year;
                month = int(numbers[yearFirst ? 1 : 0]);
                parts.day = int(numbers[yearFirst ? 2 : 1]);
                if (parts.year < 100 && count == 3 && !yearFirst)
                    parts.year += parts.year < 70 ? 2000 : 1900;
            } else {
                if (looseCount == 3)
                    return std::nullopt;
                loose[looseCount++] = numbers[0];
                // 5th, 2nd
                if (i + 1 < text.size() && (text.substr(i, 2) == "st" || text.substr(i, 2) == "nd" ||
                                            text.substr(i, 2) == "rd" || text.substr(i, 2) == "th"))
                    i += 2;
            }
            continue;
        }
        size_t end = i;
        while (end < text.size() &&
               (((text[end] | 32) >= 'a' && (text[end] | 32) <= 'z') || text[end] == '.'))
            ++end;
        std::string_view word = text.substr(i, end - i);
        if (word.empty())
            return std::nullopt;
        i = end;
        if (word.back() == '.')
            word.remove_suffix(1);
        if (const int found = indexOf(kMonths, word); found >= 0) {
            if (month)
                return std::nullopt;
            month = found + 1;
        } else if (word == "AM" || word == "am")
            am = true;
        else if (word == "PM" || word == "pm")
            pm = true;
        else if (indexOf(kDays, word) < 0 && word != "at" && word != "of")
            return std::nullopt;
    }
    if ((am || pm) && !hasTime) {
        if (!looseCount)
            return std::nullopt;
        parts.hour = int(loose[--looseCount]);
        hasTime = true;
    }
    if (am || pm) {
        if (parts.hour < 1 || parts.hour > 12)
            return std::nullopt;
        parts.hour = parts.hour % 12 + (pm ? 12 : 0);
    }
    if (month && !hasDate) {  // November 23, 2026; 23 November 2026; November 2026
        hasDate = true;
        parts.day = 1;
        if (looseCount == 0)
            return std::nullopt;
        if (looseCount == 1 && loose[0] > 31)
            parts.year = loose[0];
        else
            parts.day = int(loose[0]);
        if (looseCount >= 2)
            parts.year = loose[1] < 100 ? loose[1] + (loose[1] < 70 ? 2000 : 1900) : loose[1];
    } else if (looseCount) {
        return std::nullopt;
    }
    if (!hasDate && !hasTime)
        return std::nullopt;
    if (hasDate)
        parts.month = month;
    if (parts.month < 1 || parts.month > 12 || parts.day < 1 || parts.day > 31)
        return std::nullopt;
    return secondsOf(parts);
}

}  // namespace tarvik::osa
