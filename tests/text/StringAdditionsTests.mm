#include "../support/TemporaryFolder.h"

#include <Carbon/AEDataModel.h>
#import <Foundation/Foundation.h>
#include <Tarvik/core/Log.h>
#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/text/NSString+AppleEvents.h>
#import <Tarvik/text/NSString+CLibrary.h>
#import <Tarvik/text/NSString+Editing.h>
#import <Tarvik/text/NSString+Parsing.h>
#import <Tarvik/text/NSString+Searching.h>
#import <Tarvik/text/Strings.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <random>

using namespace std::literals;

namespace {

std::string utf8(NSString *text) { return tarvik::utf8(text).value_or("<none>"); }
NSString *text(std::string_view bytes) { return tarvik::nsstring(bytes); }
/// A text with half a surrogate pair, which can only be cut out of another.
NSString *halfPair() { return [text("x\U0001F600") substringToIndex:2]; }

std::vector<std::string> lines(std::string_view from)
{
    std::vector<std::string> out;
    for (NSString *line : tarvik::each<NSString>([text(from) lines]))
        out.push_back(utf8(line));
    return out;
}

TEST(Parsing, TheFirstRunOfDigitsSaturates)
{
    const std::pair<const char *, int> cases[] = {{"", 0},
                                                  {"none", 0},
                                                  {"x007y8", 7},
                                                  {"-5", 5},
                                                  {"2147483647", INT_MAX},
                                                  {"2147483648", INT_MAX},
                                                  {"99999999999999999999999", INT_MAX},
                                                  {"٣4", 4},
                                                  {"1 2", 1}};
    for (const auto &[from, expected] : cases)
        EXPECT_EQ([[text(from) intNumber] intValue], expected) << from;
}

TEST(Parsing, LinesOfEveryKind)
{
    using Lines = std::vector<std::string>;
    EXPECT_EQ(lines("a\r\nb\rc\n"), (Lines{"a", "b", "c", ""}));
    EXPECT_EQ(lines(""), Lines{""});
    EXPECT_EQ(lines("\n\r\r\n\r"), (Lines{"", "", "", "", ""}));
    EXPECT_EQ(lines("é\n\u0301x"), (Lines{"é", "\u0301x"}));  // a mark behind the line end does not hide it
    NSMutableArray *of = [[NSMutableString stringWithString:@"a\nb"] lines];
    [of addObject:@"mutable"];
    EXPECT_EQ([of count], 3u);
}

TEST(Parsing, HexadecimalPairs)
{
    EXPECT_EQ(tarvik::bytes([@"0aFf" dataFromHexadecimalString]), "\x0A\xFF"s);
    EXPECT_EQ(tarvik::bytes([@"abc" dataFromHexadecimalString]), "\xAB"s);
    EXPECT_EQ(tarvik::bytes([@"" dataFromHexadecimalString]), ""s);
    for (const char *bad : {"0x12", "12 34", "1g", "é0"})
        EXPECT_EQ([text(bad) dataFromHexadecimalString], nil) << bad;
    EXPECT_EQ([halfPair() dataFromHexadecimalString], nil);
}

TEST(Parsing, TypeCodesAreMacRoman)
{
    EXPECT_EQ([@"TEXT" OSType], 0x54455854u);
    EXPECT_EQ([text("©é' ") OSType], 0xA98E2720u);
    for (const char *bad : {"", "abc", "abcde", "日本語!"})
        EXPECT_EQ([text(bad) OSType], 0u) << bad;
    EXPECT_TRUE([[@"\u00ffabc" OSTypeNumber] unsignedLongLongValue] == 0xD8616263);
    EXPECT_EQ(utf8([NSString stringWithOSType:0x54455854]), "TEXT");
    EXPECT_TRUE([@"TEXT" isEqualToOSType:0x54455854]);
    EXPECT_FALSE([@"TEXT" isEqualToOSType:0x74657874]);
    for (uint32_t byte = 0; byte < 256; ++byte) {
        const OSType code = byte << 24 | (255 - byte) << 16 | byte << 8 | 0x41;
        EXPECT_EQ([[NSString stringWithOSType:code] OSType], code);
    }
    EXPECT_TRUE([NSFileTypeForHFSTypeCode(0x54455854) isEqualToString:@"'TEXT'"]);
    for (NSString *bad : std::initializer_list<NSString *>{nil, @"TEXT", @"\"TEXT\"", @"'TEX'"})
        EXPECT_EQ(NSHFSTypeCodeFromFileType(bad), 0u);
}

TEST(Parsing, Halves)
{
    NSMutableString *front = nil, *back = nil;
    [@"abc" devideAtIndex:1 front:&front back:&back];
    [front appendString:@"!"];
    EXPECT_EQ(utf8(front) + utf8(back), "a!bc");
    [@"abc" devideAtIndex:3 front:&front back:&back];
    EXPECT_EQ(utf8(front) + "|" + utf8(back), "abc|");
    NSMutableString *before = front;
    [@"abc" devideAtIndex:4 front:&front back:&back];
    [@"abc" devideAtIndex:1 front:&front back:nullptr];
    EXPECT_EQ(front, before);
    [@"a\U0001F600b" devideAtIndex:2 front:&front back:&back];  // within a pair
    EXPECT_EQ([front characterAtIndex:1], 0xD83D);
    EXPECT_EQ([back length], 2u);
    [front appendString:back];
    EXPECT_EQ(utf8(front), "a\U0001F600b");
}

int gLogged = 0;
std::string gFunction;
Boolean countLog(const char *function, unsigned long, const char *)
{
    ++gLogged;
    gFunction = function;
    return false;
}

TEST(Searching, OccurrencesAndTheEmptyText)
{
    EXPECT_TRUE([@"Hello" contains:@"ell"]);
    EXPECT_TRUE([@"Hello" contains:@"ELL" options:NSCaseInsensitiveSearch]);
    EXPECT_FALSE([@"Hello" contains:@"ELL"]);
    EXPECT_FALSE([@"Hello" contains:@""]);
    EXPECT_FALSE([@"Hello" contains:nil]);
    EXPECT_EQ([@"k=v=w" offsetAfterString:@"="], 2u);
    EXPECT_EQ([@"k=v=w" offsetAfterString:@"=" options:NSBackwardsSearch], 4u);
    for (NSString *absent : std::initializer_list<NSString *>{nil, @"", @"x"})
        EXPECT_EQ([@"k=v" offsetAfterString:absent], uint32_t(kTarvikNotFound));
    EXPECT_EQ(utf8([@"k=v=w" substringAfterString:@"=" options:0]), "v=w");
    EXPECT_EQ(utf8([@"k=" substringAfterString:@"=" options:0]), "");
    EXPECT_EQ([@"k" substringAfterString:@"=" options:0], nil);
}

// An argument that raises: the failure value, and one record under the long form's signature.
TEST(Searching, ExceptionsAreLogged)
{
    SetLogPreprocess(countLog);
    NSString *notAString = (NSString *)[NSNumber numberWithInt:1];
    EXPECT_FALSE([@"a" contains:notAString]);
    EXPECT_EQ(gFunction, "-[NSString(FoundationX) contains:options:]");
    EXPECT_EQ([@"a" offsetAfterString:notAString], uint32_t(kTarvikNotFound));
    EXPECT_EQ(gFunction, "-[NSString(FoundationX) offsetAfterString:options:]");
    EXPECT_EQ([@"a" substringAfterString:notAString options:0], nil);
    EXPECT_EQ(gFunction, "-[NSString(FoundationX) substringAfterString:options:]");
    EXPECT_EQ([[NSMutableString string] find:notAString andReplaceAll:@""], 0u);
    EXPECT_EQ(gLogged, 4);
    EXPECT_EQ([[NSMutableString string] deleteToSubstring:notAString], nil);
    EXPECT_EQ(gLogged, 4);  // this one stays quiet
    SetLogPreprocess(nullptr);
}

TEST(Searching, CharacterClassesAndSizes)
{
    EXPECT_TRUE([@"beef09" allChracterIs:isxdigit]);
    EXPECT_FALSE([@"beefy" allChracterIs:isxdigit]);
    EXPECT_TRUE([@"" allChracterIs:isxdigit]);
    EXPECT_FALSE([@"a" allChracterIs:nullptr]);
    EXPECT_FALSE([halfPair() allChracterIs:[](int) { return 1; }]);
    EXPECT_EQ([text("aé€\U0001F600") size], 10u);
    EXPECT_EQ([halfPair() size], 0u);
}

std::string replaced(const char *in, const char *what, const char *with, uint32_t expectedCount)
{
    NSMutableString *out = [NSMutableString stringWithString:text(in)];
    EXPECT_EQ([out find:text(what) andReplaceAll:text(with)], expectedCount) << in;
    return utf8(out);
}

TEST(Editing, ReplacingGoesFromTheEnd)
{
    EXPECT_EQ(replaced("aaa", "aa", "b", 1), "ab");
    EXPECT_EQ(replaced("aXa", "a", "aa", 2), "aaXaa");
    EXPECT_EQ(replaced("abc", "", "x", 0), "abc");
    EXPECT_EQ(replaced("abc", "abc", "", 1), "");
    EXPECT_EQ(replaced("ababa|ababa", "aba", "-", 2), "ab-|ab-");
    NSMutableString *out = [NSMutableString stringWithString:@"a"];
    EXPECT_EQ([out find:nil andReplaceAll:@"x"] + [out find:@"a" andReplaceAll:nil], 0u);
    EXPECT_EQ(utf8([@"a.b" find:@"." andReplaceAllString:@"::"]), "a::b");
}

// One by one, as the words of the contract have it.
uint32_t replaceOneByOne(NSMutableString *in, NSString *what, NSString *with)
{
    uint32_t count = 0;
    for (NSUInteger end = [in length];; ++count) {
        const NSRange found = [in rangeOfString:what
                                        options:NSLiteralSearch | NSBackwardsSearch
                                          range:NSMakeRange(0, end)];
        if (found.length == 0)
            return count;
        [in replaceCharactersInRange:found withString:with];
        end = found.location;
    }
}

TEST(Editing, ReplacingInOnePassIsTheSame)
{
    std::mt19937 random(3);
    const char *const pieces[] = {"a", "b", "ab", "é", "e\u0301", "\U0001F600", "\r\n"};
    auto some = [&](size_t most) {
        std::string out;
        for (size_t i = random() % most + 1; i-- > 0;)
            out += pieces[random() % std::size(pieces)];
        return out;
    };
    for (int i = 0; i < 3000; ++i) {
        const std::string in = some(20), what = some(2), with = some(3);
        NSMutableString *one = [NSMutableString stringWithString:text(in)],
                        *other = [NSMutableString stringWithString:one];
        const uint32_t count = [one find:text(what) andReplaceAll:text(with)];
        ASSERT_EQ(count, replaceOneByOne(other, text(what), text(with))) << in << "|" << what;
        ASSERT_EQ(utf8(one), utf8(other)) << in << "|" << what << "|" << with;
    }
}

// A quadratic way would take minutes.
TEST(Editing, AMillionReplacements)
{
#ifdef __SANITIZE_ADDRESS__
    constexpr uint32_t kTimes = 100'000;
#else
    constexpr uint32_t kTimes = 1'000'000;
#endif
    NSMutableString *big = [@"" stringBySetLength:2 * kTimes withFillString:@"a,"];
    EXPECT_EQ([big find:@"," andReplaceAll:@"::"], kTimes);
    EXPECT_EQ([big length], 3 * kTimes);
    EXPECT_TRUE([big filterChracters:isalpha]);
    EXPECT_EQ([big length], kTimes);
    EXPECT_EQ([[[@"" stringBySetLength:3 * kTimes withFillString:@"x\r\n"] lines] count], kTimes + 1);
}

TEST(Editing, CuttingAndFilling)
{
    EXPECT_EQ(utf8([@"x" stringBySetLength:4 withFillString:@"ab"]), "xaba");
    EXPECT_EQ(utf8([@"" stringBySetLength:3 withFillString:nil]), "   ");
    EXPECT_EQ(utf8([@"abc" stringBySetLength:2 withFillString:@""]), "ab");
    EXPECT_EQ(utf8([@"abc" stringBySetLength:0 withFillString:@"x"]), "");
    EXPECT_EQ(utf8([text("\uFEFF=b") stringBySetLength:4 withFillString:nil]), "\uFEFF=b ");
    EXPECT_EQ([[halfPair() stringBySetLength:4 withFillString:nil] length], 4u);
    NSMutableString *itself = [NSMutableString stringWithString:@"ab"];
    [itself setLength:7 withFillString:itself];
    EXPECT_EQ(utf8(itself), "abababa");
    [itself empty];
    EXPECT_EQ([itself length], 0u);
    [itself setUTF8String:"é"];
    [itself setUTF8String:"\xFF"];
    [itself setUTF8String:nullptr];
    EXPECT_EQ(utf8(itself), "é");
}

TEST(Editing, RemovingEndsAndFronts)
{
    NSMutableString *name = [NSMutableString stringWithString:@"file.txt.txt"];
    EXPECT_TRUE([name deleteIfEndWith:@".txt"]);
    EXPECT_TRUE([name deleteIfStartWith:@"fi"]);
    for (NSString *other : std::initializer_list<NSString *>{nil, @"", @"le", @"much longer than the text"})
        EXPECT_FALSE([name deleteIfEndWith:other]);
    EXPECT_FALSE([name deleteIfStartWith:@".txt"]);
    EXPECT_EQ(utf8(name), "le.txt");
    EXPECT_EQ(utf8([name deleteToSubstring:@"."]), "le");
    EXPECT_EQ(utf8(name), "txt");
    EXPECT_EQ([name deleteToSubstring:@"."], nil);
    EXPECT_EQ([name deleteToSubstring:@""], nil);
    EXPECT_EQ(utf8([name deleteToSubstring:@"txt"]), "");
    EXPECT_EQ(utf8(name), "");
}

TEST(Editing, FilteringGoesByTheBytesOfTheSameIndex)
{
    EXPECT_EQ(utf8([@"a1 b2" chractersFilteredString:isdigit]), "12");
    EXPECT_EQ(utf8([@"abc" chractersFilteredString:nullptr]), "abc");
    NSMutableString *all = [NSMutableString stringWithString:@"123"];
    EXPECT_FALSE([all filterChracters:isdigit]);
    EXPECT_FALSE([all filterChracters:nullptr]);
    // é is two bytes, which arrive negative: the characters é, 1 and 2 go by C3, A9 and '1'.
    EXPECT_EQ(utf8([text("é12") chractersFilteredString:isdigit]), "2");
    static std::vector<int> seen;
    [text("aé") chractersFilteredString:[](int c) {
        seen.push_back(c);
        return 1;
    }];
    EXPECT_EQ(seen, (std::vector<int>{-61, 'a'}));
}

TEST(Editing, PathComponents)
{
    const char *const cases[][3] = {
        {"/a", "b", "/a/b"}, {"/a/", "b", "/a/b"}, {"/a", "/b", "/a/b"}, {"", "b", "b"}, {"/a/", "", "/a/"}};
    for (const auto &[path, component, expected] : cases) {
        NSMutableString *joined = [NSMutableString stringWithString:text(path)];
        [joined appendPathComponent:text(component)];
        EXPECT_EQ(utf8(joined), expected);
    }
}

TEST(CLibrary, CommandsAndEnvironment)
{
    EXPECT_EQ([@"exit 3" system], 3 << 8);
    EXPECT_EQ([halfPair() system], -1);
    EXPECT_EQ([@"TARVIK_TEST" setenv:"1" overwrite:1], 0);
    EXPECT_EQ([@"TARVIK_TEST" setenv:"2" overwrite:0], 0);
    EXPECT_STREQ(getenv("TARVIK_TEST"), "1");
    EXPECT_EQ([@"TARVIK_TEST" setenv:nullptr overwrite:1], -1);
    EXPECT_EQ([@"A=B" setenv:"" overwrite:1], -1);
    int first = 0, second = 0;
    EXPECT_EQ(([@"7 of 9" sscanf:"%d of %d", &first, &second]), 2);
    EXPECT_EQ(first * 10 + second, 79);
    EXPECT_EQ([@"7" sscanf:nullptr], -1);
    EXPECT_EQ([@"7" vsscanf:"%d" arguments:nullptr], -1);
    EXPECT_EQ(([halfPair() sscanf:"%d", &first]), -1);
}

TEST(CLibrary, Buffers)
{
    char *copy = [text("é\0x"sv) allocUTF8String];
    EXPECT_EQ(std::string(copy, 5), "é\0x\0"s);
    free(copy);
    EXPECT_EQ([halfPair() allocUTF8String], nullptr);
    char buffer[] = "######";
    EXPECT_TRUE([text("éa") getUTF8String:buffer maxLength:4]);
    EXPECT_STREQ(buffer, "éa");
    EXPECT_FALSE([text("éa") getUTF8String:buffer maxLength:2]);
    EXPECT_STREQ(buffer, "\xC3");
    EXPECT_FALSE([@"a" getUTF8String:buffer maxLength:0]);
    EXPECT_FALSE([@"a" getUTF8String:nullptr maxLength:4]);
}

TEST(Strings, AbsentAndExisting)
{
    EXPECT_TRUE(NSStringIsVoid(nil) && NSStringIsVoid(@"") && !NSStringIsVoid(@"a"));
    EXPECT_TRUE(NSStringIsEqual(@"a", @"a") && !NSStringIsEqual(nil, nil) && !NSStringIsEqual(@"a", nil));
    EXPECT_TRUE(CFStringIsVoid(nullptr) && CFStringIsVoid((CFStringRef) @"") &&
                CFStringIsVoid((CFStringRef)[NSArray array]));
    EXPECT_FALSE(CFStringIsVoid((CFStringRef) @"a"));
    TemporaryFolder folder;
    const std::string file = folder.write("ä b", "");
    ASSERT_EQ(symlink("nowhere", (folder / "dangling").c_str()), 0);
    EXPECT_TRUE(CFStringIsExist((CFStringRef)text(file)));
    EXPECT_TRUE(CFStringIsExist((CFStringRef)text(folder.path().string())));
    for (const std::string &absent :
         {file + "x", (folder / "dangling").string(), file + "/x", file + "\0x"s, ""s})
        EXPECT_FALSE(CFStringIsExist((CFStringRef)text(absent))) << absent;
    EXPECT_FALSE(CFStringIsExist(nullptr));

    unsigned char source[256], destination[257];
    memset(source, 'x', sizeof source);
    memset(destination, '#', sizeof destination);
    source[0] = 255;
    EXPECT_TRUE(PascalStringCopy(destination, source));
    EXPECT_EQ(memcmp(source, destination, 256), 0);
    EXPECT_EQ(destination[256], '#');
    EXPECT_FALSE(PascalStringCopy(destination, nullptr) || PascalStringCopy(nullptr, source));
}

TEST(Strings, BundlesByPath)
{
    TemporaryFolder folder;
    CFBundleRef bundle = [text(folder.path().string()) createCFBundle];
    ASSERT_NE(bundle, nullptr);
    EXPECT_EQ(utf8([(NSBundle *)bundle bundlePath]), folder.path().string());
    [(NSBundle *)bundle release];
    EXPECT_EQ([text((folder / "absent").string()) createCFBundle], nullptr);
}

TEST(AppleEventText, ByType)
{
    auto made = [](DescType type, std::string_view bytes) {
        AEDesc desc;
        EXPECT_EQ(AECreateDesc(type, bytes.data(), Size(bytes.size()), &desc), noErr);
        const std::string out = utf8([NSString stringWithAEDesc:&desc]);
        EXPECT_EQ(AEDisposeDesc(&desc), noErr);
        return out;
    };
    EXPECT_EQ(made(typeText, "gr\u00FC\u00DFe"), "grüße");
    EXPECT_EQ(made(typeText, "gr\x9F\xA7"
                             "e"),
              "grüße");
    EXPECT_EQ(made(typeText, ""), "");
    EXPECT_EQ(made(typeUTF8Text, "\xFF"), "<none>");
    EXPECT_EQ(made(typeUnicodeText, "\x3D\xD8\x00\xDE"sv), "\U0001F600");
    EXPECT_EQ(made(typeUnicodeText, "a"), "<none>");
    EXPECT_EQ(made(0x6C6F6E67, "abcd"), "<none>");
    AEDesc none;
    AEInitializeDesc(&none);
    EXPECT_EQ([NSString stringWithAEDesc:&none], nil);
    EXPECT_EQ([NSString stringWithAEDesc:nullptr], nil);
}

}  // namespace
