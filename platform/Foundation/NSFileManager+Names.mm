/// \file
/// File names that are not UTF-8, and whole trees.
///
/// gnustep-base leaves names that are not UTF-8 out of its listings, so that such files can neither be seen
/// nor removed. Here a byte that is not UTF-8 stands as the private character U+F700 + byte, and a path with
/// such characters leads to the file again. (The File Manager's own records have a lone surrogate there;
/// gnustep-base makes no string of those.) A name that holds one of these characters has its bytes spelled so
/// too. A whole tree is listed without a question to the system for each file.
#include "platform/Files/private/TreeWalk.h"
#include "platform/Foundation/private/HiddenMethod.h"

#import <Foundation/Foundation.h>

#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/Retained.h>
#include <Tarvik/support/UTF8.h>

#include <algorithm>
#include <climits>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr unichar kByteBase = 0xF700;

/// The character at the start of a text; 0 bytes where it is none, or one that stands for a byte.
tarvik::DecodedUTF8 decoded(std::string_view text)
{
    const tarvik::DecodedUTF8 next = tarvik::decodeUTF8(text);
    const bool isTaken = next.character >= kByteBase + 0x80 && next.character <= kByteBase + 0xFF;
    return isTaken ? tarvik::DecodedUTF8{0, 0} : next;
}

/// The text of a file's name or path; the caller owns it.
NSString *newText(const char *bytes, size_t size)
{
    bool ascii = true;
    for (size_t i = 0; i < size && ascii; ++i)
        ascii = static_cast<signed char>(bytes[i]) >= 0;
    if (ascii)
        return [[NSString alloc] initWithBytes:bytes length:size encoding:NSASCIIStringEncoding];
    std::vector<unichar> units;
    units.reserve(size);
    for (std::string_view rest(bytes, size); !rest.empty();) {
        const auto [code, length] = decoded(rest);
        if (length == 0) {
            units.push_back(unichar(kByteBase + uint8_t(rest.front())));
        } else if (code >= 0x10000) {
            units.push_back(unichar(0xD7C0 + (code >> 10)));
            units.push_back(unichar(0xDC00 + (code & 0x3FF)));
        } else {
            units.push_back(unichar(code));
        }
        rest.remove_prefix(std::max<size_t>(length, 1));
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
        tarvik::appendUTF8(bytes, code);
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
    static const auto original =
        tarvik::hiddenMethod<const char *(*)(id, SEL, NSString *)>([NSFileManager class], _cmd);
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
