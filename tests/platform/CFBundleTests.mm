// Bundles in the three layouts, two of one identifier, and their localised resources.
#import <Foundation/Foundation.h>

#include "tests/support/TemporaryFolder.h"

#include <CoreFoundation/CoreFoundation.h>
#import <Tarvik/support/Bridge.h>
#include <Tarvik/support/Pool.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;

const char *const kInfo = "<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist><dict>"
                          "<key>CFBundleIdentifier</key><string>org.example.same</string>"
                          "<key>CFBundleExecutable</key><string>Tool</string>"
                          "<key>CFBundleVersion</key><string>10.2.3b4</string></dict></plist>";

struct Layout {
    const char *name, *resources, *info;
};
constexpr Layout kLayouts[] = {{"A.bundle", "Contents/Resources", "Contents/Info.plist"},
                               {"B.bundle", "Resources", "Resources/Info.plist"},
                               {"C.bundle", ".", "Info.plist"}};

class Bundle : public testing::TestWithParam<Layout> {
protected:
    Bundle()
    {
        for (const Layout &layout : kLayouts) {
            const fs::path root = folder / layout.name, resources = root / layout.resources;
            for (const char *language : {"English.lproj", "fr.lproj"})
                fs::create_directories(resources / language);
            fs::create_directories(resources / "Sub");
            const auto write = [&](const char *name, std::string_view text) {
                folder.write((resources / name).lexically_relative(folder.path()).native(), text);
            };
            folder.write((root / layout.info).lexically_relative(folder.path()).native(), kInfo);
            write("plain.txt", "x");
            write("Sub/inner.txt", "x");
            write("English.lproj/Localizable.strings",
                  std::string("\"k\" = \"English of ") + layout.name + "\";");
            write("fr.lproj/Localizable.strings", "\"k\" = \"Fran\xC3\xA7"
                                                  "ais\";");
        }
    }

    CFBundleRef open(const char *name)
    {
        const std::string path = folder / name;
        CFURLRef url = CFURLCreateFromFileSystemRepresentation(
            nullptr, reinterpret_cast<const UInt8 *>(path.data()), CFIndex(path.size()), true);
        CFBundleRef bundle = CFBundleCreate(nullptr, url);
        CFRelease(url);
        return bundle;
    }

    /// The path of an owned URL, relative to the bundle; the URL is released.
    std::string taken(CFURLRef url, const char *name)
    {
        UInt8 buffer[2048];
        const bool exists = CFURLGetFileSystemRepresentation(url, true, buffer, sizeof buffer);
        CFRelease(url);
        const fs::path root = fs::canonical(folder / name);
        return exists ? fs::path(reinterpret_cast<char *>(buffer))
                            .lexically_relative(root)
                            .lexically_normal()
                            .native()
                      : "(none)";
    }

    tarvik::Pool pool;
    TemporaryFolder folder;
};

TEST_P(Bundle, FindsWhatItHolds)
{
    const auto [name, resources, info] = GetParam();
    CFBundleRef bundle = open(name);
    ASSERT_NE(bundle, nullptr);
    const auto within = [&](const char *path) {
        return (fs::path(resources) / path).lexically_normal().native();
    };
    EXPECT_EQ(taken(CFBundleCopyBundleURL(bundle), name), ".");
    EXPECT_TRUE(CFEqual(CFBundleGetIdentifier(bundle), CFSTR("org.example.same")));
    EXPECT_EQ(CFBundleGetVersionNumber(bundle), 0x10236004U);
    EXPECT_EQ(fs::path(taken(CFBundleCopyResourcesDirectoryURL(bundle), name)), fs::path(resources));
    EXPECT_EQ(taken(CFBundleCopyResourceURL(bundle, CFSTR("plain"), CFSTR("txt"), nullptr), name),
              within("plain.txt"));
    EXPECT_EQ(taken(CFBundleCopyResourceURL(bundle, CFSTR("plain.txt"), CFSTR(""), nullptr), name),
              within("plain.txt"));
    EXPECT_EQ(taken(CFBundleCopyResourceURL(bundle, CFSTR("inner"), CFSTR("txt"), CFSTR("Sub")), name),
              within("Sub/inner.txt"));
    EXPECT_EQ(CFBundleCopyResourceURL(bundle, CFSTR("absent"), CFSTR("txt"), nullptr), nullptr);
    EXPECT_EQ(taken(CFBundleCopyResourceURLForLocalization(bundle, CFSTR("Localizable"), CFSTR("strings"),
                                                           nullptr, CFSTR("French")),
                    name),
              within("fr.lproj/Localizable.strings"));
    EXPECT_EQ(CFBundleCopyResourceURLForLocalization(bundle, CFSTR("Localizable"), CFSTR("strings"), nullptr,
                                                     CFSTR("xx")),
              nullptr);
    EXPECT_EQ(CFBundleCopyExecutableURL(bundle), nullptr) << "there is none";

    CFArrayRef localizations = CFBundleCopyBundleLocalizations(bundle);
    EXPECT_EQ(CFArrayGetCount(localizations), 2);
    CFRelease(localizations);
    CFStringRef text = CFBundleCopyLocalizedString(bundle, CFSTR("k"), CFSTR("v"), nullptr);
    EXPECT_EQ(tarvik::utf8((NSString *)text), std::string("English of ") + name);
    CFRelease(text);
    text = CFBundleCopyLocalizedString(bundle, CFSTR("absent"), CFSTR("v"), nullptr);
    EXPECT_TRUE(CFEqual(text, CFSTR("v")));
    CFRelease(text);
    CFRelease(bundle);
}

INSTANTIATE_TEST_SUITE_P(Layouts, Bundle, testing::ValuesIn(kLayouts),
                         [](const auto &info) { return std::string(info.param.name, 1); });

using TwoBundles = Bundle;

TEST_F(TwoBundles, OfOneIdentifierAreTwo)
{
    CFBundleRef a = open("A.bundle"), b = open("B.bundle"), again = open("A.bundle");
    EXPECT_EQ(taken(CFBundleCopyBundleURL(b), "B.bundle"), ".");
    EXPECT_EQ(a, again);
    EXPECT_NE(a, b);
    CFBundleRef found = CFBundleGetBundleWithIdentifier(CFSTR("org.example.same"));
    EXPECT_TRUE(found == a || found == b);
    for (CFBundleRef bundle : {a, b, again})
        CFRelease(bundle);
    EXPECT_EQ(open("absent"), nullptr);
    EXPECT_EQ(CFBundleGetBundleWithIdentifier(CFSTR("org.example.none")), nullptr);
}

TEST(MainBundle, OfAPlainProgramIsItsFolder)
{
    CFBundleRef bundle = CFBundleGetMainBundle();
    CFURLRef executable = CFBundleCopyExecutableURL(bundle), folder = CFBundleCopyBundleURL(bundle),
             above = CFURLCreateCopyDeletingLastPathComponent(nullptr, executable);
    UInt8 one[2048], other[2048];
    ASSERT_TRUE(CFURLGetFileSystemRepresentation(folder, true, one, sizeof one) &&
                CFURLGetFileSystemRepresentation(above, true, other, sizeof other));
    EXPECT_STREQ(reinterpret_cast<char *>(one), reinterpret_cast<char *>(other));
    for (CFURLRef url : {executable, folder, above})
        CFRelease(url);
}

}  // namespace
