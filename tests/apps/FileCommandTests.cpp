#include "../support/Program.h"
#include "../support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>

namespace {

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
    EXPECT_EQ(runTarvik({"file", "forks", file}).out,
              "data                 4  " + file + "\nresource       1500000  " + file + "\n");
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
    EXPECT_EQ(runTarvik({"copy", a}).status, 2);
}

TEST(CopyCommand, WholeFolders)
{
    const TemporaryFolder folder;
    const std::string top = folder / "top", copy = folder / "copy";
    fs::create_directories(top + "/sub/empty");
    folder.write("top/sub/file", "data");
    folder.write("top/sub/b\xFF", "bytes");
    folder.write("top/._orphan", "orphan");
    fs::create_symlink("../nowhere", top + "/sub/link");
    ASSERT_EQ(runTarvik({"file", "put", "-r", top + "/sub/file"}, "resources").status, 0);
    ASSERT_EQ(runTarvik({"file", "label", "--set=red", top + "/sub", top}).status, 0);
    fs::permissions(top + "/sub", fs::perms(0555));
    fs::last_write_time(top + "/sub", fs::file_time_type::clock::now() - std::chrono::hours(1000));

    EXPECT_EQ(runTarvik({"copy", top, copy}).status, 0);
    EXPECT_EQ(runProgram({"diff", "-r", "--no-dereference", "--exclude=._sub", top, copy}).out, "")
        << "companions too";
    EXPECT_EQ(runTarvik({"file", "label", copy}).out, "red     " + copy + "\n");
    EXPECT_EQ(fs::status(copy + "/sub").permissions(), fs::perms(0555));
    EXPECT_LT(fs::last_write_time(top + "/sub") - fs::last_write_time(copy + "/sub"),
              std::chrono::milliseconds(1));

    // Again, into what is there; one item that fails keeps no other one from being copied.
    ASSERT_EQ(mkfifo((top + "/fifo").c_str(), 0600), 0);
    folder.write("top/zero", "new");
    fs::create_directories(copy + "/top");
    const ProgramResult again = runTarvik({"copy", top, copy});
    EXPECT_EQ(again.status, 1);
    EXPECT_EQ(again.error, "tarvik copy: " + top + "/fifo: is no file, folder or link\n");
    EXPECT_EQ(readFile(copy + "/top/zero"), "new");
    EXPECT_EQ(runTarvik({"copy", top, top + "/sub"}).status, 1) << "a folder into itself";
    folder.write("top/._zero", "foreign");
    EXPECT_EQ(runTarvik({"copy", top + "/zero", folder / "alone"}).status, 1) << "without its second fork";
    EXPECT_EQ(folder.read("alone"), "new");
    for (const std::string &place : {top, copy, copy + "/top"})
        fs::permissions(place + "/sub", fs::perms::owner_all);
}

// Without blocks but for its first and last bytes, so that it costs neither time nor room.
TEST(CopyCommand, TakesFilesOfAnySize)
{
    const TemporaryFolder folder;
    const std::string film = folder.write("film", "begin"), copy = folder / "copies/film";
    constexpr uint64_t kSize = uint64_t(5) << 30;
    fs::resize_file(film, kSize - 3);
    std::ofstream(film, std::ios::app) << "end";
    ASSERT_EQ(runTarvik({"file", "put", "-r", film}, "resources").status, 0);
    ASSERT_EQ(runTarvik({"file", "label", "--set=red", film}).status, 0);
    fs::permissions(film, fs::perms(0640));
    fs::create_directories(folder / "copies");
    folder.write("copies/film", "old");
    for (int round = 0; round < 2; ++round) {
        const ProgramResult result = runTarvik({"copy", film, folder / "copies"});
        ASSERT_EQ(result.status, 0) << result.error;
        ASSERT_EQ(fs::file_size(copy), kSize);
        struct stat about;
        ASSERT_EQ(stat(copy.c_str(), &about), 0);
        EXPECT_LT(about.st_blocks, 1000) << "holes stay holes";
        EXPECT_EQ(about.st_mode & 0777, 0640u);
        std::ifstream file(copy);
        std::string begin(5, ' '), end(3, ' ');
        file.read(begin.data(), 5).seekg(-3, std::ios::end).read(end.data(), 3);
        EXPECT_EQ(begin + end, "beginend");
        EXPECT_EQ(runTarvik({"file", "cat", "-r", copy}).out, "resources");
        EXPECT_EQ(runTarvik({"file", "label", copy}).out, "red     " + copy + "\n");
    }
    fs::create_directories(folder / "taken/film/keep");
    EXPECT_EQ(runTarvik({"copy", film, folder / "taken"}).status, 1) << "a folder in its place";
    EXPECT_TRUE(fs::exists(folder / "taken/film/keep"));
    EXPECT_EQ(runTarvik({"copy", film, film}).status, 1);
    EXPECT_EQ(fs::file_size(film), kSize);
    EXPECT_EQ(runProgram({"find", folder.path(), "-name", ".tarvik-*"}).out, "");
}

TEST(OpenCommand, AFileMayBeCalledAsAURL)
{
    const TemporaryFolder folder;
    fs::create_directory(folder / "odd:name.app");
    fs::current_path(folder.path());
    EXPECT_EQ(runTarvik({"open", "--which", "odd:name.app"}).out,
              fs::canonical("odd:name.app").native() + "\n");
}

}  // namespace
