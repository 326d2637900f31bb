#include "platform/Files/private/TreeWalk.h"

#include "platform/Files/private/Errors.h"
#include "platform/Files/private/Listing.h"

#include <Tarvik/support/Handle.h>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <unordered_set>

namespace tarvik::files {

namespace {

constexpr unsigned kOpenFolders =
    128;  // deeper ones are opened by their whole path, so that no tree takes up all descriptors

bool isCompanionName(const char *name) { return name[0] == '.' && name[1] == '_' && name[2]; }

constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK;

}  // namespace

OSErr TreeWalk::run(const std::string &folder, bool withCompanions)
{
    FileDescriptor opened(open(folder.c_str(), kFolderFlags));
    if (!opened)
        return errno == ENOTDIR ? OSErr(errFSNotAFolder) : fileError(errno);
    root_ = folder == "/" ? "" : folder;
    subpath_.clear();
    withCompanions_ = withCompanions;
    list(std::move(opened), 0);
    return noErr;
}

bool TreeWalk::inspect(const WalkedItem &item, struct stat &about) const
{
    return item.folder >= 0 ? fstatat(item.folder, item.name(), &about, AT_SYMLINK_NOFOLLOW) == 0
                            : lstat(path(item).c_str(), &about) == 0;
}

void TreeWalk::list(FileDescriptor folder, unsigned depth)
{
    const Listing listing(folder.get());
    if (depth >= kOpenFolders)
        folder.reset();
    // Few folders hold companions: names are collected only for one that does.
    std::unordered_set<std::string_view> companions, others;
    listing.each([&](const Entry &entry) {
        if (isCompanionName(entry.name))
            companions.insert(entry.name);
    });
    if (!companions.empty())
        listing.each([&](const Entry &entry) { others.insert(entry.name); });

    const size_t before = subpath_.size();
    if (before)
        subpath_ += '/';
    const size_t nameAt = subpath_.size();
    std::string companion;
    listing.each([&](const Entry &entry) {
        bool hasCompanion = false;
        if (!companions.empty()) {
            if (!withCompanions_ && isCompanionName(entry.name) && others.contains(entry.name + 2))
                return;
            hasCompanion = companions.contains(companion.assign("._").append(entry.name));
        }
        subpath_.resize(nameAt);
        subpath_ += entry.name;
        WalkedItem item = {subpath_.c_str(), subpath_.size(), nameAt, folder.get(), -1,
                           entry.kind,       hasCompanion};
        if (struct stat about; item.kind == DT_UNKNOWN && inspect(item, about))
            item.kind = static_cast<unsigned char>(IFTODT(about.st_mode));
        FileDescriptor child;
        if (item.kind == DT_DIR)
            child.reset(folder ? openat(folder.get(), entry.name, kFolderFlags | O_NOFOLLOW)
                               : open(path(item).c_str(), kFolderFlags | O_NOFOLLOW));
        item.descriptor = child.get();
        if (visit(item) && child)
            list(std::move(child), depth + 1);
    });
    subpath_.resize(before);
}

}  // namespace tarvik::files
