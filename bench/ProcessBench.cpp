// The process list of a desktop with 200 more processes, of 100 programs, beside a bare walk of /proc that reads the same links.
#include <Tarvik/Tarvik.h>
#include <benchmark/benchmark.h>
#include <tests/support/TemporaryFolder.h>

#include <dirent.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <climits>
#include <filesystem>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

/// Sleepers, ended with the program.
class Desktop {
public:
    Desktop()
    {
        fs::copy("/bin/sleep", folder_ / "0");
        for (int i = 1; i < 100; ++i)
            fs::create_hard_link(folder_ / "0", folder_ / std::to_string(i));
        for (int i = 0; i < 200; ++i) {
            const std::string program = folder_ / std::to_string(i % 100);
            char *words[] = {const_cast<char *>("sleep"), const_cast<char *>("600"), nullptr};
            pid_t pid;
            if (posix_spawn(&pid, program.c_str(), nullptr, nullptr, words, environ) == 0)
                sleepers_.push_back(pid);
        }
    }
    ~Desktop()
    {
        for (const pid_t pid : sleepers_)
            kill(pid, SIGKILL), waitpid(pid, nullptr, 0);
    }

private:
    TemporaryFolder folder_;
    std::vector<pid_t> sleepers_;
};
void makeDesktop() { static const Desktop desktop; }

void listByTarvik(benchmark::State &state)
{
    makeDesktop();
    for (auto _ : state) {
        CFMutableDataRef list = FSCopyAllProcess();
        if (!list || CFDataGetLength(list) < CFIndex(200 * sizeof(FSRef)))
            state.SkipWithError("processes are missing");
        CFRelease(list);
    }
}
BENCHMARK(listByTarvik)->Name("processes/list with locations:tarvik")->Unit(benchmark::kMicrosecond);

void listBare(benchmark::State &state)
{
    makeDesktop();
    for (auto _ : state) {
        DIR *processes = opendir("/proc");
        size_t count = 0;
        while (const dirent *entry = readdir(processes)) {
            if (entry->d_name[0] < '0' || entry->d_name[0] > '9')
                continue;
            char path[300], text[PATH_MAX];
            std::snprintf(path, sizeof path, "%s/exe", entry->d_name);
            count += readlinkat(dirfd(processes), path, text, sizeof text) > 0;
        }
        closedir(processes);
        if (count < 200)
            state.SkipWithError("processes are missing");
    }
}
BENCHMARK(listBare)->Name("processes/list with locations:bare walk")->Unit(benchmark::kMicrosecond);

void findByTarvik(benchmark::State &state)
{
    makeDesktop();
    FSRef self;
    FSGetCurrentProcess(&self);
    for (auto _ : state)
        if (!FSIsRunningProcess(&self))
            state.SkipWithError("not found");
}
BENCHMARK(findByTarvik)->Name("processes/find one by its bundle:tarvik")->Unit(benchmark::kMicrosecond);
BENCHMARK(listBare)->Name("processes/find one by its bundle:bare walk")->Unit(benchmark::kMicrosecond);

}  // namespace
