#include "platform/Files/private/Copying.h"

#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <vector>

namespace tarvik::files {

int writeAll(int file, const void *bytes, uint64_t length, uint64_t offset)
{
    for (const char *at = static_cast<const char *>(bytes); length > 0;) {
        const ssize_t count = pwrite(file, at, length, off_t(offset));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return errno;
        at += count;
        offset += uint64_t(count);
        length -= uint64_t(count);
    }
    return 0;
}

int copyBytes(int from, uint64_t fromOffset, int to, uint64_t toOffset, uint64_t length,
              const CopyWatch &watch)
{
    const uint64_t mostAtOnce = watch ? 1 << 24 : 1 << 30;
    const auto advance = [&](uint64_t count) {
        fromOffset += count;
        toOffset += count;
        length -= count;
        return !watch || watch(count);
    };
    while (length > 0) {
        off_t source = off_t(fromOffset), target = off_t(toOffset);
        const ssize_t count = copy_file_range(from, &source, to, &target, std::min(length, mostAtOnce), 0);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            break;  // not between these two files (or the end, which the reading below finds)
        if (!advance(uint64_t(count)))
            return ECANCELED;
    }
    std::vector<char> buffer(std::min<uint64_t>(length, 1 << 20));
    while (length > 0) {
        const ssize_t count =
            pread(from, buffer.data(), std::min<uint64_t>(length, buffer.size()), off_t(fromOffset));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return count < 0 ? errno : EIO;
        if (const int error = writeAll(to, buffer.data(), uint64_t(count), toOffset); error != 0)
            return error;
        if (!advance(uint64_t(count)))
            return ECANCELED;
    }
    return 0;
}

int copyFile(int from, int to, const CopyWatch &watch)
{
    struct stat source, target;
    if (fstat(from, &source) != 0 || fstat(to, &target) != 0)
        return errno;
    if (ioctl(to, FICLONE, from) == 0)
        return ftruncate(to, source.st_size) != 0          ? errno
               : watch && !watch(uint64_t(source.st_size)) ? ECANCELED
                                                           : 0;
    // What is empty is not emptied: ext4 takes that for a file's replacement, and writes all of it out when
    // the file is closed.
    if ((target.st_size > 0 && ftruncate(to, 0) != 0) || ftruncate(to, source.st_size) != 0)
        return errno;
    for (off_t at = 0; at < source.st_size;) {
        off_t data = lseek(from, at, SEEK_DATA), hole = source.st_size;
        if (data < 0 && errno == ENXIO)  // nothing but a hole is left
            return watch && !watch(uint64_t(source.st_size - at)) ? ECANCELED : 0;
        if (data < 0)
            data = at;  // a file system that tells nothing of holes
        else if ((hole = lseek(from, data, SEEK_HOLE)) < 0)
            hole = source.st_size;
        hole = std::min(hole, source.st_size);
        data = std::min(data, hole);
        if (data > at && watch && !watch(uint64_t(data - at)))
            return ECANCELED;
        if (data < hole)
            if (const int error =
                    copyBytes(from, uint64_t(data), to, uint64_t(data), uint64_t(hole - data), watch);
                error != 0)
                return error;
        at = std::max(hole, at + 1);
    }
    return 0;
}

}  // namespace tarvik::files
