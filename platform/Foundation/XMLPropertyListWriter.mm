#include "platform/CoreFoundation/private/Text.h"
#include "platform/Foundation/private/PropertyListTypes.h"
#include "platform/Foundation/private/XMLPropertyList.h"

#import <Tarvik/support/Retained.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <new>
#include <vector>

namespace tarvik::plist {
namespace {

constexpr char kHeader[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                           "<!DOCTYPE plist PUBLIC \"-//Apple Computer//DTD PLIST 1.0//EN\" "
                           "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                           "<plist version=\"1.0\">\n";
constexpr char kFooter[] = "</plist>\n";

/// A growing buffer from the C allocator, so that a data object can take it over.
class Buffer {
public:
    Buffer() = default;
    Buffer(const Buffer &) = delete;
    ~Buffer() { free(bytes_); }

    /// Room for that many bytes more; `wrote` says how many came.
    char *room(size_t count)
    {
        if (capacity_ - used_ < count) {
            const size_t wanted = std::max(used_ + count, capacity_ * 2 + 4096);
            auto *more = static_cast<char *>(realloc(bytes_, wanted));
            if (!more)
                throw std::bad_alloc();
            bytes_ = more;
            capacity_ = wanted;
        }
        return bytes_ + used_;
    }
    void wrote(size_t count) { used_ += count; }
    void add(std::string_view text)
    {
        memcpy(room(text.size()), text.data(), text.size());
        used_ += text.size();
    }
    void indent(int level)
    {
        memset(room(size_t(level)), '\t', size_t(level));
        used_ += size_t(level);
    }
    NSData *release()
    {
        NSData *data = [[NSData alloc] initWithBytesNoCopy:bytes_ length:used_ freeWhenDone:YES];
        bytes_ = nullptr;
        return data;
    }

private:
    char *bytes_ = nullptr;
    size_t used_ = 0, capacity_ = 0;
};

constexpr bool isHigh(unichar unit) { return (unit & 0xFC00) == 0xD800; }
constexpr bool isLow(unichar unit) { return (unit & 0xFC00) == 0xDC00; }

char *put(char *out, std::string_view text)
{
    memcpy(out, text.data(), text.size());
    return out + text.size();
}

char *putInstruction(char *out, unichar unit)
{
    static constexpr char digits[] = "0123456789ABCDEF";
    out = put(out, "<?u ");
    for (int shift = 12; shift >= 0; shift -= 4)
        *out++ = digits[unit >> shift & 15];
    return put(out, "?>");
}

/// Writes units as element text: UTF-8, markup and carriage returns escaped.
void writeText(Buffer &buffer, const unichar *units, size_t count)
{
    constexpr size_t kMostBytes = 10, kStretch = 4096;  // of one unit; how many units are written at once
    for (size_t at = 0; at < count;) {
        const size_t end = std::min(count, at + kStretch);
        char *const start = buffer.room((end - at + 1) * kMostBytes);
        char *out = start;
        while (at < end) {
            const unichar c = units[at++];
            if (c >= 0x20 && c < 0x80 && c != '&' && c != '<' && c != '>') {
                *out++ = char(c);
            } else if (c < 0x80) {
                switch (c) {
                case '&': out = put(out, "&amp;"); break;
                case '<': out = put(out, "&lt;"); break;
                case '>': out = put(out, "&gt;"); break;
                case '\t':
                case '\n': *out++ = char(c); break;
                case '\r':  // a reader turns a bare one into a line feed
                    out = put(out, "&#13;");
                    break;
                default: out = putInstruction(out, c);
                }
            } else if (c < 0x800) {
                *out++ = char(0xC0 | c >> 6);
                *out++ = char(0x80 | (c & 0x3F));
            } else if (isHigh(c) && at < count && isLow(units[at])) {
                const uint32_t whole = 0x10000 + ((c - 0xD800U) << 10) + (units[at++] - 0xDC00U);
                *out++ = char(0xF0 | whole >> 18);
                *out++ = char(0x80 | (whole >> 12 & 0x3F));
                *out++ = char(0x80 | (whole >> 6 & 0x3F));
                *out++ = char(0x80 | (whole & 0x3F));
            } else if (isHigh(c) || isLow(c) || c >= 0xFFFE) {
                out = putInstruction(out, c);
            } else {
                *out++ = char(0xE0 | c >> 12);
                *out++ = char(0x80 | (c >> 6 & 0x3F));
                *out++ = char(0x80 | (c & 0x3F));
            }
        }
        buffer.wrote(size_t(out - start));
    }
}

void writeText(Buffer &buffer, NSString *string)
{
    const cf::Units units(string);
    writeText(buffer, units.data(), units.size());
}

void writeBase64(Buffer &buffer, NSData *data, int level)
{
    static constexpr char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    constexpr size_t kPerLine = 57;  // 76 characters
    const auto *bytes = static_cast<const uint8_t *>([data bytes]);
    const size_t count = [data length];
    for (size_t start = 0; start < count; start += kPerLine) {
        buffer.indent(level);
        const size_t end = std::min(count, start + kPerLine);
        char *const first = buffer.room(80), *out = first;
        for (size_t i = start; i < end; i += 3) {
            const uint32_t group = uint32_t(bytes[i]) << 16 | (i + 1 < end ? bytes[i + 1] << 8 : 0) |
                                   (i + 2 < end ? bytes[i + 2] : 0);
            *out++ = digits[group >> 18];
            *out++ = digits[group >> 12 & 63];
            *out++ = i + 1 < end ? digits[group >> 6 & 63] : '=';
            *out++ = i + 2 < end ? digits[group & 63] : '=';
        }
        *out++ = '\n';
        buffer.wrote(size_t(out - first));
    }
}

class Writer {
public:
    bool write(id object, int level);
    NSData *newText(id list, std::string &why)
    {
        buffer_.add(kHeader);
        if (!write(list, 0)) {
            why = why_;
            return nil;
        }
        buffer_.add(kFooter);
        return buffer_.release();
    }

private:
    bool writeDictionary(NSDictionary *dictionary, int level);
    bool writeArray(NSArray *array, int level);
    void writeInteger(NSNumber *number);
    void writeReal(double value);
    bool fail(const std::string &why)
    {
        why_ = why;
        return false;
    }

    Buffer buffer_;
    std::string why_;
};

bool Writer::writeDictionary(NSDictionary *dictionary, int level)
{
    struct Entry {
        NSString *key;
        id value;
        std::u16string_view units;
    };
    const size_t count = [dictionary count];
    if (count == 0) {
        buffer_.add("<dict/>\n");
        return true;
    }
    std::vector<Entry> entries;
    entries.reserve(count);
    size_t length = 0;
    NSEnumerator *walk = [dictionary keyEnumerator];
    while (id key = [walk nextObject]) {
        if (kindOf(key) != Kind::string)
            return fail("a dictionary key that is no string (" + std::string(object_getClassName(key)) + ")");
        entries.push_back({key, [dictionary objectForKey : key], {}});
        length += [key length];
    }
    std::u16string keys(length, u'\0');  // all of them in one piece
    size_t used = 0;
    for (Entry &entry : entries) {
        const size_t size = [entry.key length];
        [entry.key getCharacters:reinterpret_cast<unichar *>(keys.data() + used) range:NSMakeRange(0, size)];
        entry.units = std::u16string_view(keys).substr(used, size);
        used += size;
    }
    std::sort(entries.begin(), entries.end(),
              [](const Entry &a, const Entry &b) { return a.units < b.units; });
    buffer_.add("<dict>\n");
    for (const Entry &entry : entries) {
        buffer_.indent(level + 1);
        buffer_.add("<key>");
        writeText(buffer_, reinterpret_cast<const unichar *>(entry.units.data()), entry.units.size());
        buffer_.add("</key>\n");
        if (!write(entry.value, level + 1))
            return false;
    }
    buffer_.indent(level);
    buffer_.add("</dict>\n");
    return true;
}

bool Writer::writeArray(NSArray *array, int level)
{
    const NSUInteger count = [array count];
    if (count == 0) {
        buffer_.add("<array/>\n");
        return true;
    }
    buffer_.add("<array>\n");
    for (NSUInteger i = 0; i < count; ++i)
        if (!write([array objectAtIndex:i], level + 1))
            return false;
    buffer_.indent(level);
    buffer_.add("</array>\n");
    return true;
}

void Writer::writeInteger(NSNumber *number)
{
    buffer_.add("<integer>");
    char *const start = buffer_.room(24);
    const bool isUnsigned = *[number objCType] == 'Q';
    const auto result = isUnsigned ? std::to_chars(start, start + 24, [number unsignedLongLongValue])
                                   : std::to_chars(start, start + 24, [number longLongValue]);
    buffer_.wrote(size_t(result.ptr - start));
    buffer_.add("</integer>\n");
}

void Writer::writeReal(double value)
{
    buffer_.add("<real>");
    if (std::isfinite(value)) {
        char *const start = buffer_.room(32);  // the shortest text that reads back as the same number
        buffer_.wrote(size_t(std::to_chars(start, start + 32, value).ptr - start));
    } else {
        buffer_.add(std::isnan(value) ? "nan" : value > 0 ? "+infinity" : "-infinity");
    }
    buffer_.add("</real>\n");
}

bool Writer::write(id object, int level)
{
    if (level > kDeepest)
        return fail("nested deeper than " + std::to_string(kDeepest) + " levels");
    buffer_.indent(level);
    switch (kindOf(object)) {
    case Kind::dictionary: return writeDictionary(object, level);
    case Kind::array: return writeArray(object, level);
    case Kind::string:
        buffer_.add("<string>");
        writeText(buffer_, object);
        buffer_.add("</string>\n");
        return true;
    case Kind::boolean: buffer_.add([object boolValue] ? "<true/>\n" : "<false/>\n"); return true;
    case Kind::integer: writeInteger(object); return true;
    case Kind::real: writeReal([object doubleValue]); return true;
    case Kind::date:
        buffer_.add("<date>");
        buffer_.add(formatDate([object timeIntervalSinceReferenceDate]));
        buffer_.add("</date>\n");
        return true;
    case Kind::data:
        buffer_.add("<data>\n");
        writeBase64(buffer_, object, level);
        buffer_.indent(level);
        buffer_.add("</data>\n");
        return true;
    case Kind::none: break;
    }
    return fail(object ? std::string("a property list can't hold a ") + object_getClassName(object)
                       : "no object");
}

// --- copies --------------------------------------------------------------------------------------------

id newCopy(id object, Mutability mutability, int level, std::string &why)
{
    const bool mutableLeaves = mutability == Mutability::containersAndLeaves,
               mutableContainers = mutability != Mutability::none;
    if (level > kDeepest) {
        why = "nested deeper than " + std::to_string(kDeepest) + " levels";
        return nil;
    }
    switch (kindOf(object)) {
    case Kind::dictionary: {
        auto copy = adopt([[NSMutableDictionary alloc] initWithCapacity:[object count]]);
        NSEnumerator *walk = [object keyEnumerator];
        while (id key = [walk nextObject]) {
            if (kindOf(key) != Kind::string) {
                why = "a dictionary key that is no string";
                return nil;
            }
            auto value = adopt<NSObject>(newCopy([object objectForKey:key], mutability, level + 1, why));
            if (!value)
                return nil;
            [copy.get() setObject:value.get() forKey:key];
        }
        return mutableContainers ? (id)copy.release() : [copy.get() copy];
    }
    case Kind::array: {
        const NSUInteger count = [object count];
        auto copy = adopt([[NSMutableArray alloc] initWithCapacity:count]);
        for (NSUInteger i = 0; i < count; ++i) {
            auto value = adopt<NSObject>(newCopy([object objectAtIndex:i], mutability, level + 1, why));
            if (!value)
                return nil;
            [copy.get() addObject:value.get()];
        }
        return mutableContainers ? (id)copy.release() : [copy.get() copy];
    }
    case Kind::string:
    case Kind::data: return mutableLeaves ? [object mutableCopy] : [object copy];
    case Kind::boolean:
    case Kind::integer:
    case Kind::real:
    case Kind::date: return [object copy];
    case Kind::none: break;
    }
    why = object ? std::string("a property list can't hold a ") + object_getClassName(object) : "no object";
    return nil;
}

}  // namespace

NSData *newXML(id list, std::string &why) { return Writer().newText(list, why); }
id newDeepCopy(id list, Mutability mutability, std::string &why) { return newCopy(list, mutability, 0, why); }

}  // namespace tarvik::plist
