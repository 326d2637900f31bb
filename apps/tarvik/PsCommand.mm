#include "FileItems.h"
#include "ObjectiveC.h"
#include "Streams.h"

#import <Foundation/Foundation.h>
#import <Tarvik/Tarvik.h>
#import <Tarvik/support/CFOwned.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <vector>

namespace {

uint64_t serialOf(const ProcessSerialNumber &number)
{
    return uint64_t(number.highLongOfPSN) << 32 | number.lowLongOfPSN;
}

std::vector<ProcessSerialNumber> allProcesses()
{
    std::vector<ProcessSerialNumber> all;
    EnumerateAllProcess(
        [](const ProcessSerialNumber *number, void *context) -> Boolean {
            static_cast<std::vector<ProcessSerialNumber> *>(context)->push_back(*number);
            return true;
        },
        &all);
    return all;
}

std::vector<ProcessSerialNumber> processesOf(const std::string &path)
{
    const FSRef wanted = itemAt(path);
    std::vector<ProcessSerialNumber> found = allProcesses();
    std::erase_if(found, [&](const ProcessSerialNumber &number) {
        FSRef location;
        return GetProcessBundleLocation(&number, &location) != noErr ||
               FSCompareFSRefs(&location, &wanted) != noErr;
    });
    return found;
}

/// A process id, or the path of a bundle.
std::vector<ProcessSerialNumber> processesNamed(const std::string &word)
{
    int64_t pid = 0;
    const auto parsed = std::from_chars(word.data(), word.data() + word.size(), pid);
    if (parsed.ec != std::errc() || parsed.ptr != word.data() + word.size())
        return processesOf(word);
    ProcessSerialNumber number;
    if (pid <= INT32_MAX && GetProcessForPID(pid_t(pid), &number) == noErr)
        return {number};
    return {};
}

/// False for one that has ended meanwhile.
bool printProcess(const ProcessSerialNumber &number, uint64_t front, bool isLong)
{
    const tarvik::CFOwned<CFDictionaryRef> about(
        ProcessInformationCopyDictionary(&number, kProcessDictionaryIncludeAllInformationMask));
    if (!about)
        return false;
    NSDictionary *const facts = (NSDictionary *)about.get();
    const auto text = [&](NSString *key) {
        return [facts objectForKey:key] ? utf8Of([[facts objectForKey:key] description]) : std::string("-");
    };
    const std::string location =
        [facts objectForKey:@"BundlePath"] ? text(@"BundlePath") : text(@"CFBundleExecutable");
    char start[64];
    std::snprintf(start, sizeof start, "%7s %c ", text(@"pid").c_str(),
                  serialOf(number) == front ? '*' : ' ');
    std::string line = start;
    if (isLong) {
        std::snprintf(start, sizeof start, "%08X:%08X  ", number.highLongOfPSN, number.lowLongOfPSN);
        line += start + text(@"CFBundleIdentifier") + "  ";
    }
    std::string name = text(@"CFBundleName");
    name.resize(std::max<size_t>(name.size(), 20), ' ');
    writeOutput(line + name + "  " + location + "\n");
    return true;
}

void activate(const std::string &word)
{
    const std::vector<ProcessSerialNumber> found = processesNamed(word);
    if (found.empty())
        throw Failure(word + ": no process of that bundle or id is running ('tarvik ps' lists them)");
    switch (const OSErr error = SetFrontProcess(&found.front())) {
    case noErr: return;
    case connectionInvalid: throw Failure(word + ": no window manager can be asked (is DISPLAY set?)");
    case appIsDaemon: throw Failure(word + ": has no windows");
    default: throw Failure(word + ": can't be brought to the front (error " + std::to_string(error) + ")");
    }
}

int run(const Arguments &arguments)
{
    if (const auto word = arguments.value("activate")) {
        arguments.rest(0, 0);
        activate(*word);
        return kSuccess;
    }
    ProcessSerialNumber front;
    const OSErr frontError = GetFrontProcess(&front);
    std::vector<ProcessSerialNumber> shown;
    int status = kSuccess;
    if (arguments.has("front")) {
        arguments.rest(0, 0);
        if (frontError)
            throw Failure("no process is in front (is DISPLAY set, and does a window manager run?)");
        shown = {front};
    } else if (arguments.rest().empty()) {
        shown = allProcesses();
    } else {
        for (const std::string &word : arguments.rest()) {
            const std::vector<ProcessSerialNumber> found = processesNamed(word);
            if (found.empty()) {
                std::fprintf(stderr, "tarvik ps: %s: no process of that bundle or id is running\n",
                             word.c_str());
                status = kFailure;
            }
            shown.insert(shown.end(), found.begin(), found.end());
        }
    }
    const uint64_t inFront = frontError ? 0 : serialOf(front);
    for (const ProcessSerialNumber &number : shown)
        if (arguments.has("pids")) {
            pid_t pid = 0;
            if (GetProcessPID(&number, &pid) == noErr)
                writeOutput(std::to_string(pid) + "\n");
        } else {
            printProcess(number, inFront, arguments.has("long"));
        }
    return status;
}

const Registration registration({
    .name = "ps",
    .summary = "running processes by their bundles, and the one in front",
    .usage = "[OPTION]... [BUNDLE|PID]...",
    .details = "Prints the processes whose executable may be read, the longest running first: process id, * "
               "for the one in front, name, and the item\n"
               "that stands for it: the folder X.app that holds its executable, else the executable. With "
               "names, only the processes of those items;\n"
               "the exit status is 1 when one has none.\n\n"
               "Examples:\n"
               "  tarvik ps --long /usr/lib/GNUstep/Applications/Ink.app\n"
               "  tarvik ps --front\n"
               "  tarvik ps --activate=/usr/lib/GNUstep/Applications/Ink.app",
    .options = {{'f', "front", nullptr, "only the process in front"},
                {'a', "activate", "BUNDLE|PID", "bring its first process to the front"},
                {'l', "long", nullptr, "process numbers and bundle identifiers too"},
                {'p', "pids", nullptr, "only the process ids"}},
    .run = inPool(run),
});

}  // namespace
