/// \file
/// Dotted version numbers.
#pragma once

#ifdef __cplusplus

#include <Tarvik/text/WideString.h>

namespace Utils {

/// Compares two versions component by component, as numbers: -1, 0 or 1 as `a` is older than `b`, the same or newer.
///
///     10.4.10 , 10.4.9 ->  1        1..2 , 1.2 ->  0        1.0 , 1 -> 1        "" , 0 -> -1
///
/// Components are what stands between the dots; empty ones don't count. A component is read as by wstring2long(): "3rc1" is 3 and
/// "b2" is 0. When all common components are equal, the version with more of them is the newer one, even where they are
/// zeros. Any thread.
int compare_version(const wstring &a, const wstring &b);

}  // namespace Utils

#endif
