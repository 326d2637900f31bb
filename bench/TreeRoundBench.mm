// A round of 100,000 files beside fts, which makes each path too; both look at no file.
#import <Tarvik/Tarvik.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/Pool.h>
#include <bench/FileTree.h>
#include <benchmark/benchmark.h>

#include <fts.h>

@interface CountingDelegate : NSObject {
@public
    int mCount;
}
@end
@implementation CountingDelegate
- (uint32_t)treeRoundEvaluatePath:(NSString *)path
{
    (void)path;
    ++mCount;
    return TreeRoundDescend;
}
@end

namespace {

constexpr int kEntries = kTreeFiles + kTreeFolders + 40;

void goRoundByTarvik(benchmark::State &state)
{
    const tarvik::Pool kept;
    NSArray *const roots =
        [NSArray arrayWithObject:tarvik::nsstring(fileTree())];  // made before the clock runs
    for (auto _ : state) {
        tarvik::Pool pool;
        CountingDelegate *delegate = [[[CountingDelegate alloc] init] autorelease];
        TreeRound *round = [[[TreeRound alloc] init] autorelease];
        if (![round start:roots withDelegate:delegate] || delegate->mCount != kEntries)
            state.SkipWithError("entries are missing");
    }
}
BENCHMARK(goRoundByTarvik)->Name("tree/TreeRound, 100,000 files:tarvik")->Unit(benchmark::kMillisecond);

void goRoundByFts(benchmark::State &state)
{
    for (auto _ : state) {
        char *roots[] = {const_cast<char *>(fileTree().c_str()), nullptr};
        FTS *walk = fts_open(roots, FTS_PHYSICAL | FTS_NOSTAT | FTS_NOCHDIR, nullptr);
        int count = -1;  // the root
        while (const FTSENT *entry = fts_read(walk))
            count += entry->fts_info != FTS_DP;
        fts_close(walk);
        if (count != kEntries)
            state.SkipWithError("entries are missing");
    }
}
BENCHMARK(goRoundByFts)
    ->Name("tree/TreeRound, 100,000 files:fts without stat")
    ->Unit(benchmark::kMillisecond);

}  // namespace
