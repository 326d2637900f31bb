/// Every disk image that the kernel has attached, whoever attached it: from its own tables of mounts and loop
/// devices.
#pragma once
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace diskimages {

struct Mount {
    unsigned major = 0, minor = 0;
    std::string root, point, options, type, source;
};

/// The mounts of this process's namespace, from text in the form of /proc/self/mountinfo (proc(5)).
/// Lines that are not in that form are passed over.
std::vector<Mount> parseMounts(std::string_view mountinfo);
std::vector<Mount> currentMounts();

struct Entity {
    std::string device;      ///< "/dev/loop3", "/dev/loop3p1"; empty for a FUSE mount, which has none
    std::string mountPoint;  ///< empty when it is not mounted
    std::string filesystem;  ///< of the mount; empty without one
};

struct AttachedImage {
    std::string path;
    std::vector<Entity> entities;  ///< the whole disk first
    bool readOnly = false;
    bool fuse = false;
    int loopNumber = -1;
};

/// Loop devices by number, then FUSE mounts in their order.
std::vector<AttachedImage> attachedImages();

/// The file behind /dev/loopNUMBER at this moment, also when its name is gone; empty when there is none.
std::string loopBacking(int number);

/// The report: a property list with "images", each with its "image-path" and "system-entities".
std::string reportPropertyList(const std::vector<AttachedImage> &images);
std::string reportText(const std::vector<AttachedImage> &images);

}  // namespace diskimages
