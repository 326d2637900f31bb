#include "../support/Program.h"
#include "../support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace
{

namespace fs = std::filesystem;

TEST(FileCommand, LabelsTypesAndForks)
{
    const TemporaryFolder folder;
    const std::string file = folder.write("f", "data"), none = folder / "none";
    EXPECT_EQ(runTarvik({"file", "label", file}).out, "none    " + file + "\n");
    EXPECT_EQ(runTarvik({"file", "label", "--set=purple", file}).status, 0);
    EXPECT_EQ(runTarvik({"file", "label", file}).out, "purple  " + file + "\n");
    EXPECT_EQ(runTarvik({"file", "type", "--type=TEXT", "--creator=a", file}).status, 0);
    EXPECT_EQ(runTarvik({"file", "type", file}).out, "TEXT a     " + file + "\n");
    EXPECT_EQ(runTarvik({"file", "put", "--resource", file}, std::string(1500000, 'r')).status, 0);
    EXPECT_EQ(runTarvik({"file", "cat", "-r", file}).out, std::string(1500000, 'r'));
    EXPECT_EQ(runTarvik({"file", "forks", file}).out, "data                 4  " + file + "\nresource       1500000  " + file + "\n");
    EXPECT_NE(runTarvik({"file", "info", file}).out.find("label       purple\n"), std::string::npos);

    const ProgramResult mixed = runTarvik({"file", "label", none, file});
    EXPECT_EQ(mixed.status, 1);
    EXPECT_EQ(mixed.out, "purple  " + file + "\n");
    EXPECT_NE(mixed.error.find(none + ": no such file"), std::string::npos) << mixed.error;
    EXPECT_EQ(runTarvik({"file", "label", "--set=pink", file}).status, 2);
    EXPECT_EQ(runTarvik({"file", "type", "--type=TOOLONG", file}).status, 2);
    EXPECT_EQ(runTarvik({"file", "cat", folder.path()}).status, 1);
}

TEST(CopyCommand, IntoFoldersAndToNames)
{
    const TemporaryFolder folder;
    const std::string a = folder.write("a", "aa"), b = folder.write("b\xFF", "bb"), to = folder / "to";
    fs::create_directory(to);
    ASSERT_EQ(runTarvik({"file", "put", "-r", a}, "resources").status, 0);
    EXPECT_EQ(runTarvik({"copy", a, b, to}).status, 0);
    EXPECT_EQ(runTarvik({"file", "cat", "-r", to + "/a"}).out, "resources");
    EXPECT_EQ(readFile(to + "/b\xFF"), "bb");
    EXPECT_EQ(runTarvik({"copy", b, folder / "c:d"}).status, 0);
    EXPECT_EQ(folder.read("c:d"), "bb");
    EXPECT_EQ(runTarvik({"copy", a, a}).status, 1);
    EXPECT_EQ(folder.read("a"), "aa");
    EXPECT_EQ(runTarvik({"copy", a, b, folder / "none"}).status, 1);
    EXPECT_EQ(runTarvik({"copy", to, folder / "x"}).status, 1);
    EXPECT_EQ(runTarvik({"copy", a}).status, 2);
}

}  // namespace
