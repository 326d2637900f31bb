/// \file
/// The log's formatter: every conversion of the C library's printf (C17 7.21.6.1), POSIX's numbered arguments, and an object's
/// description for %@. gnustep-base's own gives other numbers for long doubles, large floating point and small integers.
#pragma once
#include <stdarg.h>

#include <optional>
#include <string>
#include <string_view>

namespace tarvik {

/// The text, in UTF-8: what isn't UTF-8 in an argument is shown as U+FFFD, byte by byte. Widths count characters; the precision of %s
/// is the most bytes that are read, and no character is cut in two. %C and %S take UTF-16, as objects' texts do. Numbers are written
/// the same in every locale. None where an object has no description in UTF-8. What a description raises goes through.
std::optional<std::string> formattedText(std::string_view format, va_list arguments);

}  // namespace tarvik
