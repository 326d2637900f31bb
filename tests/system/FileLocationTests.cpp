// Files and folders by path, well-known folders, and locations held as a path or a URL.
#include "../support/TemporaryFolder.h"

#include <Carbon/Folders.h>
#include <Tarvik/system/FileFunctions.h>
#include <Tarvik/system/FilePaths.h>
#include <Tarvik/system/FileUtils.h>
#include <Tarvik/system/SpecialFolders.h>
#include <Tarvik/system/TFileLocationInfo.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>

namespace fs = std::filesystem;

namespace {

TFileLocationInfo at(const std::string &path)
{
    TFileLocationInfo location;
    location.kind = TFileLocationInfo::kPath;
    location.path = path;
    return location;
}

TFileLocationInfo byURL(const std::string &path)
{
    TFileLocationInfo location;
    location.url = at(path).CreateCFURL();
    location.kind = TFileLocationInfo::kURL;
    return location;
}

mode_t modeOf(const std::string &path)
{
    struct stat status = {};
    stat(path.c_str(), &status);
    return status.st_mode & 07777;
}

TEST(FilePaths, AreTakenApart)
{
    const struct {
        const char *path, *name, *folder;
    } cases[] = {{"/usr/lib", "lib", "/usr"},
                 {"/usr/lib/", "", "/usr/lib"},
                 {"lib", "lib", ""},
                 {"/lib", "lib", ""},
                 {"", "", ""},
                 {"a//b", "b", "a/"}};
    for (const auto &[path, name, folder] : cases) {
        EXPECT_EQ(Utils::GetFilenameFromPath(path), name) << path;
        EXPECT_EQ(Utils::GetDirFromPath(path), folder) << path;
    }
    const struct {
        const char *path, *parent, *name;
    } parents[] = {{"/usr/lib/", "/usr", "lib"},
                   {"/usr/lib:", "/usr", "lib"},
                   {"/a\\b\\", "", "a\\b"},
                   {"/usr/l\xC3\xB6", "/usr", "l\xC3\xB6"}};
    for (const auto &[path, parent, name] : parents) {
        std::string found, folder;
        CFURLRef url = GetParentFolderURL(path, found);
        if (*parent) {
            ASSERT_TRUE(url) << path;
            EXPECT_TRUE(TFileLocationInfo::GetPathFromCFURLRef(url, folder));
            EXPECT_FALSE(CFURLHasDirectoryPath(url));
        }
        EXPECT_EQ(found, name) << "also where there is no URL";
        EXPECT_EQ(folder, parent) << path;
        if (url)
            CFRelease(url);
    }
    std::string untouched = "as it was";
    for (const char *path : {"lib", "lib/", "", "/"})
        EXPECT_FALSE(GetParentFolderURL(path, untouched)) << path;
    EXPECT_EQ(untouched, "as it was");
}

TEST(FileFunctions, KeepTheirQuirks)
{
    const TemporaryFolder folder;
    const std::string path = fs::canonical(folder.path()), before = fs::current_path();
    const std::string file = folder.write("file", "five!");
    EXPECT_FALSE(Utils::DirExists(folder / "missing"));
    EXPECT_FALSE(Utils::DirExists(file));
    EXPECT_EQ(fs::current_path(), before);
    EXPECT_TRUE(Utils::DirExists(path));
    EXPECT_EQ(fs::current_path(), path) << "a success stays in the folder";

    std::string text = "as it was";
    EXPECT_TRUE(Utils::GetCurrentDir(text));
    EXPECT_EQ(text, "as it was");
    EXPECT_EQ(Utils::GetHomeDirName(), "");
    unsigned char digest[16] = {7};
    EXPECT_FALSE(Utils::GetFileMD5Checksum(file, digest));
    EXPECT_EQ(digest[0], 7);
    EXPECT_TRUE(Utils::ListDirectory(path).empty());

    // A working directory whose path takes 300 bytes or more can't be "read".
    const std::string deep = folder / std::string(200, 'x') / std::string(200, 'y');
    EXPECT_TRUE(Utils::CreateDirPath(deep, true));
    EXPECT_TRUE(Utils::SetCurrentDir(deep));
    EXPECT_FALSE(Utils::GetCurrentDir(text));
    EXPECT_TRUE(Utils::SetCurrentDir(before));
}

TEST(FileFunctions, MakeExamineAndRemove)
{
    const TemporaryFolder folder;
    const std::string file = folder.write("file", "five!"), sub = folder / "sub",
                      missing = folder / "missing";
    struct stat status;
    ASSERT_EQ(stat(file.c_str(), &status), 0);
    EXPECT_EQ(Utils::GetFileCreationDate(file), uint32_t(status.st_ctime));
    EXPECT_EQ(Utils::GetFileLength(file), 5u);
    fs::resize_file(file, (1ull << 32) + 3);
    EXPECT_EQ(Utils::GetFileLength(file), 3u);
    EXPECT_EQ(Utils::GetFileLength(missing) + Utils::GetFileCreationDate(missing), 0u);
    EXPECT_TRUE(Utils::FileExists(file));
    EXPECT_FALSE(Utils::FileExists(missing));

    EXPECT_FALSE(Utils::CreateDir(sub + "/under", false)) << "no parents are made";
    EXPECT_TRUE(Utils::CreateDir(sub, true));
    EXPECT_EQ(modeOf(sub) & 0700, 0700u);
    EXPECT_TRUE(Utils::CreateDir(sub, false));
    EXPECT_FALSE(Utils::CreateDir(sub, true));
    EXPECT_TRUE(Utils::CreateDirPath(sub + "/a/b/", true));
    EXPECT_TRUE(fs::is_directory(sub + "/a/b"));
    EXPECT_FALSE(Utils::CreateDirPath(sub + "/a/b", true));
    EXPECT_TRUE(Utils::CreateDirPath(sub + "/a/b", false));
    EXPECT_FALSE(Utils::CreateDirPath(file + "/a", false));
    EXPECT_FALSE(Utils::CreateDirPath("", false));
    std::string endless = sub;
    for (int i = 0; i < 500'000; ++i)
        endless += "/e";
    EXPECT_FALSE(Utils::CreateDirPath(endless, false))
        << "and neither runs out of stack nor makes a part of it";
    EXPECT_FALSE(fs::exists(sub + "/e"));

    for (bool recursive : {false, true})
        EXPECT_FALSE(Utils::DeleteDir(sub, recursive)) << "never what is in it";
    EXPECT_TRUE(Utils::DeleteDir(sub + "/a/b", true));
    EXPECT_FALSE(Utils::DoDeleteFile(sub));
    EXPECT_TRUE(Utils::DoDeleteFile(file));
    EXPECT_FALSE(Utils::DoDeleteFile(file));
}

TEST(SpecialFolders, FollowTheUsersSettings)
{
    const TemporaryFolder folder;
    const std::string base = folder.path();
    setenv("TMPDIR", (base + "/tmp/").c_str(), 1);
    EXPECT_EQ(Utils::GetTempDirName(), base + "/tmp");
    EXPECT_TRUE(fs::is_directory(base + "/tmp")) << "made when missing";
    setenv("TMPDIR", "relative", 1);
    EXPECT_EQ(Utils::GetTempDirName(), "/tmp");
    setenv("TMPDIR",
           (base + "/" + std::string(200, 'x') + "/" + std::string(255, 'y') + "/" + std::string(60, 'z'))
               .c_str(),
           1);
    EXPECT_EQ(Utils::GetTempDirName(), "") << "more than 511 bytes";
    setenv("TMPDIR", folder.write("file", "").c_str(), 1);
    EXPECT_EQ(Utils::GetTempDirName(), "");

    setenv("HOME", base.c_str(), 1);
    EXPECT_EQ(Utils::GetUserDocumentsDirName(), base + "/Documents");
    fs::create_directory(folder / ".config");
    folder.write(".config/user-dirs.dirs",
                 "# as xdg-user-dirs writes it\nXDG_DOCUMENTS_DIR=\"$HOME/My \\\"Papers\\\"\"\n"
                 "XDG_MUSIC_DIR=\"$HOME/Sound\"\n");
    EXPECT_EQ(Utils::GetUserDocumentsDirName(), base + "/My \"Papers\"");
    char found[PATH_MAX];
    const std::pair<OSType, std::string> folders[] = {{kMusicDocumentsFolderType, base + "/Sound"},
                                                      {kDownloadsFolderType, base + "/Downloads"},
                                                      {kTrashFolderType, base + "/data/Trash/files"},
                                                      {kBootDiskFolderType, "/"}};
    setenv("XDG_DATA_HOME", (base + "/data").c_str(), 1);
    for (const auto &[type, place] : folders) {
        ASSERT_EQ(FSFindFolderPath(kUserDomain, type, true, found, sizeof found), noErr) << place;
        EXPECT_EQ(found, place);
    }
    TFileLocationInfo support;
    ASSERT_TRUE(file_utils::GetAppSupportFolder(support));
    EXPECT_EQ(support.kind, TFileLocationInfo::kPath);
    EXPECT_EQ(support.path, "/usr/local/share");
}

TEST(FileLocation, CopiesAreSafe)
{
    TFileLocationInfo url = byURL("/tmp/a b/\xC3\xA9/");
    EXPECT_EQ(url.GetFullPath().substr(0, 11), "/tmp/a b/\xC3\xA9");
    EXPECT_TRUE(url.IsFolder());
    TFileLocationInfo &self = url;
    url = self;
    {
        TFileLocationInfo copy(url), other = byURL("/etc");
        other = copy;
        other = at("/x");
        EXPECT_EQ(other.GetFullPath(), "/x");
        EXPECT_TRUE(other.url) << "the old one stays, and no longer counts";
        other = copy;
        copy = TFileLocationInfo();
        EXPECT_EQ(copy.GetFullPath(), "");
        EXPECT_EQ(other.GetFullPath(), url.GetFullPath());
    }
    EXPECT_EQ(CFGetRetainCount(url.url), 1);
    CFURLRef made = url.CreateCFURL();
    EXPECT_EQ(made, url.url);
    EXPECT_EQ(CFGetRetainCount(made), 2);
    CFRelease(made);
    EXPECT_FALSE(at("/tmp/\xFF").CreateCFURL()) << "not UTF-8";
}

TEST(FileLocation, IsMadeExaminedAndRemoved)
{
    const TemporaryFolder folder;
    const std::string file = folder / "file", sub = folder / "sub";
    for (const bool asURL : {false, true}) {
        const TFileLocationInfo named = asURL ? byURL(file) : at(file),
                                named2 = asURL ? byURL(sub + "/") : at(sub + "/");
        EXPECT_FALSE(named.IsFile());
        EXPECT_TRUE(file_utils::CreateFile(named));
        folder.write("file", "text");
        EXPECT_TRUE(file_utils::CreateFile(named)) << "there already";
        EXPECT_EQ(fs::file_size(file), 4u);
        EXPECT_FALSE(file_utils::CreateDir(named)) << "a file is in the way";
        EXPECT_TRUE(named.CreateFile());
        EXPECT_EQ(fs::file_size(file), 0u) << "emptied";
        EXPECT_TRUE(named.IsFile());
        EXPECT_FALSE(named.IsFolder());
        EXPECT_FALSE(file_utils::DeleteDir(named));

        chmod(file.c_str(), 04751);
        fs::remove(folder / "link");
        fs::create_symlink(file, folder / "link");
        EXPECT_TRUE(file_utils::SetPermissions(named, true));
        EXPECT_EQ(modeOf(file), 0777u);
        EXPECT_TRUE(file_utils::SetPermissions(at(folder / "link"), false));
        EXPECT_EQ(modeOf(file), 0666u) << "through the link";

        EXPECT_TRUE(file_utils::CreateDir(named2));
        EXPECT_TRUE(file_utils::CreateDir(named2)) << "there already";
        EXPECT_FALSE(file_utils::CreateDir(at(folder / "no/parents")));
        folder.write("sub/inside", "");
        EXPECT_TRUE(named2.IsFolder());
        EXPECT_TRUE(named2.Delete());
        EXPECT_FALSE(fs::exists(sub));
        EXPECT_FALSE(named2.Delete());
        fs::create_directories(sub + "/inside");
        EXPECT_TRUE(file_utils::DeleteFile(at(sub))) << "folders too";
        EXPECT_FALSE(fs::exists(sub));
        EXPECT_TRUE(named.Delete());
        EXPECT_FALSE(file_utils::DeleteFile(named));
        EXPECT_FALSE(file_utils::SetPermissions(named, true));
    }
    const TFileLocationInfo none;
    EXPECT_EQ(none.GetFullPath(), "");
    EXPECT_EQ(none.CreateCFURL(), nullptr);
    for (auto operation :
         {file_utils::CreateFile, file_utils::CreateDir, file_utils::DeleteFile, file_utils::DeleteDir})
        EXPECT_FALSE(operation(none));
    EXPECT_FALSE(none.IsFile() || none.IsFolder() || none.CreateFile() || none.Delete() ||
                 file_utils::SetPermissions(none, true));
}

}  // namespace
