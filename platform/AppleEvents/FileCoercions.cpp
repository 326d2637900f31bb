#include "platform/AppleEvents/private/Coercions.h"
#include "platform/CoreFoundation/private/HFSPath.h"
#include "platform/CoreFoundation/private/URLPath.h"

#include <Carbon/Aliases.h>
#include <CoreFoundation/CFString.h>
#include <CoreFoundation/CFURL.h>
#include <Tarvik/support/CFOwned.h>
#include <Tarvik/support/Handle.h>

#include <climits>
#include <cstring>
#include <sys/stat.h>

namespace tarvik::ae {

namespace {

struct AliasTraits {
    using Value = AliasHandle;
    static Value empty() { return nullptr; }
    static void close(Value alias) { DisposeHandle(reinterpret_cast<::Handle>(alias)); }
};
using OwnedAlias = tarvik::Handle<AliasTraits>;

std::optional<std::string> pathOf(const FSRef &ref)
{
    char path[PATH_MAX];
    if (FSRefMakePath(&ref, reinterpret_cast<UInt8 *>(path), sizeof path) != noErr)
        return std::nullopt;
    return path;
}

std::optional<std::string> pathOfReference(std::string_view bytes)
{
    FSRef ref;
    if (bytes.size() != sizeof ref)
        return std::nullopt;
    std::memcpy(&ref, bytes.data(), sizeof ref);
    return pathOf(ref);
}

std::optional<std::string> pathOfAlias(std::string_view bytes)
{
    ::Handle handle = nullptr;
    if (PtrToHand(bytes.data(), &handle, Size(bytes.size())) != noErr)
        return std::nullopt;
    const OwnedAlias alias(reinterpret_cast<AliasHandle>(handle));
    FSRef ref;
    Boolean changed;
    return FSResolveAlias(nullptr, alias.get(), &ref, &changed) == noErr ? pathOf(ref) : std::nullopt;
}

std::optional<std::string> pathOfURL(std::string_view bytes)
{
    if (bytes.substr(0, 5) != "file:")
        return std::nullopt;
    const CFOwned<CFURLRef> url(CFURLCreateWithBytes(nullptr, reinterpret_cast<const UInt8 *>(bytes.data()),
                                                     CFIndex(bytes.size()), kCFStringEncodingUTF8, nullptr));
    return url ? cf::urlPath(url.get()) : std::nullopt;
}

std::optional<std::string> pathIn(DescType type, std::string_view bytes)
{
    switch (type) {
    case typeAlias: return pathOfAlias(bytes);
    case typeFSRef: return pathOfReference(bytes);
    case typeFileURL:
    case typeApplicationURL: return pathOfURL(bytes);
    default:
        const auto text = textOf(type, bytes);
        if (!text)
            return std::nullopt;
        return text->find(':') == text->npos ? std::nullopt
               : text->starts_with("file:")  ? pathOfURL(*text)
                                             : hfs::toPosix(*text);
    }
}

bool isFolder(const std::string &path)
{
    struct stat about;
    return stat(path.c_str(), &about) == 0 && S_ISDIR(about.st_mode);
}

std::optional<OwnedDesc> aliasDesc(const FSRef &ref)
{
    AliasHandle made = nullptr;
    if (FSNewAlias(nullptr, &ref, &made) != noErr)
        return std::nullopt;
    const OwnedAlias alias(made);
    return newValue(typeAlias, {reinterpret_cast<const char *>(*made), size_t(GetAliasSize(made))});
}

std::optional<OwnedDesc> write(const std::string &path, DescType type)
{
    if (type == typeFileURL || type == typeApplicationURL) {
        const CFOwned<CFURLRef> url(CFURLCreateFromFileSystemRepresentation(
            nullptr, reinterpret_cast<const UInt8 *>(path.data()), CFIndex(path.size()), isFolder(path)));
        return url ? std::optional(newValue(type, cf::absoluteURLText(url.get()))) : std::nullopt;
    }
    if (type == typeAlias || type == typeFSRef) {
        FSRef ref;
        if (FSPathMakeRef(reinterpret_cast<const UInt8 *>(path.c_str()), &ref, nullptr) != noErr)
            return std::nullopt;
        return type == typeAlias ? aliasDesc(ref)
                                 : newValue(type, {reinterpret_cast<const char *>(&ref), sizeof ref});
    }
    std::string text = hfs::fromPosix(path);
    if (isFolder(path) && !text.ends_with(':'))
        text += ':';
    return coerceScalar(typeUTF8Text, text, type);
}

bool isFile(DescType type)
{
    return type == typeAlias || type == typeFSRef || type == typeFileURL || type == typeApplicationURL;
}

}  // namespace

std::optional<OwnedDesc> coerceFile(DescType from, std::string_view bytes, DescType to)
{
    if (!isFile(from) && !isFile(to))
        return std::nullopt;
    const auto path = pathIn(from, bytes);
    return path && !path->empty() ? write(*path, to) : std::nullopt;
}

}  // namespace tarvik::ae
