/// \file
/// File names that are not UTF-8, and whole trees.
///
/// gnustep-base leaves names that are not UTF-8 out of its listings, so that such files can neither be seen nor removed. Here a byte that is not
/// UTF-8 stands as the private character U+F700 + byte, and a path with such characters leads to the file again. (The File Manager's own records
/// have a lone surrogate there; gnustep-base makes no string of those.) A name that holds one of these characters has its bytes spelled so too.
/// A whole tree is listed without a question to the system for each file.
#include "platform/Files/private/TreeWalk.h"
#include "platform/Foundation/private/HiddenMethod.h"

#import <Foundation/Foundation.h>

#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/Retained.h>

#include <climits>
#include <string>
#include <vector>

namespace {

constexpr unichar kByteBase = 0xF700;

/// A length in bytes of the UTF-8 sequence at the start; 0 for what is none (surrogates and overlong forms are none).
size_t sequence(const unsigned char *in, size_t size)
{
    const unsigned lead = in[0];
    if (lead < 0x80)
        return 1;
    const size_t length = lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 0;
    if (length == 0 || length > size)
        return 0;
    for (size_t i = 1; i < length; ++i)
        if ((in[i] & 0xC0) != 0x80)
            return 0;
    if ((lead == 0xE0 && in[1] < 0xA0) || (lead == 0xED && in[1] > 0x9F) || (lead == 0xF0 && in[1] < 0x90) || (lead == 0xF4 && in[1] > 0x8F) ||
        (lead == 0xEF && (in[1] & 0xFE) == 0x9E))  // U+F780 to U+F7FF: taken
        return 0;
    return length;
}

/// The text of a file's name or path; the caller owns it.
NSString *newText(const char *bytes, size_t size)
{
    bool ascii = true;
    for (size_t i = 0; i < size && ascii; ++i)
        ascii = static_cast<signed char>(bytes[i]) >= 0;
    if (ascii)
        return [[NSString alloc] initWithBytes:bytes length:size encoding:NSASCIIStringEncoding];
    const auto *in = reinterpret_cast<const unsigned char *>(bytes);
    std::vector<unichar> units;
    units.reserve(size);
    for (size_t at = 0; at < size;) {
        const size_t length = sequence(in + at, size - at);
        uint32_t code = in[at];
        if (length == 0) {
            units.push_back(unichar(kByteBase + in[at++]));
            continue;
        }
        if (length > 1)
            code &= 0x7F >> length;
        for (size_t i = 1; i < length; ++i)
            code = code << 6 | (in[at + i] & 0x3F);
        if (code >= 0x10000) {
            units.push_back(unichar(0xD7C0 + (code >> 10)));
            units.push_back(unichar(0xDC00 + (code & 0x3FF)));
        } else {
            units.push_back(unichar(code));
        }
        at += length;
    }
    return [[NSString alloc] initWithCharacters:units.data() length:units.size()];
}

bool isHigh(unichar unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool isLow(unichar unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

/// The bytes of a path that holds bytes which are not UTF-8; false for any other text.
bool getBytes(NSString *text, std::string &bytes)
{
    const NSUInteger length = [text length];
    if (length == 0 || length > PATH_MAX)
        return false;
    std::vector<unichar> units(length);
    [text getCharacters:units.data() range:NSMakeRange(0, length)];
    bool odd = false;
    for (NSUInteger i = 0; i < length; ++i) {
        uint32_t code = units[i];
        if (isHigh(units[i]) && i + 1 < length && isLow(units[i + 1])) {
            code = 0x10000 + ((code - 0xD800) << 10) + (units[++i] - 0xDC00u);
        } else if (code >= kByteBase + 0x80 && code <= kByteBase + 0xFF) {
            bytes += char(code - kByteBase);
            odd = true;
            continue;
        } else if (isHigh(units[i]) || isLow(units[i])) {
            return false;
        }
        if (code < 0x80) {
            bytes += char(code);
        } else if (code < 0x800) {
            bytes += char(0xC0 | code >> 6);
            bytes += char(0x80 | (code & 0x3F));
        } else if (code < 0x10000) {
            bytes += char(0xE0 | code >> 12);
            bytes += char(0x80 | (code >> 6 & 0x3F));
            bytes += char(0x80 | (code & 0x3F));
        } else {
            bytes += char(0xF0 | code >> 18);
            bytes += char(0x80 | (code >> 12 & 0x3F));
            bytes += char(0x80 | (code >> 6 & 0x3F));
            bytes += char(0x80 | (code & 0x3F));
        }
    }
    return odd;
}

class Subpaths : public tarvik::files::TreeWalk {
public:
    explicit Subpaths(NSMutableArray *paths) : paths_(paths) {}

protected:
    bool visit(const tarvik::files::WalkedItem &item) override
    {
        const auto text = tarvik::adopt(newText(item.subpath, item.length));
        if (text)
            [paths_ addObject:text.get()];
        return true;
    }

private:
    NSMutableArray *paths_;
};

}  // namespace

@interface NSFileManager (TarvikNames)
@end

@implementation NSFileManager (TarvikNames)

- (const char *)fileSystemRepresentationWithPath:(NSString *)path
{
    static const auto original = tarvik::hiddenMethod<const char *(*)(id, SEL, NSString *)>([NSFileManager class], _cmd);
    std::string bytes;
    if (!getBytes(path, bytes))
        return original(self, _cmd, path);
    bytes += '\0';
    return static_cast<const char *>([tarvik::nsdata(bytes) bytes]);
}

- (NSString *)stringWithFileSystemRepresentation:(const char *)bytes length:(NSUInteger)length
{
    return bytes ? [newText(bytes, length) autorelease] : nil;
}

/// Nil for what is no folder.
- (NSArray *)subpathsAtPath:(NSString *)path
{
    const char *bytes = [path length] ? [self fileSystemRepresentationWithPath:path] : nullptr;
    NSMutableArray *paths = [NSMutableArray array];
    return bytes && Subpaths(paths).run(bytes, true) == noErr ? paths : nil;
}

@end
