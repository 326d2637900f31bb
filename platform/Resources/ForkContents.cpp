#include "private/ForkContents.h"

#include <algorithm>

namespace tarvik::resources {
namespace {

HFSUniStr255 forkName()
{
    HFSUniStr255 name;
    FSGetResourceForkName(&name);
    return name;
}

OSErr openResourceFork(const FSRef &ref, SInt8 permission, FSIORefNum &fork)
{
    const HFSUniStr255 name = forkName();
    return FSOpenFork(&ref, name.length, name.unicode, permission, &fork);
}

}  // namespace

bool isResourceForkName(UniCharCount length, const UniChar *name)
{
    const HFSUniStr255 known = forkName();
    return name && std::equal(name, name + length, known.unicode, known.unicode + known.length);
}

OSErr readResourceFork(const FSRef &ref, std::string &bytes)
{
    FSIORefNum fork;
    if (const OSErr error = openResourceFork(ref, fsRdPerm, fork); error != noErr)
        return error;
    SInt64 size = 0;
    OSErr error = FSGetForkSize(fork, &size);
    if (error == noErr && size > 0) {
        bytes.resize(size_t(size));
        error = FSReadFork(fork, fsFromStart, 0, ByteCount(size), bytes.data(), nullptr);
    }
    FSCloseFork(fork);
    return error;
}

OSErr writeResourceFork(const FSRef &ref, const std::string &bytes)
{
    FSIORefNum fork;
    if (const OSErr error = openResourceFork(ref, fsWrPerm, fork); error != noErr)
        return error;
    OSErr error = FSSetForkSize(fork, fsFromStart, 0);
    if (error == noErr)
        error = FSWriteFork(fork, fsFromStart, 0, ByteCount(bytes.size()), bytes.data(), nullptr);
    const OSErr closed = FSCloseFork(fork);
    return error == noErr ? closed : error;
}

}  // namespace tarvik::resources
