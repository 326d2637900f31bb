#include "platform/Files/private/OpenFork.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <vector>

using namespace tarvik::files;

namespace {

/// The open forks by number: a number is a place in the list and above 0.
class OpenForks {
public:
    OSErr add(std::unique_ptr<OpenFork> fork, FSIORefNum &number)
    {
        std::lock_guard held(lock_);
        auto free = std::find(forks_.begin() + 1, forks_.end(), nullptr);
        if (free == forks_.end()) {
            if (forks_.size() > INT16_MAX)
                return tmfoErr;
            free = forks_.insert(free, nullptr);
        }
        *free = std::move(fork);
        number = FSIORefNum(free - forks_.begin());
        return noErr;
    }
    std::shared_ptr<OpenFork> at(FSIORefNum number)
    {
        std::lock_guard held(lock_);
        return number > 0 && size_t(number) < forks_.size() ? forks_[size_t(number)] : nullptr;
    }
    std::shared_ptr<OpenFork> take(FSIORefNum number)
    {
        std::lock_guard held(lock_);
        return number > 0 && size_t(number) < forks_.size() ? std::move(forks_[size_t(number)]) : nullptr;
    }
    bool isBeingWritten(const Identity &item, Fork fork)
    {
        std::lock_guard held(lock_);
        return std::any_of(forks_.begin(), forks_.end(),
                           [&](const auto &open) { return open && open->isWriterOf(item, fork); });
    }

private:
    std::mutex lock_;
    std::vector<std::shared_ptr<OpenFork>> forks_{nullptr};
};

OpenForks &openForks()
{
    static OpenForks &all = *new OpenForks;
    return all;
}

/// Runs the body with the open fork.
template <class Body>
OSErr with(FSIORefNum number, Body &&body)
{
    const std::shared_ptr<OpenFork> fork = openForks().at(number);
    return fork ? body(*fork) : OSErr(rfNumErr);
}

/// Opens a fork and, if it is asked for, gets its size.
OSErr openFork(const FSRef *ref, UniCharCount nameLength, const UniChar *name, SInt8 permissions,
               std::unique_ptr<OpenFork> &opened, int64_t *size = nullptr)
{
    Fork fork;
    Identity item;
    if (const OSErr error = forkOfName(nameLength, name, fork); error != noErr)
        return error;
    if (const OSErr error = identity(ref, item); error != noErr)
        return error;
    // Two writers would undo each other's changes: each one puts a whole fork in place.
    if (fork == Fork::resource && permissions != fsRdPerm && openForks().isBeingWritten(item, fork))
        return opWrErr;
    const OSErr error = OpenFork::open(*ref, fork, permissions, opened);
    return error == noErr && size ? opened->size(*size) : error;
}

}  // namespace

OSErr FSGetDataForkName(HFSUniStr255 *dataForkName)
{
    if (!dataForkName)
        return paramErr;
    std::memset(dataForkName, 0, sizeof *dataForkName);
    return noErr;
}

OSErr FSGetResourceForkName(HFSUniStr255 *resourceForkName)
{
    if (!resourceForkName)
        return paramErr;
    std::memset(resourceForkName, 0, sizeof *resourceForkName);
    for (char c : std::string_view("RESOURCE_FORK"))
        resourceForkName->unicode[resourceForkName->length++] = UniChar(c);
    return noErr;
}

OSErr FSCreateFork(const FSRef *ref, UniCharCount forkNameLength, const UniChar *forkName)
{
    std::unique_ptr<OpenFork> fork;
    int64_t size = 0;
    const OSErr error = openFork(ref, forkNameLength, forkName, fsRdPerm, fork, &size);
    return error == noErr && size > 0 ? OSErr(errFSForkExists) : error;
}

OSErr FSDeleteFork(const FSRef *ref, UniCharCount forkNameLength, const UniChar *forkName)
{
    std::unique_ptr<OpenFork> fork;
    int64_t size = 0;
    OSErr error = openFork(ref, forkNameLength, forkName, fsWrPerm, fork, &size);
    if (error == noErr && size > 0)
        error = fork->resize(0);
    return error == noErr ? fork->flush() : error;
}

OSErr FSOpenFork(const FSRef *ref, UniCharCount forkNameLength, const UniChar *forkName, SInt8 permissions,
                 FSIORefNum *forkRefNum)
{
    if (!forkRefNum)
        return paramErr;
    std::unique_ptr<OpenFork> fork;
    const OSErr error = openFork(ref, forkNameLength, forkName, permissions, fork);
    return error == noErr ? openForks().add(std::move(fork), *forkRefNum) : error;
}

OSErr FSReadFork(FSIORefNum forkRefNum, UInt16 positionMode, SInt64 positionOffset, ByteCount requestCount,
                 void *buffer, ByteCount *actualCount)
{
    if (actualCount)
        *actualCount = 0;
    if (!buffer && requestCount > 0)
        return errFSBadBuffer;
    return with(forkRefNum, [&](OpenFork &fork) {
        int64_t position;
        uint32_t actual = 0;
        OSErr error = fork.place(positionMode, positionOffset, position);
        if (error != noErr)
            return error;
        error = fork.read(position, requestCount, buffer, actual);
        fork.mark = position + actual;
        if (actualCount)
            *actualCount = actual;
        return error;
    });
}

OSErr FSWriteFork(FSIORefNum forkRefNum, UInt16 positionMode, SInt64 positionOffset, ByteCount requestCount,
                  const void *buffer, ByteCount *actualCount)
{
    if (actualCount)
        *actualCount = 0;
    if (!buffer && requestCount > 0)
        return errFSBadBuffer;
    return with(forkRefNum, [&](OpenFork &fork) {
        int64_t position;
        OSErr error = fork.place(positionMode, positionOffset, position);
        if (error == noErr)
            error = fork.write(position, requestCount, buffer);
        if (error != noErr)
            return error;
        fork.mark = position + requestCount;
        if (actualCount)
            *actualCount = requestCount;
        return error;
    });
}

OSErr FSGetForkPosition(FSIORefNum forkRefNum, SInt64 *position)
{
    if (!position)
        return paramErr;
    return with(forkRefNum, [&](OpenFork &fork) {
        *position = fork.mark;
        return OSErr(noErr);
    });
}

OSErr FSSetForkPosition(FSIORefNum forkRefNum, UInt16 positionMode, SInt64 positionOffset)
{
    return with(forkRefNum,
                [&](OpenFork &fork) { return fork.place(positionMode, positionOffset, fork.mark); });
}

OSErr FSGetForkSize(FSIORefNum forkRefNum, SInt64 *forkSize)
{
    if (!forkSize)
        return paramErr;
    return with(forkRefNum, [&](OpenFork &fork) { return fork.size(*forkSize); });
}

OSErr FSSetForkSize(FSIORefNum forkRefNum, UInt16 positionMode, SInt64 positionOffset)
{
    return with(forkRefNum, [&](OpenFork &fork) {
        int64_t size;
        const OSErr error = fork.place(positionMode, positionOffset, size);
        return error == noErr ? fork.resize(size) : error;
    });
}

OSErr FSFlushFork(FSIORefNum forkRefNum)
{
    return with(forkRefNum, [](OpenFork &fork) { return fork.flush(); });
}

OSErr FSCloseFork(FSIORefNum forkRefNum)
{
    const std::shared_ptr<OpenFork> fork = openForks().take(forkRefNum);
    return fork ? fork->flush() : OSErr(rfNumErr);
}

OSErr FSCopyForkContents(FSIORefNum sourceRefNum, FSIORefNum destinationRefNum)
{
    return with(sourceRefNum, [&](OpenFork &source) {
        return with(destinationRefNum, [&](OpenFork &destination) { return source.copyAll(destination); });
    });
}

OSErr FSIterateForks(const FSRef *ref, CatPositionRec *forkIterator, HFSUniStr255 *forkName, SInt64 *forkSize,
                     UInt64 *forkPhysicalSize)
{
    if (!forkIterator)
        return paramErr;
    FSCatalogInfo info;
    if (const OSErr error =
            FSGetCatalogInfo(ref, kFSCatInfoNodeFlags | kFSCatInfoDataSizes | kFSCatInfoRsrcSizes, &info,
                             nullptr, nullptr, nullptr);
        error != noErr)
        return error;
    const int next = forkIterator->initialize == 0 ? 0 : forkIterator->priv[0];
    if (info.nodeFlags & kFSNodeIsDirectoryMask || next > 1 || (next == 1 && info.rsrcLogicalSize == 0))
        return errFSNoMoreItems;
    forkIterator->initialize = 1;
    forkIterator->priv[0] = SInt16(next + 1);
    if (forkName)
        next == 0 ? FSGetDataForkName(forkName) : FSGetResourceForkName(forkName);
    if (forkSize)
        *forkSize = SInt64(next == 0 ? info.dataLogicalSize : info.rsrcLogicalSize);
    if (forkPhysicalSize)
        *forkPhysicalSize = next == 0 ? info.dataPhysicalSize : info.rsrcPhysicalSize;
    return noErr;
}
