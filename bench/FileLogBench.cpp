// A line of the file log, beside a bare open, write and close of the same line.
#include <Tarvik/net/FileLog.h>
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <filesystem>

namespace {

/// The log's path, switched on and empty.
std::string freshLog()
{
    const std::filesystem::path path = Utils::GetLogFilename();
    std::filesystem::create_directories(path.parent_path());
    std::filesystem::remove(path);
    return path;
}

void line(benchmark::State &state)
{
    freshLog();
    const std::string message = "CommLib,proxy required for destination URL";
    for (auto _ : state)
        Utils::LogMessage(message, 7);
}
BENCHMARK(line)->Name("filelog/line:tarvik")->UseRealTime();

void bareLine(benchmark::State &state)
{
    const std::string path = freshLog();
    const std::string text = "Sun Nov 22 22:37:03 2026  Message: CommLib,proxy "
                             "required for destination URL ErrorCode: 7\n";
    for (auto _ : state) {
        const int file = open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666);
        benchmark::DoNotOptimize(write(file, text.data(), text.size()));
        close(file);
    }
}
BENCHMARK(bareLine)->Name("filelog/line:write")->UseRealTime();

}  // namespace
