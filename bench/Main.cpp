// Runs the benchmarks and prints them as a table of ratios.
//
// A benchmark is named "topic/case:who"; `who` is "tarvik" or the name of a peer (a library that does the same, or a
// limit: a bare loop, a copy). Rows with the same topic and case are measured in the same run and stand in one line:
//
//     crc32/64KiB          tarvik 41.2 GB/s     libdeflate 24.1 GB/s 1.71x     isa-l 23.0 GB/s 1.79x
//
// The ratio is Tarvik's speed over the peer's: above 1, Tarvik is the faster. The median of the repetitions counts.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>
#include <vector>

namespace {

struct Result {
    std::string who;
    double seconds = 0;         // per iteration
    double bytesPerSecond = 0;  // 0: not a matter of bytes
};

class Table : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context &) override { return true; }

    void ReportRuns(const std::vector<Run> &runs) override
    {
        for (const Run &run : runs) {
            const bool median = run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
            if (run.error_occurred) {
                std::printf("%s: %s\n", run.benchmark_name().c_str(), run.error_message.c_str());
                failed_ = true;
                continue;
            }
            if (!median && run.repetitions > 1)
                continue;
            std::string name = run.run_name.function_name;
            const size_t colon = name.rfind(':');
            if (colon == std::string::npos) {
                std::printf("%s: not named topic/case:who\n", name.c_str());
                failed_ = true;
                continue;
            }
            Result result{.who = name.substr(colon + 1)};
            // Processor time, which other work on the machine disturbs least, unless the benchmark asks for the clock's
            // (UseRealTime: work of other threads, processes, the kernel) or gives its own (UseManualTime). The rates that it
            // counts go by the same.
            const std::string &timeType = run.run_name.time_type;
            const bool clockTime = timeType.find("real_time") != std::string::npos ||
                                   timeType.find("manual_time") != std::string::npos;
            result.seconds = (clockTime ? run.GetAdjustedRealTime() : run.GetAdjustedCPUTime()) /
                             benchmark::GetTimeUnitMultiplier(run.time_unit);
            if (auto rate = run.counters.find("bytes_per_second"); rate != run.counters.end())
                result.bytesPerSecond = rate->second;
            name.resize(colon);
            std::vector<Result> *row = find(name);
            if (!row) {
                rows_.emplace_back(name, std::vector<Result>{});
                row = &rows_.back().second;
            }
            row->push_back(result);
        }
    }
    bool failed() const { return failed_; }

private:
    std::vector<Result> *find(const std::string &name)
    {
        for (auto &[known, row] : rows_) {
            if (known == name)
                return &row;
        }
        return nullptr;
    }

    static std::string speed(const Result &result)
    {
        char text[64];
        if (result.bytesPerSecond >= 1e9)
            std::snprintf(text, sizeof text, "%.2f GB/s", result.bytesPerSecond / 1e9);
        else if (result.bytesPerSecond > 0)
            std::snprintf(text, sizeof text, "%.1f MB/s", result.bytesPerSecond / 1e6);
        else if (result.seconds >= 1)
            std::snprintf(text, sizeof text, "%.2f s", result.seconds);
        else if (result.seconds >= 1e-3)
            std::snprintf(text, sizeof text, "%.2f ms", result.seconds * 1e3);
        else if (result.seconds >= 1e-6)
            std::snprintf(text, sizeof text, "%.2f us", result.seconds * 1e6);
        else
            std::snprintf(text, sizeof text, "%.1f ns", result.seconds * 1e9);
        return text;
    }

public:
    // At the end: the runs of one row need not follow each other.
    void print() const
    {
        std::printf("%-34s %12s   %s\n", "", "tarvik", "peer: its speed, Tarvik's over it");
        for (const auto &[name, row] : rows_) {
            const Result *own = nullptr;
            for (const Result &result : row)
                own = result.who == "tarvik" ? &result : own;
            std::printf("%-34s %12s", name.c_str(), own ? speed(*own).c_str() : "-");
            for (const Result &result : row) {
                if (&result == own)
                    continue;
                std::printf("   %s: %s", result.who.c_str(), speed(result).c_str());
                if (own)
                    std::printf(" %.2fx", result.seconds / own->seconds);
            }
            std::printf("\n");
        }
    }

private:
    std::vector<std::pair<std::string, std::vector<Result>>> rows_;
    bool failed_ = false;
};

}  // namespace

int main(int argc, char **argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    Table table;
    benchmark::RunSpecifiedBenchmarks(&table);
    table.print();
    return table.failed();
}
