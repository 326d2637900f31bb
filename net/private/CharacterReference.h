/// Numeric character references in the form that XMLUtility reads them. Not installed.
#pragma once

#include <string>
#include <string_view>

namespace tarvik::xml {

/// The number between "&#" and ";", which is not empty, cut to 16 bits. Read as the C library reads an
/// unsigned number of any base: "x42" is hexadecimal, a leading zero makes it octal ("0101" is 65), reading
/// stops at the first byte that does not fit, nothing to read is 0. An uppercase X is not recognised ("X42"
/// is 0).
char16_t codeUnit(std::string_view number);

/// Ends a run of references. The characters are dropped: callers rely on text coming back without them. A
/// conversion of the run to UTF-8, surrogate pairs included, belongs here if it is ever wanted.
inline void discardRun(std::u16string &run) { run.clear(); }

}  // namespace tarvik::xml
