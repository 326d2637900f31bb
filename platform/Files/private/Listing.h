// What an open folder holds.
#pragma once
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace tarvik::files {

/// What getdents64 writes.
struct Entry {
    uint64_t inode;
    int64_t offset;
    unsigned short length;
    unsigned char kind;  ///< DT_REG, ..., DT_UNKNOWN
    char name[];
};

/// A folder's whole listing, so that nothing is open that need not be while what lies below is visited.
class Listing {
public:
    explicit Listing(int descriptor)
    {
        for (;;) {
            auto room = std::make_unique_for_overwrite<char[]>(kRoom);
            const long count = syscall(SYS_getdents64, descriptor, room.get(), kRoom);
            if (count <= 0)
                return;
            pieces_.push_back({std::move(room), size_t(count)});
        }
    }

    /// Every entry but "." and "..", in the file system's order.
    template <class Each>
    void each(Each &&each) const
    {
        for (const Piece &piece : pieces_)
            for (size_t at = 0; at < piece.length;) {
                const auto *entry = reinterpret_cast<const Entry *>(piece.bytes.get() + at);
                at += entry->length;
                const char *name = entry->name;
                if (name[0] != '.' || (name[1] && (name[1] != '.' || name[2])))
                    each(*entry);
            }
    }

private:
    static constexpr size_t kRoom = 1 << 15;
    struct Piece {
        std::unique_ptr<char[]> bytes;
        size_t length;
    };
    std::vector<Piece> pieces_;
};

}  // namespace tarvik::files
