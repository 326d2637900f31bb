#include "platform/CoreFoundation/private/Bridging.h"
#include "platform/CoreFoundation/private/HFSPath.h"
#include "platform/CoreFoundation/private/Text.h"
#include "platform/CoreFoundation/private/URLPath.h"
#include "platform/CoreFoundation/private/URLText.h"
#include "platform/TextEncoding/private/Encodings.h"

#import <Tarvik/support/Bridge.h>

#include <filesystem>

using namespace tarvik::cf;
namespace urltext = tarvik::urltext;

namespace {

// Bytes of a path that stand in a URL as they are. A colon does not: in a relative URL it would end a scheme.
constexpr char kPathCharacters[] = "/!$&'()*+,=@";

/// A string of URL text or of path bytes; nil when they are not UTF-8.
NSString *text(std::string_view bytes) { return tarvik::nsstring(bytes); }
NSString *textOrNil(const std::optional<std::string_view> &bytes) { return bytes ? text(*bytes) : nil; }
NSString *unescapedText(std::string_view bytes)
{
    const auto plain = urltext::unescape(bytes);
    return plain ? text(*plain) : nil;
}

NSURL *newURL(std::string_view string, NSURL *base)
{
    NSString *spelled = text(string);
    if (!spelled)
        return nil;
    return base ? [[NSURL alloc] initWithString:spelled relativeToURL:base]
                : [[NSURL alloc] initWithString:spelled];
}

NSURL *newFileURL(std::string path, bool isDirectory, NSURL *base)
{
    if (path.empty() || path.find('\0') != path.npos)
        return nil;
    while (path.size() > 1 && path.ends_with('/'))
        path.pop_back();
    if (isDirectory && path != "/")
        path += '/';
    const std::string escaped = urltext::escape(path, kPathCharacters);
    if (path.starts_with('/'))
        return newURL("file://" + escaped, nil);
    if (base)
        return newURL(escaped, base);
    std::error_code error;
    const auto here = std::filesystem::current_path(error);
    if (error)
        return nil;
    NSURL *folder = [newFileURL(here.native(), true, nil) autorelease];
    return newURL(escaped, folder);
}

std::optional<std::string> posixPath(CFStringRef path, CFURLPathStyle style)
{
    if (!path)
        return std::nullopt;
    const auto bytes = tarvik::utf8(ns(path));
    if (!bytes || style == kCFURLPOSIXPathStyle)
        return bytes;
    if (style == kCFURLHFSPathStyle)
        return tarvik::hfs::toPosix(*bytes);
    return std::nullopt;
}

std::string_view withoutSlash(std::string_view path)
{
    while (path.size() > 1 && path.ends_with('/'))
        path.remove_suffix(1);
    return path;
}

std::string_view lastPart(std::string_view path)
{
    const std::string_view bare = withoutSlash(path);
    return bare == "/" ? bare : bare.substr(bare.rfind('/') + 1);
}

/// Where the extension's dot stands in a file's name, if it has one.
size_t extensionDot(std::string_view name)
{
    const size_t dot = name.rfind('.');
    return dot == 0 || dot == name.npos || dot + 1 == name.size() ? name.npos : dot;
}

/// The URL with another path, of the same base.
CFURLRef withPath(CFURLRef url, const std::string &path)
{
    return made<CFURLRef>([&] {
        const std::string string = urlText(url);
        const auto parts = urltext::split(string);
        std::string changed;
        if (parts.scheme)
            changed.append(*parts.scheme).append(":");
        if (parts.authority)
            changed.append("//").append(*parts.authority);
        changed.append(path);
        if (parts.query)
            changed.append("?").append(*parts.query);
        if (parts.fragment)
            changed.append("#").append(*parts.fragment);
        return newURL(changed, [ns(url) baseURL]);
    });
}

/// A part of the absolute URL, by a function of its parts that answers an autoreleased string or nil.
template <class Body>
CFStringRef copyPart(CFURLRef url, Body &&body)
{
    if (!url)
        return nullptr;
    return owned<CFStringRef>([&]() -> NSString * {
        const std::string string = absoluteURLText(url);
        return body(urltext::split(string));
    });
}

/// Takes escapes out, those apart that stand for one of the characters that are to be left.
CFStringRef copyUnescaped(NSString *string, CFStringRef charactersToLeaveEscaped)
{
    if (!string)
        return nullptr;
    if (!charactersToLeaveEscaped)
        return cf<CFStringRef>([string copy]);
    const auto bytes = tarvik::utf8(string), left = tarvik::utf8(ns(charactersToLeaveEscaped));
    if (!bytes || !left)
        return nullptr;
    std::string out;
    for (size_t i = 0; i < bytes->size(); ++i) {
        if ((*bytes)[i] != '%') {
            out += (*bytes)[i];
            continue;
        }
        const auto byte = urltext::unescape(std::string_view(*bytes).substr(i, 3));
        if (!byte)
            return nullptr;
        out += left->find(*byte) == left->npos ? *byte : bytes->substr(i, 3);
        i += 2;
    }
    return cf<CFStringRef>([text(out) retain]);
}

}  // namespace

namespace tarvik::cf {

std::string urlText(CFURLRef url) { return utf8([ns(url) relativeString]).value_or(""); }

std::string absoluteURLText(CFURLRef url)
{
    NSURL *base = [ns(url) baseURL];
    return base ? urltext::resolve(absoluteURLText(::CFURLRef(base)), urlText(url)) : urlText(url);
}

std::optional<std::string> urlPath(CFURLRef url)
{
    if (!url)
        return std::nullopt;
    const std::string string = absoluteURLText(url);
    auto path = urltext::unescape(urltext::split(string).path);
    if (!path || path->empty() || path->find('\0') != path->npos)
        return std::nullopt;
    return std::string(withoutSlash(*path));
}

}  // namespace tarvik::cf

// --- making --------------------------------------------------------------------------------------------

CFURLRef CFURLCreateWithString(CFAllocatorRef, CFStringRef string, CFURLRef baseURL)
{
    if (!string || CFStringGetLength(string) == 0)
        return nullptr;
    return made<CFURLRef>([&] {
        return baseURL ? [[NSURL alloc] initWithString:ns(string) relativeToURL:ns(baseURL)]
                       : [[NSURL alloc] initWithString:ns(string)];
    });
}

CFURLRef CFURLCreateWithBytes(CFAllocatorRef allocator, const UInt8 *bytes, CFIndex length,
                              CFStringEncoding encoding, CFURLRef baseURL)
{
    CFStringRef string = CFStringCreateWithBytes(allocator, bytes, length, encoding, false);
    CFURLRef url = CFURLCreateWithString(allocator, string, baseURL);
    CFRelease(string);
    return url;
}

CFURLRef CFURLCreateWithFileSystemPath(CFAllocatorRef allocator, CFStringRef path, CFURLPathStyle style,
                                       Boolean isDirectory)
{
    return CFURLCreateWithFileSystemPathRelativeToBase(allocator, path, style, isDirectory, nullptr);
}

CFURLRef CFURLCreateWithFileSystemPathRelativeToBase(CFAllocatorRef, CFStringRef path, CFURLPathStyle style,
                                                     Boolean isDirectory, CFURLRef baseURL)
{
    return made<CFURLRef>([&]() -> NSURL * {
        const auto posix = posixPath(path, style);
        return posix ? newFileURL(*posix, isDirectory, ns(baseURL)) : nil;
    });
}

CFURLRef CFURLCreateFromFileSystemRepresentation(CFAllocatorRef allocator, const UInt8 *path, CFIndex length,
                                                 Boolean isDirectory)
{
    return CFURLCreateFromFileSystemRepresentationRelativeToBase(allocator, path, length, isDirectory,
                                                                 nullptr);
}

CFURLRef CFURLCreateFromFileSystemRepresentationRelativeToBase(CFAllocatorRef, const UInt8 *path,
                                                               CFIndex length, Boolean isDirectory,
                                                               CFURLRef baseURL)
{
    if (!path || length <= 0)
        return nullptr;
    return made<CFURLRef>([&] {
        return newFileURL(std::string(reinterpret_cast<const char *>(path), size_t(length)), isDirectory,
                          ns(baseURL));
    });
}

CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef, CFURLRef url, CFStringRef component,
                                               Boolean isDirectory)
{
    const auto bytes = component ? tarvik::utf8(ns(component)) : std::nullopt;
    if (!url || !bytes || bytes->find('\0') != bytes->npos)
        return nullptr;
    const std::string string = urlText(url);
    std::string path(urltext::split(string).path);
    if (!path.ends_with('/'))
        path += path.empty() && [ns(url) baseURL] ? "" : "/";
    path += urltext::escape(withoutSlash(*bytes), kPathCharacters);
    if (isDirectory && !path.ends_with('/'))
        path += '/';
    return withPath(url, path);
}

CFURLRef CFURLCreateCopyDeletingLastPathComponent(CFAllocatorRef, CFURLRef url)
{
    if (!url)
        return nullptr;
    const std::string string = urlText(url);
    const std::string_view path = withoutSlash(urltext::split(string).path);
    const size_t slash = path.rfind('/');
    const std::string_view last = lastPart(path);
    if (path.empty() || last == "." || last == "..")
        return withPath(url, std::string(path) + "/../");
    if (slash == path.npos)
        return withPath(url, "./");
    return withPath(url, std::string(path.substr(0, slash + 1)));
}

CFURLRef CFURLCreateCopyAppendingPathExtension(CFAllocatorRef, CFURLRef url, CFStringRef extension)
{
    const auto bytes = extension ? tarvik::utf8(ns(extension)) : std::nullopt;
    if (!url || !bytes || bytes->empty())
        return nullptr;
    const std::string string = urlText(url);
    const std::string_view path = urltext::split(string).path;
    const std::string_view bare = withoutSlash(path);
    if (bare.empty() || bare == "/")
        return nullptr;
    return withPath(url, std::string(bare) + "." + urltext::escape(*bytes, kPathCharacters) +
                             (path.size() > bare.size() ? "/" : ""));
}

CFURLRef CFURLCreateCopyDeletingPathExtension(CFAllocatorRef, CFURLRef url)
{
    if (!url)
        return nullptr;
    const std::string string = urlText(url);
    const std::string_view path = urltext::split(string).path, bare = withoutSlash(path),
                           name = lastPart(path);
    const size_t dot = extensionDot(name);
    if (dot == name.npos)
        return cf<CFURLRef>(ns(CFTypeRef(CFRetain(url))));
    return withPath(url, std::string(bare.substr(0, bare.size() - name.size() + dot)) +
                             (path.size() > bare.size() ? "/" : ""));
}

CFURLRef CFURLCopyAbsoluteURL(CFURLRef url)
{
    if (!url)
        return nullptr;
    return made<CFURLRef>(
        [&] { return [ns(url) baseURL] ? newURL(absoluteURLText(url), nil) : [ns(url) retain]; });
}

// --- reading -------------------------------------------------------------------------------------------

CFStringRef CFURLGetString(CFURLRef url) { return cf<CFStringRef>([ns(url) relativeString]); }
CFURLRef CFURLGetBaseURL(CFURLRef url) { return cf<CFURLRef>([ns(url) baseURL]); }

Boolean CFURLCanBeDecomposed(CFURLRef url)
{
    if (!url)
        return false;
    return answer(false, [&] {
        const std::string string = absoluteURLText(url);
        const auto parts = urltext::split(string);
        return !parts.scheme || parts.authority || parts.path.starts_with('/');
    });
}

CFStringRef CFURLCopyScheme(CFURLRef url)
{
    return copyPart(url, [](const auto &parts) { return textOrNil(parts.scheme); });
}

CFStringRef CFURLCopyNetLocation(CFURLRef url)
{
    return copyPart(url, [](const auto &parts) -> NSString * {
        return parts.authority && !parts.authority->empty() ? text(*parts.authority) : nil;
    });
}

namespace {

struct Authority {
    std::optional<std::string_view> user, password, port;
    std::string_view host;
};

Authority splitAuthority(std::string_view text)
{
    Authority parts;
    if (const size_t at = text.rfind('@'); at != text.npos) {
        const std::string_view who = text.substr(0, at);
        const size_t colon = who.find(':');
        parts.user = who.substr(0, colon);
        if (colon != who.npos)
            parts.password = who.substr(colon + 1);
        text.remove_prefix(at + 1);
    }
    const size_t bracket = text.rfind(']');  // an IPv6 address holds colons
    if (const size_t colon = text.rfind(':');
        colon != text.npos && (bracket == text.npos || colon > bracket)) {
        parts.port = text.substr(colon + 1);
        text = text.substr(0, colon);
    }
    if (text.starts_with('[') && text.ends_with(']'))
        text = text.substr(1, text.size() - 2);
    parts.host = text;
    return parts;
}

}  // namespace

CFStringRef CFURLCopyHostName(CFURLRef url)
{
    return copyPart(url, [](const auto &parts) -> NSString * {
        const std::string_view host = splitAuthority(parts.authority.value_or("")).host;
        return host.empty() ? nil : unescapedText(host);
    });
}

SInt32 CFURLGetPortNumber(CFURLRef url)
{
    if (!url)
        return -1;
    return answer<SInt32>(-1, [&] {
        const std::string string = absoluteURLText(url);
        const std::string port(
            splitAuthority(urltext::split(string).authority.value_or("")).port.value_or(""));
        const bool isNumber =
            !port.empty() && port.size() <= 5 && port.find_first_not_of("0123456789") == port.npos;
        return isNumber ? SInt32(std::stol(port)) : SInt32(-1);
    });
}

CFStringRef CFURLCopyUserName(CFURLRef url)
{
    return copyPart(url, [](const auto &parts) -> NSString * {
        const auto user = splitAuthority(parts.authority.value_or("")).user;
        return user ? unescapedText(*user) : nil;
    });
}

CFStringRef CFURLCopyPassword(CFURLRef url)
{
    return copyPart(url, [](const auto &parts) -> NSString * {
        const auto password = splitAuthority(parts.authority.value_or("")).password;
        return password ? unescapedText(*password) : nil;
    });
}

CFStringRef CFURLCopyPath(CFURLRef url)
{
    if (!url)
        return nullptr;
    return owned<CFStringRef>([&] {
        const std::string string = urlText(url);
        return text(urltext::split(string).path);
    });
}

CFStringRef CFURLCopyQueryString(CFURLRef url, CFStringRef charactersToLeaveEscaped)
{
    if (!url)
        return nullptr;
    return answer<CFStringRef>(nullptr, [&] {
        const std::string string = absoluteURLText(url);
        return copyUnescaped(textOrNil(urltext::split(string).query), charactersToLeaveEscaped);
    });
}

CFStringRef CFURLCopyFragment(CFURLRef url, CFStringRef charactersToLeaveEscaped)
{
    if (!url)
        return nullptr;
    return answer<CFStringRef>(nullptr, [&] {
        const std::string string = absoluteURLText(url);
        return copyUnescaped(textOrNil(urltext::split(string).fragment), charactersToLeaveEscaped);
    });
}

CFStringRef CFURLCopyLastPathComponent(CFURLRef url)
{
    return copyPart(url, [](const auto &parts) { return unescapedText(lastPart(parts.path)); });
}

CFStringRef CFURLCopyPathExtension(CFURLRef url)
{
    return copyPart(url, [](const auto &parts) -> NSString * {
        const std::string_view name = lastPart(parts.path);
        const size_t dot = extensionDot(name);
        return dot == name.npos ? nil : unescapedText(name.substr(dot + 1));
    });
}

Boolean CFURLHasDirectoryPath(CFURLRef url)
{
    if (!url)
        return false;
    return answer(false, [&] {
        const std::string string = absoluteURLText(url);
        const std::string_view path = urltext::split(string).path;
        return path.ends_with('/') || lastPart(path) == "." || lastPart(path) == "..";
    });
}

CFStringRef CFURLCopyFileSystemPath(CFURLRef url, CFURLPathStyle style)
{
    if (!url)
        return nullptr;
    return owned<CFStringRef>([&]() -> NSString * {
        const std::string string = urlText(url);
        const auto path = urltext::unescape(withoutSlash(urltext::split(string).path));
        if (!path || path->empty())
            return nil;
        if (style == kCFURLPOSIXPathStyle)
            return text(*path);
        return style == kCFURLHFSPathStyle ? text(tarvik::hfs::fromPosix(*path)) : nil;
    });
}

Boolean CFURLGetFileSystemRepresentation(CFURLRef url, Boolean resolveAgainstBase, UInt8 *buffer,
                                         CFIndex maxBufLen)
{
    if (!url || !buffer || maxBufLen < 1)
        return false;
    return answer(false, [&] {
        const std::string string = urlText(url);
        const auto path =
            resolveAgainstBase ? urlPath(url) : urltext::unescape(withoutSlash(urltext::split(string).path));
        if (!path || path->empty() || path->find('\0') != path->npos || path->size() >= size_t(maxBufLen))
            return false;
        memcpy(buffer, path->c_str(), path->size() + 1);
        return true;
    });
}

// --- percent escapes -----------------------------------------------------------------------------------

CFStringRef CFURLCreateStringByReplacingPercentEscapes(CFAllocatorRef, CFStringRef string,
                                                       CFStringRef charactersToLeaveEscaped)
{
    return answer<CFStringRef>(nullptr, [&] { return copyUnescaped(ns(string), charactersToLeaveEscaped); });
}

CFStringRef CFURLCreateStringByAddingPercentEscapes(CFAllocatorRef, CFStringRef string,
                                                    CFStringRef charactersToLeaveUnescaped,
                                                    CFStringRef legalURLCharactersToBeEscaped,
                                                    CFStringEncoding encoding)
{
    const auto *row = tarvik::encodings::find(encoding);
    if (!string || !row)
        return nullptr;
    return owned<CFStringRef>([&]() -> NSString * {
        NSString *leave = ns(charactersToLeaveUnescaped), *escape = ns(legalURLCharactersToBeEscaped);
        const auto among = [](unichar c, NSString *set) {
            for (NSUInteger i = 0; set && i < [set length]; ++i)
                if ([set characterAtIndex:i] == c)
                    return true;
            return false;
        };
        const Units units(ns(string));
        std::u16string out;
        for (size_t i = 0; i < units.size(); ++i) {
            const unichar c = units.data()[i];
            const bool isLegal = c < 0x80 && (isalnum(c) || strchr("-._~!*'();:@&=+$,/?", c));
            if (c && ((isLegal && !among(c, escape)) || among(c, leave))) {
                out += char16_t(c);
                continue;
            }
            const size_t count = (c & 0xFC00) == 0xD800 && i + 1 < units.size() ? 2 : 1;
            uint8_t bytes[16];
            const auto written =
                tarvik::encodings::encode(*row, units.data() + i, count, 0, false, bytes, sizeof bytes);
            if (written.units < count)
                return nil;
            for (size_t b = 0; b < written.bytes; ++b) {
                const char16_t digits[] = u"0123456789ABCDEF";
                out += {u'%', digits[bytes[b] >> 4], digits[bytes[b] & 15]};
            }
            i += count - 1;
        }
        return [newString(out) autorelease];
    });
}
