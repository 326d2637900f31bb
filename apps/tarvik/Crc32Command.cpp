#include "CheckList.h"
#include "Command.h"
#include "Streams.h"

#include <Tarvik/Tarvik.h>

#include <cstdio>
#include <vector>

namespace {

// A file's check, joined from the checks of its blocks: a file may be larger than what CCRC32 takes at once,
// and need not be in memory.
class JoinedCheck {
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

int run(const Arguments &arguments)
{
    constexpr size_t kDigits = 8;
    return printOrVerify(arguments, {.command = "crc32",
                                     .form = "a check has eight hexadecimal digits",
                                     .takes = [](size_t digits) { return digits == kDigits; },
                                     .compute =
                                         [](const std::string &path, size_t) {
                                             char digits[kDigits + 1];
                                             std::snprintf(digits, sizeof digits, "%08x", checkOf(path));
                                             return std::string(digits);
                                         }});
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
    .options = checkOptions(),
    .run = run,
});

}  // namespace
