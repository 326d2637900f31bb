#import <Foundation/Foundation.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/Pool.h>
#import <Tarvik/text/NSUserDefaults+Values.h>
#import <Tarvik/text/PropertyLists.h>

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace {

class PropertyListAdditions : public testing::Test {
    tarvik::Pool pool;
};

NSData *xml(id list) { return [NSData dataWithPropertyList:list]; }

CFURLRef urlOf(const std::string &path)
{
    return CFURLCreateFromFileSystemRepresentation(nullptr, reinterpret_cast<const UInt8 *>(path.data()),
                                                   CFIndex(path.size()), false);
}

TEST_F(PropertyListAdditions, AKindOfItsOwnOnly)
{
    NSArray *array = [NSArray arrayWithObjects:@"a", [NSNumber numberWithInt:1], nil];
    NSDictionary *dictionary = [NSDictionary dictionaryWithObject:array forKey:@"k"];
    EXPECT_TRUE([[NSArray arrayWithXMLData:xml(array)] isEqual:array]);
    EXPECT_TRUE([[NSDictionary dictionaryWithXMLData:xml(dictionary)] isEqual:dictionary]);
    EXPECT_TRUE([[NSMutableArray arrayWithXMLData:xml(array)] isKindOfClass:[NSMutableArray class]]);
    EXPECT_EQ([NSArray arrayWithXMLData:xml(dictionary)], nil);
    EXPECT_EQ([NSDictionary dictionaryWithXMLData:xml(array)], nil);
    EXPECT_EQ([NSArray arrayWithXMLData:nil], nil);
    EXPECT_EQ([NSData dataWithPropertyList:[NSNull null]], nil);
    EXPECT_EQ([NSData dataWithPropertyList:nil], nil);
}

TEST_F(PropertyListAdditions, SaysOnTheConsoleWhatCannotBeRead)
{
    testing::internal::CaptureStderr();
    EXPECT_EQ([NSDictionary dictionaryWithXMLData:tarvik::nsdata("<?xml version=\"1.0\"?><plist><dict>")],
              nil);
    const std::string console = testing::internal::GetCapturedStderr();
    EXPECT_NE(console.find("-[NSDictionary(FoundationX) initWithXMLData:] error:"), console.npos) << console;
}

TEST_F(PropertyListAdditions, FilesAreReplacedWholeOrNotAtAll)
{
    TemporaryFolder folder;
    CFURLRef url = urlOf(folder / "list.plist");
    NSDictionary *list = [NSDictionary dictionaryWithObject:@"v" forKey:@"k"];
    EXPECT_TRUE(CFDictionaryWriteToURL(CFDictionaryRef(list), url));
    NSDictionary *bad = [NSDictionary dictionaryWithObject:[NSNull null] forKey:@"k"];
    EXPECT_FALSE(CFDictionaryWriteToURL(CFDictionaryRef(bad), url));
    EXPECT_FALSE(CFDictionaryWriteToURL(nullptr, url));
    CFMutableDictionaryRef back = CFDictionaryCreateMutableWithContentsOfURL(url);
    EXPECT_TRUE(CFEqual(back, list));
    [[(NSMutableDictionary *)back objectForKey:@"k"] appendString:@"!"];  // leaves are mutable
    CFRelease(back);
    CFRelease(url);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);

    const struct {
        const char *contents;
        const char *message;
    } cases[] = {{"", ""},
                 {"<?xml version=\"1.0\"?><plist><array/></plist>", ""},
                 {"<?xml version=\"1.0\"?><plist><x/></plist>", "CFPropertyListCreateFromXMLData:"}};
    for (const auto &[contents, message] : cases) {
        url = urlOf(folder.write("bad", contents));
        testing::internal::CaptureStderr();
        EXPECT_EQ(CFDictionaryCreateMutableWithContentsOfURL(url), nullptr);
        const std::string console = testing::internal::GetCapturedStderr();
        EXPECT_TRUE(*message ? console.starts_with(message) : console.empty()) << console;
        CFRelease(url);
    }
    url = urlOf(folder / "absent");
    EXPECT_EQ(CFDictionaryCreateMutableWithContentsOfURL(url), nullptr);
    CFRelease(url);
}

TEST_F(PropertyListAdditions, ReadsResourcesOfABundle)
{
    TemporaryFolder folder;
    std::filesystem::create_directories(folder / "X.bundle/Contents/Resources/Sub");
    const auto write = [&](const char *name, id list) {
        folder.write(std::string("X.bundle/Contents/Resources/") + name, *tarvik::bytes(xml(list)));
    };
    write("rows.plist", [NSArray arrayWithObject:@"row"]);
    write("Sub/options.plist", [NSDictionary dictionaryWithObject:@"v" forKey:@"k"]);
    NSBundle *bundle = [NSBundle bundleWithPath:tarvik::nsstring((folder / "X.bundle").native())];
    EXPECT_TRUE([[NSArray arrayWithResource:@"rows.plist"
                                   ofBundle:bundle] isEqual:[NSArray arrayWithObject:@"row"]]);
    EXPECT_EQ([NSDictionary dictionaryWithResource:@"rows.plist" ofBundle:bundle], nil);
    EXPECT_EQ([NSArray arrayWithResource:@"absent.plist" ofBundle:bundle], nil);
    EXPECT_EQ([NSArray arrayWithResource:nil ofBundle:bundle], nil);
    EXPECT_EQ([NSArray arrayWithResource:@"rows.plist" ofBundle:nil], nil) << "the main bundle has none";
    CFMutableDictionaryRef options = CFDictionaryCreateMutableWithResource(CFSTR("options"), CFSTR("plist"),
                                                                           CFSTR("Sub"), CFBundleRef(bundle));
    EXPECT_TRUE([(NSDictionary *)options isEqual:[NSDictionary dictionaryWithObject:@"v" forKey:@"k"]]);
    CFRelease(options);
}

TEST_F(PropertyListAdditions, DefaultsAreHandedOutAsCopies)
{
    NSUserDefaults *defaults = [NSUserDefaults standardUserDefaults];
    [defaults setObject:[NSArray arrayWithObject:[NSArray arrayWithObject:@"s"]] forKey:@"Rows"];
    [defaults setBool:YES forKey:@"Flag"];
    EXPECT_EQ([defaults cellStateForBoolKey:@"Flag"], 1);
    EXPECT_EQ([defaults cellStateForBoolKey:@"Absent"], 0);

    NSMutableArray *rows = [defaults mutableArrayForKey:@"Rows"];
    [[[rows objectAtIndex:0] objectAtIndex:0] appendString:@"!"];
    [[rows objectAtIndex:0] addObject:@"more"];
    [rows addObject:@"row"];
    EXPECT_TRUE(
        ([[defaults arrayForKey:@"Rows"] isEqual:[NSArray arrayWithObject:[NSArray arrayWithObject:@"s"]]]));
    NSString *const keys[] = {@"Absent", @"Flag", nil};
    for (NSString *key : keys) {
        EXPECT_TRUE([[defaults mutableArrayForKey:key] isKindOfClass:[NSMutableArray class]]);
        EXPECT_EQ([[defaults mutableDictionaryForKey:key] count], 0U);
    }
    [defaults removeAllObject];
    EXPECT_EQ([defaults objectForKey:@"Rows"], nil);
    EXPECT_EQ([defaults objectForKey:@"Flag"], nil);
}

}  // namespace
