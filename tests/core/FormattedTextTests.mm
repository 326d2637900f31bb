// What the log makes of a format: every conversion of the C library's, as that writes it, and descriptions of objects.
#import <Foundation/Foundation.h>
#include <Tarvik/core/Log.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

std::string formatted(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    char *text = StringAllocWithFormatAndArguments(format, arguments);
    va_end(arguments);
    const std::string copy = text ? text : "<none>";
    std::free(text);
    return copy;
}

#pragma GCC diagnostic ignored "-Wformat"
#pragma GCC diagnostic ignored "-Wformat-extra-args"

template <class... Arguments>
void expectAsPrinted(const char *format, Arguments... arguments)
{
    char expected[8192];
    std::snprintf(expected, sizeof expected, format, arguments...);
    EXPECT_EQ(formatted(format, arguments...), expected) << format;
}

}  // namespace

TEST(FormattedText, NumbersAreTheCLibrarys)
{
    for (const char *format : {"%d", "%i", "%5d|", "%-5d|", "%+d", "% 08d", "%.3d", "%x", "%#X", "%#o", "%u",
                               "%hd", "%hu", "%hhd", "%hhi", "%hhx", "%c"})
        for (const int value : {0, 1, 65, 90})
            expectAsPrinted(format, value);
    for (const char *format : {"%d", "%hhd", "%hd", "%u", "%x"})
        for (const int value : {-1, INT_MIN, INT_MAX})
            expectAsPrinted(format, value);
    for (const char *format : {"%ld", "%lld", "%qd", "%jd", "%zu", "%td", "%lx", "%#20lo|"})
        for (const long value : {0L, -1L, LONG_MIN, LONG_MAX})
            expectAsPrinted(format, value);
    for (const char *format : {"%f", "%F", "%.0f", "%#.0f", "%10.3f|", "%-10.3f|", "%+f", "%010.2f", "%e",
                               "%.3E", "%g", "%G", "%a", "%A"})
        for (const double value : {0.0, -0.0, 2.5, -1.0 / 3, 1e25, 1e40, 1e308, HUGE_VAL})
            expectAsPrinted(format, value);
    for (const char *format : {"%Lf", "%.2Le", "%Lg", "%La", "%12.3Lf|"})
        for (const long double value : {2.5L, -1e40L, 1.0L / 3})
            expectAsPrinted(format, value);
    expectAsPrinted("%p %p", "x", nullptr);
    expectAsPrinted("%*d|%-*d|%*d|%.*f|%.*f", 6, 42, 6, 42, -6, 42, 2, 3.14159, -1, 3.14159);
    expectAsPrinted("%2$s %1$d %2$s %3$*4$.*5$f", 7, "twice", 2.71828, 9, 3);
    expectAsPrinted("100%% %s %d %s %g", "of", 1, "mixed", 0.5);
}

TEST(FormattedText, TextsAndObjects)
{
    expectAsPrinted("%s|%8s|%-8s|%.2s|%.0s|%s", "text", "right", "left", "cut", "none", "");
    const char unended[3] = {'a', 'b', 'c'};
    EXPECT_EQ(formatted("%.3s %.*s", unended, 2, unended), "abc ab");
    EXPECT_EQ(formatted("%s %5s %@ %S", nullptr, nullptr, nil, nullptr), "(null) (null) (null) (null)");
    // Widths count characters; none is cut in two; what is no UTF-8 is seen.
    EXPECT_EQ(formatted("%4s|%-4s|%.3s|%.1s", "é", "日", "éé", "é"), "   é|日   |é|");
    EXPECT_EQ(formatted("open %s failed: %s", "caf\xe9.txt", "No such file"),
              "open caf\uFFFD.txt failed: No such file");
    EXPECT_EQ(formatted("%ls|%.4ls|%lc|%c", L"wíde \U0001F600", L"日本", L'é', 0xE9),
              "wíde \U0001F600|日|é|é");
    const unichar pair[] = {0xD83D, 0xDE00, 'x', 0xD800, 0};
    EXPECT_EQ(formatted("%S %C", pair, 0x20AC), "\U0001F600x\uFFFD €");
    EXPECT_EQ(formatted("%@ %@ %6@|%-6@|", @"é 100%s", [NSNumber numberWithInt:42], @"ab", @"ab"),
              "é 100%s 42     ab|ab    |");
    EXPECT_EQ(formatted("%2$@ %1$d", 1, @"numbered"), "numbered 1");
}

TEST(FormattedText, CountsAndErrors)
{
    int count = 0;
    signed char small = 0;
    EXPECT_EQ(formatted("é%n%d%hhn", &count, 5, &small), "é5");
    EXPECT_EQ(count, 2);
    EXPECT_EQ(small, 3);
    errno = ENOENT;
    EXPECT_EQ(formatted("%m"), "No such file or directory");
}

// What is no conversion stays; nothing is read for it.
TEST(FormattedText, BrokenFormats)
{
    EXPECT_EQ(formatted("100%! sure", 1), "100%! sure");
    EXPECT_EQ(formatted("%"), "%");
    EXPECT_EQ(formatted("%d %y %d %", 1, 2), "1 %y 2 %");
    EXPECT_EQ(formatted("%99999$d %l", 1), "%99999$d %l");
    EXPECT_EQ(formatted("\xff%d", 1), "<none>");
    EXPECT_EQ(formatted(nullptr), "<none>");
}
