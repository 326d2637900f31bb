// Searches for resources: names that can't be there are not searched for, and all others are found.
#import <Foundation/Foundation.h>

#include "tests/support/TemporaryFolder.h"

#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/Pool.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace {

namespace fs = std::filesystem;

NSString *ns(const char *text) { return text ? [NSString stringWithUTF8String:text] : nil; }

std::string find(NSBundle *bundle, const char *name, const char *type, const char *folder = nullptr)
{
    NSString *path = [bundle pathForResource:ns(name) ofType:ns(type) inDirectory:ns(folder)];
    return path ? fs::path(tarvik::utf8(path).value())
                      .lexically_relative(tarvik::utf8([bundle bundlePath]).value())
                      .native()
                : "";
}

TEST(BundleSearch, FindsNamesInEveryPlaceAndForm)
{
    tarvik::Pool pool;
    TemporaryFolder folder;
    for (const char *made :
         {"B.bundle/Resources/English.lproj", "B.bundle/Resources/Sub/English.lproj", "B.bundle/Loose"})
        fs::create_directories(folder / made);
    for (const char *file :
         {"B.bundle/Resources/a.b.c", "B.bundle/Resources/bare", "B.bundle/Resources/English.lproj/told.txt",
          "B.bundle/Resources/Sub/inner.png", "B.bundle/Resources/Sub/English.lproj/deep.txt",
          "B.bundle/Loose/outer.txt", "B.bundle/top.txt", "B.bundle/Resources/caf\xC3\xA9.txt"})
        folder.write(file, "x");
    NSBundle *bundle =
        [NSBundle bundleWithPath:tarvik::nsstring(fs::canonical(folder / "B.bundle").native())];
    const struct {
        const char *name, *type, *folder, *found;
    } cases[] = {{"a", "b.c", nullptr, "Resources/a.b.c"},
                 {"a.b", "c", nullptr, "Resources/a.b.c"},
                 {"a.b.c", nullptr, nullptr, "Resources/a.b.c"},
                 {"bare", "", nullptr, "Resources/bare"},
                 {"told", "txt", nullptr, "Resources/English.lproj/told.txt"},
                 {"inner", "png", "Sub", "Resources/Sub/inner.png"},
                 {"deep", "txt", "Sub", "Resources/Sub/English.lproj/deep.txt"},
                 {"outer", "txt", "Loose", "Loose/outer.txt"},
                 {"top", "txt", nullptr, "top.txt"},
                 {"caf\xC3\xA9", "txt", nullptr, "Resources/caf\xC3\xA9.txt"},
                 {"a", "txt", nullptr, ""},
                 {"inner", "png", nullptr, ""},
                 {"none", "txt", "Sub", ""},
                 {"none", "txt", "Nowhere", ""}};
    for (const auto &each : cases)
        EXPECT_EQ(find(bundle, each.name, each.type, each.folder), each.found)
            << each.name << '|' << (each.folder ? each.folder : "");
}

TEST(BundleSearch, ABundleMadeAnewSeesWhatIsNew)
{
    TemporaryFolder folder;
    fs::create_directories(folder / "B.bundle/Resources");
    NSString *const path = tarvik::nsstring((folder / "B.bundle").native());
    {
        tarvik::Pool pool;
        EXPECT_EQ(find([NSBundle bundleWithPath:path], "late", "txt"), "");
    }
    folder.write("B.bundle/Resources/late.txt", "x");
    tarvik::Pool pool;
    EXPECT_EQ(find([NSBundle bundleWithPath:path], "late", "txt"), "Resources/late.txt");
}

TEST(BundleSearch, ALibraryMayComeToBeAtAnyTime)
{
    tarvik::Pool pool;
    NSString *library =
        [NSSearchPathForDirectoriesInDomains(NSLibraryDirectory, NSUserDomainMask, YES) lastObject];
    const fs::path root(tarvik::utf8(library).value()), spot = root / "Pictures/spot.png";
    ASSERT_FALSE(fs::exists(root)) << "tests run under a home of their own";
    const auto found = [] {
        return tarvik::utf8([NSBundle pathForLibraryResource:@"spot" ofType:@"png" inDirectory:@"Pictures"])
            .value_or("");
    };
    EXPECT_EQ(found(), "");
    fs::create_directories(spot.parent_path());
    std::ofstream(spot) << 'x';
    EXPECT_EQ(found(), spot.native());
}

}  // namespace
