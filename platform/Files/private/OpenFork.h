/// \file
/// A fork that is open, and the list of all of them.
#pragma once
#include "platform/Files/private/References.h"

#include <Carbon/Files.h>
#include <Tarvik/support/Handle.h>

#include <memory>
#include <string>

namespace tarvik::files {

enum class Fork { data, resource };
/// errFSBadForkName.
OSErr forkOfName(UniCharCount length, const UniChar *name, Fork &fork);

/// The bytes of one fork. A data fork is the file itself. A resource fork is read in its companion; the first change copies it
/// to a nameless file, which becomes part of a new companion when the fork is flushed.
class OpenFork {
public:
    static OSErr open(const FSRef &ref, Fork fork, SInt8 permissions, std::unique_ptr<OpenFork> &opened);
    OpenFork(const OpenFork &) = delete;
    OpenFork &operator=(const OpenFork &) = delete;

    OSErr size(int64_t &bytes) const;
    OSErr place(UInt16 mode, int64_t offset, int64_t &position) const;
    OSErr read(int64_t position, uint32_t count, void *buffer, uint32_t &actual) const;
    OSErr write(int64_t position, uint32_t count, const void *buffer);
    OSErr resize(int64_t bytes);
    OSErr copyAll(OpenFork &destination);
    OSErr flush();

    bool isWriterOf(const Identity &item, Fork fork) const
    {
        return mayWrite_ && fork_ == fork && item_ == item;
    }
    int64_t mark = 0;

private:
    OpenFork(const FSRef &ref, const Identity &item, Fork fork) : ref_(ref), item_(item), fork_(fork) {}
    OSErr beginChange();

    FSRef ref_;
    Identity item_;
    Fork fork_;
    bool mayRead_ = true, mayWrite_ = false, isChanged_ = false;
    FileDescriptor file_;              // none: a resource fork without bytes
    uint64_t start_ = 0, length_ = 0;  // of a resource fork, in file_
};

}  // namespace tarvik::files
