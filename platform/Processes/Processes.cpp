#include "platform/Processes/private/Processes.h"

#include <Tarvik/support/Handle.h>
#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <climits>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <string_view>
#include <unordered_map>

namespace tarvik::processes {

namespace {

constexpr int kIDBits = 22;

/// The path of one of a process's files.
class Path {
public:
    Path(pid_t pid, const char *file) { std::snprintf(text_, sizeof text_, "/proc/%d/%s", int(pid), file); }
    const char *get() const { return text_; }

private:
    char text_[48];
};

/// The beginning of a file of /proc; empty when it can't be read.
std::string_view head(const Path &path, char *buffer, size_t size)
{
    const FileDescriptor file(open(path.get(), O_RDONLY | O_CLOEXEC));
    const ssize_t count = file ? read(file.get(), buffer, size) : -1;
    return {buffer, count > 0 ? size_t(count) : 0};
}

/// The start of a process; nothing for one that has ended. Threads have one too.
std::optional<uint64_t> startOf(pid_t pid)
{
    char buffer[1024];
    const std::string_view text = head(Path(pid, "stat"), buffer, sizeof buffer);
    // The second field is the program's name in brackets, with whatever brackets and spaces it has: what follows is found from its end.
    size_t at = text.rfind(')');
    if (at == text.npos || at + 2 >= text.size() || text[at + 2] == 'Z' || text[at + 2] == 'X')
        return std::nullopt;
    for (int field = 2; field < 22 && at != text.npos; ++field)
        at = text.find(' ', at + 1);
    uint64_t start;
    if (at == text.npos || std::from_chars(text.data() + at + 1, text.data() + text.size(), start).ec != std::errc())
        return std::nullopt;
    return start;
}

bool isThread(pid_t pid)
{
    char buffer[1024];
    const std::string_view text = head(Path(pid, "status"), buffer, sizeof buffer);
    const size_t at = text.find("\nTgid:\t");
    pid_t group = 0;
    if (at != text.npos)
        std::from_chars(text.data() + at + 7, text.data() + text.size(), group);
    return group != pid;
}

struct DirectoryTraits {
    using Value = DIR *;
    static Value empty() { return nullptr; }
    static void close(Value folder) { closedir(folder); }
};

/// The starts of the processes seen lately. The kernel gives a process's folder a new inode number whenever it makes one, so the same
/// number under the same id is the same process, and its start need not be read again.
class Starts {
public:
    /// Fills in the starts of what a walk found; what has ended keeps none.
    struct Seen {
        pid_t pid;
        uint64_t inode;
    };
    std::vector<Process> look(const std::vector<Seen> &seen)
    {
        std::lock_guard lock(lock_);
        std::unordered_map<pid_t, Known> now;
        std::vector<Process> found;
        now.reserve(seen.size());
        found.reserve(seen.size());
        for (const Seen &one : seen) {
            const auto before = known_.find(one.pid);
            std::optional<uint64_t> start;
            if (before != known_.end() && before->second.inode == one.inode)
                start = before->second.start;
            else
                start = startOf(one.pid);
            if (start) {
                now[one.pid] = {one.inode, *start};
                found.push_back({one.pid, *start});
            }
        }
        known_ = std::move(now);
        return found;
    }

private:
    struct Known {
        uint64_t inode, start;
    };
    std::mutex lock_;
    std::unordered_map<pid_t, Known> known_;
};

}  // namespace

std::optional<Process> processOf(const ProcessSerialNumber &number)
{
    const uint64_t serial = uint64_t(number.highLongOfPSN) << 32 | number.lowLongOfPSN;
    if (serial == kCurrentProcess)
        return current();
    if (serial >> kIDBits == 0 || pid_t(serial & ((1u << kIDBits) - 1)) == 0)
        return std::nullopt;
    return Process{pid_t(serial & ((1u << kIDBits) - 1)), (serial >> kIDBits) - 1};
}

Process current()
{
    static std::atomic<uint64_t> known{0};  // a serial number: the child of a fork has another id
    const pid_t self = getpid();
    uint64_t serial = known.load(std::memory_order_relaxed);
    if (pid_t(serial & ((1u << kIDBits) - 1)) != self) {
        serial = Process{self, startOf(self).value_or(0)}.serial();
        known.store(serial, std::memory_order_relaxed);
    }
    return {self, (serial >> kIDBits) - 1};
}

std::optional<Process> processWithID(pid_t pid)
{
    if (pid <= 0)
        return std::nullopt;
    const auto start = startOf(pid);
    return start && !isThread(pid) ? std::optional(Process{pid, *start}) : std::nullopt;
}

bool isAlive(const Process &process) { return startOf(process.pid) == process.start; }

std::string executableLink(pid_t pid)
{
    char text[PATH_MAX];
    const ssize_t count = readlink(Path(pid, "exe").get(), text, sizeof text);
    return count > 0 && size_t(count) < sizeof text ? std::string(text, size_t(count)) : "";
}

std::vector<Process> all()
{
    static auto &starts = *new Starts;
    const Handle<DirectoryTraits> folder(opendir("/proc"));
    std::vector<Starts::Seen> seen;
    char text[PATH_MAX];
    while (const dirent *entry = folder ? readdir(folder.get()) : nullptr) {
        pid_t pid = 0;
        const char *const end = entry->d_name + std::strlen(entry->d_name);
        if (std::from_chars(entry->d_name, end, pid).ptr == end && readlink(Path(pid, "exe").get(), text, sizeof text) > 0)
            seen.push_back({pid, entry->d_ino});
    }
    std::vector<Process> found = starts.look(seen);
    std::sort(found.begin(), found.end(), [](const Process &a, const Process &b) { return a.serial() < b.serial(); });
    return found;
}

}  // namespace tarvik::processes
