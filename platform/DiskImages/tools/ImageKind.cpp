#include "ImageKind.h"

#include "Bytes.h"
#include "Failure.h"
#include "PartitionTable.h"

#include <cstdint>
#include <cstring>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace diskimages {
namespace {

constexpr ImageKind kSquashfs{"squashfs", "squashfuse", false};
constexpr ImageKind kExt4{"ext4", "fuse2fs", true};
constexpr ImageKind kISO9660{"iso9660", "fuseiso", false};

struct Found {
    ImageKind kind;
    uint64_t length;  // as the file system says
};

/// The file system that begins there.
std::optional<Found> find(int descriptor, uint64_t start)
{
    const auto squashfs = stretch<96>(descriptor, start);
    if (std::memcmp(squashfs.data(), "hsqs", 4) == 0)
        return Found{kSquashfs, number<uint64_t>(&squashfs[40])};  // bytes_used

    const auto ext4 = stretch<1024>(descriptor, start + 1024);
    if (number<uint16_t>(&ext4[0x38]) == 0xEF53) {
        constexpr uint32_t k64Bit = 0x80;
        const uint64_t shift = number<uint32_t>(&ext4[0x18]);  // s_log_block_size
        uint64_t blocks = number<uint32_t>(&ext4[0x4]);        // s_blocks_count_lo
        if (number<uint32_t>(&ext4[0x60]) & k64Bit)
            blocks |= number<uint32_t>(&ext4[0x150]) << 32;
        if (shift > 6 || blocks >> 48)
            return Found{kExt4, UINT64_MAX};
        return Found{kExt4, blocks << (10 + shift)};
    }

    const auto volume = stretch<2048>(descriptor, start + 0x8000);
    if (std::memcmp(&volume[1], "CD001", 5) == 0)
        return Found{kISO9660, number<uint32_t>(&volume[80]) * number<uint16_t>(&volume[128])};
    return std::nullopt;
}

}  // namespace

std::vector<Volume> imageVolumes(int descriptor, const std::string &path)
{
    struct stat status;
    if (fstat(descriptor, &status) != 0)
        throw systemFailure(path);
    if (!S_ISREG(status.st_mode))
        throw Failure(path + ": not a file");
    const auto size = uint64_t(status.st_size);
    if (const auto whole = find(descriptor, 0)) {
        if (whole->length > size)
            throw Failure(path + ": damaged " + whole->kind.filesystem + " image: " + std::to_string(size) +
                          " bytes of " + std::to_string(whole->length));
        return {{whole->kind, 0, 0, size}};
    }
    const auto partitions = partitionTable(descriptor, size);
    std::vector<Volume> volumes;
    for (const Partition &partition : partitions)
        if (const auto found = find(descriptor, partition.start); found && found->length <= partition.length)
            volumes.push_back({found->kind, partition.number, partition.start, partition.length});
    if (volumes.empty())
        throw Failure(path +
                      (partitions.empty()
                           ? ": not a disk image (squashfs, ext4, ISO 9660, or partitions of those)"
                           : ": none of its partitions holds a file system that is known (squashfs, ext4, "
                             "ISO 9660)"));
    return volumes;
}

}  // namespace diskimages
