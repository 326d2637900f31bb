#include "ImageKind.h"

#include "Failure.h"

#include <array>
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

/// A stretch of the file; zeros where the file has ended.
template <size_t size>
std::array<unsigned char, size> stretch(int descriptor, off_t at)
{
    std::array<unsigned char, size> bytes{};
    for (size_t have = 0; have < size;) {
        const ssize_t got = pread(descriptor, bytes.data() + have, size - have, at + off_t(have));
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            throw systemFailure("reading the image");
        if (got == 0)
            break;
        have += size_t(got);
    }
    return bytes;
}

template <class Number>
uint64_t number(const unsigned char *littleEndian)
{
    uint64_t value = 0;
    for (size_t i = 0; i < sizeof(Number); ++i)
        value |= uint64_t(littleEndian[i]) << (8 * i);
    return value;
}

struct Found {
    ImageKind kind;
    uint64_t length;  // as the file system says
};

std::optional<Found> find(int descriptor)
{
    const auto squashfs = stretch<96>(descriptor, 0);
    if (std::memcmp(squashfs.data(), "hsqs", 4) == 0)
        return Found{kSquashfs, number<uint64_t>(&squashfs[40])};  // bytes_used

    const auto ext4 = stretch<1024>(descriptor, 1024);
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

    const auto volume = stretch<2048>(descriptor, 0x8000);
    if (std::memcmp(&volume[1], "CD001", 5) == 0)
        return Found{kISO9660, number<uint32_t>(&volume[80]) * number<uint16_t>(&volume[128])};
    return std::nullopt;
}

}  // namespace

ImageKind imageKind(int descriptor, const std::string &path)
{
    struct stat status;
    if (fstat(descriptor, &status) != 0)
        throw systemFailure(path);
    if (!S_ISREG(status.st_mode))
        throw Failure(path + ": not a file");
    const auto found = find(descriptor);
    if (!found)
        throw Failure(path + ": not a disk image (squashfs, ext4 or ISO 9660)");
    if (found->length > uint64_t(status.st_size))
        throw Failure(path + ": damaged " + found->kind.filesystem + " image: " +
                      std::to_string(status.st_size) + " bytes of " + std::to_string(found->length));
    return found->kind;
}

}  // namespace diskimages
