/// TextEncodingConverter.h: text between two encodings, in buffers of the caller.
///
/// Encodings are identifiers of CFString.h and CFStringEncodingExt.h: the two families share their numbers.
#pragma once

#include <Carbon/MacErrors.h>
#include <Carbon/MacTypes.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct OpaqueTECObjectRef *TECObjectRef;

enum {
    kTextEncodingMacRoman        = 0,
    kTextEncodingUnicodeDefault  = 0x0100, ///< UTF-16 in this processor's order
    kTextEncodingUnknown         = 0xFFFF
};

enum {
    kTextUnsupportedEncodingErr  = -8738, ///< no such encoding
    kTextMalformedInputErr       = -8739, ///< bytes that are no text in the source encoding
    kTextUndefinedElementErr     = -8740,
    kTECMissingTableErr          = -8745,
    kTECNoConversionPathErr      = -8749,
    kTECOutputBufferFullStatus   = -8785, ///< converted as far as whole characters fit
    kTECNeedFlushStatus          = -8784,
    kTECUnmappableElementErr     = -8748, ///< the next character is not in the destination's set
    kTECPartialCharErr           = -8753, ///< the input ends within a character
    kTECCorruptConverterErr      = -8754
};

/// Makes a converter that is disposed of with TECDisposeConverter. kTextUnsupportedEncodingErr for an identifier that is not
/// available, paramErr for null.
OSStatus TECCreateConverter(TECObjectRef *newEncodingConverter, TextEncoding inputEncoding, TextEncoding outputEncoding);
OSStatus TECDisposeConverter(TECObjectRef encodingConverter);
/// Converts as far as possible; what was read and written is told in bytes in any case.
/// \return noErr when all was converted, or one of kTECOutputBufferFullStatus, kTECUnmappableElementErr, kTECPartialCharErr,
///         kTextMalformedInputErr; kTECCorruptConverterErr for a null converter
OSStatus TECConvertText(TECObjectRef encodingConverter, const UInt8 *inputBuffer, ByteCount inputBufferLength,
                        ByteCount *actualInputLength, UInt8 *outputBuffer, ByteCount outputBufferLength,
                        ByteCount *actualOutputLength);

#ifdef __cplusplus
}
#endif
