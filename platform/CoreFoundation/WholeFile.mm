#include "platform/CoreFoundation/private/WholeFile.h"

#include <Tarvik/support/Handle.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <random>

namespace tarvik {
namespace {

bool writeAll(int descriptor, const char *bytes, size_t count)
{
    while (count > 0) {
        const ssize_t written = write(descriptor, bytes, count);
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0)
            return false;
        bytes += written;
        count -= size_t(written);
    }
    return true;
}

/// A new file in the folder of another one, under a name that is still free.
FileDescriptor createBeside(const std::string &path, mode_t mode, std::string &name)
{
    std::random_device random;
    for (int attempts = 0; attempts < 100; ++attempts) {
        name = path + "." + std::to_string(random());
        FileDescriptor file(open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
        if (file || errno != EEXIST)
            return file;
    }
    return {};
}

/// What a path leads to through symbolic links, the last of which may lead nowhere.
std::string target(std::string path)
{
    for (int links = 0; links < 40; ++links) {
        char link[4096];
        const ssize_t length = readlink(path.c_str(), link, sizeof link);
        if (length < 0)
            break;
        const std::string to(link, size_t(length));
        const size_t slash = path.rfind('/');
        path = to.starts_with('/') || slash == path.npos ? to : path.substr(0, slash + 1).append(to);
    }
    return path;
}

}  // namespace

NSData *readWholeFile(const std::string &path)
{
    FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat about;
    if (!file || fstat(file.get(), &about) != 0)
        return nil;
    if (S_ISDIR(about.st_mode)) {
        errno = EISDIR;
        return nil;
    }
    // The size is a hint only: the files of /proc have none, and a file may grow meanwhile.
    size_t capacity = size_t(std::max<off_t>(about.st_size, 0)) + 1, used = 0;
    char *bytes = static_cast<char *>(malloc(capacity));
    while (bytes) {
        const ssize_t got = read(file.get(), bytes + used, capacity - used);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0) {
            free(bytes);
            return nil;
        }
        if (got == 0)
            break;
        used += size_t(got);
        if (used == capacity) {
            capacity += std::max<size_t>(capacity / 2, 4096);
            char *more = static_cast<char *>(realloc(bytes, capacity));
            if (!more)
                free(bytes);
            bytes = more;
        }
    }
    if (!bytes) {
        errno = ENOMEM;
        return nil;
    }
    return [[NSData alloc] initWithBytesNoCopy:bytes length:used freeWhenDone:YES];
}

bool writeWholeFile(const std::string &given, NSData *data)
{
    const auto *bytes = static_cast<const char *>([data bytes]);
    const size_t count = [data length];
    const std::string path = target(given);
    struct stat old;
    const bool exists = stat(path.c_str(), &old) == 0;
    if (exists && !S_ISREG(old.st_mode)) {
        FileDescriptor file(open(path.c_str(), O_WRONLY | O_CLOEXEC));
        return file && writeAll(file.get(), bytes, count);
    }
    if (exists && access(path.c_str(), W_OK) != 0)
        return false;  // a file that may not be written is not replaced behind its back
    std::string fresh;
    FileDescriptor file = createBeside(path, exists ? 0600 : 0666, fresh);
    if (!file)
        return false;
    bool done = true;
    if (exists) {
        // The owner first: changing it takes special mode bits away. Without the right to give the file away
        // it is ours.
        if (fchown(file.get(), old.st_uid, old.st_gid) != 0 && fchown(file.get(), uid_t(-1), old.st_gid) != 0)
            errno = 0;
        done = fchmod(file.get(), old.st_mode & 07777) == 0;
    }
    done = done && writeAll(file.get(), bytes, count) && fsync(file.get()) == 0 &&
           rename(fresh.c_str(), path.c_str()) == 0;
    if (!done) {
        const int why = errno;
        unlink(fresh.c_str());
        errno = why;
    }
    return done;
}

}  // namespace tarvik
