/// \file
/// Mounted volumes by number.
#pragma once
#include <Carbon/Files.h>

#include <optional>
#include <string>
#include <vector>

namespace tarvik::files {

/// The number of a device's volume, the same for as long as the process lives.
FSVolumeRefNum volumeOf(uint64_t device);
/// The device of a number, that of "/" for 0; nothing for one that was never given.
std::optional<uint64_t> deviceOf(FSVolumeRefNum volume);

struct Mount {
    uint64_t device;
    std::string point;
};
/// The file systems that hold files, "/" first, one place each.
std::vector<Mount> mounts();
/// Where the device's root is; nothing when it is not mounted.
std::optional<std::string> mountPoint(uint64_t device);
/// "Disk" for "/", the last part of the mount point for others.
std::string volumeName(const std::string &mountPoint);

}  // namespace tarvik::files
