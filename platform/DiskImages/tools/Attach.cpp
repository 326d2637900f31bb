#include "Failure.h"
#include "ImageKind.h"
#include "MediaFolder.h"
#include "Programs.h"
#include "Verbs.h"

#include <Tarvik/support/Handle.h>
#include <algorithm>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <linux/loop.h>
#include <memory>
#include <optional>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <unistd.h>

namespace diskimages {
namespace {

using tarvik::FileDescriptor;

std::string realPath(const std::string &path)
{
    const std::unique_ptr<char, decltype(&std::free)> real(realpath(path.c_str(), nullptr), &std::free);
    if (!real)
        throw systemFailure(path);
    return real.get();
}

/// A loop device on the image that the kernel lets go of with its last user: the mount, once there is one.
FileDescriptor loopDevice(int image, bool readOnly, std::string &name)
{
    constexpr int kRivals = 64;  // others may take the free number first
    const FileDescriptor control(open("/dev/loop-control", O_RDWR | O_CLOEXEC));
    if (!control)
        throw systemFailure("/dev/loop-control");
    for (int attempt = 0; attempt < kRivals; ++attempt) {
        const int number = ioctl(control.get(), LOOP_CTL_GET_FREE);
        if (number < 0)
            throw systemFailure("no free loop device");
        name = "/dev/loop" + std::to_string(number);
        FileDescriptor device(open(name.c_str(), (readOnly ? O_RDONLY : O_RDWR) | O_CLOEXEC));
        if (!device)
            throw systemFailure(name);
        loop_config config{};
        config.fd = uint32_t(image);
        config.info.lo_flags = LO_FLAGS_AUTOCLEAR | (readOnly ? LO_FLAGS_READ_ONLY : 0);
        if (ioctl(device.get(), LOOP_CONFIGURE, &config) == 0)
            return device;
        if (errno != EBUSY)
            throw systemFailure(name);
    }
    throw systemFailure("no free loop device", EBUSY);
}

/// The image itself is at fault: there is no sense in trying another way.
struct DamagedImage : Failure {
    using Failure::Failure;
};

void mountLoop(const std::string &path, const ImageKind &kind, bool readOnly, const std::string &folder)
{
    const FileDescriptor image(open(path.c_str(), (readOnly ? O_RDONLY : O_RDWR) | O_CLOEXEC));
    if (!image)
        throw systemFailure(path);
    std::string name;
    FileDescriptor device = loopDevice(image.get(), readOnly, name);
    const unsigned long flags = MS_NODEV | MS_NOSUID | (readOnly ? MS_RDONLY : 0);
    if (mount(name.c_str(), folder.c_str(), kind.filesystem, flags, nullptr) == 0)
        return;
    // A journal that still has to be played can't be, on a read-only device: what is there can be read all
    // the same.
    if (readOnly && kind.writable &&
        mount(name.c_str(), folder.c_str(), kind.filesystem, flags, "noload") == 0)
        return;
    const int error = errno;
    ioctl(device.get(), LOOP_CLR_FD);
    const std::string what = std::string(kind.filesystem) + ": ";
    if (error == ENODEV)
        throw Failure(what + "the kernel doesn't know this file system");
    // (A squashfs may only be packed in a way that this kernel can't unpack; its FUSE server checks for itself.)
    if (kind.writable && error != EPERM && error != EACCES)
        throw DamagedImage(what + "the kernel can't mount it, it is damaged: " + std::strerror(error));
    throw systemFailure(what + "mount", error);
}

/// A value in FUSE's list of options.
std::string optionValue(const std::string &text)
{
    std::string out;
    for (char c : text) {
        if (c == ',' || c == '\\')
            out += '\\';
        out += c;
    }
    return out;
}

bool isMountPoint(const std::string &folder)
{
    const auto mounts = currentMounts();
    return std::any_of(mounts.begin(), mounts.end(),
                       [&](const Mount &mount) { return mount.point == folder; });
}

// Always read-only: the FUSE server of ext4 says of its own writing that it is not to be trusted.
void mountFuse(const std::string &path, const ImageKind &kind, const std::string &folder)
{
    const std::string program = findProgram(kind.fuseProgram);
    if (program.empty())
        throw Failure(std::string(kind.fuseProgram) + " is not installed");
    // The kernel looks a file system over before it mounts it; this server serves whatever it is given.
    constexpr int kErrorsLeft = 4, kCannotCheck = 8;
    if (const std::string checker = kind.writable ? findProgram("e2fsck") : ""; !checker.empty())
        if (runProgram(checker, {"-n", path}) & (kErrorsLeft | kCannotCheck))
            throw Failure("the file system is damaged");
    const std::string options = "ro,fsname=" + optionValue(path) + ",subtype=" + kind.fuseProgram +
                                (geteuid() == 0 ? ",allow_other" : "");
    std::vector<std::string> arguments{path, folder, "-o", options};
    if (std::string(kind.fuseProgram) == "fuseiso")
        arguments.insert(arguments.begin(), "-n");  // no list of mounts in the home
    const int status = runProgram(program, arguments);
    if (status == 0 && isMountPoint(folder))
        return;
    if (status == 0)
        umount2(folder.c_str(), MNT_DETACH | UMOUNT_NOFOLLOW);
    throw Failure(std::string(kind.fuseProgram) + " can't mount it (status " + std::to_string(status) + ")");
}

/// The attached image of that path that is mounted.
std::optional<AttachedImage> mountedImage(const std::string &path)
{
    for (AttachedImage &image : attachedImages())
        if (image.path == path)
            for (const Entity &entity : image.entities)
                if (!entity.mountPoint.empty())
                    return std::move(image);
    return std::nullopt;
}

}  // namespace

AttachedImage attach(const std::string &given, const AttachOptions &options)
{
    const std::string path = realPath(given);
    if (auto already = mountedImage(path))
        return *std::move(already);
    ImageKind kind{};
    {
        const FileDescriptor image(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
        if (!image)
            throw systemFailure(given);
        kind = imageKind(image.get(), given);
    }
    const bool readOnly = options.readOnly || !kind.writable || access(path.c_str(), W_OK) != 0;

    MountFolder folder(path);
    std::string reasons;
    bool mounted = false;
    if (geteuid() == 0 && !options.withoutLoopDevice) {
        try {
            mountLoop(path, kind, readOnly, folder.path());
            mounted = true;
        } catch (const DamagedImage &failure) {
            throw Failure(given + ": " + failure.what());
        } catch (const Failure &failure) {  // no loop devices here, or no such file system in this kernel
            reasons = failure.what() + std::string("; ");
        }
    }
    if (!mounted) {
        try {
            mountFuse(path, kind, folder.path());
        } catch (const Failure &failure) {
            throw Failure(given + ": " + reasons + failure.what());
        }
    }
    folder.keep();
    if (auto image = mountedImage(path))
        return *std::move(image);
    throw Failure(given + ": mounted at " + folder.path() + ", but not in the kernel's table");
}

}  // namespace diskimages
