/// \file
/// Searches in C strings.
#pragma once
#include <CoreFoundation/CFBase.h>

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

/// The last place in the text where the needle begins, overlapping places included: "aa" in "aaaa" is at 2.
/// Null for a null argument, an empty needle, or no occurrence. Ignoring case is the C library's way (strcasestr).
/// Linear in the text for a needle of bounded length.
const char *StringGetLastSubstring(const char *text, const char *needle, Boolean ignoreCase);
/// Whether the text ends with the suffix; false for null and for an empty suffix.
Boolean StringIsEndWith(const char *text, const char *suffix, Boolean ignoreCase);
/// The number of bytes before the terminating zero, 0 for null. It counts bytes, not characters: callers rely on it.
size_t UTF8StringGetLength(const char *text);

#ifdef __cplusplus
}
#endif
