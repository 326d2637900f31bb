#include "platform/Aliases/private/AliasFile.h"
#include "platform/Aliases/private/ReferencePath.h"
#include "platform/Files/private/Errors.h"

#include <Carbon/Aliases.h>
#include <Tarvik/support/Handle.h>
#include <Tarvik/support/Owned.h>
#include <fcntl.h>
#include <glib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>

namespace tarvik::aliases {

namespace {

constexpr unsigned kMaxSteps = 40;            // as many links as the kernel follows
constexpr size_t kMaxDesktopEntry = 1 << 20;  // larger ones are no desktop entries

using Text = Owned<char, g_free>;

std::string folderOf(const std::string &path) { return path.substr(0, path.rfind('/') + 1); }

std::string contentsOf(const std::string &path)
{
    const FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW));
    struct stat about;
    if (!file || fstat(file.get(), &about) != 0 || !S_ISREG(about.st_mode) ||
        size_t(about.st_size) > kMaxDesktopEntry)
        return {};
    std::string text(size_t(about.st_size), '\0');
    const ssize_t count = pread(file.get(), text.data(), text.size(), 0);
    text.resize(count > 0 ? size_t(count) : 0);
    return text;
}

}  // namespace

std::string desktopEntryType(std::string_view text, std::string *url)
{
    const Owned<GKeyFile, g_key_file_unref> entry(g_key_file_new());
    if (text.empty() ||
        !g_key_file_load_from_data(entry.get(), text.data(), text.size(), G_KEY_FILE_NONE, nullptr))
        return {};
    const Text type(g_key_file_get_string(entry.get(), "Desktop Entry", "Type", nullptr));
    if (const Text found(url ? g_key_file_get_string(entry.get(), "Desktop Entry", "URL", nullptr) : nullptr);
        found)
        *url = found.get();
    return type ? type.get() : "";
}

std::string desktopEntryTypeOfFile(const std::string &path, std::string *url)
{
    return path.ends_with(".desktop") ? desktopEntryType(contentsOf(path), url) : "";
}

std::optional<std::string> pathOfFileURL(std::string_view url)
{
    char *host = nullptr;
    const Text path(g_filename_from_uri(std::string(url).c_str(), &host, nullptr));
    const Text owned(host);
    if (!path || (host && *host && std::string_view(host) != "localhost") || path.get()[0] != '/')
        return std::nullopt;
    return path.get();
}

std::optional<std::string> aliasFileTarget(const std::string &path)
{
    struct stat about;
    return lstat(path.c_str(), &about) == 0 ? aliasFileTarget(path, about.st_mode) : std::nullopt;
}

std::optional<std::string> aliasFileTarget(const std::string &path, mode_t mode)
{
    if (S_ISLNK(mode)) {
        char target[PATH_MAX];
        const ssize_t length = readlink(path.c_str(), target, sizeof target);
        if (length <= 0 || length == ssize_t(sizeof target))
            return std::nullopt;
        const std::string text(target, size_t(length));
        return text[0] == '/' ? text : folderOf(path) + text;
    }
    std::string url;
    if (S_ISREG(mode) && desktopEntryTypeOfFile(path, &url) == "Link")
        return pathOfFileURL(url);
    return std::nullopt;
}

OSErr followAliasFiles(std::string &path, bool wholeChain, bool &wasAliased)
{
    std::string here = path;
    wasAliased = false;
    struct stat about;
    for (unsigned step = 0;; ++step) {
        if (lstat(here.c_str(), &about) != 0)
            return errno == ENOTDIR ? OSErr(fnfErr) : files::fileError(errno);
        const auto next = wasAliased && !wholeChain ? std::nullopt : aliasFileTarget(here, about.st_mode);
        if (!next)
            break;
        if (step == kMaxSteps)
            return files::fileError(ELOOP);
        wasAliased = true;
        here = *next;
    }
    path = here;
    return noErr;
}

}  // namespace tarvik::aliases

using namespace tarvik::aliases;

OSErr FSIsAliasFile(const FSRef *fileRef, Boolean *aliasFileFlag, Boolean *folderFlag)
{
    if (!fileRef || !aliasFileFlag || !folderFlag)
        return paramErr;
    std::string path;
    if (const OSErr error = pathOf(fileRef, path))
        return error;
    struct stat about;
    if (lstat(path.c_str(), &about) != 0)
        return tarvik::files::fileError(errno);
    *folderFlag = S_ISDIR(about.st_mode);
    *aliasFileFlag = aliasFileTarget(path, about.st_mode).has_value();
    return noErr;
}

OSErr FSResolveAliasFile(FSRef *theRef, Boolean resolveAliasChains, Boolean *targetIsFolder,
                         Boolean *wasAliased)
{
    return FSResolveAliasFileWithMountFlags(theRef, resolveAliasChains, targetIsFolder, wasAliased,
                                            kResolveAliasFileNoUI);
}

OSErr FSResolveAliasFileWithMountFlags(FSRef *theRef, Boolean resolveAliasChains, Boolean *targetIsFolder,
                                       Boolean *wasAliased, unsigned long)
{
    if (!theRef || !targetIsFolder || !wasAliased)
        return paramErr;
    std::string path;
    OSErr error = pathOf(theRef, path);
    bool aliased = false, folder = false;
    FSRef target;
    if (!error)
        error = followAliasFiles(path, resolveAliasChains, aliased);
    if (!error)
        error = referenceTo(path, &target, &folder);
    if (error)
        return error;
    if (aliased)
        *theRef = target;
    *wasAliased = aliased;
    *targetIsFolder = folder;
    return noErr;
}
