#include "private/FileAccess.h"

#include "private/ScriptErrors.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

namespace tarvik::osa {

namespace {

[[noreturn]] void raiseFor(int code, const std::string &path)
{
    switch (code) {
    case ENOENT:
    case ENOTDIR: raise(-43, "File " + path + " wasn’t found.");
    case EACCES:
    case EPERM: raise(-54, "File permission error for " + path + ".");
    case EROFS: raise(-44, "Disk is write protected: " + path + ".");
    case ENOSPC: raise(-34, "Disk is full.");
    case EISDIR: raise(-39, "File " + path + " is a folder.");
    default: raise(-36, "Input or output error for " + path + ".");
    }
}

}  // namespace

FileAccess::OpenFile FileAccess::opened(const std::string &path, bool writes)
{
    const int descriptor = ::open(path.c_str(), (writes ? O_RDWR | O_CREAT : O_RDONLY) | O_CLOEXEC, 0666);
    if (descriptor < 0)
        raiseFor(errno, path);
    OpenFile file;
    file.descriptor.reset(descriptor);
    struct stat info;
    if (fstat(descriptor, &info) == 0 && S_ISDIR(info.st_mode))
        raiseFor(EISDIR, path);
    file.path = path;
    file.writes = writes;
    return file;
}

int64_t FileAccess::open(const std::string &path, bool writes)
{
    if (files_.size() >= 256)
        raise(-42, "Too many files are open.");
    if (writes && find(path, true))
        raise(-49, "File " + path + " is already open.");
    files_.emplace(next_, opened(path, writes));
    return next_++;
}

void FileAccess::close(int64_t number)
{
    if (!files_.erase(number))
        raise(-38, "File wasn’t open.");
}

void FileAccess::close(const std::string &path)
{
    for (auto file = files_.begin(); file != files_.end(); ++file) {
        if (file->second.path == path) {
            files_.erase(file);
            return;
        }
    }
    raise(-38, "File " + path + " wasn’t open.");
}

FileAccess::OpenFile &FileAccess::at(int64_t number)
{
    const auto file = files_.find(number);
    if (file == files_.end())
        raise(-38, "File wasn’t open.");
    return file->second;
}

FileAccess::OpenFile *FileAccess::find(const std::string &path, bool writes)
{
    for (auto &[number, file] : files_) {
        if (file.path == path && (file.writes || !writes))
            return &file;
    }
    return nullptr;
}

int64_t FileAccess::length(const OpenFile &file)
{
    struct stat info;
    return fstat(file.descriptor.get(), &info) == 0 ? int64_t(info.st_size) : 0;
}

std::string FileAccess::read(OpenFile &file, int64_t count)
{
    std::string bytes;
    while (count > 0) {
        char buffer[1 << 16];
        const ssize_t got = pread(file.descriptor.get(), buffer,
                                  size_t(std::min<int64_t>(count, sizeof buffer)), off_t(file.position));
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0 && errno == ESPIPE)
            raise(-36, "Can’t read " + file.path + ": it is no plain file.");
        if (got < 0)
            raiseFor(errno, file.path);
        if (got == 0)
            break;
        bytes.append(buffer, size_t(got));
        file.position += got;
        count -= got;
    }
    return bytes;
}

void FileAccess::write(OpenFile &file, std::string_view bytes)
{
    if (!file.writes)
        raise(-61, "File " + file.path + " is not open with write permission.");
    while (!bytes.empty()) {
        const ssize_t put = pwrite(file.descriptor.get(), bytes.data(), bytes.size(), off_t(file.position));
        if (put < 0 && errno == EINTR)
            continue;
        if (put < 0)
            raiseFor(errno, file.path);
        file.position += put;
        bytes.remove_prefix(size_t(put));
    }
}

}  // namespace tarvik::osa
