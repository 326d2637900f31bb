#include "platform/TextEncoding/private/Encodings.h"

#include <Carbon/TextEncodingConverter.h>

#include <cstring>
#include <memory>
#include <new>
#include <string>

namespace encodings = tarvik::encodings;

struct OpaqueTECObjectRef {
    const encodings::Encoding &from, &to;
};

namespace {

bool isNativeUnits(const encodings::Encoding &encoding)
{
    return encoding.coder == encodings::Coder::utf16 && encoding.order != encodings::Order::big;
}

/// How many of the bytes give so many units.
size_t bytesOfUnits(const encodings::Encoding &encoding, const std::u16string &text, size_t units)
{
    return encodings::encode(encoding, reinterpret_cast<const uint16_t *>(text.data()), units, 0, false,
                             nullptr, 0)
        .bytes;
}

OSStatus statusOf(const OpaqueTECObjectRef &converter, const uint16_t *units, size_t count, size_t done)
{
    if (done == count)
        return noErr;
    const bool high = (units[done] & 0xFC00) == 0xD800, low = (units[done] & 0xFC00) == 0xDC00;
    if (high && done + 1 == count)
        return kTECPartialCharErr;
    const bool pair = high && (units[done + 1] & 0xFC00) == 0xDC00;
    if ((high && !pair) || low)
        return kTextMalformedInputErr;
    const size_t length = pair ? 2 : 1;
    const bool exists =
        encodings::encode(converter.to, units + done, length, 0, false, nullptr, 0).units == length;
    return exists ? kTECOutputBufferFullStatus : kTECUnmappableElementErr;
}

}  // namespace

OSStatus TECCreateConverter(TECObjectRef *newEncodingConverter, TextEncoding inputEncoding,
                            TextEncoding outputEncoding)
{
    if (!newEncodingConverter)
        return paramErr;
    const auto *from = encodings::find(inputEncoding), *to = encodings::find(outputEncoding);
    if (!from || !to)
        return kTextUnsupportedEncodingErr;
    *newEncodingConverter = new (std::nothrow) OpaqueTECObjectRef{*from, *to};
    return *newEncodingConverter ? OSStatus(noErr) : OSStatus(memFullErr);
}

OSStatus TECDisposeConverter(TECObjectRef encodingConverter)
{
    delete encodingConverter;
    return noErr;
}

OSStatus TECConvertText(TECObjectRef encodingConverter, const UInt8 *inputBuffer, ByteCount inputBufferLength,
                        ByteCount *actualInputLength, UInt8 *outputBuffer, ByteCount outputBufferLength,
                        ByteCount *actualOutputLength)
{
    ByteCount ignored;
    ByteCount &readBytes = actualInputLength ? *actualInputLength : ignored;
    ByteCount &written = actualOutputLength ? *actualOutputLength : ignored;
    readBytes = written = 0;
    if (!encodingConverter)
        return kTECCorruptConverterErr;
    if ((!inputBuffer && inputBufferLength) || (!outputBuffer && outputBufferLength))
        return paramErr;
    if (inputBufferLength == 0)
        return noErr;

    // UTF-16 in this processor's order, the usual case, is taken as it lies there.
    const bool units =
        isNativeUnits(encodingConverter->from) && reinterpret_cast<uintptr_t>(inputBuffer) % 2 == 0;
    std::u16string text;
    const uint16_t *source = reinterpret_cast<const uint16_t *>(inputBuffer);
    size_t count = inputBufferLength / 2;
    if (!units) {
        auto decoded = encodings::decode(encodingConverter->from, inputBuffer, inputBufferLength, false);
        if (!decoded)
            return kTextMalformedInputErr;
        text = std::move(*decoded);
        source = reinterpret_cast<const uint16_t *>(text.data());
        count = text.size();
    }
    UInt8 none;
    // The way back to an encoding's initial state is a flush's, which comes after the last call.
    const auto done = encodings::encode(encodingConverter->to, source, count, 0, false,
                                        outputBuffer ? outputBuffer : &none, outputBufferLength, false);
    written = ByteCount(done.bytes);
    if (units)
        readBytes = ByteCount(done.units * 2);
    else
        readBytes = done.units == count ? inputBufferLength
                                        : ByteCount(bytesOfUnits(encodingConverter->from, text, done.units));
    const OSStatus status = statusOf(*encodingConverter, source, count, done.units);
    if (status == noErr && units && inputBufferLength % 2)
        return kTECPartialCharErr;
    return status;
}
