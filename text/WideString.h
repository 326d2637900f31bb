/// \file
/// The wide string of the portable layer, and its conversions from and to narrow strings and 16-bit text.
///
///     Utils::string2wstring("\xE9")                  // one element, 0xFFFFFFE9: bytes are sign-extended, nothing is decoded
///     Utils::wstring2string(wstring(1, 0x141))       // "A": the low eight bits of every element
///     Utils::wshort2wstring(units of U+1F600)        // two elements, 0xD83D 0xDE00
///
/// Text in UTF-8 is converted in UTF8.h, numbers in NumberText.h. None of the functions keeps state or reports an error; memory
/// exhaustion comes out as std::bad_alloc.
#pragma once

#ifdef __cplusplus

#include <cstddef>
#include <cwchar>
#include <ios>
#include <string>

#ifdef __OBJC__
@class NSString;
#endif

static_assert(sizeof(wchar_t) == 4, "one element holds one code point");

namespace fn {

/// Character traits of 32-bit elements, element by element and by their value, without the C library's wide-character
/// functions, so that a wide string is the same under every locale. Same meaning as std::char_traits<wchar_t>.
struct fn_wchar_traits {
    using char_type = wchar_t;
    using int_type = std::wint_t;
    using pos_type = std::wstreampos;
    using off_type = std::streamoff;
    using state_type = std::mbstate_t;

    static constexpr void assign(char_type &to, const char_type &from) noexcept { to = from; }
    static constexpr bool eq(char_type a, char_type b) noexcept { return a == b; }
    static constexpr bool lt(char_type a, char_type b) noexcept { return a < b; }

    /// Negative, 0 or positive as the first `count` elements of `a` come before those of `b`, equal them or come after.
    static constexpr int compare(const char_type *a, const char_type *b, size_t count)
    {
        for (size_t i = 0; i < count; i++) {
            if (a[i] != b[i])
                return a[i] < b[i] ? -1 : 1;
        }
        return 0;
    }

    /// The number of elements before the first 0.
    static constexpr size_t length(const char_type *text)
    {
        size_t length = 0;
        while (text[length] != 0)
            length += 1;
        return length;
    }

    /// The first of `count` elements that equals `wanted`, or null.
    static constexpr const char_type *find(const char_type *text, size_t count, const char_type &wanted)
    {
        for (size_t i = 0; i < count; i++) {
            if (text[i] == wanted)
                return text + i;
        }
        return nullptr;
    }

    /// Copies elements; the ranges may overlap.
    static char_type *move(char_type *to, const char_type *from, size_t count)
    {
        if (count != 0)
            __builtin_memmove(to, from, count * sizeof(char_type));
        return to;
    }

    /// Copies elements between ranges that don't overlap.
    static char_type *copy(char_type *to, const char_type *from, size_t count)
    {
        if (count != 0)
            __builtin_memcpy(to, from, count * sizeof(char_type));
        return to;
    }

    static constexpr char_type *assign(char_type *to, size_t count, char_type element)
    {
        for (size_t i = 0; i < count; i++)
            to[i] = element;
        return to;
    }

    static constexpr char_type to_char_type(const int_type &value) noexcept
    {
        return static_cast<char_type>(value);
    }
    static constexpr int_type to_int_type(const char_type &element) noexcept
    {
        return static_cast<int_type>(element);
    }
    static constexpr bool eq_int_type(const int_type &a, const int_type &b) noexcept { return a == b; }
    static constexpr int_type eof() noexcept { return static_cast<int_type>(WEOF); }
    static constexpr int_type not_eof(const int_type &value) noexcept { return value == eof() ? 0 : value; }
};

}  // namespace fn

namespace Utils {

/// Text of 32-bit elements, one for each code point.
using wstring = std::basic_string<wchar_t, fn::fn_wchar_traits>;

/// One element for each byte, sign-extended: bytes 0x80-0xFF give 0xFFFFFF80-0xFFFFFFFF. Nothing is decoded.
wstring string2wstring(const std::string &text);

/// The low eight bits of each element. Nothing is encoded; gives back every string that string2wstring() was given.
std::string wstring2string(const wstring &text);

/// A copy of 16-bit text up to its terminating 0, each unit widened by itself (so that a surrogate pair stays two elements), with a
/// terminating 0 of its own. The caller releases it with `delete[]`. Null counts as no text.
wchar_t *wshort2wchar(const unsigned short *text);

/// The same as a string.
wstring wshort2wstring(const unsigned short *text);

#ifdef __OBJC__
/// The UTF-16 units of a string, each widened by itself. Empty for nil and for an empty string.
wstring nsstring2wstring(NSString *text);
#endif

}  // namespace Utils

using Utils::wstring;

#endif
