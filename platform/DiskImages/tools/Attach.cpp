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
#include <fstream>
#include <linux/blkpg.h>
#include <linux/loop.h>
#include <memory>
#include <optional>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>
#include <vector>

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
/// `flags` go with those that every image gets.
FileDescriptor loopDevice(int image, bool readOnly, uint32_t flags, std::string &name)
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
        config.info.lo_flags = LO_FLAGS_AUTOCLEAR | flags | (readOnly ? LO_FLAGS_READ_ONLY : 0);
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

FileDescriptor openImage(const std::string &path, bool readOnly)
{
    FileDescriptor image(open(path.c_str(), (readOnly ? O_RDONLY : O_RDWR) | O_CLOEXEC));
    if (!image)
        throw systemFailure(path);
    return image;
}

/// Mounts a block device.
void mountDevice(const std::string &name, const ImageKind &kind, bool readOnly, const std::string &folder)
{
    const unsigned long flags = MS_NODEV | MS_NOSUID | (readOnly ? MS_RDONLY : 0);
    if (mount(name.c_str(), folder.c_str(), kind.filesystem, flags, nullptr) == 0)
        return;
    // A journal that still has to be played can't be, on a read-only device: what is there can be read all
    // the same.
    if (readOnly && kind.writable &&
        mount(name.c_str(), folder.c_str(), kind.filesystem, flags, "noload") == 0)
        return;
    const int error = errno;
    const std::string what = std::string(kind.filesystem) + ": ";
    if (error == ENODEV)
        throw Failure(what + "the kernel doesn't know this file system");
    // (A squashfs may only be packed in a way that this kernel can't unpack; its FUSE server checks for
    // itself.)
    if (kind.writable && error != EPERM && error != EACCES)
        throw DamagedImage(what + "the kernel can't mount it, it is damaged: " + std::strerror(error));
    throw systemFailure(what + "mount", error);
}

void mountLoop(const std::string &path, const ImageKind &kind, bool readOnly, const std::string &folder)
{
    const FileDescriptor image = openImage(path, readOnly);
    std::string name;
    // Closed without a mount, it is free again.
    const FileDescriptor device = loopDevice(image.get(), readOnly, 0, name);
    mountDevice(name, kind, readOnly, folder);
}

/// The node of a partition, made for as long as this lives where nobody makes them by himself.
class PartitionNode {
public:
    PartitionNode(const std::string &disk, int partition) : path_(disk + 'p' + std::to_string(partition))
    {
        if (access(path_.c_str(), F_OK) == 0)
            return;
        const std::string disksName = disk.substr(disk.rfind('/') + 1);
        std::ifstream file("/sys/block/" + disksName + '/' + disksName + 'p' + std::to_string(partition) +
                           "/dev");
        unsigned major = 0, minor = 0;
        char colon = 0;
        if (!(file >> major >> colon >> minor) ||
            mknod(path_.c_str(), S_IFBLK | 0600, makedev(major, minor)) != 0)
            throw systemFailure(path_);
        isMade_ = true;
    }
    ~PartitionNode()
    {
        if (isMade_)
            unlink(path_.c_str());
    }
    PartitionNode(const PartitionNode &) = delete;
    PartitionNode &operator=(const PartitionNode &) = delete;

    const std::string &path() const { return path_; }

private:
    std::string path_;
    bool isMade_ = false;
};

/// Mounts each partition that can be; the others are there as devices as long as one is. Throws when none
/// can.
void mountPartitions(const std::string &path, const std::vector<Volume> &volumes, bool readOnly)
{
    const FileDescriptor image = openImage(path, readOnly);
    std::string name, reasons;
    const FileDescriptor device = loopDevice(image.get(), readOnly, LO_FLAGS_PARTSCAN, name);
    bool mounted = false;
    for (const Volume &volume : volumes) {
        try {
            // A kernel that reads the table itself has made it already.
            blkpg_partition partition{};
            partition.start = int64_t(volume.start);
            partition.length = int64_t(volume.length);
            partition.pno = volume.partition;
            blkpg_ioctl_arg add{BLKPG_ADD_PARTITION, 0, sizeof partition, &partition};
            if (ioctl(device.get(), BLKPG, &add) != 0 && errno != EBUSY)
                throw systemFailure(name);
            const PartitionNode node(name, volume.partition);
            MountFolder folder(path);
            mountDevice(node.path(), volume.kind, readOnly || !volume.kind.writable, folder.path());
            folder.keep();
            mounted = true;
        } catch (const Failure &failure) {
            reasons += (reasons.empty() ? "" : "; ") + ("partition " + std::to_string(volume.partition)) +
                       ": " + failure.what();
        }
    }
    if (!mounted)
        throw Failure(reasons);
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

/// Mounts an image that is one file system, in whatever way there is.
void mountWhole(const std::string &given, const std::string &path, const ImageKind &kind, bool readOnly,
                bool withoutLoopDevice)
{
    MountFolder folder(path);
    std::string reasons;
    bool mounted = false;
    if (geteuid() == 0 && !withoutLoopDevice) {
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
}

}  // namespace

AttachedImage attach(const std::string &given, const AttachOptions &options)
{
    const std::string path = realPath(given);
    if (auto already = mountedImage(path))
        return *std::move(already);
    std::vector<Volume> volumes;
    {
        const FileDescriptor image(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
        if (!image)
            throw systemFailure(given);
        volumes = imageVolumes(image.get(), given);
    }
    const bool isWritable = std::any_of(volumes.begin(), volumes.end(),
                                        [](const Volume &volume) { return volume.kind.writable; });
    const bool readOnly = options.readOnly || !isWritable || access(path.c_str(), W_OK) != 0;
    if (volumes[0].partition == 0)
        mountWhole(given, path, volumes[0].kind, readOnly, options.withoutLoopDevice);
    else if (geteuid() != 0 || options.withoutLoopDevice)
        throw Failure(given + ": the partitions of an image take a loop device, which is root's");
    else
        try {
            mountPartitions(path, volumes, readOnly);
        } catch (const Failure &failure) {
            throw Failure(given + ": " + failure.what());
        }
    if (auto image = mountedImage(path))
        return *std::move(image);
    throw Failure(given + ": mounted, but not in the kernel's table");
}

}  // namespace diskimages
