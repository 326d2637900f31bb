#include "FindFolder.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string_view>
#include <vector>

namespace {

constexpr const char *kUsers = "/home", *kBootDisk = "/";

std::string absolute(const char *variable)
{
    const char *value = getenv(variable);
    return value && *value == '/' ? value : "";
}

std::string home()
{
    if (std::string folder = absolute("HOME"); !folder.empty())
        return folder;
    std::vector<char> buffer(16384);
    passwd entry;
    passwd *found = nullptr;
    getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found);
    return found && found->pw_dir ? found->pw_dir : "";
}

std::string below(const std::string &folder, const char *name)
{
    return folder.empty() ? "" : folder + "/" + name;
}

std::string inHome(const char *name) { return below(home(), name); }

std::string orElse(std::string first, std::string second) { return first.empty() ? second : first; }

std::string userConfiguration() { return orElse(absolute("XDG_CONFIG_HOME"), inHome(".config")); }

/// A folder of xdg-user-dirs. Its file is a list of shell assignments, NAME="$HOME/..." or NAME="/...".
std::string userFolder(std::string_view name, const char *usual)
{
    std::ifstream file(userConfiguration() + "/user-dirs.dirs");
    const std::string start = "XDG_" + std::string(name) + "_DIR=\"";
    std::string found;
    for (std::string line; std::getline(file, line);) {
        const size_t at = line.find_first_not_of(" \t");
        if (at == line.npos || line.compare(at, start.size(), start) != 0)
            continue;
        std::string value;
        for (size_t i = at + start.size(); i < line.size() && line[i] != '"'; ++i) {
            if (line[i] == '\\' && i + 1 < line.size())
                ++i;
            value += line[i];
        }
        if (value.starts_with("$HOME"))
            value.replace(0, 5, home());
        if (value.starts_with('/'))
            found = value;
    }
    return orElse(found, inHome(usual));
}

std::string userData() { return orElse(absolute("XDG_DATA_HOME"), inHome(".local/share")); }

std::string inUserDomain(OSType type)
{
    switch (type) {
    case kTemporaryFolderType: return orElse(absolute("TMPDIR"), "/tmp");
    case kUserTemporaryFolderType: return below(orElse(absolute("XDG_CACHE_HOME"), inHome(".cache")), "tmp");
    case kDocumentsFolderType: return userFolder("DOCUMENTS", "Documents");
    case kDesktopFolderType: return userFolder("DESKTOP", "Desktop");
    case kDownloadsFolderType: return userFolder("DOWNLOAD", "Downloads");
    case kPictureDocumentsFolderType: return userFolder("PICTURES", "Pictures");
    case kMusicDocumentsFolderType: return userFolder("MUSIC", "Music");
    case kMovieDocumentsFolderType: return userFolder("VIDEOS", "Videos");
    case kTrashFolderType: return below(userData(), "Trash/files");
    case kApplicationsFolderType: return below(userData(), "applications");
    case kDomainLibraryFolderType:
    case kApplicationSupportFolderType: return userData();
    case kPreferencesFolderType: return userConfiguration();
    case kCurrentUserFolderType: return home();
    case kUsersFolderType: return kUsers;
    case kBootDiskFolderType: return kBootDisk;
    default: return "";
    }
}

std::string inLocalDomain(OSType type)
{
    switch (type) {
    case kTemporaryFolderType: return "/tmp";
    case kUsersFolderType: return kUsers;
    case kBootDiskFolderType: return kBootDisk;
    case kApplicationsFolderType: return "/usr/local/share/applications";
    case kDomainLibraryFolderType:
    case kApplicationSupportFolderType:
        return "/usr/local/share";  // not the first of XDG_DATA_DIRS, which may be a user's
    case kPreferencesFolderType: return "/etc/xdg";
    default: return "";
    }
}

OSErr makeFolder(const std::string &path, mode_t mode)
{
    for (size_t slash = path.find('/', 1);; slash = path.find('/', slash + 1)) {
        const std::string part = path.substr(0, slash);
        if (mkdir(part.c_str(), mode) != 0 && errno != EEXIST)
            return errno == EACCES || errno == EPERM || errno == EROFS ? OSErr(permErr) : OSErr(ioErr);
        if (slash == path.npos)
            return noErr;
    }
}

OSErr lookUp(std::string folder, mode_t mode, bool create, std::string &path)
{
    if (folder.empty())
        return fnfErr;
    while (folder.size() > 1 && folder.ends_with('/'))
        folder.pop_back();
    OSErr result = noErr;
    struct stat status;
    if (stat(folder.c_str(), &status) != 0)
        result = create ? makeFolder(folder, mode) : OSErr(fnfErr);
    else if (!S_ISDIR(status.st_mode))
        result = dirNFErr;
    if (result == noErr)
        path = folder;
    return result;
}

}  // namespace

OSErr findFolder(SInt16 domain, OSType type, bool create, std::string &path)
{
    path.clear();
    OSErr status = fnfErr;
    if (domain == kUserDomain || domain == kOnSystemDisk)
        status = lookUp(inUserDomain(type), 0700, create, path);
    if (status != noErr && (domain == kLocalDomain || domain == kOnSystemDisk))
        status = lookUp(inLocalDomain(type), 0755, create, path);
    return status;
}

OSErr FSFindFolderPath(SInt16 domain, OSType type, Boolean create, char *path, UInt32 size)
{
    if (!path || size == 0)
        return paramErr;
    *path = 0;
    std::string found;
    const OSErr status = findFolder(domain, type, create, found);
    if (status != noErr)
        return status;
    if (found.size() >= size)
        return bdNamErr;
    memcpy(path, found.c_str(), found.size() + 1);
    return noErr;
}
