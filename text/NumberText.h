/// \file
/// Numbers as text and back, in decimal.
///
///     Utils::int2string(-42)              // "-42"
///     Utils::string2int("  17 files")     // 17
///     Utils::bytesize2string(1049600)     // "1 MB"
///
/// Reading is that of the C library's `atoi` and `atol` in a 32-bit process: leading white space and a sign are accepted, reading
/// stops at the first character that is no digit, and a text without leading digits gives 0. Beyond 32 bits the result is the
/// nearest limit, 2147483647 or -2147483648. Nothing keeps state or fails.
#pragma once

#ifdef __cplusplus

#include <cstdint>
#include <string>

#include <Tarvik/text/WideString.h>

namespace Utils {

std::string int2string(int32_t number);
std::string long2string(int32_t number);
wstring int2wstring(int32_t number);
wstring long2wstring(int32_t number);

int32_t string2int(const std::string &text);
int32_t string2long(const std::string &text);

/// Wide text is first narrowed by wstring2string(), which keeps eight bits of each element: U+0131 reads as the digit 1.
int32_t wstring2int(const wstring &text);
int32_t wstring2long(const wstring &text);

/// A size in bytes for people: whole "Bytes", "KB" or "MB", rounded down, in the smallest unit that needs no number above 1024.
///
///     0 -> "0 Bytes"    1024 -> "1024 Bytes"    1025 -> "1 KB"    1048576 -> "1024 KB"    4294967295 -> "4095 MB"
///
/// A full 1024 stays in its unit, on purpose, and there is no unit above MB.
std::string bytesize2string(uint32_t size);

}  // namespace Utils

#endif
