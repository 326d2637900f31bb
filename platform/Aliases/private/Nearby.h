// Looks through folders for an item: a walk that starts near, goes outward, and ends.
#pragma once
#include <dirent.h>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace tarvik::aliases {

/// One entry of a folder. The inode's number is the folder's word for it: to be checked.
struct Entry {
    const std::string &folder;
    std::string_view name;
    uint64_t inode;
    unsigned char kind;  ///< DT_DIR, ...
    std::string path() const;
};

/// True ends the search.
using Visitor = std::function<bool(const Entry &)>;

/// Every entry of one folder. True when the visitor ended it.
bool visitFolder(const std::string &folder, const Visitor &visit);

/// The folders below `start`, nearest first, then those around it up to `top`, all on the volume of `start`; links are not followed.
/// Gives up after so many entries. `depth` limits how far below each start it goes. True when the visitor ended it.
bool visitNearby(std::string start, const std::string &top, unsigned depth, size_t entries,
                 const Visitor &visit);

}  // namespace tarvik::aliases
