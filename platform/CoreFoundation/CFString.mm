#include "platform/CoreFoundation/private/Bridging.h"
#include "platform/CoreFoundation/private/Text.h"
#include "platform/TextEncoding/private/Encodings.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <vector>

using namespace tarvik::cf;
namespace encodings = tarvik::encodings;

namespace {

NSString *newString(const UInt8 *bytes, size_t count, CFStringEncoding encoding,
                    bool isExternalRepresentation)
{
    const auto *row = encodings::find(encoding);
    if (!row || (!bytes && count > 0))
        return nil;
    if (row->superset && std::all_of(bytes, bytes + count, [](UInt8 byte) { return byte < 0x80; }))
        return [[NSString alloc] initWithBytes:bytes length:count encoding:NSASCIIStringEncoding];
    const auto units = encodings::decode(*row, bytes, count, isExternalRepresentation);
    return units ? tarvik::cf::newString(*units) : nil;
}

/// The whole text, written without loss; 0 for an empty text, nothing when it can't be written or does not
/// fit.
std::optional<size_t> write(CFStringRef string, CFStringEncoding encoding, void *buffer, size_t capacity)
{
    const auto *row = encodings::find(encoding);
    if (!string || !row)
        return std::nullopt;
    return answer<std::optional<size_t>>(std::nullopt, [&]() -> std::optional<size_t> {
        const Units units(ns(string));
        const auto written = encodings::encode(*row, units.data(), units.size(), 0, false,
                                               static_cast<uint8_t *>(buffer), capacity);
        if (written.units < units.size())
            return std::nullopt;
        return written.bytes;
    });
}

/// The text from the first character that is no white space; at most `most` characters, as ASCII.
std::string leadingASCII(CFStringRef string, size_t most)
{
    std::string text;
    const CFIndex length = CFStringGetLength(string);
    for (CFIndex i = 0; i < length && text.size() < most; ++i) {
        const UniChar c = CFStringGetCharacterAtIndex(string, i);
        if (text.empty() && (c == ' ' || (c >= '\t' && c <= '\r')))
            continue;
        if (c >= 0x80)
            break;
        text += char(c);
    }
    return text;
}

}  // namespace

// --- making --------------------------------------------------------------------------------------------

CFStringRef CFStringCreateWithBytes(CFAllocatorRef, const UInt8 *bytes, CFIndex count,
                                    CFStringEncoding encoding, Boolean isExternalRepresentation)
{
    if (count < 0)
        return nullptr;
    return made<CFStringRef>(
        [&] { return newString(bytes, size_t(count), encoding, isExternalRepresentation); });
}

CFStringRef CFStringCreateWithCString(CFAllocatorRef allocator, const char *text, CFStringEncoding encoding)
{
    return text ? CFStringCreateWithBytes(allocator, reinterpret_cast<const UInt8 *>(text),
                                          CFIndex(strlen(text)), encoding, false)
                : nullptr;
}

CFStringRef CFStringCreateWithPascalString(CFAllocatorRef allocator, ConstStr255Param text,
                                           CFStringEncoding encoding)
{
    return text ? CFStringCreateWithBytes(allocator, text + 1, text[0], encoding, false) : nullptr;
}

// Foundation has strings over a foreign buffer for its own encodings only, so the bytes are copied and given
// back at once.

CFStringRef CFStringCreateWithCStringNoCopy(CFAllocatorRef allocator, const char *text,
                                            CFStringEncoding encoding, CFAllocatorRef contentsDeallocator)
{
    CFStringRef string = CFStringCreateWithCString(allocator, text, encoding);
    if (string)
        deallocate(contentsDeallocator, text);
    return string;
}

CFStringRef CFStringCreateWithCharacters(CFAllocatorRef, const UniChar *characters, CFIndex count)
{
    if (count < 0 || (!characters && count > 0))
        return nullptr;
    return made<CFStringRef>([&] {
        return tarvik::cf::newString({reinterpret_cast<const char16_t *>(characters), size_t(count)});
    });
}

CFStringRef CFStringCreateWithCharactersNoCopy(CFAllocatorRef allocator, const UniChar *characters,
                                               CFIndex count, CFAllocatorRef contentsDeallocator)
{
    CFStringRef string = CFStringCreateWithCharacters(allocator, characters, count);
    if (string)
        deallocate(contentsDeallocator, characters);
    return string;
}

CFStringRef CFStringCreateWithFileSystemRepresentation(CFAllocatorRef allocator, const char *path)
{
    return CFStringCreateWithCString(allocator, path, kCFStringEncodingUTF8);
}

CFStringRef CFStringCreateFromExternalRepresentation(CFAllocatorRef allocator, CFDataRef data,
                                                     CFStringEncoding encoding)
{
    return data ? CFStringCreateWithBytes(allocator, CFDataGetBytePtr(data), CFDataGetLength(data), encoding,
                                          true)
                : nullptr;
}

CFStringRef CFStringCreateWithSubstring(CFAllocatorRef, CFStringRef string, CFRange range)
{
    if (!string || !contains(CFStringGetLength(string), range))
        return nullptr;
    return made<CFStringRef>([&] { return [[ns(string) substringWithRange:nsRange(range)] copy]; });
}

CFStringRef CFStringCreateCopy(CFAllocatorRef, CFStringRef string)
{
    return made<CFStringRef>([&] { return [ns(string) copy]; });
}

CFStringRef CFStringCreateWithFormat(CFAllocatorRef allocator, CFDictionaryRef formatOptions,
                                     CFStringRef format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    CFStringRef string = CFStringCreateWithFormatAndArguments(allocator, formatOptions, format, arguments);
    va_end(arguments);
    return string;
}

CFStringRef CFStringCreateWithFormatAndArguments(CFAllocatorRef, CFDictionaryRef, CFStringRef format,
                                                 va_list arguments)
{
    if (!format)
        return nullptr;
    return answer<CFStringRef>(nullptr, [&] {
        va_list copy;
        va_copy(copy, arguments);
        NSString *string = [[NSString alloc] initWithFormat:ns(format) arguments:copy];
        va_end(copy);
        return cf<CFStringRef>(string);
    });
}

CFMutableStringRef CFStringCreateMutable(CFAllocatorRef, CFIndex)
{
    return made<CFMutableStringRef>([] { return [NSMutableString new]; });
}

CFMutableStringRef CFStringCreateMutableCopy(CFAllocatorRef, CFIndex, CFStringRef string)
{
    return made<CFMutableStringRef>([&] { return [ns(string) mutableCopy]; });
}

// --- reading -------------------------------------------------------------------------------------------

CFIndex CFStringGetLength(CFStringRef string) { return CFIndex([ns(string) length]); }

UniChar CFStringGetCharacterAtIndex(CFStringRef string, CFIndex index)
{
    return index >= 0 && index < CFStringGetLength(string) ? [ns(string) characterAtIndex:NSUInteger(index)]
                                                           : 0;
}

void CFStringGetCharacters(CFStringRef string, CFRange range, UniChar *buffer)
{
    if (buffer && range.length > 0 && contains(CFStringGetLength(string), range))
        [ns(string) getCharacters:buffer range:nsRange(range)];
}

Boolean CFStringGetCString(CFStringRef string, char *buffer, CFIndex bufferSize, CFStringEncoding encoding)
{
    if (!buffer || bufferSize < 1)
        return false;
    const auto size = write(string, encoding, buffer, size_t(bufferSize - 1));
    buffer[size.value_or(0)] = 0;
    return size.has_value();
}

Boolean CFStringGetPascalString(CFStringRef string, StringPtr buffer, CFIndex bufferSize,
                                CFStringEncoding encoding)
{
    if (!buffer || bufferSize < 1)
        return false;
    const auto size = write(string, encoding, buffer + 1, size_t(std::min<CFIndex>(bufferSize - 1, 255)));
    buffer[0] = UInt8(size.value_or(0));
    return size.has_value();
}

CFIndex CFStringGetBytes(CFStringRef string, CFRange range, CFStringEncoding encoding, UInt8 lossByte,
                         Boolean isExternalRepresentation, UInt8 *buffer, CFIndex maxBufLen,
                         CFIndex *usedBufLen)
{
    const auto *row = encodings::find(encoding);
    encodings::Written written = {0, 0};
    if (string && row && contains(CFStringGetLength(string), range))
        written = answer(written, [&] {
            const Units units(ns(string), nsRange(range));
            return encodings::encode(*row, units.data(), units.size(), lossByte, isExternalRepresentation,
                                     buffer, size_t(std::max<CFIndex>(maxBufLen, 0)));
        });
    if (usedBufLen)
        *usedBufLen = CFIndex(written.bytes);
    return CFIndex(written.units);
}

CFDataRef CFStringCreateExternalRepresentation(CFAllocatorRef, CFStringRef string, CFStringEncoding encoding,
                                               UInt8 lossByte)
{
    const auto *row = encodings::find(encoding);
    if (!string || !row)
        return nullptr;
    return made<CFDataRef>([&]() -> NSData * {
        const Units units(ns(string));
        // Enough for nearly every text at once; a longer one is written again with the space that it was
        // found to need.
        size_t capacity = units.size() * std::min<size_t>(row->maxBytes, 3) + 16;
        for (;;) {
            auto data = tarvik::adopt([[NSMutableData alloc] initWithLength:capacity]);
            auto *bytes = static_cast<uint8_t *>([data.get() mutableBytes]);
            const auto written =
                encodings::encode(*row, units.data(), units.size(), lossByte, true, bytes, capacity);
            if (written.units == units.size()) {
                [data.get() setLength:written.bytes];
                return data.release();
            }
            const auto needed =
                encodings::encode(*row, units.data(), units.size(), lossByte, true, nullptr, 0);
            if (needed.units < units.size() || needed.bytes <= capacity)
                return nil;
            capacity = needed.bytes;
        }
    });
}

Boolean CFStringGetFileSystemRepresentation(CFStringRef string, char *buffer, CFIndex maxBufLen)
{
    return CFStringGetCString(string, buffer, maxBufLen, kCFStringEncodingUTF8);
}

CFIndex CFStringGetMaximumSizeOfFileSystemRepresentation(CFStringRef string)
{
    return CFStringGetLength(string) * 3 + 1;
}

SInt32 CFStringGetIntValue(CFStringRef string)
{
    const std::string text = leadingASCII(string, 64);
    errno = 0;
    const long value = strtol(text.c_str(), nullptr, 10);
    return SInt32(std::clamp<long>(value, INT_MIN, INT_MAX));
}

double CFStringGetDoubleValue(CFStringRef string)
{
    return answer(0.0, [&] {
        const std::string text = leadingASCII(string, 512);
        NSScanner *scanner = [NSScanner scannerWithString:[NSString stringWithUTF8String:text.c_str()]];
        double value = 0;
        return [scanner scanDouble:&value] ? value : 0.0;
    });
}
