#include "platform/Processes/private/Processes.h"

#include <algorithm>
#include <chrono>
#include <new>

using namespace tarvik::processes;

namespace {

using Clock = std::chrono::steady_clock;

/// The processes that there were when a walk began: /proc is read once for the whole walk, not once for each step.
struct Walk {
    std::vector<Running> processes;
    Clock::time_point read;
    uint64_t at = kNoProcess;
};
thread_local Walk walk;

constexpr auto kWhole = std::chrono::seconds(1);  // a walk that takes longer reads /proc anew
constexpr auto kMoment = std::chrono::milliseconds(
    100);  // how long a link that was read for the walk is good for the process it stands at

uint64_t serialOf(const ProcessSerialNumber &number)
{
    return uint64_t(number.highLongOfPSN) << 32 | number.lowLongOfPSN;
}

auto after(uint64_t serial)
{
    return std::upper_bound(
        walk.processes.begin(), walk.processes.end(), serial,
        [](uint64_t before, const Running &running) { return before < running.process.serial(); });
}

}  // namespace

std::optional<Running> tarvik::processes::justMet(const Process &process)
{
    const uint64_t serial = process.serial();
    if (walk.at != serial || Clock::now() - walk.read > kMoment)
        return std::nullopt;
    const auto next = after(serial);
    return next == walk.processes.begin() || std::prev(next)->process.serial() != serial
               ? std::nullopt
               : std::optional(*std::prev(next));
}

OSErr GetNextProcess(ProcessSerialNumber *pPSN)
try {
    if (!pPSN)
        return paramErr;
    const uint64_t before = serialOf(*pPSN);
    const auto now = Clock::now();
    if (before == kNoProcess || walk.processes.empty() || now - walk.read > kWhole) {
        walk.processes = all();
        walk.read = now;
    }
    const auto next = after(before);
    if (next == walk.processes.end()) {
        walk = {};
        *pPSN = {0, kNoProcess};
        return procNotFound;
    }
    walk.at = next->process.serial();
    *pPSN = next->process.number();
    return noErr;
} catch (const std::bad_alloc &) {
    return memFullErr;
}
