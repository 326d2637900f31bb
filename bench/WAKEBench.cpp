// WAKE against its own limit: four steps of the mixing function, each of which waits for the one before.
#include <Tarvik/crypto/WAKE_OFB.h>

#include <benchmark/benchmark.h>

#include <vector>

namespace {

const std::vector<uint8_t> &key()
{
    static const std::vector<uint8_t> key(32, 0x5A);
    return key;
}

void tarvik(benchmark::State &state, size_t length)
{
    WAKE_OFB cipher;
    cipher.SetKey(key().data(), 32);
    std::vector<uint8_t> data(length);
    for (auto _ : state) {
        cipher.ProcessString(data.data(), uint32_t(length));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(length));
}

struct BareChain : WAKE_Policy {
    uint32_t run(size_t words)
    {
        uint32_t a = r3, b = r4, c = r5, d = r6;
        while (words-- > 0) {
            a = M(a, d);
            b = M(b, a);
            c = M(c, b);
            d = M(d, c);
        }
        return r6 = d;
    }
};

void chain(benchmark::State &state, size_t length)
{
    BareChain bare;
    bare.CipherSetKey(key().data(), 32);
    for (auto _ : state)
        benchmark::DoNotOptimize(bare.run(length / 4));
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(length));
}

void keySetUp(benchmark::State &state)
{
    WAKE_OFB cipher;
    for (auto _ : state) {
        cipher.SetKey(key().data(), 32);
        benchmark::ClobberMemory();
    }
}

BENCHMARK_CAPTURE(tarvik, , 256)->Name("wake/256B:tarvik");
BENCHMARK_CAPTURE(chain, , 256)->Name("wake/256B:chain");
BENCHMARK_CAPTURE(tarvik, , 1 << 20)->Name("wake/1MiB:tarvik");
BENCHMARK_CAPTURE(chain, , 1 << 20)->Name("wake/1MiB:chain");
BENCHMARK(keySetUp)->Name("wake/key:tarvik");

}  // namespace
