#include "Programs.h"

#include "Failure.h"

#include <Tarvik/support/Handle.h>
#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <optional>
#include <platform/Foundation/ChildProcess.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace diskimages {

std::string findProgram(std::string_view name)
{
    const char *path = std::getenv("PATH");
    const std::string folders =
        std::string(path ? path : "") + ":/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin";
    for (std::string_view left = folders; !left.empty();) {
        const size_t end = std::min(left.find(':'), left.size());
        const std::string folder(left.substr(0, end));
        left.remove_prefix(std::min(end + 1, left.size()));
        const std::string candidate = folder + '/' + std::string(name);
        struct stat status;
        if (folder.starts_with('/') && stat(candidate.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
            access(candidate.c_str(), X_OK) == 0)
            return candidate;
    }
    return {};
}

namespace {

/// Where a program's output is read, and where it writes.
struct Channel {
    tarvik::FileDescriptor from, to;
};

/// A terminal of the usual width. Nothing when there is none to be had.
std::optional<Channel> openTerminal()
{
    tarvik::FileDescriptor ours(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
    char name[64];
    if (!ours || grantpt(ours.get()) != 0 || unlockpt(ours.get()) != 0 ||
        ptsname_r(ours.get(), name, sizeof name) != 0)
        return std::nullopt;
    tarvik::FileDescriptor theirs(open(name, O_RDWR | O_NOCTTY | O_CLOEXEC));
    const winsize size{.ws_row = 24, .ws_col = 80, .ws_xpixel = 0, .ws_ypixel = 0};
    if (!theirs || ioctl(theirs.get(), TIOCSWINSZ, &size) != 0)
        return std::nullopt;
    return Channel{std::move(ours), std::move(theirs)};
}

Channel openPipe(const std::string &program)
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        throw systemFailure(program);
    return {tarvik::FileDescriptor(ends[0]), tarvik::FileDescriptor(ends[1])};
}

}  // namespace

int runProgram(const std::string &path, const std::vector<std::string> &arguments,
               const std::function<void(std::string_view)> &output, bool onTerminal)
{
    std::optional<Channel> channel = onTerminal ? openTerminal() : std::nullopt;
    if (!channel)
        channel = openPipe(path);
    const tarvik::FileDescriptor from = std::move(channel->from), null(open("/dev/null", O_RDWR | O_CLOEXEC));
    tarvik::FileDescriptor to = std::move(channel->to);
    tarvik::platform::ChildProcess child;
    tarvik::platform::SpawnPlan plan{.path = path, .arguments = arguments, .ownSession = false};
    plan.streams[0] = null.get();
    plan.streams[1] = to.get();
    if (const int error = child.spawn(plan))
        throw systemFailure(path, error);
    to.reset();
    char buffer[4096];
    for (ssize_t got; (got = read(from.get(), buffer, sizeof buffer)) != 0;) {
        if (got < 0 && errno != EINTR)
            break;
        if (got > 0 && output)
            output({buffer, size_t(got)});
    }
    const auto ended = child.wait();
    return ended.bySignal ? 128 + ended.status : ended.status;
}

}  // namespace diskimages
