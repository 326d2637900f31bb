#include "BackgroundRun.h"
#include "Command.h"
#include "Streams.h"

#include <Tarvik/Tarvik.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/Pool.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <thread>

/// Shows each piece of output as it comes.
@interface LiveTail : NSObject
@end

@implementation LiveTail

- (BOOL)commandTool:(CommandTool *)tool readStandardOutputData:(NSData *)piece
{
    (void)tool;
    fwrite([piece bytes], 1, [piece length], stdout);
    return fflush(stdout) == 0;
}

@end

namespace {

/// Ends the tool when we are asked to end (it has a session of its own, a terminal's Ctrl-C does not reach
/// it), and when its time is up.
class Overseer {
public:
    Overseer(CommandTool *tool, std::optional<int64_t> seconds)
    {
        sigemptyset(&signals_);
        for (const int signal : {SIGHUP, SIGINT, SIGTERM, kStop})
            sigaddset(&signals_, signal);
        pthread_sigmask(SIG_BLOCK, &signals_, nullptr);
        thread_ = std::thread(&Overseer::watch, this, tool, seconds);
    }
    ~Overseer()
    {
        pthread_kill(thread_.native_handle(), kStop);
        thread_.join();
    }
    /// Why the tool was ended early; null when it was not.
    const char *reason() const { return reason_; }

private:
    static constexpr int kStop = SIGUSR1;

    void watch(CommandTool *tool, std::optional<int64_t> seconds)
    {
        const timespec time{seconds.value_or(0), 0};
        int signal;
        do
            signal = seconds ? sigtimedwait(&signals_, nullptr, &time) : sigwaitinfo(&signals_, nullptr);
        while (signal < 0 && errno == EINTR);
        if (signal == kStop)
            return;
        reason_ = signal < 0 ? "time is up" : "interrupted";
        GSRegisterCurrentThread();
        {
            tarvik::Pool pool;
            [tool kill];
        }
        GSUnregisterCurrentThread();
    }

    sigset_t signals_;
    std::atomic<const char *> reason_ = nullptr;
    std::thread thread_;
};

void writeData(NSData *data, FILE *to, const char *name)
{
    const std::string bytes = tarvik::bytes(data).value_or("");
    if (fwrite(bytes.data(), 1, bytes.size(), to) != bytes.size() || fflush(to) != 0)
        throw systemFailure(name, errno);
}

int run(const Arguments &arguments)
{
    tarvik::Pool pool;
    const auto &words = arguments.rest(1);
    CommandTool *tool = [CommandTool commandToolWithPath:tarvik::nsstring(words[0])];
    NSMutableArray *toolArguments = [NSMutableArray array];
    for (size_t i = 1; i < words.size(); ++i) {
        NSString *argument = tarvik::nsstring(words[i]);
        if (!argument)
            throw Failure("'" + words[i] + "': an argument must be UTF-8");
        [toolArguments addObject:argument];
    }
    [tool setArguments:toolArguments];
    if (const auto input = arguments.value("input"))
        [tool setInputData:tarvik::nsdata(readInput(*input))];
    const bool live = arguments.has("live");
    [tool setReadStandardOutput:YES];
    [tool setReadStandardError:!live];  // live: the tool's errors go where ours go

    const auto begin = std::chrono::steady_clock::now();
    const char *early;
    {
        Overseer overseer(tool, arguments.number("timeout", 1, 1 << 30));
        if (live)
            runInBackground(tool, [[[LiveTail alloc] init] autorelease]);
        else
            [tool run:NO];
        early = overseer.reason();
    }
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
    if (!live) {
        writeData([tool standardErrorData], stderr, "standard error");
        writeData([tool standardOutputData], stdout, "standard output");
    }
    if (arguments.has("summary"))
        std::fprintf(stderr, "%s: %lu bytes of output, %lu of errors, %.3f s\n", words[0].c_str(),
                     (unsigned long)[[tool standardOutputData] length],
                     (unsigned long)[[tool standardErrorData] length], taken.count());
    if (early)
        throw Failure(words[0] + ": ended early: " + early);
    if (![tool succeeded])
        throw Failure(
            words[0] +
            ": could not be run, or did not take its input (is it an executable file? the system log "
            "tells more)");
    return kSuccess;
}

const Registration registration({
    .name = "run",
    .summary = "run a tool and capture what it writes",
    .usage = "[OPTION]... TOOL [ARGUMENT]...",
    .details = "The tool gets its arguments as they are: no shell sees them. Its output and errors are "
               "gathered and written\n"
               "when it has ended; with --live the tool runs in the background and its output is written as "
               "it comes.\n"
               "A run succeeds when the tool was launched and has ended, whatever its own exit status.\n\n"
               "Examples:\n"
               "  tarvik run --summary --input=names.txt sort -r\n"
               "  tarvik run --live --timeout=60 /usr/bin/make all",
    .options = {{'i', "input", "FILE",
                 "what the tool reads on standard input (-: ours); our own as it is otherwise"},
                {'l', "live", nullptr, "in the background, with a live tail of the output"},
                {'t', "timeout", "SECONDS", "end the tool, and its children, after that time"},
                {'s', "summary", nullptr, "say at the end how much was written and how long it took"}},
    .run = run,
    .optionsEndAtFirstWord = true,
});

}  // namespace
