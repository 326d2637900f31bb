#include "platform/Files/private/TreeWalk.h"

#include "platform/Files/private/Errors.h"

#include <Tarvik/support/Handle.h>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <unordered_set>
#include <vector>

namespace tarvik::files {

namespace {

constexpr size_t kListingRoom = 1 << 15;
constexpr unsigned kOpenFolders = 128;  // deeper ones are opened by their whole path, so that no tree takes up all descriptors

/// What getdents64 writes.
struct Entry {
    uint64_t inode;
    int64_t offset;
    unsigned short length;
    unsigned char kind;
    char name[];
};

/// A folder's whole listing, so that nothing is open that need not be while what lies below is visited.
class Listing {
public:
    explicit Listing(int descriptor)
    {
        for (;;) {
            auto room = std::make_unique_for_overwrite<char[]>(kListingRoom);
            const long count = syscall(SYS_getdents64, descriptor, room.get(), kListingRoom);
            if (count <= 0)
                return;
            pieces_.push_back({std::move(room), size_t(count)});
        }
    }

    template <class Each>
    void each(Each &&each) const
    {
        for (const Piece &piece : pieces_)
            for (size_t at = 0; at < piece.length;) {
                const auto *entry = reinterpret_cast<const Entry *>(piece.bytes.get() + at);
                at += entry->length;
                const char *name = entry->name;
                if (name[0] != '.' || (name[1] && (name[1] != '.' || name[2])))
                    each(*entry);
            }
    }

private:
    struct Piece {
        std::unique_ptr<char[]> bytes;
        size_t length;
    };
    std::vector<Piece> pieces_;
};

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
    return item.folder >= 0 ? fstatat(item.folder, item.name(), &about, AT_SYMLINK_NOFOLLOW) == 0 : lstat(path(item).c_str(), &about) == 0;
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
        WalkedItem item = {subpath_.c_str(), subpath_.size(), nameAt, folder.get(), -1, entry.kind, hasCompanion};
        if (struct stat about; item.kind == DT_UNKNOWN && inspect(item, about))
            item.kind = static_cast<unsigned char>(IFTODT(about.st_mode));
        FileDescriptor child;
        if (item.kind == DT_DIR)
            child.reset(folder ? openat(folder.get(), entry.name, kFolderFlags | O_NOFOLLOW) : open(path(item).c_str(), kFolderFlags | O_NOFOLLOW));
        item.descriptor = child.get();
        if (visit(item) && child)
            list(std::move(child), depth + 1);
    });
    subpath_.resize(before);
}

}  // namespace tarvik::files
