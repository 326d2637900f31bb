/// \file
/// How a reference finds its item.
///
/// The 80 bytes hold the item's identity (device, inode, time of birth) and the number of a node. Nodes make a tree of what
/// references were made of, each with its name and folder, kept for the life of the process: about 90 bytes a reference.
/// A path is put together from the tree and checked with one stat. Only when another item, or none, is there:
///
///   1. the descriptors of the latest 256 items, which the kernel leads to them wherever they went;
///   2. a look at the folder where the item was, itself a reference, for its inode;
///   3. a search of the folders around that one, up to a limit, not repeated within a second.
///
/// Descriptors are kept for the volumes of "/", the home and the temporary folder only: one would keep another volume from
/// being unmounted. They are not kept of files above 16 MiB (that of a file which grew is closed when the
/// file is next asked for), and those of deleted items are closed by whatever is asked a second later: one keeps the file's room
/// on the disk taken.
#pragma once
#include <Carbon/Files.h>
#include <sys/stat.h>

#include <string>

namespace tarvik::files {

struct Identity {
    uint64_t device;
    uint64_t inode;
    int64_t born;  ///< in nanoseconds; 0 where the file system does not know

    bool operator==(const Identity &) const = default;
};
Identity identityOf(const struct statx &status);

/// statx with the time of birth, links not followed; `folder` may be a descriptor of the item itself, `path` empty then. errno.
int status(int folder, const char *path, struct statx &status);

enum class Leaf { follow, asIs };

/// A reference to what stands at the path.
OSErr makeReference(const std::string &path, Leaf leaf, FSRef *ref, struct statx *found = nullptr);
/// The same of an item that was just looked at there (kind, inode, links, time of birth); the path is absolute and plain.
OSErr makeReference(const std::string &path, const struct statx &item, FSRef *ref);
/// Where the item is now, and what it is.
OSErr locate(const FSRef *ref, std::string &path, struct statx *found = nullptr);
/// The identity alone, without a look at the file system.
OSErr identity(const FSRef *ref, Identity &identity);
/// What this process has renamed or moved itself: found at once.
void noteMove(const FSRef *ref, const std::string &path);
/// What this process has deleted: its descriptor is closed.
void noteRemoval(const FSRef *ref);
/// The folder of that number on the volume, among those that this process has met. dirNFErr.
OSErr folderByNumber(uint64_t device, uint32_t number, std::string &path);

/// The parts of an absolute path: "/a/b" is "/a" and "b"; "/" has none.
std::string folderOf(const std::string &path);
std::string nameOf(const std::string &path);
std::string joined(const std::string &folder, const std::string &name);

}  // namespace tarvik::files
