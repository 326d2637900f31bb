// The flags of an item, from what is known of it.
#pragma once
#include <Carbon/LSInfo.h>

#include <string>
#include <string_view>

namespace tarvik::launch {

/// Whether two extensions are one, capitals or not.
bool sameText(std::string_view a, std::string_view b);
/// How a name ends says what a folder is.
bool isPackageName(std::string_view name);
bool isApplicationName(std::string_view name);

/// What an item's flags are told by; the rest is looked up where it is needed.
struct ItemFacts {
    std::string_view name;
    unsigned char kind;      ///< DT_REG, ...
    bool isMountPoint;       ///< of a folder
    UInt16 finderFlags = 0;  ///< 0x2000 bundle, 0x4000 invisible
};
/// `path` is called for the few files that have to be read.
template <class Path>
LSItemInfoFlags itemFlags(const ItemFacts &facts, Path &&path);

/// Those of a regular file: its name tells whether it may be a desktop entry, which is read then.
LSItemInfoFlags fileFlags(const std::string &path);
LSItemInfoFlags folderFlags(std::string_view name, bool isMountPoint, UInt16 finderFlags);

/// Whether something is mounted at an open folder, or (descriptor -1) at a path.
bool isMountPoint(int descriptor, const char *path);
/// The item's Finder information: type, creator, flags. All zero where there is none.
struct FinderInformation {
    OSType type = 0, creator = 0;
    UInt16 flags = 0;
};
FinderInformation finderInformation(const std::string &path);

}  // namespace tarvik::launch

#include <dirent.h>

template <class Path>
LSItemInfoFlags tarvik::launch::itemFlags(const ItemFacts &facts, Path &&path)
{
    const LSItemInfoFlags invisible =
        facts.name.starts_with('.') || facts.finderFlags & 0x4000 ? kLSItemInfoIsInvisible : 0;
    switch (facts.kind) {
    case DT_DIR: return invisible | folderFlags(facts.name, facts.isMountPoint, facts.finderFlags);
    case DT_LNK: return invisible | kLSItemInfoIsAliasFile | kLSItemInfoIsSymlink;
    case DT_REG:
        return invisible | (facts.name.ends_with(".desktop") ? fileFlags(path())
                                                             : LSItemInfoFlags(kLSItemInfoIsPlainFile));
    default: return invisible;
    }
}
