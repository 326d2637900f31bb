/// \file
/// Strings as Pascal strings, external representations, UTF-16 units, file-name records and converted bytes.
///
///     ByteCount in, out; OSStatus status;
///     char *bytes = CFStringAllocTECConvertedText(CFSTR("é"), kCFStringEncodingMacRoman, 0, &in, &out, &status);
///     -> 0x8E; in 2, out 1, status 0; free(bytes)
///
/// "Convertable" forms take the system's encoding, else the first of the platform's list of available ones that holds the
/// text. Alloc results are zero-filled and freed with `free`, Create results released. Nothing is logged. Thread: any.
#pragma once
#include <Carbon/AEDataModel.h>
#include <Carbon/Files.h>
#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFString.h>

#ifdef __cplusplus
extern "C" {
#endif

/// A Pascal string into a buffer of so many bytes; false for a null argument, a size below 1, and when no encoding fits.
Boolean CFStringGetConvertablePascalString(CFStringRef string, StringPtr buffer, CFIndex size);
/// The external representation without loss. When no encoding holds the text, it is in the system's, with the byte 0xFF for
/// what is missing: callers count on that. Null for null.
CFDataRef CFStringCreateConvertableExternalRepresentation(CFStringRef string);

/// A text of 1 to 255 units; otherwise false, and the record is zero.
Boolean CFStringGetHFSUniStr255(CFStringRef string, HFSUniStr255 *record);
/// The UTF-16 units and a zero unit; null for null and without memory.
UniChar *CFStringAllocUnicodeCharacters(CFStringRef string);

/// The text of a descriptor of type 'TEXT' (up to its first zero byte) in an encoding; null for null, for any other type and for
/// bytes that are no text in it.
CFStringRef CFStringCreateWithAEDesc(const AEDesc *desc, CFStringEncoding encoding);

/// Converts through the platform's text-encoding converter in one call, without a flush, into a new buffer of
/// bytesPerCharacter (0: 4) bytes for each unit and one more. The buffer is the answer even when the conversion failed: the
/// status tells. Pointers for results may be null. Null, all results 0, for null; null without memory.
char *CFStringAllocTECConvertedText(CFStringRef string, TextEncoding encoding, UInt32 bytesPerCharacter,
                                    ByteCount *readBytes, ByteCount *writtenBytes, OSStatus *status);
/// The same as a Pascal string, cut to 255 bytes.
StringPtr CFStringAllocTECConvertedPascalString(CFStringRef string, TextEncoding encoding,
                                                UInt32 bytesPerCharacter, ByteCount *readBytes,
                                                ByteCount *writtenBytes, OSStatus *status);

#ifdef __cplusplus
}
#endif
