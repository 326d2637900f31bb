// Opening: real desktop entries and application folders in a private home, whose programs say what they were
// given.
#include <Carbon/LSOpen.h>
#import <Tarvik/Tarvik.h>
#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/Pool.h>
#include <gtest/gtest.h>
#include <tests/support/Program.h>
#include <tests/support/TemporaryFolder.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <thread>

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

class Opening : public testing::Test {
protected:
    void SetUp() override
    {
        setenv("XDG_DATA_HOME", (root_ / "data").c_str(), 1);
        setenv("XDG_CONFIG_HOME", (root_ / "config").c_str(), 1);
        fs::create_directories(root_ / "data/applications");
        fs::create_directories(root_ / "config");
        fs::create_directories(root_ / "Ink.app/Resources");
        program("viewer");
        program("Ink.app/Ink");
        folder_.write("data/applications/viewer.desktop",
                      "[Desktop Entry]\nType=Application\nName=Viewer\nExec=" + (root_ / "viewer").native() +
                          " %U\nMimeType=text/plain;x-scheme-handler/tarvik-test;\n");
        folder_.write(
            "config/mimeapps.list",
            "[Default "
            "Applications]\ntext/plain=viewer.desktop\nx-scheme-handler/tarvik-test=viewer.desktop\n");
        folder_.write("Ink.app/Resources/Info-gnustep.plist",
                      "{ NSExecutable = Ink; CFBundleIdentifier = \"org.tarvik.Ink\"; "
                      "NSTypes = ({ NSUnixExtensions = (inkling); }); }");
        folder_.write("a b.txt", "text\n");
    }
    /// Writes its arguments down, then runs on for a while.
    void program(const std::string &name) const
    {
        folder_.write(name, "#!/bin/sh\nfor word; do echo \"$word\"; done > '" +
                                (root_ / "said.new").native() + "'\nmv '" + (root_ / "said.new").native() +
                                "' '" + (root_ / "said").native() + "'\nexec sleep 2\n");
        fs::permissions(root_ / name, fs::perms(0755));
    }
    std::string said() const
    {
        for (int i = 0; i < 400 && !fs::exists(root_ / "said"); ++i)
            std::this_thread::sleep_for(10ms);
        const std::string words = readFile(root_ / "said");
        fs::remove(root_ / "said");
        return words;
    }
    CFURLRef url(const std::string &name) const
    {
        const std::string path = root_ / name;
        return CFURLRef([(id)CFURLCreateFromFileSystemRepresentation(
            nullptr, reinterpret_cast<const UInt8 *>(path.data()), CFIndex(path.size()), false) autorelease]);
    }
    std::string path(CFURLRef url) const { return tarvik::utf8([(NSURL *)url path]).value_or("nil"); }

    tarvik::Pool pool_;
    TemporaryFolder folder_;
    const fs::path root_ = fs::canonical(folder_.path());
};

TEST_F(Opening, WithTheDesktopsChoiceAndWithoutWaiting)
{
    CFURLRef application = nullptr;
    ASSERT_EQ(LSGetApplicationForURL(url("a b.txt"), kLSRolesAll, nullptr, &application), noErr);
    EXPECT_EQ(path(application), root_ / "data/applications/viewer.desktop");
    CFRelease(application);

    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(CFURLOpenWithLSLaunchFlags(url("a b.txt"), kLSLaunchDefaults));
    EXPECT_EQ(said(), (root_ / "a b.txt").native() + "\n");
    EXPECT_TRUE(
        CFURLOpenWithLSLaunchFlags((CFURLRef)[NSURL URLWithString:@"tarvik-test:hello"], kLSLaunchDefaults));
    EXPECT_EQ(said(), "tarvik-test:hello\n");
    fs::create_symlink("a b.txt", root_ / "link");
    FSRef ref;
    ASSERT_TRUE([tarvik::nsstring((root_ / "link").native()) getFSRef:&ref]);
    EXPECT_EQ(LSOpenFSRef(&ref, nullptr), noErr);
    EXPECT_EQ(said(), (root_ / "a b.txt").native() + "\n");
    EXPECT_LT(std::chrono::steady_clock::now() - start, 6s)
        << "three programs that run on for two seconds each";
    EXPECT_EQ(childProcesses(), 0u) << "nobody has to wait for them";

    EXPECT_FALSE(CFURLOpenWithLSLaunchFlags(url("none.txt"), kLSLaunchDefaults));
    EXPECT_FALSE(CFURLOpenWithLSLaunchFlags((CFURLRef) @"/etc/hosts", kLSLaunchDefaults));
    EXPECT_FALSE(CFURLOpenWithLSLaunchFlags(nullptr, kLSLaunchDefaults));
    EXPECT_EQ(LSOpenCFURLRef((CFURLRef)[NSURL URLWithString:@"unknown-to-all:x"], nullptr),
              kLSApplicationNotFoundErr);
}

TEST_F(Opening, WithApplicationFolders)
{
    auto open = [&](CFURLRef application, NSArray *items) {
        const LSLaunchURLSpec spec = {application, (CFArrayRef)items, nullptr, kLSLaunchDefaults, nullptr};
        return LSOpenFromURLSpec(&spec, nullptr);
    };
    EXPECT_EQ(open(url("Ink.app"), nil), noErr);
    EXPECT_EQ(said(), "");
    EXPECT_EQ(open(url("Ink.app"), [NSArray arrayWithObject:(id)url("a b.txt")]), noErr);
    EXPECT_EQ(said(), "-GSFilePath\n" + (root_ / "a b.txt").native() + "\n");
    EXPECT_EQ(open(nullptr, [NSArray arrayWithObject:(id)url("Ink.app")]), noErr)
        << "an application itself is launched";
    EXPECT_EQ(said(), "");
    EXPECT_EQ(open(url("a b.txt"), nil), kLSNotAnApplicationErr);
    EXPECT_EQ(open(nullptr, nil), paramErr);
    fs::create_directory(root_ / "Empty.app");
    EXPECT_EQ(open(url("Empty.app"), nil), kLSNotAnApplicationErr);
    for (int i = 0; i < 500 && childProcesses() > 0; ++i)
        std::this_thread::sleep_for(10ms);
    EXPECT_EQ(childProcesses(), 0u) << "they are collected when they end";
}

TEST_F(Opening, FindsApplicationsByNameAndIdentifier)
{
    NSString *place =
        [NSSearchPathForDirectoriesInDomains(NSApplicationDirectory, NSUserDomainMask, YES) lastObject];
    ASSERT_TRUE([place createDirectories]);
    fs::rename(root_ / "Ink.app", fs::path(tarvik::utf8(place).value()) / "Ink.app");
    NSString *ink = [place stringByAppendingPathComponent:@"Ink.app"];
    auto find = [&](NSString *identifier, NSString *name) {
        CFURLRef found = nullptr;
        const OSStatus error = LSFindApplicationForInfo(kLSUnknownCreator, (CFStringRef)identifier,
                                                        (CFStringRef)name, nullptr, &found);
        return error ? std::to_string(error) : path(CFURLRef([(id)found autorelease]));
    };
    EXPECT_EQ(find(@"org.tarvik.Ink", nil), tarvik::utf8(ink));
    EXPECT_EQ(find(nil, @"Ink.app"), tarvik::utf8(ink));
    EXPECT_EQ(find(nil, @"viewer.desktop"), root_ / "data/applications/viewer.desktop");
    EXPECT_EQ(find(@"org.tarvik.None", @"None.app"), std::to_string(kLSApplicationNotFoundErr));
    EXPECT_EQ(find(nil, @"../Ink.app"), std::to_string(kLSApplicationNotFoundErr));
    folder_.write("note.inkling", std::string("\1\2\0\3", 4));
    CFURLRef application = nullptr;
    ASSERT_EQ(LSGetApplicationForURL(url("note.inkling"), kLSRolesAll, nullptr, &application), noErr);
    EXPECT_EQ(path(application), tarvik::utf8(ink));
    CFRelease(application);
    EXPECT_TRUE([ink remove]);
}

}  // namespace
