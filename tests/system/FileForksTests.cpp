#include "../support/Namespace.h"
#include "../support/TemporaryFolder.h"

#include <CoreFoundation/CoreFoundation.h>
#include <Tarvik/support/CFOwned.h>
#include <Tarvik/system/FileForks.h>
#include <Tarvik/system/FileLabels.h>
#include <Tarvik/system/FileReferences.h>
#include <Tarvik/system/FileURLs.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

namespace {

namespace fs = std::filesystem;

using tarvik::CFOwned;
using String = CFOwned<CFStringRef>;

String text(const std::string &utf8)
{
    return String(CFStringCreateWithCString(nullptr, utf8.c_str(), kCFStringEncodingUTF8));
}

std::string utf8(CFStringRef string)
{
    char bytes[4096];
    const String owned(string);
    return string && CFStringGetCString(string, bytes, sizeof bytes, kCFStringEncodingUTF8) ? bytes
                                                                                            : "(null)";
}

std::string taken(char *bytes)
{
    const std::string copy = bytes ? bytes : "(null)";
    std::free(bytes);
    return copy;
}

FSRef refOf(const std::string &path)
{
    FSRef ref{};
    EXPECT_TRUE(FSMakeFromPosixPath(text(path).get(), &ref)) << path;
    return ref;
}

HFSUniStr255 resourceFork()
{
    HFSUniStr255 name;
    FSGetResourceForkName(&name);
    return name;
}

const HFSUniStr255 kData{}, kResource = resourceFork();

std::string readFork(const FSRef &ref, const HFSUniStr255 &name)
{
    const CFOwned<CFMutableDataRef> data(FSReadFileFork(&ref, &name));
    return data ? std::string(reinterpret_cast<const char *>(CFDataGetBytePtr(data.get())),
                              size_t(CFDataGetLength(data.get())))
                : "(null)";
}

bool writeFork(const FSRef &ref, const HFSUniStr255 &name, const std::string &bytes)
{
    const CFOwned<CFDataRef> data(
        CFDataCreate(nullptr, reinterpret_cast<const UInt8 *>(bytes.data()), CFIndex(bytes.size())));
    return FSWriteFileFork(&ref, &name, data.get());
}

TEST(FileReferenceFunctions, NamesAndPaths)
{
    const TemporaryFolder folder;
    const std::string path = folder.write("caf\xC3\xA9:1", "");
    const FSRef ref = refOf(path), top = refOf(folder.path());
    EXPECT_EQ(utf8(FSCopyNameString(&ref)), "caf\xC3\xA9/1");
    EXPECT_EQ(taken(FSAllocNameCString(&ref, kCFStringEncodingMacRoman)), "caf\x8E/1");
    EXPECT_EQ(taken(FSAllocNameCString(&ref, kCFStringEncodingASCII)), "(null)");
    EXPECT_EQ(utf8(FSCopyPathString(&ref)), path);
    EXPECT_EQ(taken(FSAllocPathUTF8String(&ref)), path);
    EXPECT_EQ(utf8(FSCopyPathStringOfStyle(&ref, kCFURLPOSIXPathStyle)), path);
    const std::string old = utf8(FSCopyPathStringOfStyle(&ref, kCFURLHFSPathStyle));
    EXPECT_TRUE(old.ends_with(":caf\xC3\xA9/1")) << old;
    FSRef again;
    EXPECT_TRUE(FSMakeFromPathString(text(old).get(), kCFURLHFSPathStyle, false, &again));
    EXPECT_EQ(FSCompareFSRefs(&ref, &again), noErr);
    EXPECT_TRUE(FSGetChild(&top, &again, text("caf\xC3\xA9/1").get()));
    EXPECT_EQ(FSCompareFSRefs(&ref, &again), noErr);
    EXPECT_FALSE(FSGetChild(&top, &again, text("none").get()));
    EXPECT_FALSE(FSGetChild(&top, &again, nullptr));
    EXPECT_FALSE(FSMakeFromPosixPath(nullptr, &again));
    EXPECT_EQ(FSCopyNameString(nullptr), nullptr);
    EXPECT_EQ(FSCopyPathString(nullptr), nullptr);

    // Paths of 4,000 bytes, and what the buffer of 1025 does with them.
    std::string deep = folder.path();
    while (deep.size() < 3800)
        deep += "/" + std::string(200, 'd');
    fs::create_directories(deep);
    const FSRef far = refOf(deep);
    EXPECT_EQ(utf8(FSCopyPathString(&far)), deep);
    EXPECT_EQ(FSAllocPathUTF8String(&far), nullptr);
    // No UTF-8: a name, but no path as text.
    FSRef odd;
    const std::string bytes = folder.write("\xFF", "");
    ASSERT_EQ(FSPathMakeRef(reinterpret_cast<const UInt8 *>(bytes.c_str()), &odd, nullptr), noErr);
    EXPECT_EQ(FSCopyPathString(&odd), nullptr);
    const String name(FSCopyNameString(&odd));
    EXPECT_TRUE(FSGetChild(&top, &again, name.get()));
    EXPECT_EQ(FSDeleteObject(&again), noErr);
}

TEST(FileForkFunctions, WholeForks)
{
    const TemporaryFolder folder;
    const FSRef ref = refOf(folder.write("f", "old contents"));
    EXPECT_EQ(readFork(ref, kResource), "");
    for (const HFSUniStr255 &name : {kData, kResource})
        for (const std::string &bytes :
             {std::string("longer contents\0end", 19), std::string("x"), std::string()}) {
            EXPECT_TRUE(writeFork(ref, name, bytes));
            EXPECT_EQ(readFork(ref, name), bytes);
        }
    EXPECT_FALSE(fs::exists(folder / "._f"));
    folder.write("._f", "foreign");
    EXPECT_FALSE(writeFork(ref, kResource, "x"));
    EXPECT_EQ(readFork(ref, kResource), "(null)");
    EXPECT_EQ(folder.read("._f"), "foreign");
    // 4 GiB do not fit in 32 bits; one byte less would.
    ASSERT_EQ(truncate((folder / "f").c_str(), off_t(1) << 32), 0);
    const FSRef other = refOf(folder.write("other", "kept"));
    EXPECT_EQ(readFork(ref, kData), "(null)");
    EXPECT_FALSE(FSCopyFileFork(&ref, &other, &kData));
    EXPECT_EQ(readFork(other, kData), "kept");
}

TEST(FileForkFunctions, CopyOfAFile)
{
    const TemporaryFolder folder;
    fs::create_directory(folder / "to");
    const FSRef to = refOf(folder / "to"), source = refOf(folder.write("source", "data"));
    chmod((folder / "source").c_str(), 0640);
    FSRef copy;
    ASSERT_TRUE(FSCopyFile(&source, &to, text("plain").get(), &copy));
    EXPECT_EQ(readFork(copy, kData), "data");
    EXPECT_FALSE(fs::exists(folder / "to/._plain"));

    ASSERT_TRUE(writeFork(source, kResource, "resources"));
    ASSERT_TRUE(FSSetLabelColorIndex(&source, 5));
    folder.write("to/taken", "in the way");
    ASSERT_TRUE(FSCopyFile(&source, &to, text("taken").get(), &copy));
    EXPECT_EQ(utf8(FSCopyPathString(&copy)), folder / "to/taken");
    EXPECT_EQ(readFork(copy, kData), "data");
    EXPECT_EQ(readFork(copy, kResource), "resources");
    EXPECT_EQ(FSGetLabelColorIndex(&copy), 5u);
    EXPECT_EQ(fs::status(folder / "to/taken").permissions(), fs::perms(0640));
    // A plain file in its place has none of that.
    const FSRef plain = refOf(folder / "to/plain");
    ASSERT_TRUE(FSCopyFile(&plain, &to, text("taken").get(), nullptr));
    EXPECT_FALSE(fs::exists(folder / "to/._taken"));

    // A file that its owner may not write; the copy has its dates.
    ASSERT_TRUE(giveUpRootsAccess());
    chmod((folder / "source").c_str(), 0444);
    fs::last_write_time(folder / "source", fs::file_time_type::clock::now() - std::chrono::hours(1000));
    ASSERT_TRUE(FSCopyFile(&source, &to, text("protected").get(), &copy));
    EXPECT_EQ(readFork(copy, kData) + readFork(copy, kResource), "dataresources");
    EXPECT_EQ(fs::status(folder / "to/protected").permissions(), fs::perms(0444));
    EXPECT_LT(fs::last_write_time(folder / "source") - fs::last_write_time(folder / "to/protected"),
              std::chrono::milliseconds(1));

    EXPECT_FALSE(FSCopyFile(&plain, &to, text("plain").get(), nullptr));  // onto itself
    EXPECT_EQ(readFork(plain, kData), "data");
    EXPECT_FALSE(FSCopyFile(&to, &to, text("x").get(), nullptr));
    EXPECT_FALSE(FSCreateFile(&to, text("").get(), nullptr, nullptr));
    EXPECT_FALSE(FSCreateFile(&to, text("plain").get(), nullptr, nullptr));
}

TEST(FileLabelFunctions, TableAndFiles)
{
    const TemporaryFolder folder;
    const FSRef ref = refOf(folder.write("f", "")), top = refOf(folder.path());
    for (UInt32 index = 0; index < 8; ++index) {
        EXPECT_EQ(LabelColorValueToIndex(LabelColorIndexToValue(index)), index);
        EXPECT_TRUE(FSSetLabelColorIndex(&ref, index));
        EXPECT_EQ(FSGetLabelColorIndex(&ref), index);
    }
    EXPECT_EQ(LabelColorIndexToValue(1), 0x0C);
    EXPECT_EQ(LabelColorIndexToValue(8), 0);
    EXPECT_EQ(LabelColorValueToIndex(0x03), 0u);
    EXPECT_TRUE(FSSetLabelColorValue(&ref, 0x4D));
    EXPECT_EQ(FSGetLabelColorValue(&ref), 0x4D);
    EXPECT_EQ(FSGetLabelColorIndex(&ref), 0u);
    EXPECT_TRUE(FSSetLabelColorIndex(&ref, 8));
    EXPECT_EQ(FSGetLabelColorValue(&ref), 0);
    EXPECT_TRUE(FSSetLabelColorIndex(&top, 3));
    EXPECT_EQ(FSGetLabelColorIndex(&top), 3u);
    fs::remove(folder.path().string() + "/../._" + folder.path().filename().string());
    EXPECT_FALSE(FSSetLabelColorIndex(nullptr, 1));
}

TEST(FileForkFunctions, MachOBinaries)
{
    const TemporaryFolder folder;
    const std::pair<std::string, bool> cases[] = {{"\xCA\xFE\xBA\xBE...", true},
                                                  {"\xBE\xBA\xFE\xCA", true},
                                                  {"\xFE\xED\xFA\xCE", true},
                                                  {"\xCF\xFA\xED\xFE...", true},
                                                  {"\xCA\xFE\xBA", false},
                                                  {"\x7F"
                                                   "ELF",
                                                   false},
                                                  {"", false},
                                                  {std::string(4, '\0'), false}};
    for (const auto &[bytes, isMachO] : cases) {
        const FSRef ref = refOf(folder.write("f", bytes));
        EXPECT_EQ(FSIsMachOBinary(&ref) != 0, isMachO) << bytes;
    }
    const FSRef top = refOf(folder.path());
    EXPECT_FALSE(FSIsMachOBinary(&top));
}

TEST(FileURLFunctions, ItemsFoldersAndProperties)
{
    const TemporaryFolder folder;
    const std::string path = folder.write("f", "");
    fs::create_symlink("f", folder / "link");
    const auto urlOf = [](const std::string &where) {
        return CFOwned<CFURLRef>(
            CFURLCreateWithFileSystemPath(nullptr, text(where).get(), kCFURLPOSIXPathStyle, false));
    };
    const auto url = urlOf(path), link = urlOf(folder / "link"), none = urlOf(folder / "none");
    EXPECT_TRUE(CFURLIsExist(url.get()));
    EXPECT_FALSE(CFURLIsExist(none.get()));
    for (const char *other : {"http://example.org/etc/hosts", "mailto:/etc/hosts"}) {
        const CFOwned<CFURLRef> remote(CFURLCreateWithString(nullptr, text(other).get(), nullptr));
        EXPECT_FALSE(CFURLIsExist(remote.get())) << other;
        EXPECT_EQ(CFURLCopyPosixPath(remote.get()), nullptr) << other;
    }
    EXPECT_FALSE(CFURLIsExist(nullptr));
    EXPECT_EQ(utf8(CFURLCopyPosixPath(link.get())), path);
    EXPECT_EQ(CFURLCopyPosixPath(none.get()), nullptr);
    FSSpec spec;
    ASSERT_TRUE(CFURLGetFSSpec(url.get(), &spec));
    const CFOwned<CFURLRef> again(CFURLCreateFromFSSpec(&spec));
    EXPECT_EQ(utf8(CFURLCopyPosixPath(again.get())), path);

    EXPECT_TRUE(CFURLSetFilePOSIXMode(url.get(), 0604));
    struct stat status;
    stat(path.c_str(), &status);
    EXPECT_EQ(status.st_mode & 07777, 0604u);
    EXPECT_TRUE(CFURLSetFileOwnerID(url.get(), status.st_uid));
    EXPECT_FALSE(CFURLSetFilePOSIXMode(none.get(), 0600));

    setenv("XDG_CONFIG_HOME", (folder / "config").c_str(), 1);
    EXPECT_EQ(CFURLCreateWithFindFolder(kUserDomain, kPreferencesFolderType, false, nullptr, false), nullptr);
    const CFOwned<CFURLRef> inside(
        CFURLCreateWithFindFolder(kUserDomain, kPreferencesFolderType, true, text("x").get(), true));
    EXPECT_EQ(utf8(CFURLCopyFileSystemPath(inside.get(), kCFURLPOSIXPathStyle)), folder / "config/x");
    EXPECT_EQ(CFBundleCreateWithFindFolder(kUserDomain, kPreferencesFolderType, text("x").get()), nullptr);
    fs::create_directory(folder / "config/x");
    EXPECT_TRUE(CFOwned<CFBundleRef>(
        CFBundleCreateWithFindFolder(kUserDomain, kPreferencesFolderType, text("x").get())));
    EXPECT_EQ(CFBundleCreateWithFindFolder(kUserDomain, kPreferencesFolderType, nullptr), nullptr);
}

}  // namespace
