#include "../support/TemporaryFolder.h"

#include <Carbon/Resources.h>
#import <Foundation/Foundation.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/CFOwned.h>
#import <Tarvik/system/Bundles.h>
#include <Tarvik/system/Versions.h>
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>

using namespace std::literals;
namespace fs = std::filesystem;

namespace {

std::string text(CFStringRef owned)
{
    const tarvik::CFOwned<CFStringRef> string(owned);
    return string ? *tarvik::utf8((NSString *)string.get()) : "(null)";
}
std::string path(CFURLRef owned)
{
    const tarvik::CFOwned<CFURLRef> url(owned);
    return url ? text(CFURLCopyFileSystemPath(url.get(), kCFURLPOSIXPathStyle)) : "(null)";
}
std::string text(NSString *string) { return string ? *tarvik::utf8(string) : "(nil)"; }

TEST(Versions, NumbersAsText)
{
    const NumVersion beta{3, betaStage, 0x45, 0x10}, final{0, finalStage, 0x23, 0x01},
        odd{7, 0x99, 0x00, 0x0A};
    EXPECT_EQ(text(NumVersionCopyString(&beta, false)), "10.4.69b");
    EXPECT_EQ(text(NumVersionCopyString(&beta, true)), "10.4.69b.3");
    EXPECT_EQ(text(NumVersionCopyString(&final, true)), "1.2.35.0");  // the bug is the whole byte: known so
    EXPECT_EQ(text(NumVersionCopyString(&odd, true)), "A.0.0.7");
    EXPECT_EQ(text(NumVersionCopyString(nullptr, true)), "(null)");
    VersRec record{beta, 14,
                   "\x04"
                   "1\xE9"
                   "2b",
                   "\x03"
                   "abc"};
    EXPECT_EQ(text(VersRecCopyVersionString(&record, false)), "10.4.69b");
    EXPECT_EQ(text(VersRecCopyShortString(&record, kCFStringEncodingISOLatin1)), "1é2b");
    EXPECT_EQ(text(VersRecCopyShortString(&record, kCFStringEncodingMacRoman)), "1È2b");
    EXPECT_EQ(text(VersRecCopyLongString(&record, kCFStringEncodingASCII)), "abc");
    EXPECT_EQ(text(VersRecCopyLongString(nullptr, kCFStringEncodingASCII)), "(null)");
}

TEST(Versions, FromTheCurrentResourceFile)
{
    TemporaryFolder folder;
    const std::string file = folder.write("r", "");
    FSRef ref;
    ASSERT_EQ(FSPathMakeRef(reinterpret_cast<const UInt8 *>(file.c_str()), &ref, nullptr), noErr);
    ResFileRefNum number;
    ASSERT_EQ(FSOpenResourceFile(&ref, 0, nullptr, 3, &number), noErr);
    const std::string_view forms[] = {
        "\x03\x60\x45\x10\x0E\x00\x03"
        "1.0"
        "\x02"
        "ab"sv,                            // in memory: this processor's order
        "\x03\x60\x45\x10\x0E\x00\x00"sv,  // 7 bytes
        "\x03\x60\x45\x10\x0E\x00\x09"
        "1.0"
        "\x02"
        "ab"sv,  // a string past the end
        "\x03\x60\x45\x10\x0E\x00\x03"
        "1.0"
        "\x03"
        "ab"sv,
    };
    SInt16 id = 1;
    for (std::string_view form : forms) {
        Handle handle = nullptr;
        PtrToHand(form.data(), &handle, Size(form.size()));
        AddResource(handle, 0x76657273, id++, nullptr);
    }
    VersRec record;
    ASSERT_TRUE(RFGetVersion(1, &record));
    EXPECT_EQ(text(VersRecCopyVersionString(&record, true)), "10.4.69b.3");
    EXPECT_EQ(record.countryCode, 14);
    EXPECT_EQ(text(VersRecCopyShortString(&record, kCFStringEncodingASCII)), "1.0");
    EXPECT_EQ(text(VersRecCopyLongString(&record, kCFStringEncodingASCII)), "ab");
    const VersRec zero{};
    for (SInt16 bad : {2, 3, 4, 5}) {
        EXPECT_FALSE(RFGetVersion(bad, &record)) << bad;
        EXPECT_EQ(std::memcmp(&record, &zero, sizeof zero), 0) << bad;
    }
    EXPECT_FALSE(RFGetVersion(1, nullptr));
    CloseResFile(number);
}

// X.app/Contents as Mac applications have it, and a bundle beside its executable.
class Bundles : public testing::Test {
protected:
    void SetUp() override
    {
        const fs::path contents = folder_ / "Host.app" / "Contents";
        fs::create_directories(contents / "MacOS" / "Plug.bundle" / "Resources");
        fs::create_directories(contents / "Resources" / "French.lproj");
        fs::create_directories(contents / "Resources" / "German.lproj");
        folder_.write("Host.app/Contents/Info.plist",
                      "<?xml version=\"1.0\"?><plist "
                      "version=\"1.0\"><dict><key>CFBundleExecutable</key><string>Host</string>"
                      "<key>CFBundleIdentifier</key><string>org.example.host</string></dict></plist>");
        folder_.write("Host.app/Contents/MacOS/Host", "#!/bin/sh\n");
        fs::permissions(contents / "MacOS" / "Host", fs::perms::owner_all);
        folder_.write("Host.app/Contents/Resources/data.txt", "data");
        folder_.write("Host.app/Contents/Resources/French.lproj/Main.strings",
                      "\"hello\" = \"bonjour \\\"été\\\"\";\n");
        folder_.write("Host.app/Contents/Resources/German.lproj/Main.strings",
                      "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>hello</key><string>grüß "
                      "😀</string></dict></plist>");
        std::string utf16 = "\xFF\xFE";
        for (char c : "\"hello\" = \"sechzehn\";"s)
            utf16 += {c, '\0'};
        folder_.write("Host.app/Contents/Resources/German.lproj/Wide.strings", utf16);
        folder_.write("Host.app/Contents/Resources/German.lproj/Broken.strings", "\"hello\" = ");
        root_ = fs::canonical(folder_.path()).string();
        bundle_ = CFBundleCreateFromPOSIXPath((CFStringRef)tarvik::nsstring(root_ + "/Host.app"));
        ASSERT_NE(bundle_, nullptr);
    }
    void TearDown() override
    {
        if (bundle_)
            CFRelease(bundle_);
    }

    TemporaryFolder folder_;
    std::string root_;
    CFBundleRef bundle_ = nullptr;
};

TEST_F(Bundles, FoldersAroundABundle)
{
    EXPECT_EQ(path(CFBundleCopyDirectoryURL(bundle_)), root_);
    EXPECT_EQ(path(CFBundleCopyDirectoryURLAppendingPathComponent(bundle_, CFSTR("x y"), false)),
              root_ + "/x y");
    EXPECT_EQ(path(CFBundleCopyExecutableDirectoryURLAppendingPathComponent(bundle_, nullptr, true)),
              root_ + "/Host.app/Contents/MacOS");
    EXPECT_EQ(
        path(CFBundleCopyResourcesDirectoryURLAppendingPathComponent(bundle_, CFSTR("data.txt"), false)),
        root_ + "/Host.app/Contents/Resources/data.txt");
    NSBundle *object = (NSBundle *)bundle_;
    EXPECT_EQ(text([object executablePath:@"helper"]), root_ + "/Host.app/Contents/MacOS/helper");
    EXPECT_EQ(text([object executablePath:nil]), "(nil)");
    EXPECT_EQ(text([object directoryPath]), root_);
    EXPECT_EQ(text([object neighborPath:@"b"]), root_ + "/b");
    NSString *beside = [[NSBundle mainBundle] directoryPath];  // a plain program's
    EXPECT_EQ(text(beside), path(CFBundleCopyDirectoryURL(nullptr)));
    EXPECT_EQ(access([beside fileSystemRepresentation], F_OK), 0) << text(beside);
    EXPECT_EQ(text([object identifiedName]), "org.example.host");
    EXPECT_NE(path(CFBundleCopyDirectoryURL(nullptr)), "(null)");  // the main bundle's
}

TEST_F(Bundles, BundlesFromPlaces)
{
    FSRef ref;
    ASSERT_TRUE(CFBundleGetExecutableFSRef(bundle_, &ref));
    UInt8 buffer[1024];
    ASSERT_EQ(FSRefMakePath(&ref, buffer, sizeof buffer), noErr);
    EXPECT_EQ(reinterpret_cast<char *>(buffer), root_ + "/Host.app/Contents/MacOS/Host");
    EXPECT_TRUE(CFBundleGetResourceFSRef(bundle_, CFSTR("data"), CFSTR("txt"), nullptr, &ref));
    EXPECT_FALSE(CFBundleGetResourceFSRef(bundle_, CFSTR("none"), CFSTR("txt"), nullptr, &ref));
    EXPECT_FALSE(CFBundleGetResourceFSRef(nullptr, CFSTR("data"), CFSTR("txt"), nullptr, &ref));

    ASSERT_EQ(FSPathMakeRef(reinterpret_cast<const UInt8 *>((root_ + "/Host.app").c_str()), &ref, nullptr),
              noErr);
    const tarvik::CFOwned<CFBundleRef> again(CFBundleCreateFromFSRef(&ref));
    EXPECT_EQ(text([(NSBundle *)again.get() bundlePath]), root_ + "/Host.app");
    const tarvik::CFOwned<CFBundleRef> plug(
        CFBundleCreateFromBundleExecutableDirectory(bundle_, CFSTR("Plug.bundle")));
    EXPECT_EQ(text([(NSBundle *)plug.get() identifiedName]), "Plug");  // no identifier: the folder's name
    EXPECT_EQ(CFBundleCreateFromBundleExecutableDirectory(bundle_, CFSTR("")), nullptr);
    EXPECT_EQ(CFBundleCreateFromBundleExecutableDirectory(bundle_, CFSTR("None.bundle")), nullptr);
    EXPECT_EQ(CFBundleCreateFromPOSIXPath(nullptr), nullptr);
    EXPECT_EQ(text([tarvik::nsstring(root_ + "/Host.app") bundleIdentifier]), "org.example.host");
    EXPECT_EQ(text([@"/no/such/bundle" bundleIdentifier]), "(nil)");
}

TEST_F(Bundles, TextsOfALocalization)
{
    const auto look = [&](CFStringRef key, CFStringRef fallback, const char *table, const char *language) {
        return text(CFBundleCopyStringForLocalization(bundle_, key, fallback,
                                                      (CFStringRef)tarvik::nsstring(table),
                                                      (CFStringRef)tarvik::nsstring(language)));
    };
    EXPECT_EQ(look(CFSTR("hello"), nullptr, "Main", "French"), "bonjour \"été\"");
    EXPECT_EQ(look(CFSTR("hello"), nullptr, "Main", "German"), "grüß 😀");
    EXPECT_EQ(look(CFSTR("hello"), nullptr, "Wide", "German"), "sechzehn");
    EXPECT_EQ(look(CFSTR("hello"), CFSTR("default"), "Broken", "German"), "default");
    EXPECT_EQ(look(CFSTR("hello"), CFSTR("default"), "Main", "Klingon"), "default");
    EXPECT_EQ(look(CFSTR("none"), nullptr, "Main", "French"), "");
    EXPECT_EQ(look(nullptr, CFSTR("default"), "Main", "French"), "default");
    EXPECT_EQ(look(nullptr, nullptr, "Main", "French"), "(null)");
    EXPECT_EQ(CFBundleCopyStringsDictionaryForLocalization(bundle_, CFSTR("Main"), CFSTR("Klingon")),
              nullptr);
}

TEST_F(Bundles, ContentsOfURLs)
{
    const std::string file = "file://" + root_ + "/Host.app/Contents/Resources/data.txt";
    EXPECT_EQ(tarvik::bytes([tarvik::nsstring(file) URLContents]), "data");
    EXPECT_EQ(tarvik::bytes([@"data:text/plain;base64,aGVsbG8=" URLContents]), "hello");
    EXPECT_EQ([@"file:///no/such/file" URLContents], nil);
    EXPECT_EQ([@"no url at all" URLContents], nil);
    EXPECT_EQ([@"relative" URLContents], nil);
    EXPECT_EQ([@"" URLContents], nil);
}

}  // namespace
