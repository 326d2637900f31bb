#include "../support/Program.h"

#include <gtest/gtest.h>

namespace {

TEST(UTF8Command, DecodesLineByLine)
{
    EXPECT_EQ(runTarvik({"utf8", "decode", "--text", "a\xE2\x82\xAC\xF0\x9F\x98\x80"}).out,
              "U+0061 U+20AC U+1F600\n");
    EXPECT_EQ(runTarvik({"utf8", "decode"}, "\xC3\xA9\n\xA9").out, "U+00E9 U+000A\nU+0029\n");
    EXPECT_EQ(runTarvik({"utf8", "decode", "--count", "-"}, "\xC3\xA9\n\xA9").out, "3\n");
    const ProgramResult cut = runTarvik({"utf8", "decode"}, {"ab\0cd\nef", 8});
    EXPECT_EQ(cut.out, "U+0061 U+0062\nU+0065 U+0066\n");
    EXPECT_EQ(cut.status, 1);
    EXPECT_EQ(runTarvik({"utf8", "decode", "/no/such/file"}).status, 1);
}

TEST(UTF8Command, Encodes)
{
    EXPECT_EQ(runTarvik({"utf8", "encode", "U+48", "0x20ac", "A9 A"}).out, "H\xE2\x82\xAC\xC2\xA9\n");
    EXPECT_EQ(runTarvik({"utf8", "encode"}, " U+61\nU+62 ").out, "ab");
    const ProgramResult dropped = runTarvik({"utf8", "encode", "61", "1F600", "62"});
    EXPECT_EQ(dropped.out, "ab");
    EXPECT_EQ(dropped.status, 1);
    for (const char *word : {"U+", "xyz", "U+20AC,", "110000", "-1"})
        EXPECT_EQ(runTarvik({"utf8", "encode"}, word).status, 1) << word;
}

TEST(VersionCommand, ComparesAndTests)
{
    EXPECT_EQ(runTarvik({"version", "compare", "10.4.9", "10.4.10"}).out, "-1\n");
    EXPECT_EQ(runTarvik({"version", "compare", "--test=ge", "1.2.0", "1.2"}).status, 0);
    EXPECT_EQ(runTarvik({"version", "compare", "--test=eq", "1.2.0", "1.2"}).status, 1);
    EXPECT_EQ(runTarvik({"version", "compare", "--test=like", "1", "1"}).status, 2);
    EXPECT_EQ(runTarvik({"version", "compare", "1"}).status, 2);
}

}  // namespace
