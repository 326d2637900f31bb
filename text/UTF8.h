/// \file
/// UTF-8 to wide strings and back.
///
///     Utils::utf8towstring("\xE2\x82\xAC")   // L"\x20AC"
///     Utils::wstring2utf8(L"\x20AC")         // "\xE2\x82\xAC"
///
/// Neither function validates, fails or keeps state; both may be called from any thread. Memory exhaustion comes out as
/// std::bad_alloc. Long texts are converted with the widest vectors that the processor has; the result is the same on all.
///
/// UTF-8 is the encoding of RFC 3629, read and written with these differences, on which callers rely:
///  - Decoding takes as many bytes as the lead byte asks for (0xC0-0xDF two, 0xE0-0xEF three, 0xF0-0xFF four) and the low six
///    bits of each byte after it, whatever its form. Overlong forms and surrogates come out as they stand.
///  - A continuation byte without a lead (0x80-0xBF) decodes to its low seven bits: "\xA9" gives 0x29.
///  - Bytes missing at the end of the text count as 0: "\xE2\x82" gives 0x2080.
///  - The result ends before the first code point 0, in whatever form it is written.
///  - Encoding covers U+0000 to U+FFFF; elements above are dropped, so that a round trip loses them. Negative elements, such as
///    the sign-extended bytes of string2wstring(), give their low seven bits: 0xFFFFFFE9 gives "\x69".
#pragma once

#ifdef __cplusplus

#include <string>

#include <Tarvik/text/WideString.h>

namespace Utils {

/// The code points of a text in UTF-8. Empty for an empty text.
wstring utf8towstring(const std::string &text);

/// The UTF-8 of a wide string. Empty for an empty one, and for one that holds nothing but dropped elements.
std::string wstring2utf8(const wstring &text);

}  // namespace Utils

#endif
