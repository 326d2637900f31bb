#include "../support/Program.h"
#include "../support/TemporaryFolder.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <unistd.h>

namespace {

TEST(RunCommand, CapturesFeedsAndReports)
{
    const ProgramResult sorted = runTarvik({"run", "--summary", "--input=-", "sort", "-r"}, "a\nc\nb\n");
    EXPECT_EQ(sorted.status, 0);
    EXPECT_EQ(sorted.out, "c\nb\na\n");
    EXPECT_EQ(sorted.error.substr(0, 38), "sort: 6 bytes of output, 0 of errors, ");
    const ProgramResult both = runTarvik({"run", "/bin/sh", "-c", "echo out; echo --help >&2; exit 7"});
    EXPECT_EQ(both.status, 0) << "whatever the tool's own status";
    EXPECT_EQ(both.out, "out\n");
    EXPECT_EQ(both.error, "--help\n");
    const ProgramResult live =
        runTarvik({"run", "--live", "/bin/sh", "-c", "echo one; sleep 0.1; echo two; echo three >&2"});
    EXPECT_EQ(live.out, "one\ntwo\n");
    EXPECT_EQ(live.error, "three\n");
    for (const char *how : {"--timeout=1", "--live"}) {
        const ProgramResult late =
            runTarvik({"run", how, "-t1", "/bin/sh", "-c", "echo begun; sleep 100 & wait"});
        EXPECT_EQ(late.status, 1);
        EXPECT_EQ(late.out, "begun\n");
        EXPECT_EQ(late.error, "tarvik run: /bin/sh: ended early: time is up\n");
    }
    EXPECT_EQ(runTarvik({"run", "/nonexistent"}).status, 1);
    EXPECT_EQ(runTarvik({"run"}).status, 2);
    EXPECT_EQ(runTarvik({"run", "--timeout=0", "true"}).status, 2);
}

TEST(ImageCommand, CreatesMountsListsAndUnmounts)
{
    if (geteuid() != 0 && access("/dev/fuse", R_OK | W_OK) != 0)
        GTEST_SKIP() << "this user may use neither loop devices nor FUSE";
    TemporaryFolder folder;
    std::filesystem::create_directory(folder / "source");
    folder.write("source/file", "contents");
    const std::string name = folder.path().filename(), path = folder / (name + "\n1.img"),
                      source = folder / "source";
    EXPECT_EQ(runTarvik({"image", "create", source, path}).status, 0);
    EXPECT_EQ(runTarvik({"image", "create", source, path}).status, 1) << "is there already";
    EXPECT_EQ(runTarvik({"image", "create", "--force", source, path}).status, 0);
    EXPECT_EQ(runTarvik({"image", "create", folder / "source/file", folder / "x"}).status, 1);
    EXPECT_NE(runTarvik({"image", "info", path}).out.find("attached: no\n"), std::string::npos);

    const ProgramResult mounted = runTarvik({"image", "mount", path});
    ASSERT_EQ(mounted.status, 0) << mounted.error;
    const std::string point = mounted.out.substr(0, mounted.out.size() - 1);
    EXPECT_EQ(readFile(point + "/file"), "contents");
    EXPECT_NE(runTarvik({"image", "info", path}).out.find("mounted:  "), std::string::npos);
    const std::string table = runTarvik({"image", "list"}).out;
    // The table's columns are as wide as the images of the whole machine need.
    const std::string label = name + "\\n1 ",
                      imagePath = " " + folder.path().native() + "/" + name + "\\n1.img\n";
    const size_t row = table.find(label);
    ASSERT_NE(row, std::string::npos) << table;
    const size_t end = table.find('\n', row) + 1;
    EXPECT_TRUE(table.substr(row, end - row).ends_with(imagePath)) << table;
    EXPECT_NE(runTarvik({"image", "list", "--plist"}).out.find("<string>" + point + "</string>"),
              std::string::npos);
    EXPECT_EQ(runTarvik({"image", "unmount", point}).status, 0);
    EXPECT_EQ(runTarvik({"image", "unmount", path}).status, 0) << "is not mounted: as wished";
    for (const std::string &what : {std::string("/nonexistent"), source})
        for (const char *verb : {"info", "mount", "unmount"})
            EXPECT_EQ(runTarvik({"image", verb, what}).status, 1) << verb << " " << what;
    EXPECT_FALSE(std::filesystem::exists(point));
}

}  // namespace
