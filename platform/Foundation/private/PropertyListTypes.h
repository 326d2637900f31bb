/// \file
/// What a property list is made of, and its text forms of numbers, dates and data.
#pragma once
#import <Foundation/Foundation.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tarvik::plist {

enum class Kind { none, dictionary, array, string, boolean, integer, real, date, data };

/// The kind of an object; none for what no property list holds.
Kind kindOf(id object);

/// Seconds since 2001 of "2004-01-02T03:04:05Z", and back. Every year that 64 bits of seconds reach.
std::optional<double> parseDate(std::string_view text);
std::string formatDate(double sinceReference);

/// RFC 4648, white space between the characters allowed; nothing for anything else.
std::optional<std::string> parseBase64(std::string_view text);

}  // namespace tarvik::plist
