#include "../support/TemporaryFolder.h"

#import <Foundation/Foundation.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/text/NSString+Localization.h>
#include <gtest/gtest.h>

namespace {

std::string utf8(NSString *text) { return tarvik::utf8(text).value_or("<none>"); }

/// A bundle on disk with two tables and a default one, in one language.
class Localization : public testing::Test {
protected:
    void SetUp() override
    {
        std::filesystem::create_directories(folder / "L.bundle/Resources/English.lproj");
        write("Localizable", "\"Quit\" = \"Leave\";\n\"Same\" = \"Same\";");
        write("Menus", "/* only here */ \"Open\" = \"\\U00d6ffnen\";\n\"Both\" = \"first\";");
        write("Common", "\"Both\" = \"second\";\n\"Only\" = \"common\";\n\"Odd\" = \"-N-O- -S-U-C-H- "
                        "-S-T-R-I-N-G- -O-F- -K-E-Y-!-\";");
        bundle = [NSBundle bundleWithPath:tarvik::nsstring((folder / "L.bundle").string())];
        ASSERT_NE(bundle, nil);
    }
    void write(const std::string &table, std::string_view contents)
    {
        folder.write("L.bundle/Resources/English.lproj/" + table + ".strings", contents);
    }
    TemporaryFolder folder;
    NSBundle *bundle = nil;
};

TEST_F(Localization, OneTable)
{
    EXPECT_EQ(utf8([@"Quit" localize:bundle table:nil value:@"?"]), "Leave");
    EXPECT_EQ(utf8([@"Open" localize:bundle table:@"Menus" value:@"?"]), "Öffnen");
    EXPECT_EQ(utf8([@"Open" localize:bundle table:@"Common" value:@"?"]), "?");
    EXPECT_EQ(utf8([@"Open" localize:bundle table:@"Absent" value:@"?"]), "?");
    EXPECT_EQ(utf8([@"No such key" localize]), "No such key");
}

TEST_F(Localization, TheFirstTableThatKnowsTheKey)
{
    EXPECT_EQ(utf8(([@"Both" localize:bundle value:@"?" tables:@"Menus", @"Common", nil])), "first");
    EXPECT_EQ(utf8(([@"Both" localize:bundle value:@"?" tables:@"Absent", @"Common", @"Menus", nil])),
              "second");
    EXPECT_EQ(utf8(([@"Only" localize:bundle value:@"?" tables:@"Menus", @"Common", nil])), "common");
    EXPECT_EQ(utf8(([@"Same" localize:bundle value:@"?" tables:@"Menus", @"Localizable", nil])), "Same");
    EXPECT_EQ(utf8(([@"None" localize:bundle value:@"?" tables:@"Menus", @"Common", nil])), "?");
    EXPECT_EQ(utf8(([@"None" localize:bundle value:nil tables:@"Menus", nil])), "");
    // A text that equals the mark of absence counts as absent.
    EXPECT_EQ(utf8(([@"Odd" localize:bundle value:@"?" tables:@"Common", nil])), "?");
}

TEST_F(Localization, ANilTableIsTheDefaultOne)
{
    EXPECT_EQ(utf8(([@"Quit" localize:bundle value:@"?" tables:nil, nil])), "Leave");
    EXPECT_EQ(utf8(([@"Open" localize:bundle value:@"?" tables:nil, @"Menus", nil])), "Öffnen");
    EXPECT_EQ(utf8([@"Quit" localize:bundle value:@"?" table:nil tablesv:nullptr]), "Leave");
    EXPECT_EQ(utf8(([@"Quit" localize:nil value:@"?" tables:nil, nil])), "?");
}

}  // namespace
