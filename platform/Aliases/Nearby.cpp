#include "platform/Aliases/private/Nearby.h"

#include "platform/Aliases/private/Volumes.h"

#include <Tarvik/support/Handle.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <deque>
#include <memory>

namespace tarvik::aliases {

namespace {

/// getdents64, with room for a large folder: a listing is most of a search.
bool visitOpenFolder(int descriptor, const std::string &folder, const Visitor &visit)
{
    struct Record {
        uint64_t inode;
        int64_t offset;
        unsigned short length;
        unsigned char kind;
        char name[];
    };
    constexpr size_t kRoom = 1 << 16;
    const auto room = std::make_unique_for_overwrite<char[]>(kRoom);
    for (long count; (count = syscall(SYS_getdents64, descriptor, room.get(), kRoom)) > 0;)
        for (long at = 0; at < count;) {
            const auto *record = reinterpret_cast<const Record *>(room.get() + at);
            const std::string_view name = record->name;
            at += record->length;
            if (name != "." && name != ".." && visit({folder, name, record->inode, record->kind}))
                return true;
        }
    return false;
}

FileDescriptor openFolder(const std::string &path)
{
    return FileDescriptor(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

}  // namespace

std::string Entry::path() const { return joined(folder, name); }

bool visitFolder(const std::string &folder, const Visitor &visit)
{
    const FileDescriptor opened = openFolder(folder);
    return opened && visitOpenFolder(opened.get(), folder, visit);
}

bool visitNearby(std::string start, const std::string &top, unsigned depth, size_t entries,
                 const Visitor &visit)
{
    struct Waiting {
        std::string path;
        unsigned depth;
    };
    std::string seen;  // the tree below it has been looked through
    struct stat about;
    dev_t device = 0;
    for (;;) {
        if (stat(start.c_str(), &about) == 0) {
            if (!device)
                device = about.st_dev;
            std::deque<Waiting> folders = {{start, 0}};
            for (; !folders.empty() && entries; folders.pop_front()) {
                const Waiting &here = folders.front();
                const FileDescriptor opened = openFolder(here.path);
                if (!opened || fstat(opened.get(), &about) != 0 || about.st_dev != device)
                    continue;
                const bool found = visitOpenFolder(opened.get(), here.path, [&](const Entry &entry) {
                    if (entries == 0)
                        return false;
                    --entries;
                    if (visit(entry))
                        return true;
                    if (entry.kind == DT_DIR && here.depth < depth)
                        if (std::string path = entry.path(); path != seen)
                            folders.push_back({std::move(path), here.depth + 1});
                    return false;
                });
                if (found)
                    return true;
            }
        }
        if (start == top || start == "/" || !entries)
            return false;
        seen = start;
        start.resize(std::max<size_t>(start.rfind('/'), 1));
    }
}

}  // namespace tarvik::aliases
