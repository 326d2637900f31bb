#include "platform/Files/private/Errors.h"
#include "platform/Files/private/Listing.h"

#include <Carbon/FileTrees.h>
#include <Tarvik/support/Handle.h>
#include <dirent.h>
#include <fcntl.h>

#include <cerrno>
#include <cstring>
#include <new>

using namespace tarvik;

namespace {

FSEntryKind kindOf(unsigned char kind)
{
    switch (kind) {
    case DT_DIR: return kFSEntryIsFolder;
    case DT_LNK: return kFSEntryIsSymlink;
    case DT_UNKNOWN: return kFSEntryIsUnknown;
    default: return kFSEntryIsOther;
    }
}

}  // namespace

OSErr FSVisitFolder(const UInt8 *path, FSEntryVisitorProc visitor, void *context)
try {
    if (!path || !visitor)
        return paramErr;
    FileDescriptor folder(
        open(reinterpret_cast<const char *>(path), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK));
    if (!folder)
        return errno == ENOTDIR ? OSErr(errFSNotAFolder) : files::fileError(errno);
    const files::Listing listing(folder.get());
    folder.reset();
    bool isEnded = false;
    listing.each([&](const files::Entry &entry) {
        if (!isEnded)
            isEnded = !visitor(entry.name, std::strlen(entry.name), kindOf(entry.kind), context);
    });
    return noErr;
} catch (const std::bad_alloc &) {
    return memFullErr;
}
