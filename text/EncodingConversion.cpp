#include <Carbon/TextEncodingConverter.h>
#include <Tarvik/support/Handle.h>
#include <Tarvik/support/Owned.h>
#include <Tarvik/text/EncodingConversion.h>

#include "text/private/EncodingOrder.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

constexpr CFIndex kLongestPascalString = 255;
constexpr UInt8 kLossByte = 0xFF;

struct ConverterTraits {
    using Value = TECObjectRef;
    static Value empty() { return nullptr; }
    static void close(Value converter) { TECDisposeConverter(converter); }
};

template <class Number>
void report(Number *place, Number value)
{
    if (place)
        *place = value;
}

}  // namespace

Boolean CFStringGetConvertablePascalString(CFStringRef string, StringPtr buffer, CFIndex size)
{
    return string && buffer && size >= 1 && tarvik::inFirstEncoding([=](CFStringEncoding encoding) {
               return CFStringGetPascalString(string, buffer, size, encoding);
           });
}

CFDataRef CFStringCreateConvertableExternalRepresentation(CFStringRef string)
{
    if (!string)
        return nullptr;
    const CFDataRef whole = tarvik::inFirstEncoding([=](CFStringEncoding encoding) {
        return CFStringCreateExternalRepresentation(kCFAllocatorDefault, string, encoding, 0);
    });
    // The list of available encodings is not walked again with losses: callers know that a lossy text is in the system's.
    return whole ? whole
                 : CFStringCreateExternalRepresentation(kCFAllocatorDefault, string,
                                                        CFStringGetSystemEncoding(), kLossByte);
}

Boolean CFStringGetHFSUniStr255(CFStringRef string, HFSUniStr255 *record)
{
    if (!record)
        return false;
    std::memset(record, 0, sizeof *record);
    const CFIndex length = string ? CFStringGetLength(string) : 0;
    if (length < 1 || length > CFIndex(std::size(record->unicode)))
        return false;
    CFStringGetCharacters(string, CFRangeMake(0, length), record->unicode);
    record->length = UInt16(length);
    return true;
}

UniChar *CFStringAllocUnicodeCharacters(CFStringRef string)
{
    if (!string)
        return nullptr;
    const CFIndex length = CFStringGetLength(string);
    auto *units = static_cast<UniChar *>(std::calloc(size_t(length) + 1, sizeof(UniChar)));
    if (units)
        CFStringGetCharacters(string, CFRangeMake(0, length), units);
    return units;
}

CFStringRef CFStringCreateWithAEDesc(const AEDesc *desc, CFStringEncoding encoding)
{
    if (!desc || desc->descriptorType != typeText)
        return nullptr;
    std::string text(size_t(AEGetDescDataSize(desc)), '\0');
    if (AEGetDescData(desc, text.data(), Size(text.size())) != noErr)
        return nullptr;
    return CFStringCreateWithCString(kCFAllocatorDefault, text.c_str(), encoding);
}

char *CFStringAllocTECConvertedText(CFStringRef string, TextEncoding encoding, UInt32 bytesPerCharacter,
                                    ByteCount *readBytes, ByteCount *writtenBytes, OSStatus *status)
{
    constexpr UInt32 kBytesPerCharacter = 4;
    report(readBytes, ByteCount(0));
    report(writtenBytes, ByteCount(0));
    report(status, OSStatus(noErr));
    if (!string)
        return nullptr;
    const size_t length = size_t(CFStringGetLength(string));
    const size_t size = (bytesPerCharacter ? bytesPerCharacter : kBytesPerCharacter) * length + 1;
    auto *buffer = static_cast<char *>(std::calloc(1, size));
    const tarvik::Owned<UniChar, std::free> units(CFStringAllocUnicodeCharacters(string));
    if (!buffer || !units) {
        std::free(buffer);
        report(status, OSStatus(memFullErr));
        return nullptr;
    }
    TECObjectRef made = nullptr;
    ByteCount in = 0, out = 0;
    OSStatus result = TECCreateConverter(&made, kTextEncodingUnicodeDefault, encoding);
    const tarvik::Handle<ConverterTraits> converter(made);
    if (result == noErr)
        result = TECConvertText(converter.get(), reinterpret_cast<const UInt8 *>(units.get()),
                                ByteCount(length * sizeof(UniChar)), &in, reinterpret_cast<UInt8 *>(buffer),
                                ByteCount(size), &out);
    report(readBytes, in);
    report(writtenBytes, out);
    report(status, result);
    return buffer;
}

StringPtr CFStringAllocTECConvertedPascalString(CFStringRef string, TextEncoding encoding,
                                                UInt32 bytesPerCharacter, ByteCount *readBytes,
                                                ByteCount *writtenBytes, OSStatus *status)
{
    ByteCount written = 0;
    char *text =
        CFStringAllocTECConvertedText(string, encoding, bytesPerCharacter, readBytes, &written, status);
    report(writtenBytes, written);
    if (!text)
        return nullptr;
    // In place: one byte to the right. A buffer that is full to its last byte grows by the length byte.
    auto *grown = static_cast<char *>(std::realloc(text, size_t(written) + 2));
    if (!grown) {
        std::free(text);
        report(status, OSStatus(memFullErr));
        return nullptr;
    }
    const size_t length = std::min<size_t>(written, kLongestPascalString);
    std::memmove(grown + 1, grown, length);
    grown[0] = char(length);
    grown[length + 1] = 0;
    return reinterpret_cast<StringPtr>(grown);
}
