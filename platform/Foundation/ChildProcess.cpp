#include "ChildProcess.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <thread>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tarvik::platform {

namespace {

std::vector<char *> pointers(const std::vector<std::string> &texts, const std::string *first = nullptr)
{
    std::vector<char *> out;
    out.reserve(texts.size() + 2);
    if (first)
        out.push_back(const_cast<char *>(first->c_str()));
    for (const std::string &text : texts)
        out.push_back(const_cast<char *>(text.c_str()));
    out.push_back(nullptr);
    return out;
}

/// posix_spawn's actions and attributes, destroyed with the scope.
struct Actions {
    posix_spawn_file_actions_t files;
    posix_spawnattr_t attributes;
    std::vector<int> raised;  // our copies of descriptors that stood in the way

    Actions()
    {
        posix_spawn_file_actions_init(&files);
        posix_spawnattr_init(&attributes);
    }
    ~Actions()
    {
        for (int descriptor : raised)
            close(descriptor);
        posix_spawnattr_destroy(&attributes);
        posix_spawn_file_actions_destroy(&files);
    }
    Actions(const Actions &) = delete;
    Actions &operator=(const Actions &) = delete;
};

int describe(const SpawnPlan &plan, Actions &actions)
{
    short flags = POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK;
    if (plan.ownSession || !plan.terminal.empty())
        flags |= POSIX_SPAWN_SETSID;
    sigset_t all, none;
    sigfillset(&all);
    sigemptyset(&none);
    posix_spawnattr_setflags(&actions.attributes, flags);
    posix_spawnattr_setsigdefault(&actions.attributes, &all);
    posix_spawnattr_setsigmask(&actions.attributes, &none);

    if (!plan.folder.empty())
        if (int failed = posix_spawn_file_actions_addchdir_np(&actions.files, plan.folder.c_str()))
            return failed;
    // The first terminal that a session's leader opens becomes its controlling one.
    if (!plan.terminal.empty())
        for (int stream = 0; stream < 3; ++stream)
            if (int failed = posix_spawn_file_actions_addopen(&actions.files, stream, plan.terminal.c_str(),
                                                              O_RDWR, 0))
                return failed;
    for (int stream = 0; stream < 3; ++stream) {
        int source = plan.streams[stream];
        if (source < 0)
            continue;
        // A host that closed its own 0, 1 or 2 gets them back as pipe ends: lift those out of the way of the
        // dup2 row.
        if (source < 3 && source != stream) {
            source = fcntl(source, F_DUPFD_CLOEXEC, 3);
            if (source < 0)
                return errno;
            actions.raised.push_back(source);
        }
        if (int failed = posix_spawn_file_actions_adddup2(&actions.files, source, stream))
            return failed;
    }
    return posix_spawn_file_actions_addclosefrom_np(&actions.files, 3);
}

int openProcess(pid_t pid)
{
    return static_cast<int>(syscall(SYS_pidfd_open, pid, 0));
}  // close-on-exec by itself

/// False once somebody else has collected the process.
bool uncollected(int descriptor)
{
    return descriptor < 0 || syscall(SYS_pidfd_send_signal, descriptor, 0, nullptr, 0) == 0 || errno != ESRCH;
}

constexpr auto kProcessDescriptor = static_cast<idtype_t>(3);  // P_PIDFD

}  // namespace

int ChildProcess::spawn(const SpawnPlan &plan)
{
    Actions actions;
    if (int failed = describe(plan, actions))
        return failed;
    std::vector<char *> arguments = pointers(plan.arguments, &plan.path);
    std::vector<char *> environment;
    if (plan.environment)
        environment = pointers(*plan.environment);
    pid_t pid = -1;
    if (int failed = posix_spawn(&pid, plan.path.c_str(), &actions.files, &actions.attributes,
                                 arguments.data(), plan.environment ? environment.data() : environ))
        return failed;
    pid_ = pid;
    group_ = plan.ownSession || !plan.terminal.empty();
    descriptor_ = openProcess(pid);
    return 0;
}

std::optional<ChildProcess::Exit> ChildProcess::collect(int options)
{
    if (exit_ || pid_ < 0)
        return exit_;
    siginfo_t info{};
    int answer;
    do {
        answer = descriptor_ >= 0
                     ? waitid(kProcessDescriptor, static_cast<id_t>(descriptor_), &info, WEXITED | options)
                     : waitid(P_PID, static_cast<id_t>(pid_), &info, WEXITED | options);
    } while (answer < 0 && errno == EINTR);
    if (answer < 0) {  // ECHILD: collected by somebody else; the descriptor still tells whether it has ended
        pollfd ended{descriptor_, POLLIN, 0};
        if (descriptor_ < 0 || ::poll(&ended, 1, 0) != 0)
            exit_ = Exit{-1, false, true};
    } else if (info.si_pid == pid_) {
        exit_ = Exit{info.si_status, info.si_code != CLD_EXITED, false};
    }
    return exit_;
}

std::optional<ChildProcess::Exit> ChildProcess::exit()
{
    std::lock_guard lock(mutex_);
    return collect(WNOHANG);
}

ChildProcess::Exit ChildProcess::wait()
{
    // Not under the lock: signal() must get through to a child that is being waited for.
    for (;;) {
        if (auto ended = exit())
            return *ended;
        if (descriptor_ >= 0) {
            pollfd ended{descriptor_, POLLIN, 0};
            ::poll(&ended, 1, -1);
        } else {
            siginfo_t info{};
            waitid(P_PID, static_cast<id_t>(pid_), &info, WEXITED | WNOWAIT);
        }
    }
}

bool ChildProcess::signal(int number)
{
    // Until the child is collected its number, and its group's, can name nobody else, not even when it has
    // ended: so those of its own children that outlive it are still reached.
    std::lock_guard lock(mutex_);
    if (pid_ < 0 || exit_ || !uncollected(descriptor_))
        return false;
    return ::kill(group_ ? -pid_ : pid_, number) == 0;
}

ChildProcess::~ChildProcess()
{
    if (pid_ > 0 && !exit()) {
        // Somebody must take the status of a child whose object went first, or it stays as a zombie until the
        // host ends.
        sigset_t all, before;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before);  // the host's signals are not for this thread
        std::thread([pid = pid_, descriptor = descriptor_] {
            siginfo_t info{};
            while ((descriptor >= 0
                        ? waitid(kProcessDescriptor, static_cast<id_t>(descriptor), &info, WEXITED)
                        : waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED)) < 0 &&
                   errno == EINTR) {
            }
            if (descriptor >= 0)
                close(descriptor);
        }).detach();
        pthread_sigmask(SIG_SETMASK, &before, nullptr);
        return;
    }
    if (descriptor_ >= 0)
        close(descriptor_);
}

}  // namespace tarvik::platform
