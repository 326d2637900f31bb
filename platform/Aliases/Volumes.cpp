#include "platform/Aliases/private/Volumes.h"

#include <Tarvik/support/Handle.h>
#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/statfs.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <mutex>
#include <set>
#include <sstream>

namespace tarvik::aliases {

namespace {

/// The table writes a blank, tab, newline and backslash as three octal digits.
std::string unescaped(const std::string &text)
{
    std::string out;
    for (size_t i = 0; i < text.size(); ++i)
        if (text[i] == '\\' && i + 3 < text.size()) {
            out += char((text[i + 1] - '0') << 6 | (text[i + 2] - '0') << 3 | (text[i + 3] - '0'));
            i += 3;
        } else {
            out += text[i];
        }
    return out;
}

std::map<dev_t, std::string> uuids()
{
    std::map<dev_t, std::string> found;
    DIR *folder = opendir("/dev/disk/by-uuid");
    while (const dirent *entry = folder ? readdir(folder) : nullptr) {
        struct stat about;
        if (entry->d_name[0] != '.' && std::strlen(entry->d_name) <= 64 &&
            fstatat(dirfd(folder), entry->d_name, &about, 0) == 0 && S_ISBLK(about.st_mode))
            found[about.st_rdev] = entry->d_name;
    }
    if (folder)
        closedir(folder);
    return found;
}

/// Asking a server that is gone would hang; such volumes are known by their source.
bool isRemote(const std::string &type)
{
    static const std::set<std::string, std::less<>> remote = {"nfs", "nfs4", "cifs", "smb3",       "autofs",
                                                              "afs", "ceph", "9p",   "fuse.sshfs", "davfs"};
    return remote.contains(type);
}

uint64_t fsid(const Mount &mount)
{
    if (isRemote(mount.type))
        return std::hash<std::string>()(mount.source) | 1;
    struct statfs about;
    uint64_t number = 0;
    if (statfs(mount.point.c_str(), &about) == 0)
        std::memcpy(&number, &about.f_fsid, sizeof number);
    return number ? number : mount.device;
}

bool isPseudo(const std::string &type)
{
    static const std::set<std::string, std::less<>> pseudo = {
        "proc",       "sysfs",  "cgroup", "cgroup2",  "devpts",  "debugfs",   "tracefs",    "mqueue",
        "securityfs", "pstore", "bpf",    "configfs", "fusectl", "hugetlbfs", "binfmt_misc"};
    return pseudo.contains(type);
}

}  // namespace

std::string joined(const std::string &folder, std::string_view name)
{
    return (folder == "/" ? std::string() : folder) + (name.starts_with('/') ? "" : "/") + std::string(name);
}

std::optional<std::string_view> below(std::string_view path, const std::string &folder)
{
    if (folder == "/")
        return path == "/" ? std::string_view() : path;
    if (!path.starts_with(folder) || (path.size() > folder.size() && path[folder.size()] != '/'))
        return std::nullopt;
    return path.substr(folder.size());
}

std::shared_ptr<const Mounts> Mounts::read(int descriptor)
{
    std::string text;
    char buffer[1 << 14];
    lseek(descriptor, 0, SEEK_SET);
    for (ssize_t count; (count = ::read(descriptor, buffer, sizeof buffer)) > 0;)
        text.append(buffer, size_t(count));

    auto made = std::make_shared<Mounts>();
    const std::map<dev_t, std::string> known = uuids();
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        // 36 35 98:0 /mnt1 /mnt2 rw,noatime master:1 - ext3 /dev/root rw,errors=continue
        std::istringstream words(line);
        Mount mount;
        std::string parent, device, options, word;
        words >> mount.number >> parent >> device >> mount.root >> mount.point >> options;
        while (words >> word && word != "-")
            ;
        words >> mount.type >> mount.source;
        unsigned major, minor;
        if (!words || std::sscanf(device.c_str(), "%u:%u", &major, &minor) != 2 || isPseudo(mount.type))
            continue;
        mount.device = makedev(major, minor);
        for (std::string *escaped : {&mount.root, &mount.point, &mount.source})
            *escaped = unescaped(*escaped);
        mount.identity.type = mount.type.substr(0, 64);
        const auto uuid = known.find(mount.device);
        struct stat source;
        if (uuid != known.end())
            mount.identity.uuid = uuid->second;
        else if (!known.empty() && mount.source.starts_with("/dev/") &&
                 stat(mount.source.c_str(), &source) == 0 && known.contains(source.st_rdev))
            mount.identity.uuid = known.at(source.st_rdev);  // btrfs: its devices are no block devices
        mount.identity.fsid = fsid(mount);
        made->mounts_.push_back(std::move(mount));
    }
    return made;
}

std::shared_ptr<const Mounts> Mounts::now() { return current(false); }
std::shared_ptr<const Mounts> Mounts::anew() { return current(true); }

std::shared_ptr<const Mounts> Mounts::current(bool anew)
{
    static std::mutex lock;
    static std::shared_ptr<const Mounts> latest;
    static FileDescriptor &table = *new FileDescriptor;
    static pid_t owner = 0;
    std::lock_guard held(lock);
    if (anew || !table || owner != getpid()) {  // a forked child may have entered a namespace of its own
        table.reset(open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC));
        owner = getpid();
        latest = nullptr;
    }
    pollfd changed = {table.get(), POLLPRI, 0};
    if (!latest || poll(&changed, 1, 0) > 0)
        latest = read(table.get());
    return latest;
}

const Mount *Mounts::numbered(uint64_t number) const
{
    const auto found = std::find_if(mounts_.begin(), mounts_.end(),
                                    [&](const Mount &mount) { return mount.number == number; });
    return found == mounts_.end() ? nullptr : &*found;
}

std::vector<const Mount *> Mounts::of(const VolumeIdentity &volume) const
{
    std::vector<const Mount *> found;
    for (const Mount &mount : mounts_)
        if (mount.identity == volume)
            found.push_back(&mount);
    std::stable_partition(found.begin(), found.end(), [](const Mount *mount) { return mount->root == "/"; });
    return found;
}

}  // namespace tarvik::aliases
