// Trees of 100,000 files in 2,000 folders beside fts, nftw and gnustep-base; aliases beside a stat and a
// listing.
#include <Carbon/Aliases.h>
#import <Foundation/Foundation.h>
#import <Tarvik/Tarvik.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/Pool.h>
#include <bench/FileTree.h>
#include <benchmark/benchmark.h>
#include <tests/support/TemporaryFolder.h>

#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <fts.h>
#include <ftw.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

NSString *text(const std::string &path) { return tarvik::nsstring(path); }

/// The state's iterations, once the tree is there: it is not made while the clock runs.
benchmark::State &eachTime(benchmark::State &state)
{
    fileTree();
    return state;
}

void listFilesByTarvik(benchmark::State &state)
{
    for (auto _ : eachTime(state)) {
        tarvik::Pool pool;
        if ([[text(fileTree()) subfilepaths] count] != kTreeFiles)
            state.SkipWithError("files are missing");
    }
}
BENCHMARK(listFilesByTarvik)->Name("tree/subfilepaths, 100,000 files:tarvik")->Unit(benchmark::kMillisecond);

void listFilesByFts(benchmark::State &state)
{
    for (auto _ : eachTime(state)) {
        char *roots[] = {const_cast<char *>(fileTree().c_str()), nullptr};
        FTS *walk = fts_open(roots, FTS_PHYSICAL | FTS_NOSTAT | FTS_NOCHDIR, nullptr);
        size_t count = 0;
        while (const FTSENT *entry = fts_read(walk))
            count += entry->fts_info == FTS_NSOK || entry->fts_info == FTS_F;
        fts_close(walk);
        if (count != kTreeFiles)
            state.SkipWithError("files are missing");
    }
}
BENCHMARK(listFilesByFts)
    ->Name("tree/subfilepaths, 100,000 files:fts without stat")
    ->Unit(benchmark::kMillisecond);

void listByTarvik(benchmark::State &state)
{
    for (auto _ : eachTime(state)) {
        tarvik::Pool pool;
        benchmark::DoNotOptimize([[[NSFileManager defaultManager] subpathsAtPath:text(fileTree())] count]);
    }
}
BENCHMARK(listByTarvik)->Name("tree/subpathsAtPath, 100,000 files:tarvik")->Unit(benchmark::kMillisecond);

/// What gnustep-base's subpathsAtPath: does: its enumerator, into an array.
void listByGNUstep(benchmark::State &state)
{
    for (auto _ : eachTime(state)) {
        tarvik::Pool pool;
        NSDirectoryEnumerator *all = [[NSFileManager defaultManager] enumeratorAtPath:text(fileTree())];
        NSMutableArray *paths = [NSMutableArray array];
        while (NSString *path = [all nextObject])
            [paths addObject:path];
        benchmark::DoNotOptimize([paths count]);
    }
}
BENCHMARK(listByGNUstep)
    ->Name("tree/subpathsAtPath, 100,000 files:gnustep-base")
    ->Unit(benchmark::kMillisecond);

void sizeByTarvik(benchmark::State &state)
{
    for (auto _ : eachTime(state)) {
        tarvik::Pool pool;
        benchmark::DoNotOptimize([text(fileTree()) logicalSize]);
    }
}
BENCHMARK(sizeByTarvik)->Name("tree/logicalSize, 100,000 files:tarvik")->Unit(benchmark::kMillisecond);

uint64_t total;
void sizeByNftw(benchmark::State &state)
{
    for (auto _ : eachTime(state)) {
        total = 0;
        nftw(
            fileTree().c_str(),
            [](const char *, const struct stat *about, int kind, FTW *) {
                return total += kind == FTW_F ? uint64_t(about->st_size) : 0, 0;
            },
            20, FTW_PHYS);
        benchmark::DoNotOptimize(total);
    }
}
BENCHMARK(sizeByNftw)->Name("tree/logicalSize, 100,000 files:nftw with stat")->Unit(benchmark::kMillisecond);

// --- Aliases

struct Target {
    TemporaryFolder folder;
    std::string path = fs::canonical(folder.path()) / "target";
    FSRef ref;
    AliasHandle alias = nullptr;

    Target()
    {
        folder.write("target", "x");
        FSPathMakeRef(reinterpret_cast<const UInt8 *>(path.c_str()), &ref, nullptr);
        FSNewAlias(nullptr, &ref, &alias);
    }
    ~Target() { DisposeHandle(reinterpret_cast<Handle>(alias)); }
};

void makeAlias(benchmark::State &state)
{
    const Target target;
    for (auto _ : state) {
        AliasHandle alias = nullptr;
        FSNewAlias(nullptr, &target.ref, &alias);
        DisposeHandle(reinterpret_cast<Handle>(alias));
    }
}
BENCHMARK(makeAlias)->Name("alias/make:tarvik");

void resolveAlias(benchmark::State &state)
{
    const Target target;
    for (auto _ : state) {
        FSRef found;
        Boolean changed;
        if (FSResolveAlias(nullptr, target.alias, &found, &changed) != noErr)
            state.SkipWithError("not found");
    }
}
BENCHMARK(resolveAlias)->Name("alias/resolve in place:tarvik");

void statTarget(benchmark::State &state)
{
    const Target target;
    for (auto _ : state) {
        struct stat about;
        benchmark::DoNotOptimize(stat(target.path.c_str(), &about));
    }
}
BENCHMARK(statTarget)->Name("alias/resolve in place:one stat");

/// A folder of 10,000 in which the target has another name every time.
void resolveRenamed(benchmark::State &state)
{
    const Target target;
    for (int i = 0; i < 10000; ++i)
        target.folder.write("other " + std::to_string(i), "");
    const std::string places[] = {target.path, target.path + " renamed"};
    size_t turn = 0;
    for (auto _ : state) {
        std::filesystem::rename(places[turn % 2], places[(turn + 1) % 2]);
        ++turn;
        FSRef found;
        Boolean changed;
        if (FSResolveAlias(nullptr, target.alias, &found, &changed) != noErr)
            state.SkipWithError("not found");
    }
}
BENCHMARK(resolveRenamed)
    ->Name("alias/find a renamed file among 10,000:tarvik")
    ->Unit(benchmark::kMicrosecond);

void listFolder(benchmark::State &state)
{
    const Target target;
    for (int i = 0; i < 10000; ++i)
        target.folder.write("other " + std::to_string(i), "");
    for (auto _ : state) {
        DIR *folder = opendir(target.folder.path().c_str());
        while (readdir(folder))
            ;
        closedir(folder);
    }
}
BENCHMARK(listFolder)
    ->Name("alias/find a renamed file among 10,000:one listing")
    ->Unit(benchmark::kMicrosecond);

}  // namespace
