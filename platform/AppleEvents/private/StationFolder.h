/// \file
/// The user's folder of sockets: one for each process that receives events, by its process id, and beside it who it is.
///
/// apple-events in XDG_RUNTIME_DIR, else /tmp/apple-events-UID. It is used only when it is a folder, the
/// user's own, and closed to everybody else; it is reached through a descriptor, so that nobody can exchange it in between.
#pragma once
#include "platform/AppleEvents/private/Storage.h"

#include <Tarvik/support/Handle.h>
#include <sys/un.h>

#include <string>
#include <vector>

namespace tarvik::ae {

/// Who a receiver says it is. Empty: not known.
struct Identity {
    OSType signature = 0;
    std::string bundleIdentifier;
};
/// This process's, from its main bundle.
const Identity &ownIdentity();

class StationFolder {
public:
    /// Makes the folder when it isn't there. Without one nothing can be reached.
    StationFolder();
    explicit operator bool() const { return bool(folder_); }

    /// The socket's address, whatever the folder's path is.
    sockaddr_un address(int32_t pid) const;
    /// A socket that receives for this process; empty on failure. Sockets of processes that ended are cleared away.
    FileDescriptor openOwn() const;
    /// Takes this process's socket away.
    void removeOwn() const;
    /// The processes that receive under an identity.
    std::vector<int32_t> find(OSType signature, const std::string &bundleIdentifier) const;
    /// All that receive, in the order of their numbers.
    std::vector<int32_t> all() const;

private:
    void remove(int32_t pid) const;
    bool writeIdentity(int32_t pid) const;
    Identity readIdentity(int32_t pid) const;

    FileDescriptor folder_;
};

}  // namespace tarvik::ae
