#include "platform/Aliases/private/AliasSearch.h"

#include "platform/Aliases/private/Nearby.h"
#include "platform/Aliases/private/Volumes.h"
#include "platform/Files/private/Errors.h"
#include "platform/Files/private/References.h"

#include <Tarvik/support/Handle.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <vector>

namespace tarvik::aliases {

namespace {

// How much of a volume is looked through for an item that has left its folder, and for one that was put back.
constexpr size_t kMaxEntries = 100'000, kMaxEntriesByName = 20'000;
constexpr unsigned kAnyDepth = UINT_MAX, kDepthByName = 3;

using Status = struct statx;
using files::folderOf;
using files::nameOf;

bool inspect(int folder, const char *path, int flags, Status &about)
{
    return statx(folder, path, flags | AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT,
                 STATX_TYPE | STATX_INO | STATX_BTIME | STATX_SIZE | STATX_MTIME | STATX_NLINK | STATX_MNT_ID,
                 &about) == 0;
}
bool inspect(const std::string &path, Status &about) { return inspect(AT_FDCWD, path.c_str(), 0, about); }
uint64_t deviceOf(const Status &about) { return uint64_t(about.stx_dev_major) << 32 | about.stx_dev_minor; }

const Mount *mountOf(const Status &about, std::shared_ptr<const Mounts> &mounts)
{
    const Mount *mount = mounts->numbered(about.stx_mnt_id);
    if (!mount) {
        mounts = Mounts::anew();
        mount = mounts->numbered(about.stx_mnt_id);
    }
    return mount;
}

KernelHandle handleOf(const std::string &path)
{
    struct {
        file_handle head;
        unsigned char room[MAX_HANDLE_SZ];
    } made;
    made.head.handle_bytes = sizeof made.room;
    int mount;
    if (name_to_handle_at(AT_FDCWD, path.c_str(), &made.head, &mount, 0) != 0 || made.head.handle_bytes == 0)
        return {};
    return {made.head.handle_type,
            std::string(reinterpret_cast<const char *>(made.head.f_handle), made.head.handle_bytes)};
}

/// The way from a folder to an item, both absolute: "../x/y".
std::string relativePath(const std::string &folder, const std::string &path)
{
    size_t common = 0;  // up to and with the last slash that both share
    for (size_t i = 0; i < path.size() && i <= folder.size(); ++i) {
        const char here = i < folder.size() ? folder[i] : '/';
        if (here != path[i])
            break;
        if (here == '/')
            common = i + 1;
    }
    std::string out;
    for (size_t at = common; at < folder.size(); at = std::min(folder.find('/', at), folder.size() - 1) + 1)
        out += "../";
    return out + path.substr(std::min(common, path.size()));
}

/// The item at a way that starts in a folder, by names alone.
std::string resolved(std::string folder, std::string_view way)
{
    for (; way.starts_with("../"); way.remove_prefix(3))
        folder = folderOf(folder);
    return joined(folder, way);
}

class Search {
public:
    explicit Search(const AliasContents &wanted) : wanted_(wanted) {}

    OSErr run(const std::string &startingFile, Order order)
    {
        if (!startingFile.empty() && !wanted_.relativePath.empty() &&
            isThere(resolved(folderOf(startingFile), wanted_.relativePath)))
            return noErr;
        if (order == Order::IdentityFirst && inspect(wanted_.path, about_) && isWanted())
            return path_ = wanted_.path, noErr;
        if (order == Order::PathFirst && atRecordedPath())
            return noErr;
        places_ = mounts()->of(wanted_.volume);
        if (places_.empty()) {  // a process in a namespace of its own
            mounts_ = Mounts::anew();
            places_ = mounts_->of(wanted_.volume);
        }
        if (order == Order::IdentityFirst && (byIdentity() || atRecordedPath()))
            return noErr;
        if (places_.empty())
            return forbidden_ ? OSErr(afpAccessDenied) : OSErr(nsvErr);
        if (onTheVolume() || byIdentity() || byName())
            return noErr;
        return forbidden_ ? OSErr(afpAccessDenied) : folders_.empty() ? OSErr(dirNFErr) : OSErr(fnfErr);
    }

    const std::string &path() const { return path_; }
    const Status &about() const { return about_; }
    bool isWanted() const { return wanted_.item.inode && ItemIdentity::of(about_) == wanted_.item; }

private:
    std::shared_ptr<const Mounts> &mounts()
    {
        if (!mounts_)
            mounts_ = Mounts::now();
        return mounts_;
    }

    bool isThere(const std::string &path)
    {
        if (inspect(path, about_)) {
            path_ = path;
            return true;
        }
        forbidden_ |= errno == EACCES;
        return false;
    }

    /// The item that is wanted, not another one.
    bool isItem(const std::string &path)
    {
        return inspect(path, about_) && isWanted() && (path_ = path, true);
    }

    bool atRecordedPath()
    {
        if (!isThere(wanted_.path))
            return false;
        if (isWanted() && deviceOf(about_) == wanted_.device)
            return true;
        // Another item. On another volume, which is mounted where ours was, it comes second.
        const Mount *mount = mountOf(about_, mounts());
        if (mount && !(mount->identity == wanted_.volume)) {
            places_ = mounts_->of(wanted_.volume);
            if (onTheVolume())
                return true;
        }
        return isThere(wanted_.path);
    }

    /// The volume may be mounted elsewhere, or a part of it.
    bool onTheVolume()
    {
        for (const Mount *place : places_)
            if (const auto rest = below(wanted_.volumePath, place->root))
                if (const std::string path = rest->empty() ? place->point : joined(place->point, *rest);
                    isThere(path) && isOn(place))
                    return true;
        return false;
    }

    /// What was inspected last lies on that volume: nothing else is mounted over it.
    bool isOn(const Mount *place)
    {
        const Mount *mount = mountOf(about_, mounts());
        return !mount || mount == place || mount->identity == wanted_.volume;
    }

    bool byIdentity()
    {
        if (!wanted_.item.inode)
            return false;
        if (byHandle(
                wanted_.itemHandle, [this](const std::string &path) { return isItem(path); }, gone_))
            return true;
        findFolders();
        if (gone_)
            return false;
        for (const std::string &folder : folders_)
            if (inFolder(folder))
                return true;
        return nearby(kAnyDepth, kMaxEntries, [this](const Entry &entry) {
            if (entry.inode == wanted_.item.inode)
                return isItem(entry.path());
            if (entry.inode == wanted_.parent.inode && entry.kind == DT_DIR)
                addFolder(entry.path());
            return false;
        });
    }

    /// The item's own folder, where it was and where it went.
    void findFolders()
    {
        for (const Mount *place : places_)
            if (const auto rest = below(wanted_.volumePath, place->root); rest && !rest->empty())
                if (const std::string folder = folderOf(joined(place->point, *rest));
                    inspect(folder, about_) && S_ISDIR(about_.stx_mode))
                    folders_.push_back(folder);
        bool gone = false;
        byHandle(
            wanted_.parentHandle, [this](const std::string &path) { return addFolder(path); }, gone);
    }

    bool addFolder(const std::string &path)
    {
        Status about;
        if (!inspect(path, about) || !(ItemIdentity::of(about) == wanted_.parent))
            return false;
        folders_.push_back(path);
        return true;
    }

    bool inFolder(const std::string &folder)
    {
        const std::string name = nameOf(wanted_.path);
        std::string other;  // a hard link of another name
        const bool found = visitFolder(folder, [&](const Entry &entry) {
            if (entry.inode != wanted_.item.inode)
                return false;
            if (entry.name == name)
                return isItem(entry.path());
            if (isItem(entry.path()))
                other = path_;
            return !other.empty() && about_.stx_nlink == 1;
        });
        return found || (!other.empty() && isItem(other));
    }

    /// The path of what a kernel's handle names, handed to `accept`. Only root may ask; `gone` tells that
    /// there is no such item any more.
    template <class Accept>
    bool byHandle(const KernelHandle &handle, Accept &&accept, bool &gone)
    {
        if (handle.bytes.empty() || handle.bytes.size() > MAX_HANDLE_SZ)
            return false;
        struct {
            file_handle head;
            unsigned char room[MAX_HANDLE_SZ];
        } wanted = {};
        wanted.head.handle_bytes = unsigned(handle.bytes.size());
        wanted.head.handle_type = handle.type;
        std::memcpy(wanted.head.f_handle, handle.bytes.data(), handle.bytes.size());
        for (const Mount *place : places_) {
            const FileDescriptor volume(open(place->point.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
            if (!volume)
                continue;
            const FileDescriptor item(
                open_by_handle_at(volume.get(), &wanted.head, O_PATH | O_CLOEXEC | O_NOFOLLOW));
            Status about;
            if (!item) {
                gone = errno == ESTALE;
                if (gone)
                    return false;
                continue;
            }
            if (inspect(item.get(), "", AT_EMPTY_PATH, about) && about.stx_nlink == 0) {
                gone = true;  // open somewhere, without a name
                return false;
            }
            char path[PATH_MAX];
            const ssize_t length =
                readlink(("/proc/self/fd/" + std::to_string(item.get())).c_str(), path, sizeof path);
            // A file whose folder the kernel has forgotten has no path; one outside what this mount shows
            // neither.
            if (length > 0 && length < ssize_t(sizeof path) && accept(std::string(path, size_t(length))))
                return true;
        }
        return false;
    }

    bool nearby(unsigned depth, size_t entries, const Visitor &visit)
    {
        for (const Mount *place : places_)
            if (const auto rest = below(wanted_.volumePath, place->root); rest && !rest->empty())
                if (visitNearby(folderOf(joined(place->point, *rest)), place->point, depth, entries, visit))
                    return true;
        return false;
    }

    bool byName()
    {
        const std::string name = nameOf(wanted_.path);
        for (const std::string &folder : folders_)
            if (isThere(joined(folder, name)))
                return true;
        // A copy that was put back has the file's size and date; any other file of the name is another file.
        if (wanted_.item.kind != S_IFREG || wanted_.size == 0)
            return false;
        return nearby(kDepthByName, kMaxEntriesByName, [&](const Entry &entry) {
            return entry.name == name && (entry.kind == DT_REG || entry.kind == DT_UNKNOWN) &&
                   isThere(entry.path()) && looksTheSame();
        });
    }
    bool looksTheSame() const
    {
        return about_.stx_size == wanted_.size && about_.stx_mtime.tv_sec == wanted_.modifiedSeconds &&
               about_.stx_mtime.tv_nsec == wanted_.modifiedNanoseconds;
    }

    const AliasContents &wanted_;
    std::shared_ptr<const Mounts> mounts_;
    std::vector<const Mount *> places_;  // where the item's volume can be reached
    std::vector<std::string> folders_;   // where the item's folder is now
    Status about_ = {};                  // of what was inspected last
    std::string path_;
    bool forbidden_ = false;  // a folder on the way may not be searched
    bool gone_ = false;       // the kernel knows that the item was deleted
};

}  // namespace

OSErr describe(const std::string &path, const std::string &startingFile, bool minimal,
               AliasContents &contents)
{
    Status about, other;
    if (!inspect(path, about))
        return files::fileError(errno);
    contents.path = path;
    contents.device = deviceOf(about);
    contents.item = ItemIdentity::of(about);
    contents.size = about.stx_size;
    contents.modifiedSeconds = about.stx_mtime.tv_sec;
    contents.modifiedNanoseconds = about.stx_mtime.tv_nsec;
    std::shared_ptr<const Mounts> mounts = Mounts::now();
    if (const Mount *mount = mountOf(about, mounts)) {
        contents.volume = mount->identity;
        if (const auto rest = below(path, mount->point))
            contents.volumePath = rest->empty() ? mount->root : joined(mount->root, *rest);
    }
    if (minimal)
        return noErr;
    const std::string folder = folderOf(path);
    if (path != "/" && inspect(folder, other) && deviceOf(other) == contents.device) {
        contents.parent = ItemIdentity::of(other);
        contents.parentHandle = handleOf(folder);
    }
    contents.itemHandle = handleOf(path);
    if (!startingFile.empty() && path != "/" && inspect(startingFile, other) &&
        deviceOf(other) == contents.device)
        contents.relativePath = relativePath(folderOf(startingFile), path);
    return noErr;
}

OSErr find(const AliasContents &contents, const std::string &startingFile, Order order, Target &target)
{
    Search search(contents);
    const OSErr error = search.run(startingFile, order);
    if (error == noErr)
        target = {search.path(), search.about(), search.path() != contents.path || !search.isWanted()};
    return error;
}

}  // namespace tarvik::aliases
