#include "../support/Program.h"

#include <gtest/gtest.h>

namespace {

TEST(EncodeCommand, ConvertsOrSaysWhatIsWrong)
{
    EXPECT_EQ(runTarvik({"encode", "--to=macintosh"}, "Zürich").out, "Z\x9Frich");
    EXPECT_EQ(runTarvik({"encode", "--from=macintosh", "--to=utf-8"}, "Z\x9Frich").out, "Zürich");
    EXPECT_EQ(runTarvik({"encode", "--to=us-ascii", "--lossy"}, "日a").out, "?a");
    EXPECT_EQ(
        runTarvik({"encode", "--to=us-ascii"}, "日a").error,
        "tarvik encode: standard input: has characters that us-ascii lacks (--lossy writes '?' for them)\n");
    EXPECT_EQ(runTarvik({"encode"}, "\xFF").status, 1);
    EXPECT_EQ(runTarvik({"encode", "--to=klingon"}, "").status, 2);
    EXPECT_NE(runTarvik({"encode", "--list"}).out.find("0x00000920  euc-jp "), std::string::npos);
}

}  // namespace
