// Runs a fuzz target without a fuzzing engine: every file of its corpus, then inputs mutated from them.
//   fuzz-NAME CORPUS [RUNS [SEED]]
// The seed is fixed by default, so that a failure is found again; it and the failing input's number are printed.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
// The run's progress, readable in a crash report or a debugger.
unsigned long gFuzzRun = 0;

namespace {

using Input = std::vector<uint8_t>;

constexpr size_t kLargestInput = 64 * 1024;

void run(const Input &input)
{
    // A copy of exactly the input's size lets the sanitizer see a read past its end.
    const Input exact(input.begin(), input.end());
    LLVMFuzzerTestOneInput(exact.data(), exact.size());
}

Input mutated(const std::vector<Input> &corpus, std::mt19937 &random)
{
    auto below = [&](size_t bound) { return bound ? random() % bound : 0; };
    Input input = corpus[below(corpus.size())];
    for (size_t changes = 1 + below(8); changes > 0; --changes) {
        const size_t at = below(input.size() + 1);
        switch (below(6)) {
        case 0:  // a byte
            if (at < input.size())
                input[at] = uint8_t(random());
            break;
        case 1:  // a bit
            if (at < input.size())
                input[at] ^= uint8_t(1u << below(8));
            break;
        case 2:  // a stretch of another input
        {
            const Input &other = corpus[below(corpus.size())];
            const size_t from = below(other.size()), count = std::min<size_t>(below(64), other.size() - from);
            input.insert(input.begin() + long(at), other.begin() + long(from),
                         other.begin() + long(from + count));
            break;
        }
        case 3:  // a hole
            input.erase(input.begin() + long(at),
                        input.begin() + long(std::min(input.size(), at + below(32))));
            break;
        case 4:  // the end cut off
            input.resize(at);
            break;
        default:  // an extreme value
        {
            static constexpr uint8_t kExtremes[] = {0x00, 0x7F, 0x80, 0xFF};
            if (at < input.size())
                input[at] = kExtremes[below(std::size(kExtremes))];
        }
        }
    }
    if (input.size() > kLargestInput)
        input.resize(kLargestInput);
    return input;
}

}  // namespace

int main(int argc, char **argv)
{
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s CORPUS [RUNS [SEED]]\n", argv[0]);
        return 2;
    }
    const unsigned long runs = argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 20000;
    const unsigned seed = argc > 3 ? unsigned(std::strtoul(argv[3], nullptr, 10)) : 20260101u;
    std::vector<Input> corpus;
    for (const auto &entry : std::filesystem::directory_iterator(argv[1])) {
        std::ifstream file(entry.path(), std::ios::binary);
        corpus.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
    if (corpus.empty()) {
        std::fprintf(stderr, "%s: no input in %s\n", argv[0], argv[1]);
        return 1;
    }
    // Directory order differs between machines.
    const auto bytes = [](const Input &input) {
        return std::string_view(reinterpret_cast<const char *>(input.data()), input.size());
    };
    std::sort(corpus.begin(), corpus.end(),
              [&](const Input &a, const Input &b) { return bytes(a) < bytes(b); });
    corpus.emplace_back();  // the empty input belongs to every corpus
    for (const Input &input : corpus)
        run(input);
    std::mt19937 random(seed);
    for (gFuzzRun = 0; gFuzzRun < runs; ++gFuzzRun)
        run(mutated(corpus, random));
    std::printf("%zu inputs of the corpus, %lu mutations (seed %u)\n", corpus.size(), runs, seed);
}
