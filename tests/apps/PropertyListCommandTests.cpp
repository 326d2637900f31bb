#include "../support/Program.h"
#include "../support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace {

const char *const kList = "{ Name = \"Gr\\U00fc\\U00dfe\"; Rows = (one, {Deep = two;}); }";

TEST(PlistCommand, ShowsGetsAndConverts)
{
    EXPECT_EQ(runTarvik({"plist", "show"}, kList).out,
              "Name: \"Grüße\"\nRows:\n  [0]: \"one\"\n  [1]:\n    Deep: \"two\"\n");
    EXPECT_EQ(runTarvik({"plist", "get", "-", "Rows", "1", "Deep"}, kList).out, "two\n");
    const ProgramResult beyond = runTarvik({"plist", "get", "-", "Rows", "2"}, kList);
    EXPECT_EQ(beyond.status, 1);
    EXPECT_EQ(beyond.error, "tarvik plist: '2': nothing stands there (the array holds 2)\n");

    TemporaryFolder folder;
    const std::string source = folder.write("source", kList), result = folder / "result";
    EXPECT_EQ(runTarvik({"plist", "convert", source, result}).status, 0);
    EXPECT_EQ(runTarvik({"plist", "show", result}).out, runTarvik({"plist", "show", source}).out);
    EXPECT_EQ(runTarvik({"plist", "check", result, source}).out,
              result + ": ok (Dictionary)\n" + source + ": ok (Dictionary)\n");

    const ProgramResult bad =
        runTarvik({"plist", "check", "--quiet", source, "-"}, "<?xml version=\"1.0\"?><plist><dict>");
    EXPECT_EQ(bad.status, 1);
    EXPECT_EQ(bad.out, "");
    EXPECT_NE(bad.error.find("standard input: is no property list: line 1"), std::string::npos) << bad.error;
}

TEST(PlistCommand, LeavesTheOldFileWhenTheNewOneCannotBeWritten)
{
    TemporaryFolder folder;
    const std::string source = folder.write("source", kList), whole = folder.write("full", "old");
    ASSERT_EQ(symlink("/dev/full", (folder / "link").c_str()), 0);
    const ProgramResult full = runTarvik({"plist", "convert", source, folder / "link"});
    EXPECT_EQ(full.status, 1);
    EXPECT_NE(full.error.find("No space left"), std::string::npos) << full.error;
    EXPECT_EQ(runTarvik({"plist", "convert", "-", whole}, "<?xml?>").status, 1);
    EXPECT_EQ(folder.read("full"), "old");
}

TEST(DefaultsCommand, WritesReadsAndRemoves)
{
    EXPECT_EQ(runTarvik({"defaults", "write", "Example", "Text", "😀 \\U0041"}).status, 0);
    EXPECT_EQ(runTarvik({"defaults", "write", "--type=integer", "Example", "Count", "12"}).status, 0);
    EXPECT_EQ(runTarvik({"defaults", "write", "--type=plist", "Example", "Rows", "-"}, "(a, b)").status, 0);
    EXPECT_EQ(runTarvik({"defaults", "read", "Example"}).out,
              "Count: 12\nRows:\n  [0]: \"a\"\n  [1]: \"b\"\nText: \"😀 \\\\U0041\"\n");
    EXPECT_EQ(runTarvik({"defaults", "read", "Example", "Text"}).out, "😀 \\U0041\n");
    EXPECT_EQ(runTarvik({"defaults", "remove", "Example", "Rows"}).status, 0);
    EXPECT_EQ(runTarvik({"defaults", "read", "Example", "Rows"}).status, 1);
    EXPECT_EQ(runTarvik({"defaults", "write", "--type=integer", "Example", "Count", "twelve"}).status, 1);
    EXPECT_EQ(runTarvik({"defaults", "write", "--type=nonsense", "Example", "Count", "1"}).status, 2);
    EXPECT_EQ(runTarvik({"defaults", "read", "Example", "Count"}).out, "12\n");
    EXPECT_EQ(runTarvik({"defaults", "remove", "Example"}).status, 0);
    EXPECT_EQ(runTarvik({"defaults", "read", "Example"}).status, 1);
}

}  // namespace
