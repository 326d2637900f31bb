#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace tarvik::platform {

/// What a child is started with.
struct SpawnPlan {
    std::string path;                    ///< the program's file; no search
    std::vector<std::string> arguments;  ///< without the program's own name, which is `path`
    std::optional<std::vector<std::string>> environment =
        {};                         ///< "NAME=value"; none: the caller's, as it is now
    std::string folder = {};        ///< working folder; empty: the caller's
    std::string terminal = {};      ///< a pseudo-terminal's path: the child's controlling one, on 0, 1 and 2
    int streams[3] = {-1, -1, -1};  ///< descriptors for 0, 1 and 2; -1: the caller's own
    bool ownSession = true;         ///< a session and process group of its own
};

/// One child process, from its start to the collection of its status.
///
/// The child is started as vfork does it (the caller's memory is neither copied nor mapped anew, so a big
/// heap costs nothing), with every signal at its default, no signal blocked, and no descriptor but 0, 1
/// and 2. It is waited for by itself, through a process descriptor: nobody else's children are touched,
/// SIGCHLD plays no part, and a host that collects this child behind our back (waitpid(-1), SIGCHLD ignored)
/// loses its status, not its end.
///
/// Every member may be called from any thread. A child that still runs when its object goes is collected when
/// it ends.
class ChildProcess {
public:
    struct Exit {
        int status = 0;         ///< exit status, or the signal's number
        bool bySignal = false;  ///< ended by a signal
        bool lost = false;      ///< somebody else collected it: status is -1
    };

    ChildProcess() = default;
    ~ChildProcess();
    ChildProcess(const ChildProcess &) = delete;
    ChildProcess &operator=(const ChildProcess &) = delete;

    /// Starts the child. 0, or the errno of what failed (of exec too: ENOENT, EACCES, ENOEXEC, ...).
    int spawn(const SpawnPlan &plan);

    pid_t pid() const { return pid_; }

    /// Readable, for poll(2) and run loops, once the child has ended; -1 where the kernel has none.
    int descriptor() const { return descriptor_; }

    /// The child's end, if it has come; never blocks.
    std::optional<Exit> exit();

    /// Waits for the child's end.
    Exit wait();

    /// Sends a signal to the child's process group (to the child, when it has none). False once the child has
    /// been collected: its number may name somebody else then.
    bool signal(int number);

private:
    std::optional<Exit> collect(int options);  // mutex_ held

    std::mutex mutex_;
    std::optional<Exit> exit_;
    pid_t pid_ = -1;
    int descriptor_ = -1;
    bool group_ = false;
};

}  // namespace tarvik::platform
