// Running tools, beside posix_spawn and a bare read loop; and the question which images are mounted where.
#import <Foundation/Foundation.h>
#include <Tarvik/support/Owned.h>
#import <Tarvik/support/Pool.h>
#include <Tarvik/system/CommandTool.h>
#include <Tarvik/system/DiskImage.h>
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

pid_t spawn(std::vector<const char *> words, int output = -1)
{
    words.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (output >= 0)
        posix_spawn_file_actions_adddup2(&actions, output, 1);
    pid_t child = -1;
    posix_spawn(&child, words[0], &actions, nullptr, const_cast<char **>(words.data()), environ);
    posix_spawn_file_actions_destroy(&actions);
    return child;
}

bool run(const std::vector<const char *> &words, int output = -1)
{
    const pid_t child = spawn(words, output);
    int status = -1;
    return child > 0 && waitpid(child, &status, 0) == child && status == 0;
}

bool runTool(NSString *path)
{
    tarvik::Pool pool;
    return [[CommandTool commandToolWithPath:path] run:NO];
}

using Heap = tarvik::Owned<void, std::free>;

/// Memory in use, as a host with much data has it.
Heap touched(size_t size)
{
    Heap heap(std::malloc(size));
    std::memset(heap.get(), 1, size);
    benchmark::DoNotOptimize(heap.get());
    return heap;
}

void runs(benchmark::State &state, size_t heapSize, bool (*once)())
{
    const Heap heap = touched(heapSize);
    for (auto _ : state)
        if (!once())
            return state.SkipWithError("/bin/true can't be run");
}

bool toolOnce() { return runTool(@"/bin/true"); }
bool spawnOnce() { return run({"/bin/true"}); }
constexpr size_t kSmall = 1 << 12, kBig = 1 << 30;
BENCHMARK_CAPTURE(runs, a, kSmall, toolOnce)->Name("command/true:tarvik")->UseRealTime();
BENCHMARK_CAPTURE(runs, b, kSmall, spawnOnce)->Name("command/true:posix_spawn")->UseRealTime();
BENCHMARK_CAPTURE(runs, c, kBig, toolOnce)->Name("command/true, 1GiB heap:tarvik")->UseRealTime();
BENCHMARK_CAPTURE(runs, d, kBig, spawnOnce)->Name("command/true, 1GiB heap:posix_spawn")->UseRealTime();

constexpr size_t kOutput = 1 << 30;

void readTool(benchmark::State &state)
{
    for (auto _ : state) {
        tarvik::Pool pool;
        CommandTool *tool = [CommandTool commandToolWithPath:@"/usr/bin/head"];
        [tool setArguments:[NSArray arrayWithObjects:@"-c", @"1073741824", @"/dev/zero", nil]];
        [tool setReadStandardOutput:YES];
        if (![tool run:NO] || [[tool standardOutputData] length] != kOutput)
            return state.SkipWithError("short output");
    }
    state.SetBytesProcessed(int64_t(kOutput) * state.iterations());
}
BENCHMARK(readTool)->Name("command/read 1GiB:tarvik")->UseRealTime();

void readLoop(benchmark::State &state)
{
    constexpr size_t kPiece = 1 << 16;
    for (auto _ : state) {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0)
            return state.SkipWithError("no pipe");
        const pid_t child = spawn({"/usr/bin/head", "-c", "1073741824", "/dev/zero"}, ends[1]);
        close(ends[1]);
        Heap buffer;
        size_t length = 0, room = 0;
        for (ssize_t got = 1; got > 0; length += size_t(got)) {
            if (room - length < kPiece) {
                room = std::max(2 * room, 2 * kPiece);
                buffer.reset(std::realloc(buffer.release(), room));
            }
            got = read(ends[0], static_cast<char *>(buffer.get()) + length, kPiece);
        }
        close(ends[0]);
        waitpid(child, nullptr, 0);
        if (length != kOutput)
            return state.SkipWithError("short output");
    }
    state.SetBytesProcessed(int64_t(kOutput) * state.iterations());
}
BENCHMARK(readLoop)->Name("command/read 1GiB:read loop")->UseRealTime();

/// Fifty mounted images, for as long as the process lives.
class MountedImages {
public:
    static constexpr int kCount = 50;
    static const MountedImages &get()
    {
        static const MountedImages images;
        return images;
    }
    bool complete() const { return complete_; }

private:
    MountedImages()
    {
        tarvik::Pool pool;
        std::filesystem::create_directories(folder_ / "source");
        complete_ = true;
        for (int i = 0; i < kCount && complete_; ++i) {
            DiskImage *image = [DiskImage diskImageWithFilepath:path(i)];
            complete_ =
                [image createFromDirectory:[NSString stringWithUTF8String:(folder_ / "source").c_str()]] &&
                [image mount];
        }
    }
    ~MountedImages()
    {
        tarvik::Pool pool;
        for (int i = 0; i < kCount; ++i)
            [[DiskImage diskImageWithFilepath:path(i)] unmount];
        std::error_code failed;
        std::filesystem::remove_all(folder_, failed);
    }
    NSString *path(int i) const
    {
        return [NSString stringWithFormat:@"%s/tarvik-bench-%d-%d.img", folder_.c_str(), getpid(), i];
    }

    std::filesystem::path folder_ = std::filesystem::canonical(std::filesystem::temp_directory_path()) /
                                    ("tarvik-bench-" + std::to_string(getpid()));
    bool complete_ = false;
};

void mountingVolumes(benchmark::State &state)
{
    if (!MountedImages::get().complete())
        return state.SkipWithError("images can't be mounted here");
    for (auto _ : state) {
        tarvik::Pool pool;
        if ([[DiskImage mountingVolumes] count] < MountedImages::kCount)
            return state.SkipWithError("mounts are missing");
    }
}
BENCHMARK(mountingVolumes)->Name("image/50 mounted:tarvik")->UseRealTime();

// The system's own lister of loop devices knows half of it: no mount points, no FUSE.
void losetup(benchmark::State &state)
{
    if (!MountedImages::get().complete())
        return state.SkipWithError("images can't be mounted here");
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    for (auto _ : state)
        if (!run({"/usr/sbin/losetup", "--list", "--json"}, nowhere))
            return state.SkipWithError("losetup can't be run");
    close(nowhere);
}
BENCHMARK(losetup)->Name("image/50 mounted:losetup")->UseRealTime();

}  // namespace
