// Strings as paths: tests, changes, walks, aliases and item information, over real files.
#import <Tarvik/Tarvik.h>
#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/Pool.h>
#include <gtest/gtest.h>
#include <tests/support/LoggedMessages.h>
#include <tests/support/Namespace.h>
#include <tests/support/TemporaryFolder.h>

#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <ftw.h>
#include <set>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

/// A path that can't be taken apart.
@interface RaisingPath : NSString
@end
@implementation RaisingPath
- (NSUInteger)length
{
    return 1;
}
- (unichar)characterAtIndex:(NSUInteger)index
{
    return unichar('a' + index);
}
- (NSArray *)pathComponents
{
    [NSException raise:@"Broken" format:@"parts"];
    return nil;
}
- (NSString *)stringByExpandingTildeInPath
{
    [NSException raise:@"Broken" format:@"tilde"];
    return nil;
}
@end

namespace {

namespace fs = std::filesystem;
using Names = std::set<std::string>;

std::string text(NSString *string) { return tarvik::utf8(string).value_or("nil"); }

class PathStrings : public testing::Test {
protected:
    NSString *at(const std::string &name) const { return tarvik::nsstring((root_ / name).native()); }
    void make(const std::string &name, const std::string &contents = "") const
    {
        fs::create_directories((root_ / name).parent_path());
        std::ofstream(root_ / name) << contents;
    }
    static Names names(NSArray *paths)
    {
        Names all;
        for (NSString *path : tarvik::each<NSString>(paths))
            all.insert(text(path));
        return all;
    }

    tarvik::Pool pool_;
    TemporaryFolder folder_;
    const fs::path root_ = fs::canonical(folder_.path());
};

TEST(PathTexts, CountAndOrder)
{
    tarvik::Pool pool;
    const std::pair<NSString *, uint32_t> counts[] = {{@"/", 0},    {@"", 0},      {@"a", 1},
                                                      {@"/a/b", 2}, {@"/a/b/", 2}, {@"//a//b", 2}};
    for (const auto &[path, count] : counts)
        EXPECT_EQ([path pathComponentsCount], count) << text(path);
    EXPECT_EQ([@"/z" compareAsPath:@"/a/b"], NSOrderedAscending);
    EXPECT_EQ([@"/a/b" compareAsPath:@"/z"], NSOrderedDescending);
    EXPECT_EQ([@"/a/c" compareAsPath:@"/a/b"], NSOrderedDescending);
    EXPECT_EQ([@"/a" compareAsPath:@"/a"], NSOrderedSame);
    EXPECT_EQ(uint32_t([@"/a" compareAsPath:nil]), uint32_t(kTarvikNotFound));
    EXPECT_TRUE([[@"/usr/a:b" HFSPath] hasSuffix:@":usr:a/b"]) << text([@"/usr/a:b" HFSPath]);
}

TEST_F(PathStrings, AreMadeTestedCopiedAndRemoved)
{
    EXPECT_TRUE([@"" createDirectories]);
    EXPECT_TRUE([at("a/b/c") createDirectories]);
    EXPECT_TRUE([at("a/b/c") createDirectories]);
    EXPECT_TRUE([at("a/b/c") createDirectory]);
    EXPECT_FALSE([at("x/y") createDirectory]) << "one folder only";
    EXPECT_TRUE([at("a/file") createEmptyFile]);
    EXPECT_EQ(fs::file_size(root_ / "a/file"), 0u);
    EXPECT_FALSE([at("a/file") createDirectory]);
    EXPECT_FALSE([at("a/file/below") createDirectories]);
    EXPECT_TRUE([at("a/file") exists] && ![at("a/file") existsDirectory] && [at("a") existsDirectory]);
    EXPECT_FALSE([at("none") exists] || [at("none") existsDirectory]);
    EXPECT_TRUE([@"~" existsDirectory]) << "the tilde is expanded";
    EXPECT_TRUE([at("a/file") isReadableFile] && [at("a/file") isWritableFile] &&
                ![at("a/file") isExecutableFile] && [at("a/file") isDeletableFile]);

    EXPECT_FALSE([at("none") isDeletableFile]) << "there is nothing to delete";
    fs::current_path(root_);
    EXPECT_TRUE([@"bare" createDirectory] && [@"here/and/below" createDirectories]);
    EXPECT_TRUE(fs::is_directory(root_ / "bare") && fs::is_directory(root_ / "here/and/below"));

    make("a/file", "contents");
    EXPECT_FALSE([at("a/file") createCopyOfPath:nil]);
    EXPECT_TRUE([at("a/file") createCopyOfPath:at("new/deep/copy")]);
    EXPECT_TRUE([at("a/file") createCopyOfPath:at("new/deep/copy")]) << "replaces";
    EXPECT_EQ(readFile(root_ / "new/deep/copy"), "contents");
    EXPECT_TRUE([at("a") createCopyOfPath:at("new/tree")]);
    EXPECT_EQ(readFile(root_ / "new/tree/file"), "contents");
    EXPECT_FALSE([at("none") createCopyOfPath:at("new/none")]);
    ASSERT_EQ(mkfifo((root_ / "fifo").c_str(), 0600), 0);
    EXPECT_FALSE([at("fifo") createCopyOfPath:at("new/fifo")]) << "nor waited for";
    fs::create_symlink(root_ / "elsewhere", root_ / "new/link");
    EXPECT_FALSE([at("a/file") createCopyOfPath:at("new/link")]);
    EXPECT_FALSE(fs::exists(root_ / "elsewhere")) << "where the link leads";
    EXPECT_TRUE([at("new") remove]);
    EXPECT_FALSE([at("new") remove] || [at("new") exists]);
}

TEST_F(PathStrings, CopiesLeaveAloneWhatLinksLeadTo)
{
    make("outside", "secret");
    make("folder/plain", "plain");
    fs::permissions(root_ / "outside", fs::perms(0600));
    fs::permissions(root_ / "folder/plain", fs::perms(0640));
    fs::create_symlink(root_ / "outside", root_ / "folder/link");
    NSFileManager *manager = [NSFileManager defaultManager];
    EXPECT_TRUE([at("folder/link") createCopyOfPath:at("link")]);
    EXPECT_TRUE([at("folder") createCopyOfPath:at("one")]);
    EXPECT_TRUE([manager copyItemAtPath:at("folder") toPath:at("two") error:NULL]);
    EXPECT_TRUE([manager movePath:at("two") toPath:at("three") handler:nil]);
    EXPECT_EQ(fs::status(root_ / "outside").permissions(), fs::perms(0600));
    for (const char *copy : {"one", "three"}) {
        EXPECT_EQ(fs::read_symlink(root_ / copy / "link"), root_ / "outside");
        EXPECT_EQ(fs::status(root_ / copy / "plain").permissions(), fs::perms(0640));
    }
    NSDictionary *mode = [NSDictionary dictionaryWithObject:[NSNumber numberWithInt:0640]
                                                     forKey:NSFilePosixPermissions];
    EXPECT_TRUE([manager changeFileAttributes:mode atPath:at("link")]) << "by itself follows links, as ever";
    EXPECT_EQ(fs::status(root_ / "outside").permissions(), fs::perms(0640));
}

TEST_F(PathStrings, CompanionsGoWithWhatIsCopiedMovedAndRemoved)
{
    NSFileManager *manager = [NSFileManager defaultManager];
    make("doc", "x");
    for (const char *name : {"dir/one", "dir/two", "dir/sub/three"}) {
        make(name, "x");
        ASSERT_TRUE([at(name) setLabelColorIndex:5]);
    }
    EXPECT_TRUE([at("doc") createCopyOfPath:at("plain")]);
    EXPECT_FALSE(fs::exists(root_ / "._plain")) << "what has nothing gets nothing";
    ASSERT_TRUE([at("doc") setLabelColorIndex:3] && [at("dir") setLabelColorIndex:4]);

    EXPECT_TRUE([at("doc") createCopyOfPath:at("new/doc")] && [at("dir") createCopyOfPath:at("new/dir/")]);
    EXPECT_TRUE([manager moveItemAtPath:at("dir") toPath:at("moved") error:nullptr]);
    for (const char *place : {"new/dir", "moved"}) {
        EXPECT_EQ([at(place) labelColorIndex], 4u) << place;
        EXPECT_EQ([at(place + std::string("/sub/three")) labelColorIndex], 5u) << place;
    }
    EXPECT_EQ([at("new/doc") labelColorIndex] + [at("doc") labelColorIndex], 6u);
    EXPECT_FALSE(fs::exists(root_ / "._dir"));
    if (enterPrivateMounts() && fs::create_directory(root_ / "elsewhere") &&
        mount("tmpfs", (root_ / "elsewhere").c_str(), "tmpfs", 0, nullptr) == 0) {
        EXPECT_TRUE([manager moveItemAtPath:at("new/doc") toPath:at("elsewhere/doc") error:nullptr])
            << "to another volume";
        EXPECT_EQ([at("elsewhere/doc") labelColorIndex], 3u);
        EXPECT_FALSE(fs::exists(root_ / "new/._doc"));
        umount2((root_ / "elsewhere").c_str(), MNT_DETACH);
    }

    make("._taken", "foreign");
    EXPECT_FALSE([at("doc") createCopyOfPath:at("taken")] || [manager moveItemAtPath:at("doc")
                                                                              toPath:at("taken")
                                                                               error:nullptr]);
    EXPECT_FALSE(fs::exists(root_ / "taken"));
    EXPECT_EQ(readFile(root_ / "._taken"), "foreign");

    EXPECT_TRUE([at("moved") remove] && [at("doc") remove] && [at("plain") remove] && [at("new/dir") remove]);
    EXPECT_FALSE(fs::exists(root_ / "._moved") || fs::exists(root_ / "._doc") ||
                 fs::exists(root_ / "new/._dir"));
}

TEST_F(PathStrings, ExceptionsAreLoggedAndAnswered)
{
    const LoggedMessages logged;
    NSString *raising = [[[RaisingPath alloc] init] autorelease];
    EXPECT_FALSE([raising createDirectories]);
    EXPECT_EQ([raising storeableDictionary], nil);
    ASSERT_EQ(logged.count(), 2u);
    EXPECT_EQ(
        logged[0],
        "-[NSString(FoundationX) createDirectories]:946: unexpected exception: name[Broken] reason[parts]");
    EXPECT_EQ(
        logged[1],
        "-[NSString(FoundationX) storeableDictionary]:669: unexpected exception: name[Broken] reason[tilde]");
}

TEST_F(PathStrings, KindsOfItems)
{
    make("plain", "x");
    make(".hidden");
    make("Ink.app/Ink");
    make("Text.RTFD/TXT.rtf");
    make("dir/x");
    make("link.desktop", "[Desktop Entry]\nType=Link\nURL=file:///etc\n");
    make("app.desktop", "[Desktop Entry]\nType=Application\nName=x\nExec=true\n");
    make("Entry.desktop/x");
    fs::create_symlink("dir", root_ / "link");
    fs::create_symlink("nowhere", root_ / "broken");
    ASSERT_EQ(mkfifo((root_ / "fifo").c_str(), 0600), 0);
    constexpr LSItemInfoFlags kApp = kLSItemInfoIsApplication | kLSItemInfoIsNativeApp,
                              kLink = kLSItemInfoIsAliasFile | kLSItemInfoIsSymlink;
    const std::pair<const char *, LSItemInfoFlags> cases[] = {
        {"plain", kLSItemInfoIsPlainFile},
        {".hidden", kLSItemInfoIsPlainFile | kLSItemInfoIsInvisible},
        {"Ink.app", kLSItemInfoIsContainer | kLSItemInfoIsPackage | kApp},
        {"Text.RTFD", kLSItemInfoIsContainer | kLSItemInfoIsPackage},
        {"dir", kLSItemInfoIsContainer},
        {"link.desktop", kLSItemInfoIsPlainFile | kLSItemInfoIsAliasFile},
        {"app.desktop", kLSItemInfoIsPlainFile | kApp},
        {"Entry.desktop", kLSItemInfoIsContainer},
        {"link", kLink},
        {"broken", kLink},
        {"fifo", 0},
    };
    for (const auto &[name, flags] : cases) {
        LSItemInfoRecord record;
        EXPECT_TRUE([at(name) getLSItemInfoRecord:&record whichInfo:kLSRequestAllFlags]) << name;
        EXPECT_EQ(record.flags, flags) << name;
    }
    EXPECT_TRUE([@"/" isVolume] && [@"/" isContainer] && ![@"/" isDirectory] && ![@"/" isFolder]);
    EXPECT_TRUE([at("dir") isDirectory] && [at("dir") isFolder] && [at("Ink.app") isDirectory] &&
                ![at("Ink.app") isFolder]);
    EXPECT_TRUE([at("none") isPlainFile] && ![at("none") isAlias] && ![at("none") isFolder]);

    LSItemInfoRecord record;
    ASSERT_TRUE([at("link.desktop") getLSItemInfoRecord:&record whichInfo:kLSRequestExtension]);
    EXPECT_EQ(text((NSString *)record.extension), "desktop");
    EXPECT_EQ(record.flags, 0u);
    CFRelease(record.extension);
    EXPECT_FALSE([at("none") getLSItemInfoRecord:&record whichInfo:kLSRequestAllInfo]);

    // Caches: by the string object, and by the reference's address.
    NSString *asked = at("plain");
    EXPECT_TRUE([asked isPlainFile]);
    fs::remove(root_ / "plain");
    EXPECT_TRUE(![asked isFolder] && [asked isPlainFile]);
    fs::create_directory(root_ / "plain");
    EXPECT_TRUE([asked isPlainFile]) << "the same string";
    EXPECT_TRUE([at("plain") isFolder]) << "another one";
    FSRef ref, other;
    ASSERT_TRUE([at("dir") getFSRef:&ref]);
    EXPECT_TRUE(FSIsFolder(&ref) && FSIsDirectory(&ref) && FSIsContainer(&ref) && !FSIsPackage(&ref) &&
                !FSIsVolume(&ref) && !FSIsInvisible(&ref));
    ASSERT_TRUE([at("Ink.app") getFSRef:&ref]);
    EXPECT_FALSE(FSIsPackage(&ref)) << "the same address";
    other = ref;
    EXPECT_TRUE(FSIsPackage(&other));
    EXPECT_TRUE(FSIsLSItemInfoRecordFlagOn(nullptr, kLSItemInfoIsPackage, true) && !FSIsFolder(nullptr));
}

TEST_F(PathStrings, WalksListPackagesAsOneEntry)
{
    for (const char *name : {"a", "sub/b", "sub/Pack.app/inside/x", "sub/Pack.app/y", ".git/config", ".dot",
                             "sub/deep/er/c", "empty.pkg/x", "._a", "._orphan"})
        make(name, "12345");
    fs::create_symlink("sub", root_ / "link");
    EXPECT_EQ(names([at("") subfilepaths]),
              (Names{"a", "sub/b", "sub/Pack.app", ".git/config", "sub/deep/er/c", "empty.pkg", "link"}));
    EXPECT_EQ([[at("none") subfilepaths] count], 0u);
    EXPECT_EQ([[at("a") subfilepaths] count], 0u);

    // All that the file manager lists, in the same order, here and in gnustep-base's own enumerator.
    NSArray *all = [[NSFileManager defaultManager] subpathsAtPath:at("")];
    NSMutableArray *expected = [NSMutableArray array];
    for (const auto &entry : fs::recursive_directory_iterator(root_))
        [expected addObject:tarvik::nsstring(fs::relative(entry.path().parent_path(), root_).native() == "."
                                                 ? entry.path().filename().native()
                                                 : (fs::relative(entry.path().parent_path(), root_) /
                                                    entry.path().filename())
                                                       .native())];
    EXPECT_EQ(text([all componentsJoinedByString:@"\n"]), text([expected componentsJoinedByString:@"\n"]));
    EXPECT_EQ([[NSFileManager defaultManager] subpathsAtPath:at("none")], nil);

    EXPECT_EQ([at("sub") logicalSize], 4 * 5u);
    EXPECT_EQ([at("a") logicalSize], 5u);
    EXPECT_EQ([[at("none") logicalSizeNumber] unsignedLongLongValue], 0u);
}

TEST_F(PathStrings, AfterAPackageWhatBeginsAsItDoesIsLeftOut)
{
    // In the file system's order, which differs: what counts is whether the neighbour comes before the
    // package or after it.
    for (int i = 0; i < 20; ++i) {
        const std::string package = std::to_string(i) + ".app";
        if (i % 2)  // some file systems list by age
            make(package + ".old", "x");
        make(package + "/x");
        make(package + ".old", "x");
    }
    Names expected;
    std::vector<std::string> kept;
    for (NSString *path : tarvik::each<NSString>([[NSFileManager defaultManager] subpathsAtPath:at("")])) {
        const std::string name = text(path);
        if (std::any_of(kept.begin(), kept.end(),
                        [&](const std::string &package) { return name.starts_with(package); }))
            continue;
        expected.insert(name);
        if (name.ends_with(".app"))
            kept.push_back(name);
    }
    EXPECT_EQ(names([at("") subfilepaths]), expected);
    EXPECT_LT(expected.size(), 40u);
}

TEST_F(PathStrings, BackslashesAreNoSlashes)
{
    NSString *path = at("back\\slash");
    EXPECT_TRUE([path createEmptyFile]);
    EXPECT_TRUE(fs::exists(root_ / "back\\slash"));
    NSDictionary *kept = [path storeableDictionary];
    EXPECT_EQ(text([kept objectForKey:@"Path"]), text([path stringByAbbreviatingWithTildeInPath]));
    EXPECT_EQ(text([NSString stringWithStoreableDictionary:kept resolveAliasFirst:NO]), text(path));
    EXPECT_EQ(text([[path stringByAppendingString:@"//./x"] stringByStandardizingPath]), text(path) + "/x");
    EXPECT_EQ(text([[NSHomeDirectory() stringByAppendingPathComponent:@"a\\b"]
                  stringByAbbreviatingWithTildeInPath]),
              "~/a\\b");
}

TEST_F(PathStrings, NamesThatAreNotUTF8)
{
    make("b\xFF\xC3yte", "123");
    make("d\xE9r/file", "4567");
    make("é \U0001F600 \uF7A0", "8");
    NSArray *paths = [at("") subfilepaths];
    EXPECT_EQ([paths count], 3u);
    EXPECT_EQ([at("") logicalSize], 8u);
    uint64_t sizes = 0;
    for (NSString *path : tarvik::each<NSString>(paths)) {
        NSString *whole = [at("") stringByAppendingPathComponent:path];
        EXPECT_TRUE([whole exists] && [whole isReadableFile] && [whole isPlainFile]);
        sizes += [whole logicalSize];
        NSString *again = [NSString stringWithAliasData:[whole aliasData]];
        EXPECT_TRUE([again isEqualToString:[whole stringByStandardizingPath]]);
        EXPECT_TRUE([whole remove]);
    }
    EXPECT_EQ(sizes, 8u);
    EXPECT_EQ([[at("") subfilepaths] count], 0u);
    EXPECT_TRUE([[at("") stringByAppendingPathComponent:[[[NSFileManager defaultManager]
                                                            subpathsAtPath:at("")] lastObject]] remove]);
}

TEST_F(PathStrings, StoreableDictionariesLeadBack)
{
    make("one", "1");
    make("other/two", "2");
    NSDictionary *kept = [at("one") storeableDictionary];
    EXPECT_EQ([at("none") storeableDictionary], nil);
    EXPECT_EQ([kept count], 2u);
    auto back = [](NSDictionary *dictionary, BOOL aliasFirst) {
        return text([NSString stringWithStoreableDictionary:dictionary resolveAliasFirst:aliasFirst]);
    };
    fs::rename(root_ / "one", root_ / "moved");
    EXPECT_EQ(back(kept, YES), text(at("moved")));
    EXPECT_EQ(back(kept, NO), text(at("moved")));
    NSDictionary *mixed =
        [NSDictionary dictionaryWithObjectsAndKeys:[at("other/two") stringByAbbreviatingWithTildeInPath],
                                                   @"Path", [kept objectForKey:@"Alias"], @"Alias", nil];
    EXPECT_EQ(back(mixed, YES), text(at("moved")));
    EXPECT_EQ(back(mixed, NO), text(at("other/two")));
    fs::remove(root_ / "moved");
    EXPECT_EQ(back(mixed, YES), text(at("other/two")));
    EXPECT_EQ(back(kept, YES), "nil");
    EXPECT_EQ(back(kept, NO), "nil");
    EXPECT_EQ(back(nil, YES), "nil");
    NSDictionary *const hostile[] = {
        [NSDictionary dictionary],
        [NSDictionary
            dictionaryWithObjectsAndKeys:[NSNumber numberWithInt:1], @"Path", @"text", @"Alias", nil],
        [NSDictionary dictionaryWithObjectsAndKeys:@"", @"Path", [NSData data], @"Alias", nil],
    };
    for (NSDictionary *dictionary : hostile) {
        EXPECT_EQ(back(dictionary, YES), "nil");
        EXPECT_EQ(back(dictionary, NO), "nil");
    }
    EXPECT_EQ(text([NSString stringWithStoreableDictionary:[@"~" storeableDictionary] resolveAliasFirst:NO]),
              text(NSHomeDirectory()));
}

TEST_F(PathStrings, AliasFilesLeadToTheirTargets)
{
    make("target", "x");
    fs::create_symlink("target", root_ / "one");
    fs::create_symlink("one", root_ / "two");
    fs::create_symlink("loop", root_ / "loop");
    EXPECT_EQ(text([at("two") stringByResolveAliasFile]), text(at("target")));
    for (const char *name : {"target", "loop", "none"}) {
        NSString *path = at(name);
        EXPECT_EQ([path stringByResolveAliasFile], path) << name;
    }
    FSRef ref;
    ASSERT_TRUE([at("target") getFSRef:&ref]);
    EXPECT_EQ(text([NSString stringWithFSRef:&ref]), text(at("target")));
    fs::remove(root_ / "target");
    EXPECT_EQ([NSString stringWithFSRef:&ref], nil);
    EXPECT_FALSE([at("target") getFSRef:&ref]);
}

TEST_F(PathStrings, FileSystemsThatAreReadOnlyOrFull)
{
    if (!enterPrivateMounts())
        GTEST_SKIP() << "no mount namespace here";
    for (const char *name : {"small", "locked"}) {
        fs::create_directory(root_ / name);
        ASSERT_EQ(mount("tmpfs", (root_ / name).c_str(), "tmpfs", 0, "size=64k,nr_inodes=8"), 0);
    }
    make("big", std::string(200000, 'x'));
    make("locked/file", "x");
    ASSERT_EQ(mount(nullptr, (root_ / "locked").c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);
    EXPECT_TRUE([at("small") isVolume] && ![at("small") isFolder]);
    EXPECT_FALSE([at("locked/new") createDirectory] || [at("locked/file") remove] ||
                 [at("big") createCopyOfPath:at("locked/copy")]);
    EXPECT_NE([at("locked/file") aliasData], nil);
    EXPECT_FALSE([at("big") createCopyOfPath:at("small/copy")]);
    EXPECT_FALSE([at("small/1/2/3/4/5/6/7/8/9") createDirectories]);
    // A volume is none of the files of a walk; what lies on it is.
    EXPECT_EQ(names([at("") subfilepaths]).count("locked/file"), 1u);
    for (const char *name : {"small", "locked"})
        umount2((root_ / name).c_str(), MNT_DETACH);
}

TEST_F(PathStrings, CatalogAndFinderInformation)
{
    make("doc", "123456");
    NSString *path = at("doc");
    FSCatalogInfo info;
    ASSERT_TRUE([path getFSCatalogInfo:&info ofBitmap:kFSCatInfoGettableInfo]);
    EXPECT_EQ(info.dataLogicalSize, 6u);
    std::memcpy(info.finderInfo, "TEXTttxt\x40", 9);  // invisible
    ASSERT_TRUE([path setFSCatalogInfo:&info ofBitmap:kFSCatInfoFinderInfo]);
    EXPECT_EQ(text([at("doc") HFSFileTypeString]) + text([at("doc") HFSCreatorString]), "TEXTttxt");
    EXPECT_TRUE([at("doc") isInvisible]);
    EXPECT_EQ([[at("") subfilepaths] count], 0u);
    HFSUniStr255 fork;
    FSRef ref;
    FSIORefNum number = 0;
    FSGetResourceForkName(&fork);
    ASSERT_TRUE([path getFSRef:&ref]);
    ASSERT_EQ(FSOpenFork(&ref, fork.length, fork.unicode, fsRdWrPerm, &number), noErr);
    EXPECT_EQ(FSWriteFork(number, fsFromStart, 0, 4, "rsrc", nullptr), noErr);
    EXPECT_EQ(FSCloseFork(number), noErr);
    EXPECT_EQ([path logicalSize], 10u) << "both forks";
    EXPECT_EQ([at("") logicalSize], 10u) << "and the companion only once";
    EXPECT_TRUE([path setLabelColorIndex:3]);
    EXPECT_EQ([path labelColorIndex] * 256 + [path labelColorValue], 0x30Au);
    EXPECT_FALSE([at("none") setLabelColorIndex:3] || [at("none") labelColorIndex]);
    FSSpec spec;
    ASSERT_TRUE([path getFSSpec:&spec]);
    EXPECT_EQ(text([NSString stringWithFSSpec:&spec]), text(path));
    EXPECT_FALSE([at("none") getFSCatalogInfo:&info ofBitmap:kFSCatInfoDataSizes]);
    EXPECT_EQ(info.dataLogicalSize, 0u);
    EXPECT_EQ([at("none") HFSFileType], 0u);
}

TEST(SpecialFolders, AreFoundAndMade)
{
    tarvik::Pool pool;
    EXPECT_TRUE([[NSString stringWithFindFolder:kUserDomain type:kTemporaryFolderType
                                   createFolder:YES] existsDirectory]);
    EXPECT_EQ([NSString stringWithFindFolder:kUserDomain type:0x21212121 createFolder:YES], nil);
    NSString *own = [NSString stringWithApplicationTemporary];
    EXPECT_TRUE([own existsDirectory]) << text(own);
    EXPECT_EQ(text([own stringByDeletingLastPathComponent]),
              text([NSString stringWithFindFolder:kUserDomain
                                             type:kUserTemporaryFolderType
                                     createFolder:NO]));
}

// As the catalog information of each item has them.
TEST_F(PathStrings, SizesOfLinksAndDamagedFiles)
{
    make("folder/three", "123");
    make("seven", "1234567");
    ASSERT_TRUE([at("seven") setLabelColorIndex:2]);  // gives it a companion
    fs::create_symlink("../seven", root_ / "folder/link");
    fs::create_symlink("nowhere-at-all", root_ / "folder/dangling");
    fs::create_symlink(".", root_ / "folder/loop");
    fs::create_symlink("folder", root_ / "to folder");
    EXPECT_EQ([at("folder") logicalSize], 3u + 7u);
    EXPECT_EQ([at("folder/link") logicalSize], 7u);
    EXPECT_EQ([at("to folder") logicalSize], 0u) << "no container, and the catalog has no sizes of folders";
    EXPECT_FALSE([at("to folder") isContainer]);
    fs::resize_file(root_ / "._seven", 30);
    FSCatalogInfo info;
    EXPECT_FALSE([at("seven") getFSCatalogInfo:&info ofBitmap:0x3FFFF]);
    EXPECT_EQ([at("seven") logicalSize], 0u);
    EXPECT_EQ([at("folder") logicalSize], 3u);
}

TEST_F(PathStrings, DeepAndUnreadableTrees)
{
    fs::path deep = root_;
    for (int i = 0; i < 300; ++i)
        deep /= "d";
    fs::create_directories(deep);
    std::ofstream(deep / "bottom") << "1234";
    EXPECT_EQ([[at("") subfilepaths] count], 1u);
    EXPECT_EQ([at("") logicalSize], 4u);
    FSRef ref;
    NSString *deeper = at(std::string(250, 'a') + "/" + std::string(250, 'b') + "/" + std::string(250, 'c') +
                          "/" + std::string(250, 'd') + "/e");
    ASSERT_TRUE([deeper createDirectories] && [deeper getFSRef:&ref]);
    EXPECT_EQ([NSString stringWithFSRef:&ref], nil) << "longer than the buffer for it";
    EXPECT_EQ(text([NSString stringWithAliasData:[deeper aliasData]]), text(deeper));
    fs::remove_all(root_ / std::string(250, 'a'));
    EXPECT_EQ([[[NSFileManager defaultManager] subpathsAtPath:at("")] count], 301u);
    fs::remove_all(root_ / "d");

    ASSERT_TRUE(giveUpRootsAccess());
    for (const char *name : {"open/file", "closed/file", "blind/file"})
        make(name, "12");
    fs::permissions(root_ / "closed", fs::perms::none);
    fs::permissions(root_ / "blind", fs::perms::owner_read);
    EXPECT_EQ(names([at("") subfilepaths]), (Names{"open/file", "blind/file"}));
    EXPECT_EQ([at("") logicalSize], 2u) << "what can't be looked at counts as nothing";
    EXPECT_TRUE([at("closed") isFolder] && ![at("closed/file") exists]);
    EXPECT_EQ([at("closed/file") aliasData], nil);
    EXPECT_FALSE([at("closed/file") createCopyOfPath:at("copy")] || [at("closed") remove] ||
                 [at("closed/new") createDirectories]);
    for (const char *name : {"closed", "blind"})
        fs::permissions(root_ / name, fs::perms::owner_all);
}

/// A reference, a label and an alias among many, and the walk over all of them; how fast is a matter of the
/// benchmarks.
TEST_F(PathStrings, LargeTrees)
{
    constexpr int kFolders = 500, kFiles = 100000 / kFolders;
    struct rlimit limit = {64, 64};
    setrlimit(RLIMIT_NOFILE, &limit);
    if (!enterPrivateMounts() || mount("tmpfs", root_.c_str(), "tmpfs", 0, "nr_inodes=200k") != 0)
        GTEST_SKIP() << "no file system in memory for so many files";
    for (int i = 0; i < kFolders; ++i) {
        const std::string folder = root_ / std::to_string(i);
        mkdir(folder.c_str(), 0700);
        for (int j = 0; j < kFiles; ++j)
            mknod((folder + "/" + std::to_string(j)).c_str(), S_IFREG | 0600, 0);
    }
    make("250/100", "needle");
    ASSERT_TRUE([at("250/100") setLabelColorIndex:2]);
    NSData *alias = [at("250/100") aliasData];
    EXPECT_EQ([[at("") subfilepaths] count], 100000u);
    EXPECT_EQ([at("") logicalSize], 6u);
    fs::rename(root_ / "250/100", root_ / "499/needle");
    EXPECT_EQ(text([NSString stringWithAliasData:alias]), text(at("499/needle")));
    umount2(root_.c_str(), MNT_DETACH);
}

}  // namespace
