/// What the tools do. Each throws Failure, and has then undone what it had begun.
#pragma once
#include "AttachedImages.h"

namespace diskimages {

struct AttachOptions {
    bool readOnly = false;
    bool withoutLoopDevice = false;  ///< through FUSE, as for a user without the right to loop devices
};
/// Mounts an image under a fresh folder, named after it, in the user's media folder. One that is mounted
/// already is left as it is.
AttachedImage attach(const std::string &path, const AttachOptions &options);

/// Unmounts an image and lets go of its device; `what` is a mount point, a device or the image. Retries for a
/// moment when somebody has a file open in it; `force` doesn't care.
void detach(const std::string &what, bool force);

struct CreateOptions {
    bool overwrite = false;
    bool progress = false;  ///< "PERCENT:12.000000" lines on standard output
    bool quiet = false;
};
/// Writes a compressed read-only image (squashfs) of a folder's contents. The image is there whole or not at
/// all.
void create(const std::string &folder, const std::string &image, const CreateOptions &options);

}  // namespace diskimages
