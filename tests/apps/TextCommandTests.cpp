#include "../support/Program.h"

#include <gtest/gtest.h>

namespace {

TEST(TextCommand, DoesWhatItSays)
{
    EXPECT_EQ(runTarvik({"text", "lines", "-n"}, "a\r\nb\rc\n").out, "1\ta\n2\tb\n3\tc\n");
    EXPECT_EQ(runTarvik({"text", "lines", "-c"}, "a\r\nb\r").out, "3\n");
    EXPECT_EQ(runTarvik({"text", "hex", "0a4Fzz"}).status, 1);
    EXPECT_EQ(runTarvik({"text", "hex", "0a4F"}).out, "\nO");
    EXPECT_EQ(runTarvik({"text", "ostype", "TEXT", "0x6170706C"}).out,
              "0x54455854 'TEXT'\n0x6170706C 'appl'\n");
    EXPECT_EQ(runTarvik({"text", "int", "-5", "x"}).status, 2);  // an option, to the parser
    EXPECT_EQ(runTarvik({"text", "int", "--", "-5", "x7"}).out, "5\n7\n");
    EXPECT_EQ(runTarvik({"text", "replace", "aa", "b"}, "aaa\n").out, "ab\n");
    EXPECT_EQ(runTarvik({"text", "replace", "", "b"}, "").status, 2);
    EXPECT_EQ(runTarvik({"text", "pad", "-l4", "-fab", "x", "yyyyy"}).out, "xaba\nyyyy\n");
    const ProgramResult invalid = runTarvik({"text", "lines"}, "\xFF");
    EXPECT_EQ(invalid.status, 1);
    EXPECT_EQ(invalid.error, "tarvik text: standard input: is not UTF-8 text (convert it first)\n");
}

}  // namespace
