#include "platform/Processes/private/Processes.h"

#include <algorithm>
#include <chrono>
#include <new>

using namespace tarvik::processes;

namespace {

using Clock = std::chrono::steady_clock;

/// The processes that there were when a walk began: /proc is read once for the whole walk, not once for each step.
struct Walk {
    std::vector<Process> processes;
    Clock::time_point began;
};

// A number that was kept for longer than that begins a new walk at its place.
constexpr auto kLongestStep = std::chrono::seconds(1);

}  // namespace

OSErr GetNextProcess(ProcessSerialNumber *pPSN)
try {
    if (!pPSN)
        return paramErr;
    thread_local Walk walk;
    const auto now = Clock::now();
    const uint64_t before = uint64_t(pPSN->highLongOfPSN) << 32 | pPSN->lowLongOfPSN;
    if (before == kNoProcess || walk.processes.empty() || now - walk.began > kLongestStep)
        walk.processes = all();
    walk.began = now;
    const auto next = std::upper_bound(walk.processes.begin(), walk.processes.end(), before,
                                       [](uint64_t serial, const Process &process) { return serial < process.serial(); });
    if (next == walk.processes.end()) {
        walk.processes = {};
        *pPSN = {0, kNoProcess};
        return procNotFound;
    }
    *pPSN = next->number();
    return noErr;
} catch (const std::bad_alloc &) {
    return memFullErr;
}
