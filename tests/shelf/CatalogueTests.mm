// The catalogue without its window: rows, their XML, what the system says of them, the texts' translations.
#import <Foundation/Foundation.h>
#include <Tarvik/Tarvik.h>
#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/support/Bridge.h>
#include <apps/Shelf/Catalogue.h>
#include <apps/Shelf/CatalogueXML.h>
#include <apps/Shelf/Images.h>
#include <apps/Shelf/Publishing.h>
#include <gtest/gtest.h>
#include <tests/support/Program.h>
#include <tests/support/TemporaryFolder.h>

#include <regex.h>
#include <sys/stat.h>
#include <unistd.h>

#include <set>

namespace {

using namespace shelf;

std::string str(NSString *text) { return tarvik::utf8(text).value_or("(nil)"); }
NSString *ns(const std::string &text) { return tarvik::nsstring(text); }

TEST(ShelfCatalogue, RowsOfFiles)
{
    TemporaryFolder folder;
    const std::string file = folder.write("Photos 2024.img", std::string(3000, 'x'));
    symlink(file.c_str(), (folder / "link").c_str());
    [ns(file) setLabelColorIndex:3];
    NSString *failure = nil;
    NSMutableDictionary *row = rowForImage(ns(folder / "link"), failure);
    EXPECT_EQ(str(text(row, kName)), "Photos 2024");
    EXPECT_EQ(str(text(row, kPath)), str(fullPath(ns(file))));
    EXPECT_EQ(number(row, kSize), 3000);
    EXPECT_EQ(label(row), 3);

    EXPECT_EQ(rowForImage(ns(folder.path().native()), failure), nil);
    EXPECT_NE(str(failure).find("folder"), std::string::npos);
    EXPECT_EQ(rowForImage(ns(folder / "none"), failure), nil);
    EXPECT_NE(str(failure).find("no such file"), std::string::npos);
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(rowForImage(ns(folder / "pipe"), failure), nil);
    NSString *reason = nil;
    EXPECT_EQ(checksumOfImage(
                  ns(folder / "pipe"), [](double) { return true; }, reason),
              nil);
}

// What stood in the defaults or on a pasteboard may be anything.
TEST(ShelfCatalogue, RowsOfForeignTypes)
{
    NSDictionary *odd = [NSDictionary
        dictionaryWithObjectsAndKeys:@"/a", kPath, @"large", kSize, [NSArray array], kName,
                                     [NSNumber numberWithInt:77], kLabel, @"x", @"foreign", nil];
    for (id row : {(id)odd, (id) @"a text", (id)[NSNull null], (id)nil}) {
        EXPECT_EQ(str(text(row, kName)), "");
        EXPECT_EQ(number(row, kSize), 0);
        EXPECT_EQ(label(row), 0);
        EXPECT_EQ(compare(row, row, kSize, nil), NSOrderedSame);
    }
    NSArray *adopted = adoptedRows([NSArray
        arrayWithObjects:odd, @"a text", [NSDictionary dictionaryWithObject:@"relative" forKey:kPath], nil]);
    ASSERT_EQ([adopted count], 1u);
    EXPECT_EQ([[adopted objectAtIndex:0] objectForKey:@"foreign"], nil);
    EXPECT_EQ([[[adopted objectAtIndex:0] objectForKey:kSize] intValue], 0);
    EXPECT_EQ([adoptedRows(@"a text") count], 0u);

    NSUserDefaults *defaults = [NSUserDefaults standardUserDefaults];
    [defaults setObject:@"no list" forKey:kImagesDefault];
    EXPECT_TRUE(putForeignCatalogueAside(defaults));
    EXPECT_EQ([defaults objectForKey:kImagesDefault], nil);
    EXPECT_TRUE([[[defaults dictionaryRepresentation] allValues] containsObject:@"no list"]);
    EXPECT_FALSE(putForeignCatalogueAside(defaults));
}

TEST(ShelfCatalogue, AnImageIsThereOnce)
{
    NSArray *rows =
        adoptedRows([NSArray arrayWithObjects:[NSDictionary dictionaryWithObject:@"/a" forKey:kPath],
                                              [NSDictionary dictionaryWithObject:@"/b" forKey:kPath],
                                              [NSDictionary dictionaryWithObject:@"/b" forKey:kPath], nil]);
    NSMutableSet *known = [NSMutableSet setWithObject:@"/a"];
    EXPECT_EQ([unknownRows(rows, known) count], 1u);
    EXPECT_EQ([unknownRows(rows, known) count], 0u);
}

TEST(ShelfCatalogue, SizesAndOrder)
{
    const std::pair<int64_t, const char *> sizes[] = {{0, "0 bytes"},         {1023, "1023 bytes"},
                                                      {1536, "1.5 KB"},       {1048575, "1.0 MB"},
                                                      {5046586573, "4.7 GB"}, {INT64_MAX, "8.0 EB"}};
    for (const auto &[bytes, shown] : sizes)
        EXPECT_EQ(str(shownSize(bytes)), shown);
    NSDictionary *big =
        [NSDictionary dictionaryWithObjectsAndKeys:@"a", kName, [NSNumber numberWithLongLong:10000000000],
                                                   kSize, @"/2", kPath, nil];
    NSDictionary *small = [NSDictionary
        dictionaryWithObjectsAndKeys:@"B", kName, [NSNumber numberWithInt:9], kSize, @"/1", kPath, nil];
    EXPECT_EQ(compare(big, small, kSize, nil), NSOrderedDescending);
    EXPECT_EQ(compare(big, small, kName, nil), NSOrderedAscending);
    EXPECT_EQ(compare(big, small, kMounted, [NSDictionary dictionaryWithObject:@"/media/x" forKey:@"/2"]),
              NSOrderedDescending);
}

TEST(ShelfCatalogue, XMLThereAndBack)
{
    NSDictionary *full = [NSDictionary
        dictionaryWithObjectsAndKeys:@"A & B <c> \"q\" &lt; &amp;quot; é 😀", kName, @"/tmp/a]]>b.img", kPath,
                                     [NSNumber numberWithLongLong:5000000000], kSize, @"00ff", kChecksum,
                                     [NSNumber numberWithInt:4], kLabel, @"two\nlines\tand &#10;", kNote,
                                     nil];
    NSDictionary *bare =
        [NSDictionary dictionaryWithObjectsAndKeys:@"/b", kPath, [NSNumber numberWithInt:0], kSize,
                                                   [NSNumber numberWithInt:0], kLabel, nil];
    NSArray *rows = [NSArray arrayWithObjects:full, @"no row", bare, nil];
    const std::string xml = xmlOfRows(rows);
    const auto back = rowsOfXML(xml);
    ASSERT_TRUE(back);
    EXPECT_TRUE([*back isEqual:([NSArray arrayWithObjects:full, bare, nil])]) << str([*back description]);

    NSDictionary *hostile =
        [NSDictionary dictionaryWithObjectsAndKeys:[NSString stringWithFormat:@"a%Cb%Cc%C", (unichar)0,
                                                                              (unichar)0xFFFE, (unichar)7],
                                                   kName, @"/h", kPath, nil];
    EXPECT_NE(xmlOfRows([NSArray arrayWithObject:hostile]).find("<name>abc</name>"), std::string::npos);
    EXPECT_EQ([*rowsOfXML(xmlOfRows(nil)) count], 0u);
    for (const char *no : {"", "<catalogue><image></image></catalogue>", "<?xml version=\"1.0\"?><other/>"})
        EXPECT_FALSE(rowsOfXML(no)) << no;
    EXPECT_EQ([*rowsOfXML("<?xml "
                          "?><catalogue><image><path>relative</path></image><image><path>/x</path><size>1e9</"
                          "size></catalogue>") count],
              0u);
}

TEST(ShelfCatalogue, WhereImagesAreNow)
{
    TemporaryFolder folder;
    NSString *failure = nil;
    NSMutableArray *rows = [NSMutableArray array];
    for (const char *name : {"stays.img", "moves.img", "goes.img"})
        [rows addObject:rowForImage(ns(folder.write(name, name)), failure)];
    std::filesystem::rename(folder / "moves.img", folder / "moved.img");
    std::filesystem::remove(folder / "goes.img");
    [rows addObject:@"no row"];
    const Survey found = survey(snapshot(rows));
    EXPECT_EQ([found.missing.get() count], 1u);
    EXPECT_TRUE([found.missing.get() containsObject:text([rows objectAtIndex:2], kPath)]);
    ASSERT_EQ([found.moved.get() count], 1u);
    EXPECT_EQ(str([found.moved.get() objectForKey:text([rows objectAtIndex:1], kPath)]),
              (folder / "moved.img").native());
}

TEST(ShelfImages, ChecksumInPieces)
{
    TemporaryFolder folder;
    const std::string file = folder.write("image", std::string(2500000, 'a'));
    NSString *reason = nil;
    double last = 0;
    int calls = 0;
    NSString *checksum = checksumOfImage(
        ns(file), [&](double fraction) { return last = fraction, ++calls; }, reason);
    EXPECT_EQ(str(checksum) + "  " + file + "\n", runProgram({"sha1sum", file}).out);
    EXPECT_EQ(last, 1);
    EXPECT_EQ(calls, 3);
    EXPECT_EQ(checksumOfImage(
                  ns(file), [](double) { return false; }, reason),
              nil);  // cancelled: no reason
    EXPECT_EQ(reason, nil);
    EXPECT_EQ(checksumOfImage(
                  ns(folder / "none"), [](double) { return true; }, reason),
              nil);
    EXPECT_NE(reason, nil);
    EXPECT_EQ(str(checksumOfImage(
                  ns(folder.write("empty", "")), [](double) { return true; }, reason)),
              "da39a3ee5e6b4b0d3255bfef95601890afd80709");
}

TEST(ShelfImages, MadeMountedOrNot)
{
    TemporaryFolder folder;
    std::filesystem::create_directory(folder / "source");
    folder.write("source/file", "text");
    NSString *source = ns(folder / "source"), *image = ns(folder / "shelf-test.img");
    std::vector<double> fractions;
    EXPECT_TRUE(
        createImage(source, image, [&](double fraction) { return fractions.push_back(fraction), true; }));
    ASSERT_FALSE(fractions.empty());
    EXPECT_EQ(fractions.back(), 1);
    EXPECT_FALSE(createImage(ns(folder / "none"), image, [](double) { return true; }));
    EXPECT_TRUE([image exists]);  // the old one is left
    EXPECT_FALSE(createImage(source, ns(folder / "none/x.img"), [](double) { return true; }));
    NSString *reason = nil;
    EXPECT_EQ(mountImage(ns(folder.write("rubbish.img", "no image")), reason), nil);
    EXPECT_NE(str(reason).find("rubbish.img"), std::string::npos);
}

TEST(ShelfPublishing, AddressesThatAreNone)
{
    for (const char *url : {"", "server", "file:///etc/passwd", "https://", "http://a b/"}) {
        NSString *why = nil;
        publish(ns(url), "<x/>", [&](NSString *reason) { why = reason; });
        EXPECT_NE(why, nil) << url;
    }
}

// Both languages have every text, each with the same conversions, and the sources use no other.
TEST(ShelfTexts, AreTranslated)
{
    const std::string resources = TARVIK_SOURCE_DIR "/apps/Shelf/Resources/";
    NSDictionary *tables[2];
    for (int i : {0, 1}) {
        const std::string file =
                              readFile(resources + (i ? "German" : "English") + ".lproj/Localizable.strings"),
                          mark = "\xEF\xBB\xBF";
        ASSERT_TRUE(file.starts_with(
            mark));  // without it the platform takes the file for one of the user's own encoding
        tables[i] = [ns(file.substr(mark.size())) propertyListFromStringsFileFormat];
    }
    ASSERT_GT([tables[0] count], 50u);
    EXPECT_TRUE([[NSSet setWithArray:[tables[0] allKeys]] isEqual:[NSSet setWithArray:[tables[1] allKeys]]]);
    const auto conversions = [](NSString *text) {
        std::string found;
        const std::string bytes = str(text);
        for (size_t at = 0; (at = bytes.find('%', at)) != std::string::npos; ++at)
            found += bytes.substr(at, 2);
        return found;
    };
    for (NSString *key : tarvik::each<NSString>([tables[0] allKeys])) {
        EXPECT_TRUE([[tables[0] objectForKey:key] isEqual:key]);
        EXPECT_EQ(conversions(key), conversions([tables[1] objectForKey:key])) << str(key);
    }
    regex_t literal;
    ASSERT_EQ(regcomp(&literal, "@\"([^\"]*)\" localize\\]", REG_EXTENDED), 0);
    for (const auto &file : std::filesystem::directory_iterator(TARVIK_SOURCE_DIR "/apps/Shelf")) {
        const std::string source = file.is_regular_file() ? readFile(file.path()) : "";
        regmatch_t match[2];
        for (const char *at = source.c_str(); regexec(&literal, at, 2, match, 0) == 0; at += match[0].rm_eo) {
            NSString *key = [[ns(std::string(at + match[1].rm_so, at + match[1].rm_eo))
                componentsSeparatedByString:@"\\n"] componentsJoinedByString:@"\n"];
            // The end of a text of several literals is the end of some key.
            bool known = false;
            for (NSString *each : tarvik::each<NSString>([tables[0] allKeys]))
                known = known || [each hasSuffix:key];
            EXPECT_TRUE(known) << file.path() << ": " << str(key);
        }
    }
    regfree(&literal);
}

}  // namespace
