#include "platform/Files/private/References.h"

#include "platform/Files/private/Errors.h"

#include <Tarvik/support/Handle.h>
#include <Tarvik/support/Owned.h>
#include <dirent.h>
#include <fcntl.h>
#include <linux/openat2.h>
#include <pwd.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <unordered_map>
#include <vector>

namespace tarvik::files {
namespace {

using Clock = std::chrono::steady_clock;
constexpr auto kFresh =
    std::chrono::milliseconds(100);  // how long a folder's path is taken to name the same folder
constexpr auto kSearchPause = std::chrono::seconds(1);  // before a vain search is made again
constexpr size_t kDescriptors = 256;
// A file that is held keeps its room on the disk when it is deleted: large ones are not held, and all are
// looked at once in a while.
constexpr uint64_t kLargestHeld = 16 << 20;
constexpr auto kSweepPause = std::chrono::seconds(1);
constexpr size_t kRecentPaths = 256;
constexpr size_t kSearchedEntries = 100000;
constexpr size_t kDepth = PATH_MAX / 2;
constexpr uint32_t kSignature = 0x46535266;  // 'FSRf': a reference, and not memory that happens to lie there
constexpr uint32_t kNone = UINT32_MAX;

/// What the 80 bytes hold.
struct Contents {
    uint32_t signature;
    uint32_t node;
    Identity item;
};
static_assert(sizeof(Contents) <= sizeof(FSRef));

struct DirectoryTraits {
    using Value = DIR *;
    static Value empty() { return nullptr; }
    static void close(Value folder) { closedir(folder); }
};
using Directory = Handle<DirectoryTraits>;

std::optional<std::string> linkOf(int descriptor)
{
    char path[PATH_MAX];
    const ssize_t count =
        readlink(("/proc/self/fd/" + std::to_string(descriptor)).c_str(), path, sizeof path);
    if (count <= 0 || size_t(count) == sizeof path || path[0] != '/')
        return std::nullopt;
    return std::string(path, size_t(count));
}

/// An absolute path without "//", "." and "..". For paths that hold no link: there ".." is the folder above
/// in the text, too.
std::optional<std::string> plain(const std::string &path)
{
    std::string out;
    if (!path.starts_with('/')) {
        const Owned<char, std::free> current(getcwd(nullptr, 0));
        if (!current || current.get()[0] != '/')
            return std::nullopt;
        out = current.get() == std::string_view("/") ? "" : current.get();
    }
    for (size_t at = 0; at < path.size();) {
        const size_t end = std::min(path.find('/', at), path.size());
        const std::string_view part(path.data() + at, end - at);
        if (part == "..")
            out.resize(std::min(out.rfind('/'), out.size()));
        else if (!part.empty() && part != ".")
            out.append("/").append(part);
        at = end + 1;
    }
    return out.empty() ? "/" : out;
}

/// The item at a path, held, and its path without links.
struct Found {
    FileDescriptor descriptor;
    std::string path;
};
int find(const std::string &path, Leaf leaf, Found &found)
{
    open_how how{};
    how.flags = O_PATH | O_CLOEXEC | (leaf == Leaf::asIs ? O_NOFOLLOW : 0);
    how.resolve = RESOLVE_NO_SYMLINKS;
    found.descriptor.reset(int(syscall(SYS_openat2, AT_FDCWD, path.c_str(), &how, sizeof how)));
    if (found.descriptor) {
        if (auto text = plain(path)) {
            found.path = std::move(*text);
            return 0;
        }
    } else if (errno != ELOOP && errno != ENOSYS && errno != EPERM) {
        return errno;
    } else {
        found.descriptor.reset(open(path.c_str(), int(how.flags)));
        if (!found.descriptor)
            return errno;
    }
    auto text = linkOf(found.descriptor.get());
    if (!text)
        return ENOENT;
    found.path = std::move(*text);
    return 0;
}

/// The volumes that stay for as long as the process: a descriptor on them is in nobody's way.
bool isLasting(uint64_t device)
{
    static const std::vector<uint64_t> devices = [] {
        std::vector<uint64_t> found;
        const passwd *account = getpwuid(getuid());
        const char *temporary = getenv("TMPDIR");
        for (const char *folder :
             {"/", "/tmp", temporary ? temporary : "/", account ? account->pw_dir : "/"}) {
            struct statx item;
            if (status(AT_FDCWD, folder, item) == 0)
                found.push_back(identityOf(item).device);
        }
        return found;
    }();
    return std::find(devices.begin(), devices.end(), device) != devices.end();
}

/// All that references were made of. Locks itself; asks the file system nothing.
class Table {
public:
    uint32_t add(const Identity &item, bool isLinked, uint32_t folder, std::string_view name)
    {
        std::lock_guard lock(lock_);
        uint32_t number = lookUp(item, [&](const Node &node) {
            return !isLinked || (node.folder == folder && name == node.name.get());
        });
        if (number == kNone) {
            number = uint32_t(nodes_.size());
            nodes_.push_back(
                {item.inode, item.born, folder, deviceNumber(item.device), false, copyName(name)});
            enter(number);
        } else {
            place(nodes_[number], folder, name);
            nodes_[number].isGone =
                false;  // without times of birth, a new item may have a deleted one's identity
        }
        return number;
    }
    void move(uint32_t number, uint32_t folder, std::string_view name)
    {
        std::lock_guard lock(lock_);
        place(nodes_[number], folder, name);
    }
    /// False for a number that was never given to this item.
    bool holds(uint32_t number, const Identity &item)
    {
        std::lock_guard lock(lock_);
        return number < nodes_.size() && nodes_[number].inode == item.inode &&
               nodes_[number].born == item.born && devices_[nodes_[number].device] == item.device;
    }
    /// Where the tree has the item; nothing when its folders form a ring, which moves seen in another order
    /// can make.
    std::optional<std::string> path(uint32_t number)
    {
        std::lock_guard lock(lock_);
        std::array<const char *, kDepth> names;
        size_t depth = 0, length = 0;
        for (uint32_t at = number; nodes_[at].folder != kNone; at = nodes_[at].folder) {
            if (depth == names.size())
                return std::nullopt;
            names[depth++] = nodes_[at].name.get();
            length += std::strlen(names[depth - 1]) + 1;
        }
        std::string path;
        path.reserve(length + 1);
        while (depth > 0)
            path.append("/").append(names[--depth]);
        return path.empty() ? "/" : path;
    }
    struct Place {
        Identity item;
        uint32_t folder;
        bool isGone;
    };
    Place at(uint32_t number)
    {
        std::lock_guard lock(lock_);
        const Node &node = nodes_[number];
        return {{devices_[node.device], node.inode, node.born}, node.folder, node.isGone};
    }
    void setGone(uint32_t number)
    {
        std::lock_guard lock(lock_);
        nodes_[number].isGone = true;
    }
    std::vector<uint32_t> withNumber(uint64_t device, uint32_t inode)
    {
        std::lock_guard lock(lock_);
        std::vector<uint32_t> found;
        const auto known = std::find(devices_.begin(), devices_.end(), device);
        if (known == devices_.end() || slots_.empty())
            return found;
        const auto index = uint16_t(known - devices_.begin());
        for (size_t slot = hash(index, inode) & (slots_.size() - 1); slots_[slot] != kNone;
             slot = (slot + 1) & (slots_.size() - 1)) {
            const Node &node = nodes_[slots_[slot]];
            if (node.device == index && uint32_t(node.inode) == inode)
                found.push_back(slots_[slot]);
        }
        return found;
    }

private:
    struct Node {
        uint64_t inode;
        int64_t born;
        uint32_t folder;
        uint16_t device;  // a place in devices_
        bool isGone;
        std::unique_ptr<char[]> name;
    };

    static std::unique_ptr<char[]> copyName(std::string_view name)
    {
        std::unique_ptr<char[]> copy(new char[name.size() + 1]);
        std::memcpy(copy.get(), name.data(), name.size());
        copy[name.size()] = 0;
        return copy;
    }
    static void place(Node &node, uint32_t folder, std::string_view name)
    {
        node.folder = folder;
        if (name != node.name.get())
            node.name = copyName(name);
    }
    uint16_t deviceNumber(uint64_t device)
    {
        const auto known = std::find(devices_.begin(), devices_.end(), device);
        if (known == devices_.end())
            devices_.push_back(device);
        return uint16_t(std::find(devices_.begin(), devices_.end(), device) - devices_.begin());
    }
    // Of the inode's lower half, as folders are looked for by that.
    static size_t hash(uint16_t device, uint32_t inode)
    {
        return (inode ^ uint64_t(device) << 32) * 0x9E3779B97F4A7C15u >> 24;
    }

    template <class Test>
    uint32_t lookUp(const Identity &item, Test &&test)
    {
        if (slots_.empty())
            return kNone;
        const uint16_t device = deviceNumber(item.device);
        for (size_t slot = hash(device, uint32_t(item.inode)) & (slots_.size() - 1); slots_[slot] != kNone;
             slot = (slot + 1) & (slots_.size() - 1)) {
            const Node &node = nodes_[slots_[slot]];
            if (node.inode == item.inode && node.born == item.born && node.device == device && test(node))
                return slots_[slot];
        }
        return kNone;
    }
    void enter(uint32_t number)
    {
        if (nodes_.size() * 3 > slots_.size() * 2) {
            slots_.assign(std::max<size_t>(1024, slots_.size() * 2), kNone);
            for (uint32_t i = 0; i < nodes_.size(); ++i)
                insert(i);
        } else {
            insert(number);
        }
    }
    void insert(uint32_t number)
    {
        size_t slot = hash(nodes_[number].device, uint32_t(nodes_[number].inode)) & (slots_.size() - 1);
        while (slots_[slot] != kNone)
            slot = (slot + 1) & (slots_.size() - 1);
        slots_[slot] = number;
    }

    std::mutex lock_;
    std::deque<Node> nodes_;
    std::vector<uint32_t> slots_;
    std::vector<uint64_t> devices_;
};

/// The latest items' descriptors. A new one takes the oldest one's place, one that has led to its item again
/// apart.
class Descriptors {
public:
    void keep(uint32_t node, FileDescriptor descriptor)
    {
        std::lock_guard lock(lock_);
        if (const auto known = places_.find(node); known != places_.end()) {
            kept_[known->second].descriptor = std::move(descriptor);
            return;
        }
        while (std::exchange(kept_[next_].wasUsed, false))
            next_ = (next_ + 1) % kept_.size();
        Kept &kept = kept_[next_];
        if (kept.descriptor)
            places_.erase(kept.node);
        places_[node] = next_;
        kept = {node, false, std::move(descriptor)};
        next_ = (next_ + 1) % kept_.size();
    }
    void drop(uint32_t node)
    {
        std::lock_guard lock(lock_);
        if (const auto known = places_.find(node); known != places_.end())
            letGo(kept_[known->second]);
    }
    bool holds(uint32_t node)
    {
        std::lock_guard lock(lock_);
        return places_.contains(node);
    }
    /// Lets go of what has been deleted or has grown large, once in a while; which items were deleted.
    std::vector<uint32_t> sweep()
    {
        std::vector<uint32_t> deleted;
        std::lock_guard lock(lock_);
        if (Clock::now() - swept_ < kSweepPause)
            return deleted;
        swept_ = Clock::now();
        for (Kept &kept : kept_) {
            struct statx item;
            if (!kept.descriptor || status(kept.descriptor.get(), "", item) != 0 ||
                (item.stx_nlink > 0 && item.stx_size <= kLargestHeld))
                continue;
            letGo(kept);
            if (item.stx_nlink == 0)
                deleted.push_back(kept.node);
        }
        return deleted;
    }
    enum class State { unknown, deleted, here };
    State follow(uint32_t node, std::string &path)
    {
        std::lock_guard lock(lock_);
        const auto known = places_.find(node);
        if (known == places_.end())
            return State::unknown;
        Kept &kept = kept_[known->second];
        struct statx item;
        if (status(kept.descriptor.get(), "", item) != 0)
            return State::unknown;
        if (item.stx_nlink == 0)
            return State::deleted;
        kept.wasUsed = true;
        const auto text = linkOf(kept.descriptor.get());
        path = text.value_or("");
        return text ? State::here : State::unknown;
    }

private:
    struct Kept {
        uint32_t node = kNone;
        bool wasUsed = false;
        FileDescriptor descriptor;
    };
    void letGo(Kept &kept)
    {
        kept.descriptor.reset();
        places_.erase(kept.node);
    }

    std::mutex lock_;
    std::array<Kept, kDescriptors> kept_;
    std::unordered_map<uint32_t, size_t> places_;
    size_t next_ = 0;
    Clock::time_point swept_ = Clock::now();
};

/// The nodes of the items that were met last, by path (absolute, without links).
class RecentPaths {
public:
    std::optional<uint32_t> find(const std::string &path)
    {
        std::lock_guard lock(lock_);
        const auto known = nodes_.find(path);
        if (known == nodes_.end() || Clock::now() - known->second.seen > kFresh)
            return std::nullopt;
        return known->second.node;
    }
    void add(const std::string &path, uint32_t node)
    {
        std::lock_guard lock(lock_);
        if (nodes_.size() >= kRecentPaths)
            nodes_.clear();
        nodes_[path] = {node, Clock::now()};
    }
    void forget()
    {
        std::lock_guard lock(lock_);
        nodes_.clear();
    }

private:
    struct Seen {
        uint32_t node;
        Clock::time_point seen;
    };
    std::mutex lock_;
    std::unordered_map<std::string, Seen> nodes_;
};

/// The items that were searched for in vain, and when.
class VainSearches {
public:
    bool isRecent(uint32_t node)
    {
        std::lock_guard lock(lock_);
        const auto known = times_.find(node);
        return known != times_.end() && Clock::now() - known->second < kSearchPause;
    }
    void add(uint32_t node)
    {
        std::lock_guard lock(lock_);
        if (times_.size() >= 4096)
            times_.clear();
        times_[node] = Clock::now();
    }

private:
    std::mutex lock_;
    std::unordered_map<uint32_t, Clock::time_point> times_;
};

// References outlive the end of main, so do these.
Table &table()
{
    static Table &all = *new Table;
    return all;
}
Descriptors &descriptors()
{
    static Descriptors &all = *new Descriptors;
    return all;
}
RecentPaths &folderPaths()
{
    static RecentPaths &all = *new RecentPaths;
    return all;
}
RecentPaths &itemPaths()
{
    static RecentPaths &all = *new RecentPaths;
    return all;
}
VainSearches &vainSearches()
{
    static VainSearches &all = *new VainSearches;
    return all;
}

/// The node of a folder by its path (absolute, without links), with those of the folders above; kNone when it
/// is gone.
uint32_t folderNode(const std::string &path)
{
    if (const auto known = folderPaths().find(path))
        return *known;
    struct statx item;
    if (status(AT_FDCWD, path.c_str(), item) != 0)
        return kNone;
    const bool isTop = path == "/";
    const uint32_t above = isTop ? kNone : folderNode(folderOf(path));
    if (!isTop && above == kNone)
        return kNone;
    const uint32_t node = table().add(identityOf(item), false, above, nameOf(path));
    folderPaths().add(path, node);
    return node;
}

bool isAt(const std::string &path, const Identity &item, struct statx &found)
{
    return status(AT_FDCWD, path.c_str(), found) == 0 && identityOf(found) == item;
}

/// Looks for an item by its inode, a folder at a time.
class Search {
public:
    explicit Search(const Identity &item) : item_(item) {}

    /// The folder alone, whatever its length.
    bool look(const std::string &folder) { return list(folder, nullptr, SIZE_MAX); }
    /// The folder's own folders, nearest first; then the same from the folder above, as long as entries are
    /// left.
    bool lookAround(std::string folder)
    {
        for (std::string searched; !folder.empty() && left_ > 0;
             searched = folder, folder = folder == "/" ? "" : folderOf(folder)) {
            std::deque<std::string> waiting{folder};
            for (; !waiting.empty() && left_ > 0; waiting.pop_front())
                if (waiting.front() != searched && list(waiting.front(), &waiting, left_))
                    return true;
        }
        return false;
    }
    const std::string &path() const { return path_; }
    const struct statx &found() const { return found_; }

private:
    bool list(const std::string &folder, std::deque<std::string> *folders, size_t most)
    {
        struct statx status;
        if (folders && (files::status(AT_FDCWD, folder.c_str(), status) != 0 ||
                        identityOf(status).device != item_.device))
            return false;
        const Directory open(opendir(folder.c_str()));
        for (const dirent *entry; open && most > 0 && (entry = readdir(open.get())); --most) {
            const std::string_view name = entry->d_name;
            if (name == "." || name == "..")
                continue;
            if (entry->d_ino == item_.inode && isAt(joined(folder, entry->d_name), item_, found_)) {
                path_ = joined(folder, entry->d_name);
                return true;
            }
            if (folders && entry->d_type == DT_DIR)
                folders->push_back(joined(folder, entry->d_name));
            left_ -= folders && left_ > 0;
        }
        return false;
    }

    Identity item_;
    size_t left_ = kSearchedEntries;
    std::string path_;
    struct statx found_;
};

void sweepDescriptors()
{
    for (const uint32_t node : descriptors().sweep())
        table().setGone(node);
}

bool settle(uint32_t node, const std::string &path)
{
    const uint32_t folder = path == "/" ? kNone : folderNode(folderOf(path));
    if (path != "/" && folder == kNone)
        return false;
    table().move(node, folder, nameOf(path));
    return true;
}

OSErr locateNode(uint32_t node, std::string &path, struct statx &found, size_t depth)
{
    const Table::Place place = table().at(node);
    if (place.isGone)
        return fnfErr;
    const auto known = table().path(node);
    if (known && isAt(*known, place.item, found)) {
        path = *known;
        return noErr;
    }
    if (known && errno == EACCES && status(AT_FDCWD, known->c_str(), found) != 0 && errno == EACCES)
        return afpAccessDenied;

    switch (descriptors().follow(node, path)) {
    case Descriptors::State::deleted:
        table().setGone(node);
        descriptors().drop(node);
        return fnfErr;
    case Descriptors::State::here:
        if (isAt(path, place.item, found)) {
            folderPaths().forget();  // what has moved may be a folder
            settle(node, path);
            return noErr;
        }
        break;
    case Descriptors::State::unknown: break;
    }

    if (place.folder == kNone || depth == 0)
        return fnfErr;
    std::string folder;
    struct statx folderFound;
    if (locateNode(place.folder, folder, folderFound, depth - 1) != noErr) {
        // The folder is gone: begin where it was.
        if (!known)
            return fnfErr;
        for (folder = folderOf(*known); folder != "/" && status(AT_FDCWD, folder.c_str(), folderFound) != 0;)
            folder = folderOf(folder);
    }
    Search search(place.item);
    bool wasFound = search.look(folder);
    if (!wasFound && !vainSearches().isRecent(node)) {
        wasFound = search.lookAround(folder);
        if (!wasFound)
            vainSearches().add(node);
    }
    if (!wasFound)
        return fnfErr;
    folderPaths().forget();
    path = search.path();
    found = search.found();
    settle(node, path);
    return noErr;
}

/// Notes an item at a path, and makes its reference.
OSErr enter(const std::string &path, const struct statx &item, uint32_t &node, FSRef *ref)
{
    const bool isTop = path == "/";
    const uint32_t folder = isTop ? kNone : folderNode(folderOf(path));
    if (!isTop && folder == kNone)
        return fnfErr;
    const bool isLinked = item.stx_nlink > 1 && !S_ISDIR(item.stx_mode);
    const Identity identity = identityOf(item);
    node = table().add(identity, isLinked, folder, nameOf(path));
    const Contents made{kSignature, node, identity};
    std::memset(ref, 0, sizeof *ref);
    std::memcpy(ref, &made, sizeof made);
    return noErr;
}

OSErr contents(const FSRef *ref, Contents &copy)
{
    if (!ref)
        return paramErr;
    std::memcpy(&copy, ref, sizeof copy);  // a reference may lie unaligned in a packed record
    return copy.signature == kSignature ? OSErr(noErr) : OSErr(errFSBadFSRef);
}

}  // namespace

Identity identityOf(const struct statx &status)
{
    const int64_t born =
        status.stx_mask & STATX_BTIME ? status.stx_btime.tv_sec * 1000000000 + status.stx_btime.tv_nsec : 0;
    return {uint64_t(status.stx_dev_major) << 32 | status.stx_dev_minor, status.stx_ino, born};
}

int status(int folder, const char *path, struct statx &status)
{
    return statx(folder, path, AT_SYMLINK_NOFOLLOW | AT_EMPTY_PATH | AT_NO_AUTOMOUNT,
                 STATX_BASIC_STATS | STATX_BTIME, &status) == 0
               ? 0
               : errno;
}

std::string folderOf(const std::string &path) { return path.substr(0, std::max<size_t>(1, path.rfind('/'))); }
std::string nameOf(const std::string &path) { return path.substr(path.rfind('/') + 1); }
std::string joined(const std::string &folder, const std::string &name)
{
    return folder == "/" ? folder + name : folder + "/" + name;
}

OSErr makeReference(const std::string &path, Leaf leaf, FSRef *ref, struct statx *found)
{
    sweepDescriptors();
    Found item;
    struct statx itemStatus;
    if (const int error = find(path, leaf, item); error != 0)
        return fileError(error);
    if (const int error = status(item.descriptor.get(), "", itemStatus); error != 0)
        return fileError(error);
    uint32_t node;
    if (const OSErr error = enter(item.path, itemStatus, node, ref); error != noErr)
        return error;
    if (isLasting(identityOf(itemStatus).device) && itemStatus.stx_size <= kLargestHeld) {
        descriptors().keep(node, std::move(item.descriptor));
        itemPaths().add(item.path, node);
    }
    if (found)
        *found = itemStatus;
    return noErr;
}

OSErr makeReference(const std::string &path, const struct statx &item, FSRef *ref)
{
    // Its descriptor is there, and a moment ago there was no link on the way.
    const auto known = itemPaths().find(path);
    uint32_t node;
    if (known && descriptors().holds(*known) && table().holds(*known, identityOf(item)))
        return enter(path, item, node, ref);
    return makeReference(path, Leaf::asIs, ref);
}

OSErr locate(const FSRef *ref, std::string &path, struct statx *found)
{
    Contents copy;
    if (const OSErr error = contents(ref, copy); error != noErr)
        return error;
    if (!table().holds(copy.node, copy.item))
        return fnfErr;  // made by another process
    sweepDescriptors();
    struct statx item;
    if (const OSErr error = locateNode(copy.node, path, item, kDepth); error != noErr)
        return error;
    if (item.stx_size > kLargestHeld)
        descriptors().drop(copy.node);  // it may have grown since
    if (found)
        *found = item;
    return noErr;
}

OSErr identity(const FSRef *ref, Identity &identity)
{
    Contents copy;
    const OSErr error = contents(ref, copy);
    identity = copy.item;
    return error;
}

void noteMove(const FSRef *ref, const std::string &path)
{
    Contents copy;
    if (contents(ref, copy) != noErr || !table().holds(copy.node, copy.item))
        return;
    folderPaths().forget();
    settle(copy.node, path);
}

void noteRemoval(const FSRef *ref)
{
    Contents copy;
    if (contents(ref, copy) != noErr || !table().holds(copy.node, copy.item))
        return;
    folderPaths().forget();
    descriptors().drop(copy.node);
}

OSErr folderByNumber(uint64_t device, uint32_t number, std::string &path)
{
    for (uint32_t node : table().withNumber(device, number)) {
        struct statx found;
        if (locateNode(node, path, found, kDepth) == noErr && S_ISDIR(found.stx_mode))
            return noErr;
    }
    return dirNFErr;
}

}  // namespace tarvik::files
