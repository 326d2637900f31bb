#include "platform/AppleEvents/private/StationFolder.h"

#include "platform/AppleEvents/private/Coercions.h"
#include "platform/AppleEvents/private/Flattening.h"

#include <CoreFoundation/CFBundle.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFString.h>
#include <Tarvik/support/Owned.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tarvik::ae {

namespace {

constexpr int kBacklog = 256;
constexpr size_t kLargestIdentity = 4096;
constexpr const char *kIdentityEnding = ".app";

FileDescriptor openFolder(int at, const char *path)
{
    return FileDescriptor(openat(at, path, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

bool isPrivate(int folder)
{
    struct stat about;
    return fstat(folder, &about) == 0 && S_ISDIR(about.st_mode) && about.st_uid == geteuid() &&
           (about.st_mode & 077) == 0;
}

FileDescriptor ownFolder(int at, const std::string &name)
{
    if (mkdirat(at, name.c_str(), 0700) != 0 && errno != EEXIST)
        return {};
    FileDescriptor folder = openFolder(at, name.c_str());
    return folder && isPrivate(folder.get()) ? std::move(folder) : FileDescriptor();
}

FileDescriptor chosenFolder()
{
    if (const char *runtime = std::getenv("XDG_RUNTIME_DIR"); runtime && runtime[0] == '/')
        if (const FileDescriptor parent = openFolder(AT_FDCWD, runtime); parent && isPrivate(parent.get()))
            if (FileDescriptor folder = ownFolder(parent.get(), "apple-events"))
                return folder;
    const FileDescriptor parent =
        openFolder(AT_FDCWD, "/tmp");  // the same one for all, whatever their TMPDIR is
    return parent ? ownFolder(parent.get(), "apple-events-" + std::to_string(geteuid())) : FileDescriptor();
}

/// The process that a name in the folder belongs to; 0 for other names.
int32_t pidOf(std::string_view name)
{
    int32_t pid = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), pid);
    return error == std::errc() && end == name.data() + name.size() ? pid : 0;
}

bool isAlive(int32_t pid) { return kill(pid, 0) == 0 || errno != ESRCH; }

std::string utf8(CFStringRef text)
{
    std::vector<char> bytes(
        text ? size_t(CFStringGetMaximumSizeForEncoding(CFStringGetLength(text), kCFStringEncodingUTF8)) + 1
             : 1);
    return text && CFStringGetCString(text, bytes.data(), CFIndex(bytes.size()), kCFStringEncodingUTF8)
               ? bytes.data()
               : "";
}

Identity mainBundleIdentity()
{
    const CFBundleRef bundle = CFBundleGetMainBundle();
    Identity identity;
    if (!bundle)
        return identity;
    identity.bundleIdentifier = utf8(CFBundleGetIdentifier(bundle));
    const CFTypeRef signature = CFBundleGetValueForInfoDictionaryKey(bundle, CFSTR("CFBundleSignature"));
    if (signature && CFGetTypeID(signature) == CFStringGetTypeID()) {
        const auto code = coerceScalar(typeUTF8Text, utf8(CFStringRef(signature)), typeApplSignature);
        if (code)
            AEGetDescData(code->get(), &identity.signature, sizeof identity.signature);
    }
    return identity;
}

}  // namespace

const Identity &ownIdentity()
{
    static const Identity *identity = new Identity(mainBundleIdentity());
    return *identity;
}

StationFolder::StationFolder() : folder_(chosenFolder()) {}

sockaddr_un StationFolder::address(int32_t pid) const
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::snprintf(address.sun_path, sizeof address.sun_path, "/proc/self/fd/%d/%d", folder_.get(), pid);
    return address;
}

void StationFolder::remove(int32_t pid) const
{
    const std::string name = std::to_string(pid);
    unlinkat(folder_.get(), name.c_str(), 0);
    unlinkat(folder_.get(), (name + kIdentityEnding).c_str(), 0);
}

void StationFolder::removeOwn() const { remove(getpid()); }

std::vector<int32_t> StationFolder::all() const
{
    std::vector<int32_t> pids;
    FileDescriptor copy = openFolder(folder_.get(), ".");
    const Owned<DIR, closedir> folder(copy ? fdopendir(copy.get()) : nullptr);
    if (!folder)
        return pids;
    (void)copy.release();
    while (const dirent *entry = readdir(folder.get()))
        if (const int32_t pid = pidOf(entry->d_name); pid > 0)
            pids.push_back(pid);
    std::sort(pids.begin(), pids.end());
    return pids;
}

FileDescriptor StationFolder::openOwn() const
{
    FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (!socket || !folder_)
        return {};
    // One at a time, or a socket could be taken for a leftover between a process's end and the next one's start.
    const FileDescriptor lock = openFolder(folder_.get(), ".");
    if (!lock || flock(lock.get(), LOCK_EX) != 0)
        return {};
    for (const int32_t pid : all())
        if (!isAlive(pid))
            remove(pid);
    removeOwn();
    const sockaddr_un own = address(getpid());
    const bool isOpen = writeIdentity(getpid()) && fchmod(socket.get(), 0600) == 0 &&
                        bind(socket.get(), reinterpret_cast<const sockaddr *>(&own), sizeof own) == 0 &&
                        listen(socket.get(), kBacklog) == 0;
    return isOpen ? std::move(socket) : FileDescriptor();
}

bool StationFolder::writeIdentity(int32_t pid) const
{
    const Identity &identity = ownIdentity();
    if (identity.signature == 0 && identity.bundleIdentifier.empty())
        return true;
    OwnedDesc record = newItems(typeAERecord, Kind::record);
    AEPutKeyPtr(record.get(), typeApplSignature, typeApplSignature, &identity.signature,
                sizeof identity.signature);
    AEPutKeyPtr(record.get(), typeApplicationBundleID, typeUTF8Text, identity.bundleIdentifier.data(),
                Size(identity.bundleIdentifier.size()));
    std::vector<char> form;
    flatten(*record.get(), form);
    const FileDescriptor file(openat(folder_.get(), (std::to_string(pid) + kIdentityEnding).c_str(),
                                     O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    return file && write(file.get(), form.data(), form.size()) == ssize_t(form.size());
}

Identity StationFolder::readIdentity(int32_t pid) const
{
    Identity identity;
    char form[kLargestIdentity];
    const FileDescriptor file(openat(folder_.get(), (std::to_string(pid) + kIdentityEnding).c_str(),
                                     O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    const ssize_t length = file ? read(file.get(), form, sizeof form) : -1;
    OwnedDesc record, text;
    if (length <= 0 || unflatten({form, size_t(length)}, record) != noErr)
        return identity;
    AEGetKeyPtr(record.get(), typeApplSignature, typeApplSignature, nullptr, &identity.signature,
                sizeof identity.signature, nullptr);
    if (AEGetKeyDesc(record.get(), typeApplicationBundleID, typeUTF8Text, text.out()) == noErr)
        identity.bundleIdentifier = bytesOf(text.get());
    return identity;
}

std::vector<int32_t> StationFolder::find(OSType signature, const std::string &bundleIdentifier) const
{
    std::vector<int32_t> found;
    for (const int32_t pid : all()) {
        const Identity identity = readIdentity(pid);
        const bool isIt = bundleIdentifier.empty() ? signature != 0 && identity.signature == signature
                                                   : identity.bundleIdentifier == bundleIdentifier;
        if (isIt && isAlive(pid))
            found.push_back(pid);
    }
    return found;
}

}  // namespace tarvik::ae
