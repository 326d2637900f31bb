#include "platform/Files/private/OpenFork.h"

#include "platform/Files/private/Companion.h"
#include "platform/Files/private/Copying.h"
#include "platform/Files/private/Errors.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace tarvik::files {
namespace {

constexpr std::u16string_view kResourceForkName = u"RESOURCE_FORK";

/// A file without a name on the item's file system, gone when it is closed.
FileDescriptor namelessFile(const std::string &folder)
{
    FileDescriptor file(::open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600));
    if (!file) {  // a file system without them
        std::string name = joined(folder, ".tarvik-XXXXXX");
        file.reset(mkostemp(name.data(), O_CLOEXEC));
        if (file)
            unlink(name.c_str());
    }
    return file;
}

}  // namespace

OSErr forkOfName(UniCharCount length, const UniChar *name, Fork &fork)
{
    fork = length == 0 ? Fork::data : Fork::resource;
    const bool isKnown = length == 0 || (name && length == kResourceForkName.size() &&
                                         std::equal(name, name + length, kResourceForkName.begin()));
    return isKnown ? OSErr(noErr) : OSErr(errFSBadForkName);
}

OSErr OpenFork::open(const FSRef &ref, Fork fork, SInt8 permissions, std::unique_ptr<OpenFork> &opened)
{
    if (permissions < fsCurPerm || permissions > fsRdWrShPerm)
        return paramErr;
    std::string path;
    struct statx item;
    if (const OSErr error = locate(&ref, path, &item); error != noErr)
        return error;
    if (!S_ISREG(item.stx_mode))
        return notAFileErr;
    std::unique_ptr<OpenFork> made(new OpenFork(ref, identityOf(item), fork));
    made->mayRead_ = permissions != fsWrPerm;
    made->mayWrite_ = permissions != fsRdPerm;

    if (fork == Fork::resource) {
        if (made->mayWrite_ && (item.stx_attributes & STATX_ATTR_IMMUTABLE ||
                                faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) != 0)) {
            if (permissions != fsCurPerm)
                return item.stx_attributes & STATX_ATTR_IMMUTABLE ? OSErr(fLckdErr) : fileError(errno);
            made->mayWrite_ = false;
        }
        Companion companion;
        if (const OSErr error = Companion::open(path, companion); error != noErr)
            return error;
        if (const OSErr error = companion.writable(); error != noErr)
            return error;
        made->start_ = companion.resourceOffset();
        made->length_ = companion.resourceLength();
        if (made->length_ > 0)
            made->file_ = std::move(companion.descriptor());
        opened = std::move(made);
        return noErr;
    }
    constexpr int kSafely = O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;
    const int mode = permissions == fsRdPerm ? O_RDONLY : permissions == fsWrPerm ? O_WRONLY : O_RDWR;
    made->file_.reset(::open(path.c_str(), mode | kSafely));
    if (!made->file_ && permissions == fsCurPerm && (errno == EACCES || errno == EROFS || errno == EPERM)) {
        made->mayWrite_ = false;
        made->file_.reset(::open(path.c_str(), O_RDONLY | kSafely));
    }
    if (!made->file_)
        return fileError(errno);
    struct statx there;
    if (status(made->file_.get(), "", there) != 0 || identityOf(there) != made->item_)
        return fnfErr;  // another item took its place meanwhile
    opened = std::move(made);
    return noErr;
}

OSErr OpenFork::size(int64_t &bytes) const
{
    bytes = int64_t(length_);
    if (fork_ == Fork::resource)
        return noErr;
    struct stat file;
    if (fstat(file_.get(), &file) != 0)
        return fileError(errno);
    bytes = file.st_size;
    return noErr;
}

OSErr OpenFork::place(UInt16 mode, int64_t offset, int64_t &position) const
{
    int64_t from = 0;
    switch (mode & 3) {
    case fsAtMark:
        offset = 0;
        from = mark;
        break;
    case fsFromMark: from = mark; break;
    case fsFromLEOF:
        if (const OSErr error = size(from); error != noErr)
            return error;
        break;
    default: break;
    }
    if (__builtin_add_overflow(from, offset, &position) || position < 0)
        return posErr;
    return noErr;
}

OSErr OpenFork::read(int64_t position, uint32_t count, void *buffer, uint32_t &actual) const
{
    actual = 0;
    if (!mayRead_)
        return permErr;
    uint64_t start = uint64_t(position), left = count;
    if (fork_ == Fork::resource) {
        left = start >= length_ ? 0 : std::min<uint64_t>(left, length_ - start);
        start += start_;
    }
    while (left > 0) {
        const ssize_t got =
            pread(file_.get(), static_cast<char *>(buffer) + actual, left, off_t(start + actual));
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return fileError(errno);
        if (got == 0)
            break;
        actual += uint32_t(got);
        left -= uint64_t(got);
    }
    return actual < count ? OSErr(eofErr) : OSErr(noErr);
}

OSErr OpenFork::beginChange()
{
    if (!mayWrite_)
        return wrPermErr;
    if (fork_ == Fork::data || isChanged_)
        return noErr;
    std::string path;
    if (const OSErr error = locate(&ref_, path); error != noErr)
        return error;
    FileDescriptor copy = namelessFile(folderOf(path));
    if (!copy)
        return fileError(errno);
    if (length_ > 0)
        if (const int error = copyBytes(file_.get(), start_, copy.get(), 0, length_); error != 0)
            return fileError(error);
    file_ = std::move(copy);
    start_ = 0;
    isChanged_ = true;
    return noErr;
}

OSErr OpenFork::write(int64_t position, uint32_t count, const void *buffer)
{
    if (const OSErr error = beginChange(); error != noErr)
        return error;
    if (fork_ == Fork::resource && uint64_t(position) + count > UINT32_MAX)
        return dskFulErr;  // its length is kept in 32 bits
    if (const int error = writeAll(file_.get(), buffer, count, uint64_t(position)); error != 0)
        return fileError(error);
    length_ = std::max(length_, uint64_t(position) + count);
    return noErr;
}

OSErr OpenFork::resize(int64_t bytes)
{
    if (const OSErr error = beginChange(); error != noErr)
        return error;
    if (fork_ == Fork::resource && bytes > int64_t(UINT32_MAX))
        return dskFulErr;
    if (ftruncate(file_.get(), bytes) != 0)
        return fileError(errno);
    length_ = uint64_t(bytes);
    return noErr;
}

OSErr OpenFork::copyAll(OpenFork &destination)
{
    if (!mayRead_)
        return permErr;
    int64_t bytes = 0;
    if (const OSErr error = size(bytes); error != noErr)
        return error;
    if (fork_ == Fork::data && destination.fork_ == Fork::data) {
        if (!destination.mayWrite_)
            return wrPermErr;
        return item_ == destination.item_ ? OSErr(noErr)
                                          : fileError(copyFile(file_.get(), destination.file_.get()));
    }
    if (const OSErr error = destination.resize(0); error != noErr)
        return error;
    if (const OSErr error = destination.resize(bytes); error != noErr || bytes == 0)
        return error;
    return fileError(copyBytes(file_.get(), start_, destination.file_.get(), 0, uint64_t(bytes)));
}

OSErr OpenFork::flush()
{
    if (fork_ == Fork::data || !isChanged_)
        return noErr;
    std::string path;
    struct statx item;
    if (const OSErr error = locate(&ref_, path, &item); error != noErr)
        return error;
    // Read anew: Finder information may have been set since the fork was opened.
    Companion companion;
    if (const OSErr error = Companion::open(path, companion); error != noErr)
        return error;
    Companion::Changes changes;
    changes.resourceFork = {file_.get(), length_};
    return companion.replace(path, item, changes);
}

}  // namespace tarvik::files
