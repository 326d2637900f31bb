/// \file
/// The processes of this machine, read from /proc.
///
/// A serial number is the 64-bit number  start << 22 | process id  where start is the moment of the process's start in clock ticks since
/// the machine's, plus one. 22 bits hold every process id of this kernel, 42 bits 1393 years of ticks. A process id is given again
/// only after all others: never twice within a tick.
#pragma once
#include "platform/Processes/private/Executables.h"

#include <Carbon/Processes.h>

#include <memory>
#include <optional>
#include <vector>

namespace tarvik::processes {

struct Process {
    pid_t pid;
    uint64_t start;  ///< ticks since the machine's start

    uint64_t serial() const { return (start + 1) << 22 | uint32_t(pid); }
    ProcessSerialNumber number() const { return {UInt32(serial() >> 32), UInt32(serial())}; }
};
/// What a number says, kCurrentProcess among them; nothing for numbers that no process can have. The process need not live.
std::optional<Process> processOf(const ProcessSerialNumber &number);

/// The process of that id, if there is one that lives.
std::optional<Process> processWithID(pid_t pid);
bool isAlive(const Process &process);
Process current();

/// A process and what it executes.
struct Running {
    Process process;
    std::shared_ptr<const Executable> executable;
    bool isElsewhere;  ///< its paths may be another mount namespace's
};

/// What a living process executes; nothing for one that has ended or whose executable may not be read.
std::optional<Running> look(const Process &process);
/// All processes whose executable can be read, in the order of their starts.
std::vector<Running> all();

/// The process that started it, if that lives; init for one whose starter has ended.
std::optional<Process> parentOf(const Process &process);

/// What this thread's walk has just come to, if it is that process: read a moment ago, and not read again.
std::optional<Running> justMet(const Process &process);

/// A reference to the item that stands for the process. fnfErr: it has been deleted, or can't be reached from here.
OSErr locate(const Running &running, FSRef *ref);

}  // namespace tarvik::processes
