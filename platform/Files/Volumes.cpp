#include "platform/Files/private/Volumes.h"

#include "platform/CoreFoundation/private/HFSPath.h"
#include "platform/Files/private/Dates.h"
#include "platform/Files/private/Errors.h"
#include "platform/Files/private/Lookup.h"

#include <fcntl.h>
#include <sys/statvfs.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <mutex>
#include <sstream>

namespace tarvik::files {
namespace {

constexpr FSVolumeRefNum kFirstVolume = -100;  // volumes count downward

std::mutex lock;
std::vector<uint64_t> &devices()
{
    static std::vector<uint64_t> &known = *new std::vector<uint64_t>;
    return known;
}

std::string unescaped(std::string_view text)  // "\040" is a space
{
    std::string out;
    for (size_t i = 0; i < text.size(); ++i)
        if (text[i] == '\\' && i + 3 < text.size()) {
            out += char((text[i + 1] - '0') * 64 + (text[i + 2] - '0') * 8 + (text[i + 3] - '0'));
            i += 3;
        } else {
            out += text[i];
        }
    return out;
}

uint64_t rootDevice()
{
    struct statx root;
    return status(AT_FDCWD, "/", root) == 0 ? identityOf(root).device : 0;
}

}  // namespace

FSVolumeRefNum volumeOf(uint64_t device)
{
    std::lock_guard held(lock);
    auto &known = devices();
    const auto found = std::find(known.begin(), known.end(), device);
    const auto place = found - known.begin();
    if (found == known.end())
        known.push_back(device);
    return FSVolumeRefNum(kFirstVolume - place);
}

std::optional<uint64_t> deviceOf(FSVolumeRefNum volume)
{
    if (volume == kFSInvalidVolumeRefNum)
        return rootDevice();
    std::lock_guard held(lock);
    const int place = kFirstVolume - volume;
    if (place < 0 || size_t(place) >= devices().size())
        return std::nullopt;
    return devices()[size_t(place)];
}

std::vector<Mount> mounts()
{
    std::vector<Mount> found;
    const uint64_t root = rootDevice();
    if (root)
        found.push_back({root, "/"});
    std::ifstream table("/proc/self/mountinfo");
    for (std::string line; std::getline(table, line);) {
        std::istringstream fields(line);
        std::string id, parent, number, top, point, option, type, source;
        fields >> id >> parent >> number >> top >> point;
        while (fields >> option && option != "-") {
        }
        // Kernel tables (proc, sysfs, cgroup) are no volumes: their source is a plain word. A tmpfs holds
        // files.
        if (!(fields >> type >> source) || top != "/" ||
            (!source.starts_with('/') && type != "tmpfs" && type.find("fuse") != 0 && type != "overlay"))
            continue;
        const std::string path = unescaped(point);
        struct statx item;
        if (status(AT_FDCWD, path.c_str(), item) != 0)
            continue;
        const uint64_t device = identityOf(item).device;
        if (std::none_of(found.begin(), found.end(),
                         [&](const Mount &mount) { return mount.device == device; }))
            found.push_back({device, path});
    }
    return found;
}

std::optional<std::string> mountPoint(uint64_t device)
{
    for (Mount &mount : mounts())
        if (mount.device == device)
            return std::move(mount.point);
    return std::nullopt;
}

std::string volumeName(const std::string &mountPoint)
{
    if (mountPoint != "/")
        return nameOf(mountPoint);
    std::string name = hfs::fromPosix("/");
    return name.substr(0, name.find(':'));
}

}  // namespace tarvik::files

using namespace tarvik::files;

OSErr FSGetVolumeInfo(FSVolumeRefNum volume, ItemCount volumeIndex, FSVolumeRefNum *actualVolume,
                      FSVolumeInfoBitmap whichInfo, FSVolumeInfo *info, HFSUniStr255 *volumeName,
                      FSRef *rootDirectory)
{
    Mount mount;
    if (volumeIndex > 0) {
        const std::vector<Mount> all = mounts();
        if (volumeIndex > all.size())
            return nsvErr;
        mount = all[volumeIndex - 1];
    } else {
        const auto device = deviceOf(volume);
        const auto point = device ? mountPoint(*device) : std::nullopt;
        if (!point)
            return nsvErr;
        mount = {*device, *point};
    }
    if (actualVolume)
        *actualVolume = volumeOf(mount.device);
    if (volumeName)
        unicodeFromName(tarvik::files::volumeName(mount.point), *volumeName);
    if (rootDirectory)
        if (const OSErr error = makeReference(mount.point, Leaf::asIs, rootDirectory); error != noErr)
            return error;
    if (info && whichInfo != kFSVolInfoNone) {
        struct statvfs volumeStatus;
        if (statvfs(mount.point.c_str(), &volumeStatus) != 0)
            return fileError(errno);
        std::memset(info, 0, sizeof *info);
        info->totalBytes = volumeStatus.f_blocks * volumeStatus.f_frsize;
        info->freeBytes = volumeStatus.f_bavail * volumeStatus.f_frsize;
        info->blockSize = UInt32(volumeStatus.f_frsize);
        info->totalBlocks = UInt32(std::min<uint64_t>(volumeStatus.f_blocks, UINT32_MAX));
        info->freeBlocks = UInt32(std::min<uint64_t>(volumeStatus.f_bavail, UINT32_MAX));
        info->flags = volumeStatus.f_flag & ST_RDONLY ? kFSVolFlagSoftwareLockedMask : 0;
    }
    return noErr;
}
