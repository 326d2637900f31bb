#include "Failure.h"
#include "MediaFolder.h"
#include "Programs.h"
#include "Verbs.h"

#include <Tarvik/support/Handle.h>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <linux/loop.h>
#include <memory>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <time.h>
#include <unistd.h>

namespace diskimages {
namespace {

AttachedImage find(const std::string &what)
{
    const auto images = attachedImages();
    const std::unique_ptr<char, decltype(&std::free)> real(realpath(what.c_str(), nullptr), &std::free);
    for (const std::string &name : {what, std::string(real ? real.get() : "")}) {
        if (name.empty())
            continue;
        for (const AttachedImage &image : images) {
            if (image.path == name)
                return image;
            for (const Entity &entity : image.entities)
                if (entity.device == name || entity.mountPoint == name)
                    return image;
        }
    }
    throw Failure(what + ": no attached image, and no mount point or device of one");
}

bool unmountOnce(const std::string &point, bool fuse, bool force)
{
    if (umount2(point.c_str(), UMOUNT_NOFOLLOW | (force ? MNT_DETACH : 0)) == 0)
        return true;
    if (errno != EPERM || !fuse)
        return false;
    // One's own FUSE mount is taken down by FUSE's own helper.
    for (const char *name : {"fusermount3", "fusermount"}) {
        const std::string program = findProgram(name);
        if (program.empty())
            continue;
        const bool done = runProgram(program, {force ? "-uz" : "-u", "--", point}) == 0;
        errno = EBUSY;
        return done;
    }
    errno = EPERM;
    return false;
}

constexpr int kAttempts = 10;
constexpr timespec kBetween{0, 100'000'000};

void unmount(const std::string &point, bool fuse, bool force)
{
    for (int attempt = 1; !unmountOnce(point, fuse, force); ++attempt) {
        const int error = errno;
        if (error == EINVAL)
            return;  // not mounted any more
        if (error != EBUSY || attempt == kAttempts)
            throw Failure("couldn't unmount " + point + ": " + std::strerror(error) +
                          (error == EBUSY ? " (a program has a file or folder of it open)" : ""));
        nanosleep(&kBetween, nullptr);
    }
}

/// A device that was set up to stay goes too: the image is ejected. (Ours, and mount's, go with the mount.)
/// The kernel lets go of the image when the last of those who have the device open closes it: somebody who
/// looks for a free device has it open for a moment.
void release(const AttachedImage &image)
{
    const std::string name = "/dev/loop" + std::to_string(image.loopNumber);
    for (int attempt = 1; loopBacking(image.loopNumber) == image.path; ++attempt) {
        if (attempt > 1)
            nanosleep(&kBetween, nullptr);
        if (attempt == kAttempts)
            throw Failure("couldn't detach " + image.path + ": a program has " + name + " open");
        const tarvik::FileDescriptor device(open(name.c_str(), O_RDONLY | O_CLOEXEC));
        if (!device)
            throw systemFailure(name);
        // While it is open here, the device can't become another image's.
        if (loopBacking(image.loopNumber) == image.path && ioctl(device.get(), LOOP_CLR_FD) != 0 &&
            errno != ENXIO)
            throw systemFailure(name);
    }
}

}  // namespace

void detach(const std::string &what, bool force)
{
    const AttachedImage image = find(what);
    for (auto entity = image.entities.rbegin(); entity != image.entities.rend(); ++entity) {
        if (entity->mountPoint.empty())
            continue;
        unmount(entity->mountPoint, image.fuse, force);
        removeMountFolder(entity->mountPoint);
    }
    if (image.loopNumber >= 0)
        release(image);
}

}  // namespace diskimages
