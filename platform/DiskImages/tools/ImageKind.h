/// What an image is, by its content.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

namespace diskimages {

struct ImageKind {
    const char *filesystem;   ///< as mount(2) and reports call it
    const char *fuseProgram;  ///< mounts it where there is no loop device
    bool writable;            ///< can be changed in place
};

/// One file system in an image.
struct Volume {
    ImageKind kind;
    int partition = 0;  ///< its number in the image's table; 0: the image is all of it
    uint64_t start = 0, length = 0;
};

/// Looks at the file's own signatures, its name plays no part:
/// squashfs ("hsqs" at 0), ext2/3/4 (0xEF53 at 0x438), ISO 9660 ("CD001" at 0x8001); then for a partition
/// table, and in each partition for the same. Partitions that hold something else are left out. Throws
/// Failure for a file that holds none of them, or is shorter than the file system in it says.
std::vector<Volume> imageVolumes(int descriptor, const std::string &path);

}  // namespace diskimages
