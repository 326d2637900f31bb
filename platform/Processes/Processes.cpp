#include "platform/Processes/private/Processes.h"

#include "platform/Files/private/Listing.h"

#include <Tarvik/support/Handle.h>
#include <fcntl.h>
#include <sys/stat.h>
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

/// A field of /proc/N/stat, numbered as in proc(5); nothing for a process that has ended. Threads have them too.
std::optional<uint64_t> statField(pid_t pid, int wanted)
{
    char buffer[1024];
    const std::string_view text = head(Path(pid, "stat"), buffer, sizeof buffer);
    // The second field is the program's name in brackets, with whatever brackets and spaces it has: what follows is found from its end.
    size_t at = text.rfind(')');
    if (at == text.npos || at + 2 >= text.size() || text[at + 2] == 'Z' || text[at + 2] == 'X')
        return std::nullopt;
    for (int field = 2; field < wanted && at != text.npos; ++field)
        at = text.find(' ', at + 1);
    uint64_t value;
    if (at == text.npos ||
        std::from_chars(text.data() + at + 1, text.data() + text.size(), value).ec != std::errc())
        return std::nullopt;
    return value;
}

std::optional<uint64_t> startOf(pid_t pid) { return statField(pid, 22); }

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

/// The text of a link; empty when it can't be read.
std::string_view linkText(int folder, const char *path, char (&buffer)[PATH_MAX])
{
    const ssize_t count = readlinkat(folder, path, buffer, sizeof buffer);
    return {buffer, count > 0 && size_t(count) < sizeof buffer ? size_t(count) : 0};
}

/// Whether a process may see other files than this one by the same paths.
bool isElsewhere(pid_t pid)
{
    char own[PATH_MAX], other[PATH_MAX];
    return linkText(AT_FDCWD, "/proc/self/ns/mnt", own) !=
           linkText(AT_FDCWD, Path(pid, "ns/mnt").get(), other);
}

/// The processes as the latest walk found them.
class Table {
public:
    std::vector<Running> walk()
    {
        std::lock_guard lock(lock_);
        const FileDescriptor folder(open("/proc", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        std::vector<Known> now;
        now.reserve(known_.size() + 16);
        auto before = known_.begin();
        files::Listing(folder.get()).each([&](const files::Entry &entry) {
            pid_t pid = 0;
            const char *const end = entry.name + std::strlen(entry.name);
            if (std::from_chars(entry.name, end, pid).ptr != end || pid <= 0)
                return;
            char path[32], buffer[PATH_MAX];
            std::memcpy(std::copy(static_cast<const char *>(entry.name), end, path), "/exe", 5);
            const std::string_view link = linkText(folder.get(), path, buffer);
            if (link.empty())
                return;
            while (before != known_.end() && before->running.process.pid < pid)
                ++before;
            if (before != known_.end() && before->running.process.pid == pid &&
                before->inode == entry.inode && before->running.executable->link() == link)
                now.push_back(std::move(*before++));
            else if (const auto start = startOf(pid))
                now.push_back({entry.inode, {{pid, *start}, executableOf(link), isElsewhere(pid)}});
        });
        // The kernel lists them in the order of their ids, which the search above counts on for its speed only.
        known_ = std::move(now);
        std::vector<Running> found;
        found.reserve(known_.size());
        for (const Known &one : known_)
            found.push_back(one.running);
        return found;
    }

private:
    /// The kernel gives a process's folder a new inode number whenever it makes one. So the same number under the same id is the
    /// same process, and while it executes the same file, nothing else of it has to be read again.
    struct Known {
        uint64_t inode;
        Running running;
    };
    std::mutex lock_;
    std::vector<Known> known_;
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

std::optional<Running> look(const Process &process)
{
    char buffer[PATH_MAX];
    const std::string_view link = linkText(AT_FDCWD, Path(process.pid, "exe").get(), buffer);
    // The id is this process's while the process lives: asked in this order, the link was its own.
    if (link.empty() || !isAlive(process))
        return std::nullopt;
    return Running{process, executableOf(link), isElsewhere(process.pid)};
}

std::vector<Running> all()
{
    static auto &table = *new Table;
    std::vector<Running> found = table.walk();
    std::sort(found.begin(), found.end(),
              [](const Running &a, const Running &b) { return a.process.serial() < b.process.serial(); });
    return found;
}

std::optional<Process> parentOf(const Process &process)
{
    const auto pid = statField(process.pid, 4);
    const auto start = pid && isAlive(process) ? startOf(pid_t(*pid)) : std::nullopt;
    return start ? std::optional(Process{pid_t(*pid), *start}) : std::nullopt;
}

OSErr locate(const Running &running, FSRef *ref)
{
    const Executable &executable = *running.executable;
    if (running.isElsewhere || (executable.maybeDeleted() && !executable.isInApplication())) {
        // Is what stands at that path here what the process executes?
        struct stat here, there;
        if (stat(executable.link().c_str(), &here) != 0 ||
            stat(Path(running.process.pid, "exe").get(), &there) != 0 || here.st_dev != there.st_dev ||
            here.st_ino != there.st_ino)
            return fnfErr;
    }
    return executable.reference(ref);
}

}  // namespace tarvik::processes
