/// What an image is, by its content.
#pragma once
#include <string>

namespace diskimages {

struct ImageKind {
    const char *filesystem;   ///< as mount(2) and reports call it
    const char *fuseProgram;  ///< mounts it where there is no loop device
    bool writable;            ///< can be changed in place
};

/// Looks at the file's own signatures, its name plays no part:
/// squashfs ("hsqs" at 0), ext2/3/4 (0xEF53 at 0x438), ISO 9660 ("CD001" at 0x8001).
/// Throws Failure for a file that is none of them, or is shorter than the file system in it says.
ImageKind imageKind(int descriptor, const std::string &path);

}  // namespace diskimages
