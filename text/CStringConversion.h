/// \file
/// C strings of a text in an encoding, in memory of the C allocator.
///
///     char *text = CFStringAllocCString(CFSTR("Zürich"), kCFStringEncodingMacRoman);   -> "Z\x9Frich"
///     char *text = CFStringAllocCString(CFSTR("日本語"), kCFStringEncodingUTF8);        -> null: 9 bytes,
///     room for 6
///
/// The buffer of a text of n UTF-16 units has 2n + 1 bytes, zero-filled: callers count on that limit. A text
/// whose form needs more fails. Results are freed with `free`. Thread: any.
#pragma once
#include <CoreFoundation/CFString.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Null for a null string, a text that the encoding lacks or that doesn't fit, and no memory.
char *CFStringAllocCString(CFStringRef string, CFStringEncoding encoding);
/// In the system's encoding, else in the first of the platform's list of available ones that can hold the text.
char *CFStringAllocConvertableCString(CFStringRef string);
/// The same into a buffer of so many bytes; false for a null argument, a size below 1, and when none can hold the text.
Boolean CFStringGetConvertableCString(CFStringRef string, char *buffer, CFIndex size);

/// The units below 0x80 in their order, others left out, as far as they fit with the zero that ends them; the rest of the
/// buffer is zero. The number of bytes copied; 0 for a null argument and a size below 1.
CFIndex CFStringGetASCIICString(CFStringRef string, char *buffer, CFIndex size);
/// The same in a new buffer of 2n + 1 bytes; null for null and without memory.
char *CFStringAllocASCIICString(CFStringRef string);

#ifdef __cplusplus
}
#endif
