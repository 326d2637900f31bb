// Moving rows beside the same on a vector of pointers; inserting many at once.
#import <Foundation/Foundation.h>
#import <Tarvik/support/Pool.h>
#import <Tarvik/text/NSArray+Collections.h>
#include <benchmark/benchmark.h>

#include <algorithm>
#include <vector>

namespace {

constexpr size_t kRows = 1000000, kMoved = 100000;

/// Every tenth row.
std::vector<uint32_t> scattered()
{
    std::vector<uint32_t> indexes(kMoved);
    for (size_t i = 0; i < kMoved; ++i)
        indexes[i] = uint32_t(i * (kRows / kMoved));
    return indexes;
}

NSMutableArray *rows()
{
    NSMutableArray *array = [NSMutableArray arrayWithCapacity:kRows];
    for (size_t i = 0; i < kRows; ++i)
        [array addObject:[[NSObject new] autorelease]];
    return array;
}

void moveRows(benchmark::State &state)
{
    tarvik::Pool pool;
    NSMutableArray *array = rows();
    const auto indexes = scattered();
    NSData *list = [NSData dataWithBytes:indexes.data() length:indexes.size() * 4];
    for (auto _ : state)
        benchmark::DoNotOptimize([array moveObjects:list toIndex:kRows / 2]);
}
BENCHMARK(moveRows)->Name("moverows/100000 of 1000000:tarvik")->Unit(benchmark::kMillisecond);

void moveInVector(benchmark::State &state)
{
    std::vector<void *> all(kRows, &state);
    const auto indexes = scattered();
    for (auto _ : state) {
        std::vector<void *> moved;
        moved.reserve(kMoved);
        for (const uint32_t index : indexes)
            moved.push_back(all[index]);
        size_t next = 0, out = 0, before = 0;
        for (size_t i = 0; i < all.size(); ++i) {
            if (next < indexes.size() && indexes[next] == i) {
                ++next;
                before += i < kRows / 2;
            } else {
                all[out++] = all[i];
            }
        }
        all.resize(out);
        all.insert(all.begin() + ptrdiff_t(kRows / 2 - before), moved.begin(), moved.end());
        benchmark::DoNotOptimize(all.data());
    }
}
BENCHMARK(moveInVector)->Name("moverows/100000 of 1000000:vector")->Unit(benchmark::kMillisecond);

void insertRows(benchmark::State &state)
{
    tarvik::Pool pool;
    NSMutableArray *array = rows();
    NSArray *more = [array subarrayWithRange:NSMakeRange(0, kMoved)];
    for (auto _ : state) {
        [array insertObjectsFromArray:more atIndex:kRows / 2];
        state.PauseTiming();
        [array removeObjectsInRange:NSMakeRange(kRows / 2, kMoved)];
        state.ResumeTiming();
    }
}
BENCHMARK(insertRows)->Name("insertrows/100000 into 1000000:tarvik")->Unit(benchmark::kMillisecond);

void insertInVector(benchmark::State &state)
{
    std::vector<void *> all(kRows, &state);
    const std::vector<void *> more(kMoved, &state);
    for (auto _ : state) {
        all.insert(all.begin() + kRows / 2, more.begin(), more.end());
        state.PauseTiming();
        all.erase(all.begin() + kRows / 2, all.begin() + kRows / 2 + kMoved);
        state.ResumeTiming();
    }
}
BENCHMARK(insertInVector)->Name("insertrows/100000 into 1000000:vector")->Unit(benchmark::kMillisecond);

}  // namespace
