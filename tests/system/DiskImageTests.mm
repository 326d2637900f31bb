// Real images, really mounted: as root through loop devices, otherwise through FUSE.
#import <Tarvik/Tarvik.h>
#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/Pool.h>
#include <Workspace/SharedWorkspace.h>
#include <gtest/gtest.h>
#import <system/private/DiskImageReport.h>
#include <tests/support/LoggedMessages.h>
#include <tests/support/Program.h>
#include <tests/support/TemporaryFolder.h>

#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <random>
#include <sys/mount.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

const std::string kTools = fs::path(TARVIK_COMMAND).parent_path().parent_path() / "libexec/tarvik";

ProgramResult hdiutil(std::vector<std::string> words)
{
    words.insert(words.begin(), kTools + "/hdiutil");
    return runProgram(words);
}

DiskImage *imageAt(const std::string &path)
{
    return [DiskImage diskImageWithFilepath:tarvik::nsstring(path)];
}
std::string text(NSString *string) { return tarvik::utf8(string).value_or("nil"); }

class DiskImages : public testing::Test {
protected:
    void SetUp() override
    {
        if (geteuid() != 0 && access("/dev/fuse", R_OK | W_OK) != 0)
            GTEST_SKIP() << "this user may use neither loop devices nor FUSE";
        fs::create_directories(source_ / "sub/deep");
        folder_.write("source/file", "contents\n");
        folder_.write("source/empty", "");
        folder_.write("source/sub/deep/né 1", std::string(300000, '\x7F'));
        fs::create_symlink("file", source_ / "link");
        fs::permissions(source_ / "file", fs::perms(0751));
    }
    void TearDown() override
    {
        for (const std::string &path : attached())
            hdiutil({"detach", "-force", path});
    }

    /// A name that no other test of this machine has.
    std::string name(const std::string &rest = "") const { return folder_.path().filename().native() + rest; }
    std::string path(const std::string &rest = "") const { return folder_ / name(rest); }
    DiskImage *created(const std::string &rest = ".img")
    {
        DiskImage *image = imageAt(path(rest));
        EXPECT_TRUE([image createFromDirectory:tarvik::nsstring(source_.native())]);
        return image;
    }

    /// Images of this test that are attached, mounted or not.
    std::vector<std::string> attached() const
    {
        std::vector<std::string> paths;
        for (NSDictionary *image :
             tarvik::each<NSDictionary>([[DiskImage frameworkInfomation] objectForKey:@"images"])) {
            const std::string found = text([image objectForKey:@"image-path"]);
            if (found.starts_with(folder_.path().native()))
                paths.push_back(found);
        }
        return paths;
    }
    std::vector<std::string> mediaFolders() const
    {
        std::vector<std::string> found;
        std::error_code failed;
        for (const char *media : {"/media", "/run/media"})
            for (const auto &user : fs::directory_iterator(media, failed))
                for (const auto &entry : fs::directory_iterator(user, failed))
                    if (entry.path().filename().native().find(name()) != std::string::npos)
                        found.push_back(entry.path());
        return found;
    }
    void expectNothingLeft() const
    {
        EXPECT_EQ(attached(), std::vector<std::string>());
        EXPECT_EQ(mediaFolders(), std::vector<std::string>());
        EXPECT_EQ(childProcesses(), 0u);
    }
    void expectSameAsSource(const std::string &mountPoint) const
    {
        EXPECT_EQ(runProgram({"diff", "-r", "--no-dereference", "-x", "lost+found", source_, mountPoint}).out,
                  "");
        EXPECT_EQ(fs::status(fs::path(mountPoint) / "file").permissions(), fs::perms(0751));
    }

    TemporaryFolder folder_;
    fs::path source_ = folder_ / "source";
};

TEST_F(DiskImages, MadeMountedFoundAndUnmounted)
{
    DiskImage *image = created();
    EXPECT_EQ([image mountPoint], nil);
    EXPECT_TRUE([image unmount]) << "is not mounted";
    const std::string point = text([image mount]);
    EXPECT_EQ(fs::path(point).filename(), name()) << "called as the image without its ending";
    EXPECT_EQ(text([image mount]), point) << "is mounted already";
    EXPECT_EQ(text([image mountPoint]), point);
    expectSameAsSource(point);

    NSString *at = tarvik::nsstring(point);
    EXPECT_EQ(text([DiskImage filepathOfMountingVolume:at]), path(".img"));
    EXPECT_EQ(text([[DiskImage diskImageWithMountingVolume:at] filepath]), path(".img"));
    EXPECT_EQ(text([[DiskImage mountingVolumes] objectForKey:at]), path(".img"));
    char address[32];
    snprintf(address, sizeof address, "0x%08X", unsigned(reinterpret_cast<uintptr_t>(image)));
    EXPECT_EQ(text([image description]), std::string("DiskImage ") + address + " {filepath=" + path(".img") +
                                             ", mountPoint=" + point + "}");
    EXPECT_TRUE([image unmount]);
    EXPECT_EQ([image mountPoint], nil);
    EXPECT_EQ([DiskImage diskImageWithMountingVolume:at], nil);
    expectNothingLeft();
}

TEST_F(DiskImages, PathsOfEveryKindSurviveTheTrip)
{
    for (const std::string &rest : std::vector<std::string>{
             " with  blanks.img", "'quotes'\"\"$(x)`.img", "Zürich 東京 😀.img", "line\nfeed\ttab\\010.img",
             "a,b,ro=\\,c.img", "&lt;<x>&.img", "-leading\r.img", "no ending", "..",
             std::string(255 - name().size(), 'n')}) {
        DiskImage *image = created(rest);
        const std::string point = text([image mount]);
        EXPECT_NE(point, "nil") << rest;
        expectSameAsSource(point);
        EXPECT_TRUE([image unmount]) << rest;
        ASSERT_EQ(hdiutil({"attach", "-fuse", path(rest)}).status, 0);
        EXPECT_EQ(text([image mountPoint]), point) << "the same through FUSE";
        EXPECT_TRUE([image unmount]) << rest;
    }
    expectNothingLeft();
}

TEST_F(DiskImages, NormalFormsOfANameAreTwoImages)
{
    DiskImage *composed = created("\u00E9.img"), *decomposed = created("e\u0301.img");
    const std::string point = text([composed mount]);
    EXPECT_NE(point, "nil");
    EXPECT_EQ([decomposed mountPoint], nil);
    EXPECT_TRUE([decomposed unmount]);
    EXPECT_EQ(text([composed mountPoint]), point) << "unmounted through the other one";
    EXPECT_TRUE([composed unmount]);
    expectNothingLeft();
}

TEST_F(DiskImages, KindsAreToldByContent)
{
    const struct {
        const char *kind;
        std::vector<std::string> make;
    } cases[] = {{"ext4", {"mke2fs", "-q", "-t", "ext4", "-d", source_, path(".ext4"), "2M"}},
                 {"iso9660", {"xorriso", "-as", "mkisofs", "-quiet", "-R", "-o", path(".iso9660"), source_}}};
    for (const auto &c : cases) {
        const std::string made = path(std::string(".") + c.kind),
                          disguised = path(std::string(c.kind) + ".txt");
        ASSERT_EQ(runProgram(c.make).status, 0) << c.kind;
        fs::rename(made, disguised);
        const ProgramResult result = hdiutil({"attach", disguised});
        ASSERT_EQ(result.status, 0) << result.error;
        const std::string point = text([imageAt(disguised) mountPoint]);
        EXPECT_EQ(runProgram({"diff", "-r", "--no-dereference", "-x", "lost+found", source_, point}).out, "")
            << c.kind;
        EXPECT_TRUE([imageAt(disguised) unmount]);
    }
    expectNothingLeft();
}

TEST_F(DiskImages, PartitionsAreMountedOneByOne)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "loop devices are root's";
    created();
    const struct {
        const char *kind, *script;
        std::vector<int> squashfs, ext4;  // MiB where one stands
        std::vector<std::string> numbers;
    } tables[] = {
        {"dos",
         "label: dos\nstart=2048,size=8192,type=83\nstart=10240,size=2048,type=82\nstart=12288,type=5\n"
         "start=14336,size=4096,type=83\nstart=20480,size=8192,type=83\n",
         {7},
         {1, 10},
         {"p1", "p5", "p6"}},
        {"gpt",
         "label: gpt\nstart=2048,size=8192\nstart=10240,size=4096\n11: start=16384,size=8192\n",
         {5},
         {1, 8},
         {"p1", "p2", "p11"}}};
    for (const auto &table : tables) {
        const std::string disk = path(std::string(".") + table.kind);
        std::ofstream(disk).close();
        fs::resize_file(disk, 16 << 20);
        ASSERT_EQ(runProgram({"sfdisk", "-q", disk}, table.script).status, 0);
        for (const int at : table.squashfs)
            ASSERT_EQ(runProgram({"dd", "status=none", "conv=notrunc", "bs=1M", "seek=" + std::to_string(at),
                                  "if=" + path(".img"), "of=" + disk})
                          .status,
                      0);
        for (const int at : table.ext4)
            ASSERT_EQ(runProgram({"mke2fs", "-q", "-t", "ext4", "-d", source_, "-E",
                                  "offset=" + std::to_string(at << 20), disk, "4096k"})
                          .status,
                      0);

        const ProgramResult result = hdiutil({"attach", disk});
        ASSERT_EQ(result.status, 0) << result.error;
        NSString *first = [imageAt(disk) mountPoint];
        std::vector<std::string> numbers;
        for (NSDictionary *image :
             tarvik::each<NSDictionary>([[DiskImage frameworkInfomation] objectForKey:@"images"])) {
            if (text([image objectForKey:@"image-path"]) != disk)
                continue;
            for (NSDictionary *entity : tarvik::each<NSDictionary>([image objectForKey:@"system-entities"])) {
                NSString *point = [entity objectForKey:@"mount-point"];
                if (!point)
                    continue;
                const std::string device = text([entity objectForKey:@"dev-entry"]);
                numbers.push_back(device.substr(device.rfind('p')));
                expectSameAsSource(text(point));
                EXPECT_TRUE(numbers.size() > 1 || [point isEqual:first]) << "under its first mount point";
            }
        }
        EXPECT_EQ(numbers, table.numbers) << table.kind;
        EXPECT_TRUE([imageAt(disk) unmount]) << "all of it";
        expectNothingLeft();
    }

    // A table that leads nowhere, out of the image, or round in a circle.
    const std::string bad = path(".bad");
    for (const std::string what : {"empty", "sum", "circle"}) {
        fs::copy_file(path(what == "circle" ? ".dos" : ".gpt"), bad, fs::copy_options::overwrite_existing);
        std::fstream file(bad, std::ios::in | std::ios::out | std::ios::binary);
        if (what == "empty")
            file.seekp(1 << 20) << std::string(15 << 20, '\0');
        else if (what == "sum")
            file.seekp(1024 + 40).put('\1');
        else
            for (const int record : {0, 512})  // the second one leads to itself
                file.seekp((6 << 20) + record + 446)
                    << std::string(16, '\0') << std::string({0, 0, 0, 0, 5, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0})
                    << std::string(32, '\0') << "\x55\xAA";
        file.close();
        const ProgramResult result = hdiutil({"attach", bad});
        EXPECT_EQ(result.status, what == "circle" ? 0 : 1) << what << result.out << result.error;
        EXPECT_TRUE([imageAt(bad) unmount]);
        expectNothingLeft();
    }
}

TEST_F(DiskImages, ThoseThatOthersAttachedShowUpAndGo)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "loop devices are root's";
    DiskImage *image = created();
    fs::create_directory(folder_ / "mine");
    ASSERT_EQ(runProgram({"mount", "-o", "loop,ro", path(".img"), folder_ / "mine"}).status, 0);
    EXPECT_EQ(text([image mountPoint]), (folder_ / "mine").native());
    EXPECT_TRUE([image unmount]);
    EXPECT_TRUE(fs::exists(folder_ / "mine")) << "no folder of ours";
    ASSERT_EQ(runProgram({"losetup", "--find", path(".img")}).status, 0);
    EXPECT_EQ(attached(), std::vector<std::string>{path(".img")});
    EXPECT_EQ([image mountPoint], nil) << "attached, not mounted";
    EXPECT_EQ(hdiutil({"detach", path(".img")}).status, 0);
    expectNothingLeft();
}

TEST_F(DiskImages, ABusyVolumeStaysUntilItIsFree)
{
    DiskImage *image = created();
    const std::string point = text([image mount]);
    const int file = open((point + "/file").c_str(), O_RDONLY | O_CLOEXEC);
    EXPECT_FALSE([image unmount]);
    EXPECT_EQ(text([image mountPoint]), point);
    close(file);
    EXPECT_TRUE([SharedWorkspace() unmountAndEjectDeviceAtPath:tarvik::nsstring(point)]);
    EXPECT_FALSE([SharedWorkspace() unmountAndEjectDeviceAtPath:tarvik::nsstring(point)]);
    EXPECT_FALSE([SharedWorkspace() unmountAndEjectDeviceAtPath:@"/"]) << "from no image";
    expectNothingLeft();
}

TEST_F(DiskImages, BadImagesFailAndLeaveNothing)
{
    std::string noise(200000, '\0');
    std::mt19937 random(1);
    for (char &byte : noise)
        byte = char(random());
    folder_.write("source/noise", noise);
    created(".good");
    const std::string good = folder_.read(name(".good"));
    uint64_t used = 0;  // the rest is padding
    std::memcpy(&used, good.data() + 40, sizeof used);
    ASSERT_LT(used, good.size());
    ASSERT_EQ(runProgram({"mke2fs", "-q", "-t", "ext4", path(".ext4"), "1M"}).status, 0);
    std::string ext4 = folder_.read(name(".ext4"));
    ext4.replace(2048, 30000, std::string(30000, '\x5A'));
    std::string tables = good;
    tables.replace(used - 200, 200, std::string(200, '\xFF'));
    std::string superblock = good;
    superblock.replace(8, 88, std::string(88, '\xFF'));
    const std::pair<const char *, std::string> cases[] = {{"empty", ""},
                                                          {"text", "no image at all"},
                                                          {"cut", good.substr(0, good.size() / 2)},
                                                          {"tables", tables},
                                                          {"block", superblock},
                                                          {"ext4", ext4},
                                                          {"zeros", std::string(70000, '\0')}};
    for (const auto &[what, bytes] : cases) {
        folder_.write(name(what), bytes);
        EXPECT_EQ([imageAt(path(what)) mount], nil) << what;
        EXPECT_EQ(hdiutil({"attach", "-fuse", path(what)}).status, 1) << what;
    }
    EXPECT_EQ([imageAt("/nonexistent") mount], nil);
    EXPECT_EQ([imageAt(source_) mount], nil);
    expectNothingLeft();
}

TEST_F(DiskImages, CreationThatFailsLeavesNothing)
{
    const auto inFolder = [&] { return runProgram({"ls", "-A", folder_.path()}).out; };
    const std::string before = inFolder();
    EXPECT_TRUE([imageAt(path()) createFromDirectory:@"/nonexistent"]) << "the tool ran";
    EXPECT_FALSE([imageAt(path()) createFromDirectory:nil]);
    EXPECT_EQ(hdiutil({"create", "-srcfolder", source_ / "file", path()}).status, 1);
    EXPECT_EQ(hdiutil({"create", "-srcfolder", source_, "/nonexistent/x"}).status, 1);
    EXPECT_EQ(hdiutil({"create", "-srcfolder", source_}).status, 1);
    EXPECT_EQ(inFolder(), before);

    folder_.write(name(), "mine");
    const ProgramResult exists = hdiutil({"create", "-srcfolder", source_, path()});
    EXPECT_EQ(exists.status, 1);
    EXPECT_EQ(exists.error, "hdiutil: create failed - " + path() + ": File exists\n");
    EXPECT_EQ(folder_.read(name()), "mine");

    if (geteuid() != 0)
        return;
    // An unreadable folder deep inside, seen by somebody who is not root; and a disk with no room.
    fs::permissions(folder_.path(), fs::perms::all);
    fs::permissions(source_ / "sub/deep", fs::perms(0700));
    const std::string someone = runProgram({"setpriv", "--reuid=65534", "--clear-groups", kTools + "/hdiutil",
                                            "create", "-srcfolder", source_, path(".other")})
                                    .error;
    EXPECT_NE(someone.find("create failed"), std::string::npos) << someone;
    EXPECT_FALSE(fs::exists(path(".other")));
    fs::create_directory(folder_ / "small");
    ASSERT_EQ(mount("none", (folder_ / "small").c_str(), "tmpfs", 0, "size=64k"), 0);
    std::ofstream(source_ / "random", std::ios::binary)
        << std::ifstream("/proc/self/exe", std::ios::binary).rdbuf();
    EXPECT_EQ(hdiutil({"create", "-srcfolder", source_, folder_ / "small/x.img"}).status, 1);
    EXPECT_TRUE(fs::is_empty(folder_ / "small"));
    umount((folder_ / "small").c_str());
}

TEST_F(DiskImages, AnImageInsideItsOwnFolderAndOneThatIsReplaced)
{
    EXPECT_EQ(hdiutil({"create", "-quiet", "-srcfolder", source_, source_ / name()}).out, "");
    ASSERT_EQ(hdiutil({"attach", source_ / name()}).status, 0);
    const std::string point = text([imageAt(source_ / name()) mountPoint]);
    EXPECT_EQ(runProgram({"ls", "-A", point}).out, "empty\nfile\nlink\nsub\n");
    EXPECT_EQ(hdiutil({"detach", point}).status, 0);
    const ProgramResult again =
        hdiutil({"create", "-ov", "-puppetstrings", "-srcfolder", source_ / "sub", source_ / name()});
    EXPECT_EQ(again.status, 0);
    EXPECT_NE(again.out.find("PERCENT:100"), std::string::npos) << again.out;
}

TEST_F(DiskImages, TwentyRoundsLeaveNothing)
{
    size_t descriptors = 0;
    for (int round = 0; round <= 20; ++round) {
        tarvik::Pool pool;
        if (round == 1)
            descriptors = openDescriptors();
        DiskImage *image = created();
        EXPECT_NE([image mount], nil);
        EXPECT_TRUE([image unmount]);
        fs::remove(path(".img"));
    }
    EXPECT_EQ(openDescriptors(), descriptors);
    expectNothingLeft();
}

TEST(DiskImage, RefusalsAndSettings)
{
    testing::internal::CaptureStderr();
    DiskImage *const receiver = [DiskImage alloc];
    EXPECT_EQ([receiver init], nil);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("-[DiskImage init] You can't use this message."),
              std::string::npos);
    [receiver release];  // refused, not released
    EXPECT_EQ([[DiskImage alloc] initWithFilepath:nil], nil);
    EXPECT_EQ([[DiskImage alloc] initWithMountingVolume:nil], nil);
    EXPECT_EQ([[DiskImage alloc] initWithMountingVolume:@"/"], nil);
    EXPECT_EQ([DiskImage filepathOfMountingVolume:nil], nil);
    EXPECT_EQ([DiskImage mountingVolumeOfFilepath:nil], nil);
    NSMutableString *path = [NSMutableString stringWithString:@"/x"];
    DiskImage *image = [DiskImage diskImageWithFilepath:path];
    [path appendString:@"y"];
    EXPECT_EQ(text([image filepath]), "/x");
    [image setFilepath:nil];
    EXPECT_EQ(text([image filepath]), "/x");
    [image setFilepath:path];
    EXPECT_EQ(text([image filepath]), "/xy");
    EXPECT_FALSE([image logToConsole]);
    [image setLogToConsole:YES];
    testing::internal::CaptureStderr();
    EXPECT_EQ([image mount], nil);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("-[DiskImage mount]\n"), std::string::npos);
}

TEST(DiskImage, AReportIsReadWithoutTrust)
{
    const auto table = [](const std::string &inside) {
        const std::string report =
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">" + inside + "</plist>";
        return text([tarvik::mountTable(tarvik::diskImageReport(tarvik::nsdata(report))) description]);
    };
    const std::string none = text([[NSDictionary dictionary] description]);
    const auto image = [](const std::string &entities,
                          const std::string &path = "<key>image-path</key><string>/i</string>") {
        return "<dict>" + path + "<key>system-entities</key>" + entities + "</dict>";
    };
    const auto images = [](const std::string &all) {
        return "<dict><key>images</key><array>" + all + "</array></dict>";
    };
    const auto point = [](const std::string &at) {
        return "<dict><key>mount-point</key><string>" + at + "</string></dict>";
    };
    for (const std::string &bad :
         {std::string("<array/>"), std::string("<dict/>"),
          std::string("<dict><key>images</key><string>x</string></dict>"),
          images("<string>x</string><integer>1</integer>"), images(image("<string>x</string>")),
          images(image("<array><string>x</string><dict/></array>")),
          images(image("<array>" + point("/p") + "</array>", "")),
          images(image("<array>" + point("/p") + "</array>", "<key>image-path</key><array/>")),
          images(image("<array><dict><key>mount-point</key><true/></dict></array>"))})
        EXPECT_EQ(table(bad), none) << bad;
    NSDictionary *two = [NSDictionary dictionaryWithObjectsAndKeys:@"/i", @"/p", nil];
    EXPECT_EQ(table(images(image("<array><dict/>" + point("/p") + point("/q") + "</array>"))),
              text([two description]))
        << "the first mount point only";
    EXPECT_EQ(tarvik::diskImageReport(tarvik::nsdata("{ images = (); }")), nil) << "XML it must be";
    EXPECT_EQ(tarvik::diskImageReport([NSData data]), nil);
}

}  // namespace
