#include "../support/Namespace.h"
#include "../support/Program.h"
#include "../support/TemporaryFolder.h"

#include <Carbon/Files.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <numeric>
#include <thread>
#include <vector>

namespace {

namespace fs = std::filesystem;

FSRef refOf(const std::string &path, OptionBits options = 0)
{
    FSRef ref{};
    EXPECT_EQ(FSPathMakeRefWithOptions(reinterpret_cast<const UInt8 *>(path.c_str()), options, &ref, nullptr),
              noErr)
        << path;
    return ref;
}

/// The path, or the error as text.
std::string pathOf(const FSRef &ref)
{
    UInt8 path[8192];
    const OSStatus error = FSRefMakePath(&ref, path, sizeof path);
    return error == noErr ? reinterpret_cast<const char *>(path) : std::to_string(error);
}

std::vector<UniChar> units(const std::u16string &text) { return {text.begin(), text.end()}; }

OSErr child(const FSRef &folder, const std::u16string &name, FSRef &ref)
{
    const auto text = units(name);
    return FSMakeFSRefUnicode(&folder, text.size(), text.data(), 0xFFFF, &ref);
}

std::u16string catalogName(const FSRef &ref)
{
    HFSUniStr255 name{};
    EXPECT_EQ(FSGetCatalogInfo(&ref, 0, nullptr, &name, nullptr, nullptr), noErr);
    return {name.unicode, name.unicode + name.length};
}

const std::string kGone = std::to_string(fnfErr);
const std::u16string kResource = u"RESOURCE_FORK";

OSErr openFork(const FSRef &ref, const std::u16string &name, SInt8 permissions, FSIORefNum &fork)
{
    const auto text = units(name);
    return FSOpenFork(&ref, text.size(), text.data(), permissions, &fork);
}

OSErr writeFork(const FSRef &ref, const std::u16string &name, const std::string &bytes)
{
    FSIORefNum fork;
    OSErr error = openFork(ref, name, fsRdWrPerm, fork);
    if (error != noErr)
        return error;
    FSSetForkSize(fork, fsFromStart, 0);
    error = FSWriteFork(fork, fsFromStart, 0, ByteCount(bytes.size()), bytes.data(), nullptr);
    const OSErr closed = FSCloseFork(fork);
    return error == noErr ? closed : error;
}

std::string readFork(const FSRef &ref, const std::u16string &name)
{
    FSIORefNum fork;
    if (const OSErr error = openFork(ref, name, fsRdPerm, fork); error != noErr)
        return std::to_string(error);
    SInt64 size = 0;
    EXPECT_EQ(FSGetForkSize(fork, &size), noErr);
    std::string bytes(size_t(size), 0);
    ByteCount actual = 0;
    EXPECT_EQ(FSReadFork(fork, fsFromStart, 0, ByteCount(size), bytes.data(), &actual), noErr);
    EXPECT_EQ(FSCloseFork(fork), noErr);
    return bytes;
}

std::string big(uint64_t value, int bytes)
{
    std::string text;
    while (bytes-- > 0)
        text += char(value >> (8 * bytes));
    return text;
}

struct Entry {
    uint32_t id;
    std::string bytes;
};
/// An AppleDouble file, byte by byte.
std::string appleDouble(const std::vector<Entry> &entries, uint32_t version = 0x00020000)
{
    std::string table, bodies;
    for (const Entry &entry : entries) {
        table +=
            big(entry.id, 4) + big(26 + 12 * entries.size() + bodies.size(), 4) + big(entry.bytes.size(), 4);
        bodies += entry.bytes;
    }
    return big(0x00051607, 4) + big(version, 4) + std::string("Mac OS X        ") + big(entries.size(), 2) +
           table + bodies;
}

const std::string kInfo = "TEXTttxt" + big(0x000C, 2) + std::string(22, 0);

TEST(FileReferences, FollowTheItem)
{
    const TemporaryFolder folder;
    for (const char *name : {"a", "a/b", "a/b/c", "far", "far/away"})
        fs::create_directory(folder / name);
    const std::string file = folder.write("a/b/c/file", "x");
    const FSRef ref = refOf(file), above = refOf(folder / "a/b");

    fs::rename(file, folder / "a/b/c/renamed");
    EXPECT_EQ(pathOf(ref), folder / "a/b/c/renamed");
    ASSERT_EQ(runProgram({"mv", folder / "a/b/c/renamed", folder / "far/away/moved"}).status, 0);
    EXPECT_EQ(pathOf(ref), folder / "far/away/moved");
    fs::rename(folder / "far/away/moved", folder / "a/b/c/file");
    fs::rename(folder / "a/b", folder / "far/B");  // a folder above it
    EXPECT_EQ(pathOf(ref), folder / "far/B/c/file");
    EXPECT_EQ(pathOf(above), folder / "far/B");

    // An editor's save: the name leads to a new file now, and the old one is gone.
    const FSRef before = refOf(folder / "far/B/c/file");
    fs::rename(folder.write("new", "y"), folder / "far/B/c/file");
    EXPECT_EQ(pathOf(ref), kGone);
    const FSRef after = refOf(folder / "far/B/c/file");
    EXPECT_EQ(FSCompareFSRefs(&before, &ref), noErr);
    EXPECT_EQ(FSCompareFSRefs(&before, &after), errFSRefsDifferent);
    fs::remove(folder / "far/B/c/file");
    folder.write("far/B/c/file", "z");
    EXPECT_EQ(pathOf(after), kGone);
    EXPECT_EQ(pathOf(FSRef{}), std::to_string(errFSBadFSRef));
    UInt8 small[4];
    EXPECT_EQ(FSRefMakePath(&above, small, sizeof small), pathTooLongErr);
}

// Far more references than descriptors: the tree and the search find what the kernel no longer leads to.
TEST(FileReferences, ManyInBoundedSpace)
{
    const TemporaryFolder folder;
    const size_t before = openDescriptors();
    fs::create_directories(folder / "in/here");
    fs::create_directories(folder / "other/place");
    std::vector<FSRef> refs;
    for (int i = 0; i < 2000; ++i)
        refs.push_back(refOf(folder.write("in/here/" + std::to_string(i), "")));
    EXPECT_LE(openDescriptors(), before + 256);
    fs::rename(folder / "in/here/3", folder / "in/here/three");
    fs::rename(folder / "in/here/4", folder / "other/place/four");
    fs::remove(folder / "in/here/5");
    EXPECT_EQ(pathOf(refs[3]), folder / "in/here/three");
    EXPECT_EQ(pathOf(refs[4]), folder / "other/place/four");
    EXPECT_EQ(pathOf(refs[5]), kGone);
    EXPECT_EQ(pathOf(refs[1999]), folder / "in/here/1999");
    fs::rename(folder / "in", folder / "out");
    EXPECT_EQ(pathOf(refs[0]), folder / "out/here/0");
    EXPECT_EQ(pathOf(refs[3]), folder / "out/here/three");
}

/// A descriptor keeps a deleted file's room on the disk taken.
TEST(FileReferences, LetGoOfLargeAndDeletedFiles)
{
    const TemporaryFolder folder;
    const FSRef kept = refOf(folder.write("kept", ""));
    const size_t before = openDescriptors();
    ASSERT_EQ(truncate(folder.write("large", "").c_str(), 1 << 30), 0);
    const FSRef large = refOf(folder / "large");
    EXPECT_EQ(openDescriptors(), before);
    fs::rename(folder / "large", folder / "large, renamed");
    EXPECT_EQ(pathOf(large), folder / "large, renamed");
    const FSRef small = refOf(folder.write("small", "")), growing = refOf(folder.write("growing", ""));
    EXPECT_EQ(openDescriptors(), before + 2);
    ASSERT_EQ(truncate((folder / "growing").c_str(), 1 << 30), 0);
    EXPECT_EQ(pathOf(growing), folder / "growing");
    EXPECT_EQ(openDescriptors(), before + 1);
    fs::remove(folder / "small");
    std::this_thread::sleep_for(std::chrono::milliseconds(1100));
    EXPECT_EQ(pathOf(kept), folder / "kept");
    EXPECT_LE(openDescriptors(), before);
    EXPECT_EQ(pathOf(small), kGone);
}

TEST(FileReferences, LinksAndOddPaths)
{
    const TemporaryFolder folder;
    const std::string file = folder.write("file", "x"), path = folder.path();
    fs::create_directory(folder / "dir");
    fs::create_symlink("file", folder / "link");
    fs::create_symlink("dir", folder / "dirlink");
    fs::create_symlink("loop", folder / "loop");
    fs::create_hard_link(file, folder / "second");
    folder.write("dir/x", "");
    EXPECT_EQ(pathOf(refOf(folder / "link")), file);
    EXPECT_EQ(pathOf(refOf(folder / "link", kFSPathMakeRefDoNotFollowLeafSymlink)), folder / "link");
    EXPECT_EQ(pathOf(refOf(path + "//dir/../dirlink/./x")), folder / "dir/x");
    EXPECT_EQ(pathOf(refOf("/")), "/");
    ASSERT_EQ(chdir(path.c_str()), 0);
    EXPECT_EQ(pathOf(refOf("dir")), folder / "dir");
    const FSRef first = refOf(file), second = refOf(folder / "second");
    EXPECT_EQ(FSCompareFSRefs(&first, &second), noErr);
    EXPECT_EQ(pathOf(first), file);
    EXPECT_EQ(pathOf(second), folder / "second");
    fs::remove(folder / "second");
    EXPECT_EQ(pathOf(second), file);  // the file has another name left

    const auto error = [](const std::string &where) {
        FSRef ref;
        return FSPathMakeRef(reinterpret_cast<const UInt8 *>(where.c_str()), &ref, nullptr);
    };
    EXPECT_EQ(error(folder / "none"), fnfErr);
    EXPECT_EQ(error(folder / "file/x"), dirNFErr);
    EXPECT_EQ(error(folder / "loop"), bdNamErr);
    EXPECT_EQ(error(""), fnfErr);
    EXPECT_EQ(error(path + "/" + std::string(256, 'a')), errFSNameTooLong);
    FSRef made;
    EXPECT_EQ(child(first, u"x", made), errFSNotAFolder);
}

TEST(FileReferences, NamesOfEveryKind)
{
    const TemporaryFolder folder;
    const FSRef top = refOf(folder.path());
    const std::pair<std::string, std::u16string> names[] = {
        {"a:b", u"a/b"},
        {"\xE6\x97\xA5\xF0\x9F\x8D\x8E", u"\u65E5\U0001F34E"},
        {"caf\xE9", u"caf\xDCE9"},                // Latin-1: no UTF-8
        {"\xED\xA0\x80", u"\xDCED\xDCA0\xDC80"},  // half a surrogate pair, as bytes
        {std::string(255, 'n'), std::u16string(255, u'n')}};
    for (const auto &[bytes, name] : names) {
        folder.write(bytes, "");
        FSRef ref;
        ASSERT_EQ(child(top, name, ref), noErr) << bytes;
        EXPECT_EQ(pathOf(ref), folder / bytes);
        EXPECT_EQ(catalogName(ref), name);
    }
    // A name is found in whatever normal form it stands, and kept in that.
    folder.write("e\xCC\x81", "");
    FSRef ref;
    ASSERT_EQ(child(top, u"\u00E9", ref), noErr);
    EXPECT_EQ(catalogName(ref), u"e\u0301");
    const UniChar composed[] = {0x00E9};
    EXPECT_EQ(FSCreateFileUnicode(&top, 1, composed, 0, nullptr, nullptr, nullptr), dupFNErr);
    EXPECT_EQ(child(top, u"", ref), errFSMissingName);
    EXPECT_EQ(child(top, std::u16string(256, u'n'), ref), errFSNameTooLong);
    for (const char16_t *bad : {u".", u"..", u"a:b", u"\xD800"})
        EXPECT_EQ(child(top, bad, ref), bdNamErr);
}

TEST(Catalog, ReadAndSet)
{
    const TemporaryFolder folder;
    const std::string file = folder.write("file.txt", "hello");
    chmod(file.c_str(), 0640);
    const timespec times[2] = {{0, 0}, {951782400, 500000000}};  // 2000-02-29 00:00:00.5
    utimensat(AT_FDCWD, file.c_str(), times, 0);
    const FSRef ref = refOf(file), top = refOf(folder.path());
    FSCatalogInfo info, topInfo;
    FSRef parent;
    ASSERT_EQ(FSGetCatalogInfo(&ref, kFSCatInfoGettableInfo, &info, nullptr, nullptr, &parent), noErr);
    ASSERT_EQ(FSGetCatalogInfo(&top, kFSCatInfoGettableInfo, &topInfo, nullptr, nullptr, nullptr), noErr);
    EXPECT_EQ(sizeof info, 144u);
    EXPECT_EQ(FSCompareFSRefs(&parent, &top), noErr);
    EXPECT_EQ(info.dataLogicalSize, 5u);
    EXPECT_EQ(info.rsrcLogicalSize, 0u);
    EXPECT_EQ(info.permissions.mode, S_IFREG | 0640);
    EXPECT_EQ(info.parentDirID, topInfo.nodeID);
    EXPECT_EQ(info.volume, topInfo.volume);
    EXPECT_EQ(topInfo.nodeFlags, kFSNodeIsDirectoryMask);
    EXPECT_EQ(topInfo.valence, 1u);
    EXPECT_EQ(+info.accessDate.lowSeconds, 2082844800u);
    EXPECT_EQ(+info.contentModDate.lowSeconds, 3034627200u);
    EXPECT_EQ(info.contentModDate.fraction, 0x8000);

    info.contentModDate.lowSeconds += 60;
    info.permissions.mode = 0600;
    info.finderInfo[9] = 0x0C;
    std::copy_n("TEXTttxt", 8, info.finderInfo);
    EXPECT_EQ(FSSetCatalogInfo(&ref, kFSCatInfoSettableInfo, &info), noErr);
    struct stat status;
    stat(file.c_str(), &status);
    EXPECT_EQ(status.st_mtime, 951782460);
    EXPECT_EQ(status.st_mode & 07777, 0600u);
    const std::string companion = folder.read("._file.txt");
    EXPECT_NE(companion.find(std::string("TEXTttxt\0\x0C", 10)), companion.npos);
    // Nothing left to keep: no companion.
    FSCatalogInfo none{};
    EXPECT_EQ(FSSetCatalogInfo(&ref, kFSCatInfoFinderInfo, &none), noErr);
    EXPECT_FALSE(fs::exists(folder / "._file.txt"));
    EXPECT_EQ(FSSetCatalogInfo(&ref, kFSCatInfoDataSizes, &info), errFSBadInfoBitmap);
    EXPECT_EQ(FSGetCatalogInfo(&ref, 0x80000000, &info, nullptr, nullptr, nullptr), errFSBadInfoBitmap);
}

TEST(Catalog, SpecsAndVolumes)
{
    const TemporaryFolder folder;
    const std::string longName = "A rather long name with \xE6\x97\xA5 in it.text";
    for (const std::string &name : {std::string("caf\xC3\xA9"), longName}) {
        const FSRef ref = refOf(folder.write(name, ""));
        FSSpec spec;
        ASSERT_EQ(FSGetCatalogInfo(&ref, 0, nullptr, nullptr, &spec, nullptr), noErr);
        EXPECT_LE(spec.name[0], 31);
        FSRef again;
        ASSERT_EQ(FSpMakeFSRef(&spec, &again), noErr);
        EXPECT_EQ(pathOf(again), folder / name);
    }
    FSRef root;
    HFSUniStr255 name;
    FSVolumeInfo info;
    FSVolumeRefNum volume;
    ASSERT_EQ(FSGetVolumeInfo(0, 0, &volume, kFSVolInfoSizes | kFSVolInfoBlocks, &info, &name, &root), noErr);
    EXPECT_EQ(pathOf(root), "/");
    EXPECT_GT(info.totalBytes, info.freeBytes);
    EXPECT_GT(name.length, 0);
    EXPECT_EQ(FSGetVolumeInfo(0, 10000, nullptr, 0, nullptr, nullptr, nullptr), nsvErr);
    FSSpec spec;
    EXPECT_EQ(FSMakeFSSpec(volume, fsRtDirID, reinterpret_cast<const UInt8 *>("\005no is"), &spec), fnfErr);
    EXPECT_EQ(FSMakeFSSpec(volume, fsRtDirID, reinterpret_cast<const UInt8 *>("\003usr"), &spec), noErr);
}

TEST(Items, CarryTheirCompanions)
{
    const TemporaryFolder folder;
    fs::create_directory(folder / "to");
    const FSRef top = refOf(folder.path()), to = refOf(folder / "to");
    const FSRef ref = refOf(folder.write("f", "data"));
    ASSERT_EQ(writeFork(ref, kResource, "resources"), noErr);
    FSRef moved;
    EXPECT_EQ(FSMoveObject(&ref, &to, &moved), noErr);
    EXPECT_EQ(readFork(moved, kResource), "resources");
    const auto name = units(u"g");
    EXPECT_EQ(FSRenameUnicode(&ref, 1, name.data(), 0, nullptr), noErr);
    EXPECT_EQ(pathOf(ref), folder / "to/g");
    EXPECT_EQ(readFork(ref, kResource), "resources");
    EXPECT_FALSE(fs::exists(folder / "._f"));
    EXPECT_FALSE(fs::exists(folder / "to/._f"));

    // A taken name, of the item or of the companion, stops both.
    folder.write("g", "in the way");
    EXPECT_EQ(FSMoveObject(&ref, &top, nullptr), dupFNErr);
    fs::remove(folder / "g");
    folder.write("._g", "somebody's");
    EXPECT_EQ(FSMoveObject(&ref, &top, nullptr), dupFNErr);
    EXPECT_EQ(folder.read("._g"), "somebody's");
    EXPECT_EQ(readFork(ref, kResource), "resources");
    EXPECT_EQ(FSMoveObject(&to, &to, nullptr), badMovErr);
    EXPECT_EQ(FSDeleteObject(&to), fBsyErr);
    EXPECT_EQ(FSDeleteObject(&ref), noErr);
    EXPECT_TRUE(fs::is_empty(folder / "to"));
    EXPECT_EQ(FSDeleteObject(&ref), fnfErr);
}

TEST(Forks, OneThatIsAbsentIsEmpty)
{
    const TemporaryFolder folder;
    const FSRef ref = refOf(folder.write("f", "data"));
    EXPECT_EQ(readFork(ref, kResource), "");
    EXPECT_EQ(readFork(ref, u""), "data");
    EXPECT_EQ(writeFork(ref, kResource, ""), noErr);
    EXPECT_FALSE(fs::exists(folder / "._f"));
    const auto resource = units(kResource);
    EXPECT_EQ(FSCreateFork(&ref, resource.size(), resource.data()), noErr);
    EXPECT_EQ(FSCreateFork(&ref, 0, nullptr), errFSForkExists);
    FSIORefNum fork;
    EXPECT_EQ(openFork(ref, u"other", fsRdPerm, fork), errFSBadForkName);
    EXPECT_EQ(openFork(refOf(folder.path()), u"", fsRdPerm, fork), notAFileErr);
    EXPECT_EQ(FSCloseFork(77), rfNumErr);
}

TEST(Forks, PositionsSizesAndTheirEnds)
{
    const TemporaryFolder folder;
    const FSRef ref = refOf(folder.write("f", ""));
    for (const std::u16string &name : {std::u16string(), kResource}) {
        FSIORefNum fork, second;
        ASSERT_EQ(openFork(ref, name, fsRdWrPerm, fork), noErr);
        if (name == kResource) {
            EXPECT_EQ(openFork(ref, name, fsWrPerm, second), opWrErr);
        }
        EXPECT_EQ(FSWriteFork(fork, fsFromStart, 0, 10, "0123456789", nullptr), noErr);
        EXPECT_EQ(FSWriteFork(fork, fsFromLEOF, 2, 2, "ab", nullptr), noErr);
        SInt64 position;
        EXPECT_EQ(FSGetForkPosition(fork, &position), noErr);
        EXPECT_EQ(position, 14);
        char bytes[20];
        ByteCount actual;
        EXPECT_EQ(FSReadFork(fork, fsFromMark, -6, 20, bytes, &actual), eofErr);
        EXPECT_EQ(std::string(bytes, actual), std::string("89\0\0ab", 6));
        EXPECT_EQ(FSReadFork(fork, fsFromStart, -1, 1, bytes, &actual), posErr);
        EXPECT_EQ(FSSetForkSize(fork, fsFromStart, 3), noErr);
        EXPECT_EQ(FSCloseFork(fork), noErr);
        EXPECT_EQ(readFork(ref, name), "012");
    }
    CatPositionRec place{};
    HFSUniStr255 name;
    SInt64 size;
    EXPECT_EQ(FSIterateForks(&ref, &place, &name, &size, nullptr), noErr);
    EXPECT_EQ(FSIterateForks(&ref, &place, &name, &size, nullptr), noErr);
    EXPECT_EQ(name.length, 13);
    EXPECT_EQ(size, 3);
    EXPECT_EQ(FSIterateForks(&ref, &place, &name, &size, nullptr), errFSNoMoreItems);
}

// What another system wrote: its order, its extra entries, and Finder information with attributes behind it.
TEST(Companions, OfOtherSystemsAreReadAndKept)
{
    const TemporaryFolder folder;
    const FSRef ref = refOf(folder.write("f", ""));
    const std::string attributes = std::string(2, 0) + "ATTR" + std::string(3000, 'a');
    folder.write("._f", appleDouble({{9, kInfo + attributes}, {4, "a comment"}, {2, "old"}}));
    EXPECT_EQ(readFork(ref, kResource), "old");
    FSCatalogInfo info;
    ASSERT_EQ(
        FSGetCatalogInfo(&ref, kFSCatInfoFinderInfo | kFSCatInfoRsrcSizes, &info, nullptr, nullptr, nullptr),
        noErr);
    EXPECT_EQ(std::string(info.finderInfo, info.finderInfo + 8), "TEXTttxt");
    EXPECT_EQ(info.finderInfo[9], 0x0C);
    EXPECT_EQ(info.rsrcLogicalSize, 3u);
    ASSERT_EQ(writeFork(ref, kResource, "new and longer"), noErr);
    EXPECT_EQ(folder.read("._f"),
              appleDouble({{9, kInfo + attributes}, {4, "a comment"}, {2, "new and longer"}}));

    // Finder information set while the fork is open is not undone by closing it.
    FSIORefNum fork;
    ASSERT_EQ(openFork(ref, kResource, fsRdWrPerm, fork), noErr);
    EXPECT_EQ(FSWriteFork(fork, fsFromStart, 0, 1, "N", nullptr), noErr);
    info.finderInfo[9] = 0x02;
    EXPECT_EQ(FSSetCatalogInfo(&ref, kFSCatInfoFinderInfo, &info), noErr);
    EXPECT_EQ(FSCloseFork(fork), noErr);
    EXPECT_EQ(readFork(ref, kResource), "New and longer");
    EXPECT_EQ(folder.read("._f")[26 + 36 + 9], 0x02);

    std::string blank(286, 0);
    blank.replace(16, 43, "This resource fork intentionally left blank");
    folder.write("._f", appleDouble({{9, kInfo}, {2, blank}}));
    EXPECT_EQ(readFork(ref, kResource), "");
}

TEST(Companions, ForeignAndBrokenOnesAreLeftAlone)
{
    const TemporaryFolder folder;
    const FSRef ref = refOf(folder.write("f", "data"));
    const std::string good = appleDouble({{9, kInfo}, {2, "resources"}});
    std::string outside = good, overlapping = good;
    outside.replace(26 + 12 + 8, 4, big(1000000, 4));
    overlapping.replace(26 + 12 + 4, 4, big(60, 4));
    const struct {
        std::string bytes;
        bool isForeign;
    } cases[] = {{"just a file", true},
                 {"", true},
                 {good.substr(0, 30), false},
                 {good.substr(0, good.size() - 1), false},
                 {outside, false},
                 {overlapping, false},
                 {appleDouble({{2, "a"}, {2, "b"}}), false},
                 {appleDouble({{9, "short"}}), false},
                 {appleDouble({{2, "a"}}, 7), false}};
    FSCatalogInfo info{};
    info.finderInfo[9] = 0x0C;
    for (const auto &[bytes, isForeign] : cases) {
        folder.write("._f", bytes);
        EXPECT_EQ(readFork(ref, kResource), std::to_string(ioErr));
        EXPECT_EQ(writeFork(ref, kResource, "x"), ioErr);
        EXPECT_EQ(FSSetCatalogInfo(&ref, kFSCatInfoFinderInfo, &info), ioErr);
        FSCatalogInfo read;
        EXPECT_EQ(FSGetCatalogInfo(&ref, kFSCatInfoGettableInfo, &read, nullptr, nullptr, nullptr),
                  isForeign ? OSErr(noErr) : OSErr(ioErr));
        EXPECT_EQ(folder.read("._f"), bytes);
    }
    // Nor is what a link in its place leads to.
    const std::string victim = folder.write("victim", good);
    fs::remove(folder / "._f");
    fs::create_symlink("victim", folder / "._f");
    EXPECT_EQ(writeFork(ref, kResource, "x"), ioErr);
    EXPECT_EQ(folder.read("victim"), good);
    folder.write("f", "still written");
    EXPECT_EQ(FSDeleteObject(&ref), noErr);
    EXPECT_TRUE(fs::is_symlink(folder / "._f"));
}

// A full and a read-only file system: the old companion stays, whole.
TEST(Companions, AreReplacedWholeOrNotAtAll)
{
    const TemporaryFolder folder;
    if (!enterPrivateMounts() || mount("none", folder.path().c_str(), "tmpfs", 0, "size=256k") != 0)
        GTEST_SKIP() << "no mounts here";
    const FSRef ref = refOf(folder.write("f", "data"));
    ASSERT_EQ(writeFork(ref, kResource, "old"), noErr);
    const std::string old = folder.read("._f");
    FSIORefNum fork;
    ASSERT_EQ(openFork(ref, kResource, fsRdWrPerm, fork), noErr);
    const std::string much(150000, 'x');  // fits, but not twice
    EXPECT_EQ(FSWriteFork(fork, fsFromStart, 0, ByteCount(much.size()), much.data(), nullptr), noErr);
    EXPECT_EQ(FSCloseFork(fork), dskFulErr);
    EXPECT_EQ(folder.read("._f"), old);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), fs::directory_iterator()), 2);

    ASSERT_EQ(mount(nullptr, folder.path().c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);
    EXPECT_EQ(writeFork(ref, kResource, "new"), wPrErr);
    EXPECT_EQ(FSDeleteObject(&ref), wPrErr);
    EXPECT_EQ(readFork(ref, kResource), "old");
}

TEST(Forks, CopyKeepsHolesAndBothForks)
{
    const TemporaryFolder folder;
    const std::string source = folder.write("source", "begin"),
                      target = folder.write("target", std::string(10, 'o'));
    fs::resize_file(source, 3 << 20);
    std::ofstream(source, std::ios::in | std::ios::out).seekp(2 << 20).write("end", 3);
    const FSRef from = refOf(source), to = refOf(target);
    ASSERT_EQ(writeFork(from, kResource, std::string(70000, 'r')), noErr);
    for (const std::u16string &name : {std::u16string(), kResource}) {
        FSIORefNum in, out;
        ASSERT_EQ(openFork(from, name, fsRdPerm, in), noErr);
        ASSERT_EQ(openFork(to, name, fsWrPerm, out), noErr);
        EXPECT_EQ(FSCopyForkContents(in, out), noErr);
        EXPECT_EQ(FSCopyForkContents(out, in), permErr);
        EXPECT_EQ(FSCloseFork(in), noErr);
        EXPECT_EQ(FSCloseFork(out), noErr);
        EXPECT_EQ(readFork(to, name), readFork(from, name));
    }
    struct stat status;
    stat(target.c_str(), &status);
    EXPECT_LT(status.st_blocks * 512, 1 << 20);
}

}  // namespace
