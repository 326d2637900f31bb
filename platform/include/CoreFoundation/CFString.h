/// CFString.h: strings of UTF-16 units, their encodings, and constant strings.
///
/// Every index, length and range counts UTF-16 units unless a name says bytes. An encoding is one of the identifiers
/// below or of CFStringEncodingExt.h; functions answer their failure for an identifier that is not available.
#pragma once

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFDictionary.h>

CF_EXTERN_C_BEGIN

typedef UInt32 CFStringEncoding;

enum {
    kCFStringEncodingMacRoman      = 0,
    kCFStringEncodingWindowsLatin1 = 0x0500,
    kCFStringEncodingISOLatin1     = 0x0201,
    kCFStringEncodingNextStepLatin = 0x0B01,
    kCFStringEncodingASCII         = 0x0600,
    kCFStringEncodingUnicode       = 0x0100, ///< UTF-16; in an external representation with a byte order mark
    kCFStringEncodingUTF8          = 0x08000100,
    kCFStringEncodingNonLossyASCII = 0x0BFF, ///< ASCII with \uXXXX and octal escapes

    kCFStringEncodingUTF16   = 0x0100,
    kCFStringEncodingUTF16BE = 0x10000100,
    kCFStringEncodingUTF16LE = 0x14000100,
    kCFStringEncodingUTF32   = 0x0C000100,
    kCFStringEncodingUTF32BE = 0x18000100,
    kCFStringEncodingUTF32LE = 0x1C000100
};
#define kCFStringEncodingInvalidId (0xFFFFFFFFU) ///< no encoding; ends the list of available ones

typedef CFOptionFlags CFStringCompareFlags;
enum {
    kCFCompareCaseInsensitive = 1,
    kCFCompareBackwards       = 4, ///< in the Find functions only
    kCFCompareAnchored        = 8, ///< in the Find functions only
    kCFCompareNonliteral      = 16,
    kCFCompareLocalized       = 32,
    kCFCompareNumerically     = 64
};

/// A constant string: CFSTR("text"), never released, the same reference for the same text.
/// The argument is a string literal in ASCII or UTF-8.
#ifdef __OBJC__
#define CFSTR(cStr) ((CFStringRef) @"" cStr)
#else
#define CFSTR(cStr) __CFStringMakeConstantString("" cStr "")
#endif
CF_EXPORT CFStringRef __CFStringMakeConstantString(const char *text);

CF_EXPORT CFTypeID CFStringGetTypeID(void);

// Making strings. Null when the bytes are no text in the encoding.
CF_EXPORT CFStringRef CFStringCreateWithPascalString(CFAllocatorRef allocator, ConstStr255Param text, CFStringEncoding encoding);
CF_EXPORT CFStringRef CFStringCreateWithCString(CFAllocatorRef allocator, const char *text, CFStringEncoding encoding);
CF_EXPORT CFStringRef CFStringCreateWithCStringNoCopy(CFAllocatorRef allocator, const char *text, CFStringEncoding encoding, CFAllocatorRef contentsDeallocator);
CF_EXPORT CFStringRef CFStringCreateWithBytes(CFAllocatorRef allocator, const UInt8 *bytes, CFIndex count, CFStringEncoding encoding, Boolean isExternalRepresentation);
CF_EXPORT CFStringRef CFStringCreateWithCharacters(CFAllocatorRef allocator, const UniChar *characters, CFIndex count);
CF_EXPORT CFStringRef CFStringCreateWithCharactersNoCopy(CFAllocatorRef allocator, const UniChar *characters, CFIndex count, CFAllocatorRef contentsDeallocator);
CF_EXPORT CFStringRef CFStringCreateWithFileSystemRepresentation(CFAllocatorRef allocator, const char *path);
CF_EXPORT CFStringRef CFStringCreateFromExternalRepresentation(CFAllocatorRef allocator, CFDataRef data, CFStringEncoding encoding);
CF_EXPORT CFStringRef CFStringCreateWithSubstring(CFAllocatorRef allocator, CFStringRef string, CFRange range); ///< null beyond the end
CF_EXPORT CFStringRef CFStringCreateCopy(CFAllocatorRef allocator, CFStringRef string);
CF_EXPORT CFStringRef CFStringCreateWithFormat(CFAllocatorRef allocator, CFDictionaryRef formatOptions, CFStringRef format, ...);
CF_EXPORT CFStringRef CFStringCreateWithFormatAndArguments(CFAllocatorRef allocator, CFDictionaryRef formatOptions, CFStringRef format, va_list arguments);
CF_EXPORT CFMutableStringRef CFStringCreateMutable(CFAllocatorRef allocator, CFIndex maxLength); ///< maxLength is a hint
CF_EXPORT CFMutableStringRef CFStringCreateMutableCopy(CFAllocatorRef allocator, CFIndex maxLength, CFStringRef string);

// Reading.
CF_EXPORT CFIndex CFStringGetLength(CFStringRef string);
CF_EXPORT UniChar CFStringGetCharacterAtIndex(CFStringRef string, CFIndex index); ///< 0 beyond the end
CF_EXPORT void    CFStringGetCharacters(CFStringRef string, CFRange range, UniChar *buffer);

/// The text in the encoding, ended by a zero byte. False, with an empty text in the buffer, when a character can't be
/// written or the text and its zero do not fit.
CF_EXPORT Boolean CFStringGetCString(CFStringRef string, char *buffer, CFIndex bufferSize, CFStringEncoding encoding);
/// The text in the encoding behind its length byte. False when a character can't be written or the text is longer than
/// 255 bytes or than bufferSize - 1.
CF_EXPORT Boolean CFStringGetPascalString(CFStringRef string, StringPtr buffer, CFIndex bufferSize, CFStringEncoding encoding);

/// Direct pointers into the string: for constant strings whose bytes are the text in that encoding. Null for all others;
/// a caller then copies with the functions above.
CF_EXPORT const char    *CFStringGetCStringPtr(CFStringRef string, CFStringEncoding encoding);
CF_EXPORT ConstStringPtr CFStringGetPascalStringPtr(CFStringRef string, CFStringEncoding encoding);

/// Writes a range in the encoding.
///   lossByte                  stands for each character that the encoding lacks; 0: conversion stops there
///   isExternalRepresentation  puts a byte order mark in front where the encoding has one
///   buffer                    null: nothing is written, the size is counted, maxBufLen is not looked at
///   usedBufLen                if not null, receives the number of bytes
/// Answers the number of UTF-16 units that were written. Stops before a character that does not fit whole.
CF_EXPORT CFIndex CFStringGetBytes(CFStringRef string, CFRange range, CFStringEncoding encoding, UInt8 lossByte,
                                   Boolean isExternalRepresentation, UInt8 *buffer, CFIndex maxBufLen, CFIndex *usedBufLen);
/// The whole text as data, with a byte order mark where the encoding has one. Null when a character can't be written and
/// the loss byte is 0.
CF_EXPORT CFDataRef CFStringCreateExternalRepresentation(CFAllocatorRef allocator, CFStringRef string, CFStringEncoding encoding, UInt8 lossByte);
/// The bytes of the path, UTF-8 on this system, ended by a zero byte.
CF_EXPORT Boolean CFStringGetFileSystemRepresentation(CFStringRef string, char *buffer, CFIndex maxBufLen);
CF_EXPORT CFIndex CFStringGetMaximumSizeOfFileSystemRepresentation(CFStringRef string);
CF_EXPORT SInt32  CFStringGetIntValue(CFStringRef string); ///< leading number, saturating; 0 without one
CF_EXPORT double  CFStringGetDoubleValue(CFStringRef string);

// Comparing and searching.
CF_EXPORT CFComparisonResult CFStringCompare(CFStringRef string1, CFStringRef string2, CFStringCompareFlags options);
CF_EXPORT CFComparisonResult CFStringCompareWithOptions(CFStringRef string1, CFStringRef string2, CFRange range1, CFStringCompareFlags options);
CF_EXPORT Boolean CFStringHasPrefix(CFStringRef string, CFStringRef prefix);
CF_EXPORT Boolean CFStringHasSuffix(CFStringRef string, CFStringRef suffix);
CF_EXPORT CFRange CFStringFind(CFStringRef string, CFStringRef what, CFStringCompareFlags options); ///< {kCFNotFound, 0} when absent
CF_EXPORT Boolean CFStringFindWithOptions(CFStringRef string, CFStringRef what, CFRange range, CFStringCompareFlags options, CFRange *result);
CF_EXPORT CFStringRef CFStringCreateByCombiningStrings(CFAllocatorRef allocator, CFArrayRef strings, CFStringRef separator);
CF_EXPORT CFArrayRef  CFStringCreateArrayBySeparatingStrings(CFAllocatorRef allocator, CFStringRef string, CFStringRef separator);

// Changing. A range beyond the end changes nothing.
CF_EXPORT void    CFStringAppend(CFMutableStringRef string, CFStringRef text);
CF_EXPORT void    CFStringAppendCharacters(CFMutableStringRef string, const UniChar *characters, CFIndex count);
CF_EXPORT void    CFStringAppendCString(CFMutableStringRef string, const char *text, CFStringEncoding encoding);
CF_EXPORT void    CFStringAppendPascalString(CFMutableStringRef string, ConstStr255Param text, CFStringEncoding encoding);
CF_EXPORT void    CFStringAppendFormat(CFMutableStringRef string, CFDictionaryRef formatOptions, CFStringRef format, ...);
CF_EXPORT void    CFStringAppendFormatAndArguments(CFMutableStringRef string, CFDictionaryRef formatOptions, CFStringRef format, va_list arguments);
CF_EXPORT void    CFStringInsert(CFMutableStringRef string, CFIndex index, CFStringRef text);
CF_EXPORT void    CFStringDelete(CFMutableStringRef string, CFRange range);
CF_EXPORT void    CFStringReplace(CFMutableStringRef string, CFRange range, CFStringRef text);
CF_EXPORT void    CFStringReplaceAll(CFMutableStringRef string, CFStringRef text);
CF_EXPORT CFIndex CFStringFindAndReplace(CFMutableStringRef string, CFStringRef what, CFStringRef with, CFRange range, CFStringCompareFlags options);
/// Cuts to the length, or fills up with the pad string, begun at its indexIntoPad-th unit and repeated.
CF_EXPORT void CFStringPad(CFMutableStringRef string, CFStringRef pad, CFIndex length, CFIndex indexIntoPad);
CF_EXPORT void CFStringTrim(CFMutableStringRef string, CFStringRef text); ///< takes the text from both ends, as often as it stands there
CF_EXPORT void CFStringTrimWhitespace(CFMutableStringRef string);
CF_EXPORT void CFStringLowercase(CFMutableStringRef string, const void *locale);
CF_EXPORT void CFStringUppercase(CFMutableStringRef string, const void *locale);
CF_EXPORT void CFStringCapitalize(CFMutableStringRef string, const void *locale);

typedef CFIndex CFStringNormalizationForm;
enum { kCFStringNormalizationFormD = 0, kCFStringNormalizationFormKD = 1, kCFStringNormalizationFormC = 2, kCFStringNormalizationFormKC = 3 };
CF_EXPORT void CFStringNormalize(CFMutableStringRef string, CFStringNormalizationForm form);

// Encodings.
CF_EXPORT CFStringEncoding CFStringGetSystemEncoding(void);   ///< the user's, from the locale; UTF-8 where it names none
CF_EXPORT CFStringEncoding CFStringGetSmallestEncoding(CFStringRef string);
CF_EXPORT CFStringEncoding CFStringGetFastestEncoding(CFStringRef string);
CF_EXPORT CFIndex          CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding); ///< in bytes, without the zero
CF_EXPORT Boolean          CFStringIsEncodingAvailable(CFStringEncoding encoding);
CF_EXPORT const CFStringEncoding *CFStringGetListOfAvailableEncodings(void); ///< ended by kCFStringEncodingInvalidId
CF_EXPORT CFStringRef      CFStringGetNameOfEncoding(CFStringEncoding encoding); ///< "Western (Mac OS Roman)"
CF_EXPORT CFStringEncoding CFStringGetMostCompatibleMacStringEncoding(CFStringEncoding encoding);
CF_EXPORT unsigned long    CFStringConvertEncodingToNSStringEncoding(CFStringEncoding encoding);
CF_EXPORT CFStringEncoding CFStringConvertNSStringEncodingToEncoding(unsigned long encoding);
CF_EXPORT UInt32           CFStringConvertEncodingToWindowsCodepage(CFStringEncoding encoding);
CF_EXPORT CFStringEncoding CFStringConvertWindowsCodepageToEncoding(UInt32 codepage);
CF_EXPORT CFStringEncoding CFStringConvertIANACharSetNameToEncoding(CFStringRef name); ///< without regard to case
CF_EXPORT CFStringRef      CFStringConvertEncodingToIANACharSetName(CFStringEncoding encoding); ///< "macintosh"

CF_EXTERN_C_END
