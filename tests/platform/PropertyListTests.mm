// XML property lists: every text survives, hostile text is refused, Foundation's own callers gain what the
// platform's reader knows.
#import <Foundation/Foundation.h>

#include "tests/support/Hex.h"
#include "tests/support/TemporaryFolder.h"

#include <CoreFoundation/CoreFoundation.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/Guard.h>
#include <Tarvik/support/Pool.h>
#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace {

const std::string kStart = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">",
                  kEnd = "</plist>";

NSData *dataOf(std::string_view bytes) { return tarvik::nsdata(bytes); }

/// The list in the text, autoreleased; nil with the reason in `why`.
id parsed(const std::string &text, std::string *why = nullptr,
          CFOptionFlags options = kCFPropertyListImmutable)
{
    CFStringRef error = nullptr;
    id list = (id) const_cast<void *>(
        CFPropertyListCreateFromXMLData(nullptr, CFDataRef(dataOf(text)), options, &error));
    if (why)
        *why = tarvik::utf8((NSString *)error).value_or("");
    EXPECT_EQ(list == nil, error != nullptr);
    CFRelease(error);
    return [list autorelease];
}

std::string written(id list)
{
    NSData *xml = [(NSData *)CFPropertyListCreateXMLData(nullptr, list) autorelease];
    return tarvik::bytes(xml).value_or("(none)");
}

NSString *units(std::u16string_view text)
{
    return [(NSString *)CFStringCreateWithCharacters(nullptr, reinterpret_cast<const UniChar *>(text.data()),
                                                     CFIndex(text.size())) autorelease];
}

class PropertyList : public testing::Test {
    tarvik::Pool pool;
};

TEST_F(PropertyList, EveryTextSurvives)
{
    const std::u16string_view texts[] = {
        u"",
        u" \t lead and trail \n",
        u"<&>\"']]>",
        u"😀 \U0010FFFF 日本 é",
        u"\\U0041 \\UD83D\\UDE00 \\u0041",
        u"a\rb\r\nc\nd",
        std::u16string_view(u"\0\1\x1F\x7F\x85\u2028", 6),
        u"\xFFFE\xFFFF\xFEFF",
        u"half \xD83D",
        u"\xDE00 half",
        u"<?u 0041?>",
        u"&amp;&#65;",
    };
    NSMutableDictionary *all = [NSMutableDictionary dictionary];
    for (const auto text : texts)
        [all setObject:[NSArray arrayWithObject:units(text)] forKey:units(text)];
    const std::string xml = written(all);
    const CFOptionFlags leaves = kCFPropertyListMutableContainersAndLeaves;
    id copy = [(id) const_cast<void *>(CFPropertyListCreateDeepCopy(nullptr, all, leaves)) autorelease];
    for (id back : {parsed(xml), parsed(xml, nullptr, leaves), copy}) {
        ASSERT_NE(back, nil) << xml;
        EXPECT_EQ([back count], std::size(texts));
        for (const auto text : texts) {
            NSString *one = [[back objectForKey:units(text)] lastObject];
            ASSERT_EQ([one length], text.size()) << xml;
            for (size_t i = 0; i < text.size(); ++i)
                EXPECT_EQ([one characterAtIndex:i], text[i]);
        }
    }
}

TEST_F(PropertyList, ValuesSurvive)
{
    const double reals[] = {0.1, -1e300, 5e-324, 1.0 / 3, 12345678.9, INFINITY, -INFINITY};
    NSMutableArray *list = [NSMutableArray array];
    for (const double real : reals)
        [list addObject:[NSNumber numberWithDouble:real]];
    for (const int64_t integer : {int64_t(0), INT64_MAX, INT64_MIN, int64_t(-7)})
        [list addObject:[NSNumber numberWithLongLong:integer]];
    [list addObject:[NSNumber numberWithUnsignedLongLong:UINT64_MAX]];
    for (const double date :
         {0.0, 347155200.0, -63114076800.0 /* the year 1 */, 252423993600.0 /* the year 10000 */, -1.0})
        [list addObject:[NSDate dateWithTimeIntervalSinceReferenceDate:date]];
    for (const size_t size : {0, 1, 2, 3, 57, 58, 1000})
        [list addObject:dataOf(std::string(size, '\xA5'))];
    [list addObject:[NSDictionary dictionary]];
    [list addObject:[NSArray array]];
    id back = parsed(written(list));
    EXPECT_TRUE([back isEqual:list]) << written(list);
    // Booleans stay booleans, integers stay integers.
    back = parsed(
        written([NSArray arrayWithObjects:[NSNumber numberWithBool:YES], [NSNumber numberWithInt:1], nil]));
    EXPECT_EQ(CFGetTypeID([back objectAtIndex:0]), CFBooleanGetTypeID());
    EXPECT_EQ(CFGetTypeID([back objectAtIndex:1]), CFNumberGetTypeID());
    EXPECT_TRUE(std::isnan([parsed(kStart + "<real>nan</real>" + kEnd) doubleValue]));
    EXPECT_EQ([parsed(kStart + "<integer> 0x1F </integer>" + kEnd) intValue], 31);
}

TEST_F(PropertyList, WritesTheSameTextForEqualLists)
{
    NSDictionary *list = [NSDictionary
        dictionaryWithObjectsAndKeys:[NSArray arrayWithObjects:@"x", [NSNumber numberWithBool:NO], nil], @"b",
                                     [NSDate dateWithTimeIntervalSinceReferenceDate:0], @"a", nil];
    EXPECT_EQ(
        written(list),
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<!DOCTYPE plist PUBLIC \"-//Apple Computer//DTD PLIST 1.0//EN\" "
        "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
        "<plist version=\"1.0\">\n"
        "<dict>\n\t<key>a</key>\n\t<date>2001-01-01T00:00:00Z</date>\n"
        "\t<key>b</key>\n\t<array>\n\t\t<string>x</string>\n\t\t<false/>\n\t</array>\n</dict>\n</plist>\n");
}

TEST_F(PropertyList, ReadsWhatOthersWrite)
{
    EXPECT_TRUE([parsed("\xEF\xBB\xBF" + kStart + "<string>a<![CDATA[<b>&amp;]]>c</string>" + kEnd)
        isEqual:@"a<b>&amp;c"]);
    EXPECT_TRUE([parsed(" \n" + kStart + "<!-- c --><string><!-- x -->y</string>" + kEnd + "<!-- end -->\n")
        isEqual:@"y"]);
    EXPECT_TRUE([parsed("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><plist><string>\xE9</string></plist>")
        isEqual:@"\u00e9"]);
    NSData *wide = [@"<?xml version=\"1.0\" encoding=\"UTF-16\"?><plist><string>\u65e5</string></plist>"
        dataUsingEncoding:NSUnicodeStringEncoding];
    EXPECT_TRUE([parsed(*tarvik::bytes(wide)) isEqual:@"\u65e5"]);
    // The older text forms.
    id old = parsed("// list\n{ a = (1, \"t\\\"wo\\U00e9\\n\\101\", <0f bd>, <*I-12>, <*BY>,); /* c */ 'b c' "
                    "= path/to.file; }");
    NSArray *values =
        [NSArray arrayWithObjects:@"1", @"t\"wo\u00e9\nA", dataOf("\x0F\xBD"), [NSNumber numberWithInt:-12],
                                  [NSNumber numberWithBool:YES], nil];
    EXPECT_TRUE((
        [old isEqual:[NSDictionary dictionaryWithObjectsAndKeys:values, @"a", @"path/to.file", @"b c", nil]]))
        << *tarvik::utf8([old description]);
    EXPECT_TRUE([[parsed("alone; other = \"x\";") objectForKey:@"alone"] isEqual:@"alone"]);
    NSDictionary *table = parsed("/* c */ \"Open\" = \"\xC3\x96"
                                 "ffnen\";\n\"Quit\" = \"Ende\";\n");
    EXPECT_TRUE([[table objectForKey:@"Open"] isEqual:@"\u00d6ffnen"]);
    NSData *strings = [@"\"k\" = \"\u65e5\";" dataUsingEncoding:NSUnicodeStringEncoding];
    EXPECT_TRUE([[parsed(*tarvik::bytes(strings)) objectForKey:@"k"] isEqual:@"\u65e5"]);
}

TEST_F(PropertyList, RefusesWhatIsNoPropertyList)
{
    std::string deep, bomb = "<?xml version=\"1.0\"?><!DOCTYPE plist [<!ENTITY a \"aaaaaaaaaa\">";
    for (int i = 0; i < 100000; ++i)
        deep += "<array>";
    for (char c = 'b'; c < 'l'; ++c)
        bomb += std::string("<!ENTITY ") + c + " \"&" + char(c - 1) + ";&" + char(c - 1) + ";&" +
                char(c - 1) + ";\">";
    const struct {
        std::string text, why;
    } cases[] = {
        {"", "no data"},
        {kStart + kEnd, "without an object"},
        {kStart + "<string>a", "line 2"},
        {kStart + "<dict><key>a</key></dict>" + kEnd, "a key without a value"},
        {kStart + "<dict><key>a</key><key>b</key><true/></dict>" + kEnd, "a key without a value"},
        {kStart + "<dict><true/></dict>" + kEnd, "where a key belongs"},
        {kStart + "<array><key>a</key></array>" + kEnd, "outside a dictionary"},
        {kStart + "<true/><true/>" + kEnd, "more than one object"},
        {kStart + "<array>text</array>" + kEnd, "text outside"},
        {kStart + "<integer>12a</integer>" + kEnd, "no integer: \"12a\""},
        {kStart + "<integer>99999999999999999999</integer>" + kEnd, "no integer"},
        {kStart + "<real></real>" + kEnd, "no number"},
        {kStart + "<date>2001-13-01T00:00:00Z</date>" + kEnd, "no date"},
        {kStart + "<data>AB=C</data>" + kEnd, "base64"},
        {kStart + "<true>x</true>" + kEnd, "text within <true>"},
        {kStart + "<string><b/></string>" + kEnd, "<b> is no element"},
        {kStart + "<string>&unknown;</string>" + kEnd, "unknown"},
        {kStart + "<string>\x01</string>" + kEnd, "line 2"},
        {kStart + "<string>\xED\xA0\x80</string>" + kEnd, "line 2"},
        {kStart + "<true/>" + kEnd + "junk", "line 2"},
        {kStart + deep, "nested deeper than 512"},
        {std::string(100000, '('), "nested deeper than 512"},
        {bomb + "]><plist><string>&k;</string></plist>", "declares no entities"},
        {"<?xml version=\"1.0\"?><!DOCTYPE plist [<!ENTITY x SYSTEM "
         "\"file:///etc/passwd\">]><plist><string>&x;</string></plist>",
         "declares no entities"},
        {"bplist00", "cut short"},
        {"{ a = 1;\n b 2; }", "line 2: a key without a value"},
        {"{ a = 1\n}", "line 2: no semicolon"},
        {"(a\nb)", "line 2: no comma"},
        {"{ a = \"x; }", "a quote without an end"},
        {"(<0f0>)", "half a byte"},
        {"(<0g>)", "not hexadecimal"},
        {"(a) (b)", "more than one list"},
        {"(a", "no comma"},
        {"(", "ends early"},
        {"(;)", "begins nothing"},
        {"\xFF\xFE\x28", "neither XML nor text"},
    };
    for (const auto &[text, expected] : cases) {
        std::string why;
        EXPECT_EQ(parsed(text, &why), nil) << text.substr(0, 200);
        EXPECT_NE(why.find(expected), why.npos) << text.substr(0, 200) << " -> " << why;
    }
    EXPECT_EQ(written([NSArray arrayWithObject:[NSNull null]]), "(none)");
    EXPECT_EQ(written([NSDictionary dictionaryWithObject:@"v" forKey:[NSNumber numberWithInt:1]]), "(none)");
    NSMutableArray *nested = [NSMutableArray array], *inner = nested;
    for (int i = 0; i < 1000; ++i) {
        NSMutableArray *next = [NSMutableArray array];
        [inner addObject:next];
        inner = next;
    }
    EXPECT_EQ(written(nested), "(none)");
    [inner addObject:nested];  // a cycle
    EXPECT_EQ(written(nested), "(none)");
    [inner removeAllObjects];
}

TEST_F(PropertyList, TruncationAnywhereIsRefused)
{
    const std::string text = written([NSDictionary
        dictionaryWithObjectsAndKeys:@"<v>", @"k", [NSArray arrayWithObject:dataOf("abc")], @"l", nil]);
    for (size_t length = 0; length + 1 < text.rfind('>'); ++length)
        EXPECT_EQ(parsed(text.substr(0, length)), nil) << length;
}

TEST_F(PropertyList, MutabilityIsAsAsked)
{
    const std::string text = kStart + "<dict><key>k</key><array><string>s</string></array></dict>" + kEnd;
    for (const CFOptionFlags option : {kCFPropertyListImmutable, kCFPropertyListMutableContainers,
                                       kCFPropertyListMutableContainersAndLeaves}) {
        id fresh = parsed(text, nullptr, option);
        id copy = [(id) const_cast<void *>(CFPropertyListCreateDeepCopy(nullptr, fresh, option)) autorelease];
        for (id list : {fresh, copy}) {
            id array = [list objectForKey:@"k"], leaf = [array lastObject];
            EXPECT_EQ([list isKindOfClass:[NSMutableDictionary class]],
                      option >= kCFPropertyListMutableContainers);
            EXPECT_EQ([array isKindOfClass:[NSMutableArray class]],
                      option >= kCFPropertyListMutableContainers);
            EXPECT_EQ([leaf isKindOfClass:[NSMutableString class]],
                      option == kCFPropertyListMutableContainersAndLeaves);
        }
        EXPECT_TRUE([copy isEqual:fresh]);
    }
}

// The bytes are those of Python's plistlib.
TEST_F(PropertyList, ReadsTheBinaryForm)
{
    const std::string bytes = fromHex(
        "62706c6973743030d70102030405060708090e161718195562797465735464656570576e756d626572735474657874547768"
        "656e537965736300fc006e00ef4f101400ff00ff00ff00ff00ff00ff00ff00ff00ff00ffd10a0b5161a20c0da0d0a70f1011"
        "12131415100013ffffffffffffffff10ff1200010000137fffffffffffffff140000000000000000ffffffffffffffff233f"
        "f800000000000055706c61696e334196945c94000000096465e5672cd83dde0008171d222a2f34383f56595b5e5f60686a73"
        "757a83949da3acad0000000000000101000000000000001a000000000000000000000000000000b6");
    const std::string expected =
        kStart.substr(kStart.find("<plist")) +
        "<dict><key>bytes</key><data>AP8A/wD/AP8A/wD/AP8A/wD/AP8=</data>"
        "<key>deep</key><dict><key>a</key><array><array/><dict/></array></dict>"
        "<key>numbers</key><array><integer>0</integer><integer>-1</integer><integer>255</integer>"
        "<integer>65536</integer><integer>9223372036854775807</integer><integer>18446744073709551615</"
        "integer>"
        "<real>1.5</real></array><key>text</key><string>plain</string><key>when</key>"
        "<date>2004-01-02T03:04:05Z</date><key>yes</key><true/><key>ünï</key><string>日本😀</string></dict>" +
        kEnd;
    id list = parsed(bytes);
    EXPECT_TRUE([list isEqual:parsed(expected)]) << written(list);
    // What gnustep-base writes (the largest integer as -1) is read through Foundation's own call, with the
    // mutability that is asked for.
    list = parsed(bytes, nullptr, kCFPropertyListMutableContainers);
    [[list objectForKey:@"numbers"] removeObjectAtIndex:5];
    NSData *other = [NSPropertyListSerialization dataFromPropertyList:list
                                                               format:NSPropertyListBinaryFormat_v1_0
                                                     errorDescription:NULL];
    NSPropertyListFormat format = NSPropertyListFormat(0);
    id again = [NSPropertyListSerialization propertyListFromData:other
                                                mutabilityOption:NSPropertyListMutableContainersAndLeaves
                                                          format:&format
                                                errorDescription:NULL];
    EXPECT_EQ(format, NSPropertyListBinaryFormat_v1_0);
    EXPECT_TRUE([again isEqual:list]) << written(again);
    [[again objectForKey:@"numbers"] removeAllObjects];
    [[again objectForKey:@"text"] appendString:@"er"];
    NSString *half = units(u"é\xD800");
    EXPECT_TRUE([[[half mutableCopy] autorelease] isEqual:half]) << "which is a leaf of lists too";

    for (size_t length = 0; length < bytes.size(); ++length)
        EXPECT_EQ(parsed(bytes.substr(0, length)), nil) << length;
    for (size_t at = 0; at < bytes.size(); ++at)  // whatever comes of it, it ends
        for (const char byte : {'\x00', '\x1A', '\xA4', '\xDF', '\xFF'})
            parsed(std::string(bytes).replace(at, 1, 1, byte));
}

TEST_F(PropertyList, BinaryContainersNeitherHoldThemselvesNorMultiply)
{
    // Arrays of two references each, a byte wide.
    const auto listOf = [](const std::vector<std::string> &objects) {
        std::string bytes = "bplist00", offsets;
        for (const std::string &object : objects) {
            offsets += char(bytes.size());
            bytes += object;
        }
        const size_t at = bytes.size();
        return bytes + offsets + std::string(6, '\0') + "\1\1" + std::string(7, '\0') + char(objects.size()) +
               std::string(8, '\0') + std::string(7, '\0') + char(at);
    };
    std::string why;
    EXPECT_EQ(parsed(listOf({std::string("\xA2\0\0", 3)}), &why), nil);
    EXPECT_EQ(why, "an object that contains itself");
    EXPECT_EQ(parsed(listOf({"\xA2\1\1", std::string("\xA2\1\0", 3)}), &why), nil);
    EXPECT_EQ([[parsed(listOf({"\xA2\1\1", "\x08"})) lastObject] boolValue], NO);
    std::vector<std::string> doubling;
    for (char next = 1; next < 40; ++next)
        doubling.push_back({'\xA2', next, next});
    doubling.push_back("\x09");
    for (const CFOptionFlags option : {kCFPropertyListImmutable, kCFPropertyListMutableContainers}) {
        EXPECT_EQ(parsed(listOf(doubling), &why, option), nil);
        EXPECT_EQ(why, "too many objects");
    }
}

TEST_F(PropertyList, FoundationUsesTheSameReaderAndWriter)
{
    NSDictionary *list = [NSDictionary dictionaryWithObject:units(u"😀 \\U0041") forKey:@"k"];
    NSData *xml = [NSPropertyListSerialization dataFromPropertyList:list
                                                             format:NSPropertyListXMLFormat_v1_0
                                                   errorDescription:NULL];
    NSPropertyListFormat format = NSPropertyListFormat(0);
    EXPECT_TRUE([[NSPropertyListSerialization propertyListWithData:xml options:0 format:&format
                                                             error:NULL] isEqual:list]);
    EXPECT_EQ(format, NSPropertyListXMLFormat_v1_0);
    NSError *error = nil;
    EXPECT_EQ([NSPropertyListSerialization propertyListWithData:dataOf(kStart + "<x/>")
                                                        options:0
                                                         format:NULL
                                                          error:&error],
              nil);
    EXPECT_NE(error, nil);
    TemporaryFolder folder;
    NSString *path = tarvik::nsstring((folder / "list.plist").native());
    [xml writeToFile:path atomically:NO];
    EXPECT_TRUE([[NSDictionary dictionaryWithContentsOfFile:path] isEqual:list]);
    const std::string deep(200000, '(');
    EXPECT_EQ([NSPropertyListSerialization propertyListWithData:dataOf(deep)
                                                        options:0
                                                         format:NULL
                                                          error:&error],
              nil);
    EXPECT_FALSE(tarvik::attempt([&] { [tarvik::nsstring(deep) propertyList]; })) << "raises";
    // The other forms are still Foundation's.
    NSData *old = [NSPropertyListSerialization dataFromPropertyList:list
                                                             format:NSPropertyListOpenStepFormat
                                                   errorDescription:NULL];
    EXPECT_TRUE([[NSPropertyListSerialization propertyListWithData:old options:0 format:&format
                                                             error:NULL] isEqual:list]);
}

TEST_F(PropertyList, UserDefaultsKeepEveryText)
{
    NSUserDefaults *defaults = [NSUserDefaults standardUserDefaults];
    NSString *text = units(u"😀 \\U0041 \x01 \r\n");
    [defaults setObject:text forKey:@"EveryText"];
    ASSERT_TRUE([defaults synchronize]);
    [NSUserDefaults resetStandardUserDefaults];
    EXPECT_TRUE([[[NSUserDefaults standardUserDefaults] objectForKey:@"EveryText"] isEqual:text]);
}

}  // namespace
