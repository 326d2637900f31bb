#include "Command.h"
#include "Streams.h"

#include <Tarvik/Tarvik.h>

#include <algorithm>
#include <bit>
#include <cstdio>
#include <optional>
#include <sstream>
#include <vector>

namespace
{

// A file's check, joined from the checks of its blocks: a file may be larger than what CCRC32 takes at once,
// and need not be in memory.
class JoinedCheck
{
public:
    void add(const void *block, uint32_t length)
    {
        check_ = times(check_, powerOfX(uint64_t{length} * 8)) ^ crc_.Calculate(block, length);
    }
    uint32_t value() const { return check_; }

private:
    // Polynomials over GF(2) modulo the check's own; the highest bit is the coefficient of x^0.
    static uint32_t timesX(uint32_t a) { return a >> 1 ^ (a & 1 ? 0xEDB88320 : 0); }

    static uint32_t times(uint32_t a, uint32_t b)
    {
        uint32_t product = 0;
        for (uint32_t bit = 0x80000000; bit != 0; bit >>= 1, b = timesX(b))
            product ^= a & bit ? b : 0;
        return product;
    }

    // Nearly all blocks have one length: the last power is kept.
    uint32_t powerOfX(uint64_t exponent)
    {
        if (exponent == exponent_)
            return power_;
        exponent_ = exponent;
        power_ = 0x80000000;
        for (uint32_t square = 0x40000000; exponent != 0; exponent >>= 1, square = times(square, square)) {
            if (exponent & 1)
                power_ = times(power_, square);
        }
        return power_;
    }

    CCRC32 crc_;
    uint32_t check_ = 0;
    uint64_t exponent_ = 0;
    uint32_t power_ = 0x80000000;
};

uint32_t checkOf(const std::string &path)
{
    static std::vector<char> block(1 << 20);
    Input input(path);
    Progress progress(input.name(), input.length());
    JoinedCheck check;
    size_t count;
    do {
        count = input.read(block.data(), block.size());
        check.add(block.data(), static_cast<uint32_t>(count));
        progress.advance(count);
    } while (count == block.size());
    return check.value();
}

// One file that can't be read doesn't keep the others from being read.
void complain(const std::exception &failure)
{
    std::fflush(stdout);
    std::fprintf(stderr, "tarvik crc32: %s\n", failure.what());
}

// A name stands in one line: a backslash before the check says that those in the name are doubled and line
// ends written \n.
std::string lineOf(uint32_t check, const std::string &name)
{
    std::string escaped;
    for (char c : name)
        escaped += c == '\\' ? "\\\\" : c == '\n' ? "\\n" : std::string(1, c);
    char digits[16];
    std::snprintf(digits, sizeof digits, "%s%08x  ", escaped == name ? "" : "\\", check);
    return digits + escaped + "\n";
}

struct Entry {
    uint32_t check;
    std::string name;
};

std::optional<Entry> entryOf(std::string_view line)
{
    const bool escaped = line.starts_with('\\');
    line.remove_prefix(escaped);
    constexpr size_t kDigits = 8, kName = 10;
    if (line.size() <= kName || line[kDigits] != ' ' ||
        (line[kDigits + 1] != ' ' && line[kDigits + 1] != '*'))
        return std::nullopt;
    const std::string digits(line.substr(0, kDigits));
    if (digits.find_first_not_of("0123456789abcdefABCDEF") != digits.npos)
        return std::nullopt;
    Entry entry{static_cast<uint32_t>(std::stoul(digits, nullptr, 16)), {}};
    for (size_t i = kName; i < line.size(); ++i) {
        if (!escaped || line[i] != '\\') {
            entry.name += line[i];
            continue;
        }
        if (++i == line.size() || (line[i] != '\\' && line[i] != 'n'))
            return std::nullopt;
        entry.name += line[i] == 'n' ? '\n' : '\\';
    }
    return entry;
}

int print(const std::vector<std::string> &names)
{
    int status = kSuccess;
    for (const std::string &name : names) {
        try {
            writeOutput(lineOf(checkOf(name), name));
        } catch (const Failure &failure) {
            complain(failure);
            status = kFailure;
        }
    }
    return status;
}

void compare(const std::string &list, bool quiet, size_t &good, size_t &bad)
{
    std::istringstream lines(readInput(list));
    std::string line;
    for (size_t number = 1; std::getline(lines, line); ++number) {
        if (line.empty())
            continue;
        try {
            const auto entry = entryOf(line);
            if (!entry)
                throw Failure(list + ", line " + std::to_string(number) +
                              ": not of the form 'CHECK  NAME' (a check has eight hexadecimal digits)");
            const bool same = checkOf(entry->name) == entry->check;
            ++(same ? good : bad);
            if (!same || !quiet)
                writeOutput(entry->name + (same ? ": OK\n" : ": FAILED\n"));
        } catch (const Failure &failure) {
            complain(failure);
            ++bad;
        }
    }
}

int run(const Arguments &arguments)
{
    std::vector<std::string> names = arguments.rest();
    if (names.empty())
        names.push_back("-");
    if (arguments.has("quiet") && !arguments.has("check"))
        throw UsageError("--quiet goes with --check");
    if (!arguments.has("check"))
        return print(names);

    size_t good = 0, bad = 0;
    for (const std::string &list : names)
        compare(list, arguments.has("quiet"), good, bad);
    if (bad > 0)
        throw Failure(std::to_string(bad) + " of " + std::to_string(good + bad) + " not verified");
    if (good == 0)
        throw Failure("nothing to verify: the list has no line");
    return kSuccess;
}

const Registration registration({
    .name = "crc32",
    .summary = "print or verify the CRC-32 of files",
    .usage = "[OPTION]... [FILE]...",
    .details = "Prints the check and the name of each FILE, one a line; of standard input when there is none "
               "or FILE is -.\n"
               "It is the CRC-32 of zip, gzip and PNG: it finds accidental damage, not forgery.\n"
               "With --check, FILE is a list of such lines, and the files named in it are verified.\n\n"
               "Examples:\n"
               "  tarvik crc32 *.iso > checks\n"
               "  tarvik crc32 --check checks\n"
               "  printf 123456789 | tarvik crc32        prints cbf43926  -",
    .options = {{'c', "check", nullptr,
                 "verify the files that a list names; exit status 1 when one differs or is missing"},
                {'q', "quiet", nullptr, "with --check, print only what differs"}},
    .run = run,
});

}  // namespace
