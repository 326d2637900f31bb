// References beside one system call each, and a copy beside cp.
#include <Carbon/Files.h>
#include <Tarvik/system/FileForks.h>
#include <Tarvik/system/FileReferences.h>
#include <benchmark/benchmark.h>

#include "tests/support/Program.h"
#include "tests/support/TemporaryFolder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

namespace {

/// A folder of files, as an application meets them.
struct Files {
    Files()
    {
        for (int i = 0; i < 1000; ++i)
            paths.push_back(folder.write("file" + std::to_string(i), ""));
    }
    TemporaryFolder folder;
    std::vector<std::string> paths;
};

const Files &files()
{
    static const Files &made = *new Files;  // gone with the private temporary folder
    return made;
}

const UInt8 *bytes(const std::string &path) { return reinterpret_cast<const UInt8 *>(path.c_str()); }

template <class Body>
void forEach(benchmark::State &state, Body &&body)
{
    size_t i = 0;
    files();
    for (auto _ : state)
        body(i = (i + 1) % files().paths.size());
}

void makeReference(benchmark::State &state)
{
    FSRef ref;
    forEach(state, [&](size_t i) {
        benchmark::DoNotOptimize(FSPathMakeRef(bytes(files().paths[i]), &ref, nullptr));
    });
}
BENCHMARK(makeReference)->Name("files/reference of a path:tarvik");

void openAndClose(benchmark::State &state)
{
    forEach(state, [&](size_t i) { close(open(files().paths[i].c_str(), O_RDONLY | O_CLOEXEC)); });
}
BENCHMARK(openAndClose)->Name("files/reference of a path:open+close");

void pathOfReference(benchmark::State &state)
{
    std::vector<FSRef> refs(files().paths.size());
    for (size_t i = 0; i < refs.size(); ++i)
        FSPathMakeRef(bytes(files().paths[i]), &refs[i], nullptr);
    UInt8 path[4096];
    forEach(state, [&](size_t i) { benchmark::DoNotOptimize(FSRefMakePath(&refs[i], path, sizeof path)); });
}
BENCHMARK(pathOfReference)->Name("files/path of a reference:tarvik");

void statOnce(benchmark::State &state)
{
    struct stat status;
    forEach(state, [&](size_t i) { benchmark::DoNotOptimize(stat(files().paths[i].c_str(), &status)); });
}
BENCHMARK(statOnce)->Name("files/path of a reference:stat");

constexpr size_t kLarge = size_t{1} << 30;

const std::string &largeFile()
{
    static const std::string path = [] {
        const std::string made = files().folder.write("large", "");
        std::string block(1 << 20, 'x');
        const int file = open(made.c_str(), O_WRONLY | O_CLOEXEC);
        for (size_t i = 0; i < kLarge / block.size(); ++i)
            if (write(file, block.data(), block.size()) < 0)
                break;
        close(file);
        return made;
    }();
    return path;
}

template <class Body>
void copyLarge(benchmark::State &state, Body &&body)
{
    const std::string source = largeFile(), target = files().folder / "copy";
    body(source, target);  // so that both are given the pages of a copy that has just been removed
    for (auto _ : state) {
        state.PauseTiming();
        sync();
        unlink(target.c_str());
        state.ResumeTiming();
        body(source, target);
    }
    state.SetBytesProcessed(int64_t(state.iterations() * kLarge));
    unlink(target.c_str());
}

void copyByForks(benchmark::State &state)
{
    FSRef file, folder;
    FSPathMakeRef(bytes(largeFile()), &file, nullptr);
    FSPathMakeRef(bytes(files().folder.path()), &folder, nullptr);
    copyLarge(state, [&](const std::string &, const std::string &) {
        if (!FSCopyFile(&file, &folder, CFSTR("copy"), nullptr))
            state.SkipWithError("not copied");
    });
}
BENCHMARK(copyByForks)
    ->Name("files/copy of 1 GiB:tarvik")
    ->Iterations(1)
    ->Repetitions(7)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

void copyByCp(benchmark::State &state)
{
    copyLarge(state, [](const std::string &source, const std::string &target) {
        runProgram({"cp", source, target});
    });
}
BENCHMARK(copyByCp)
    ->Name("files/copy of 1 GiB:cp")
    ->Iterations(1)
    ->Repetitions(7)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
