/// \file
/// The processes of this machine, read from /proc.
///
/// A serial number is the 64-bit number  start << 22 | process id  where start is the moment of the process's start in clock ticks since
/// the machine's, plus one. 22 bits hold every process id of this kernel, 42 bits 1393 years of ticks. A process id is given again
/// only after all others: never twice within a tick.
#pragma once
#include <Carbon/Processes.h>

#include <optional>
#include <string>
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

/// What the process executes: the text of its link, " (deleted)" included; empty when there is none or it may not be read.
std::string executableLink(pid_t pid);

/// All processes whose executable can be read, in the order of their starts.
std::vector<Process> all();

}  // namespace tarvik::processes
