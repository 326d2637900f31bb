// What an alias record holds, and its bytes.
#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <sys/stat.h>

namespace tarvik::aliases {

/// A file system, wherever it is mounted.
struct VolumeIdentity {
    std::string uuid;   ///< as in /dev/disk/by-uuid; empty where there is none
    std::string type;   ///< "ext4"
    uint64_t fsid = 0;  ///< as statfs has it, for volumes without a UUID; 0: none

    bool operator==(const VolumeIdentity &other) const
    {
        if (!uuid.empty() && !other.uuid.empty())
            return uuid == other.uuid;
        return type == other.type && fsid == other.fsid;
    }
};

/// An item on its volume. An inode's number is used again, with another birth time.
struct ItemIdentity {
    uint64_t inode = 0;
    int64_t birthSeconds = 0;  ///< 0 where the file system keeps none
    uint32_t birthNanoseconds = 0;
    uint32_t kind = 0;  ///< S_IFREG, S_IFDIR, ...

    static ItemIdentity of(const struct statx &about)
    {
        const bool born = about.stx_mask & STATX_BTIME;
        return {about.stx_ino, born ? about.stx_btime.tv_sec : 0, born ? about.stx_btime.tv_nsec : 0,
                uint32_t(about.stx_mode & S_IFMT)};
    }
    bool operator==(const ItemIdentity &) const = default;
};

/// A file handle of the kernel's (open_by_handle_at). Empty bytes: none.
struct KernelHandle {
    int32_t type = 0;
    std::string bytes;
    bool operator==(const KernelHandle &) const = default;
};

struct AliasContents {
    std::string path;          ///< absolute, without links
    std::string relativePath;  ///< from the starting file's folder; empty: not a relative alias
    std::string volumePath;    ///< from the volume's own root, with a slash in front
    VolumeIdentity volume;
    uint64_t device = 0;
    ItemIdentity item, parent;
    KernelHandle itemHandle, parentHandle;
    uint64_t size =
        0;  ///< size and modification time tell a file that was put back from another one of its name
    int64_t modifiedSeconds = 0;
    uint32_t modifiedNanoseconds = 0;

    bool operator==(const AliasContents &) const = default;
};

/// The record: 16 bytes of head (user type; length, 2 bytes; format, 2 bytes, 1; "TvAl"; a CRC-32 of what follows), then fields: a tag
/// and a length of 2 bytes each, and the field's bytes. Numbers are little-endian. Unknown tags are passed over. Nothing when it would
/// need more than 65,535 bytes.
std::optional<std::string> encode(const AliasContents &contents, uint32_t userType);
/// The CRC-32 in a record's head.
uint32_t fieldsSum(std::string_view fields);
/// Nothing for bytes that are no record. Paths are absolute and hold no "..", no empty part and no zero byte.
std::optional<AliasContents> decode(std::string_view record);

}  // namespace tarvik::aliases
