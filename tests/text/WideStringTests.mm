#import <Foundation/Foundation.h>

#include <Tarvik/text/NumberText.h>
#include <Tarvik/text/Version.h>
#include <Tarvik/text/WideString.h>
#include <gtest/gtest.h>

#include <array>
#include <memory>

namespace {

using namespace std::string_literals;

std::string allBytes()
{
    std::string bytes;
    for (int byte = 0; byte < 256; byte++)
        bytes += char(byte);
    return bytes;
}

TEST(WideString, TraitsGoByElementValue)
{
    static_assert(std::is_same_v<wstring, std::basic_string<wchar_t, fn::fn_wchar_traits>>);
    using Traits = fn::fn_wchar_traits;
    const wstring text = L"wide\x20AC text";
    EXPECT_EQ(text.find(L'\x20AC'), 4u);
    EXPECT_EQ(text.find(L"text"), 6u);
    EXPECT_EQ(text.find(L'q'), wstring::npos);
    EXPECT_LT(wstring(L"ab"), wstring(L"abc"));
    EXPECT_LT(wstring(1, wchar_t(0xFFFFFFE9)), wstring(L"a"));  // elements are signed
    EXPECT_NE(Traits::compare(L"\x10041", L"A", 1), 0);
    EXPECT_EQ(Traits::not_eof(Traits::eof()), 0u);
    EXPECT_NE(Traits::to_int_type(L'\x10FFFF'), Traits::eof());
    wstring overlapping = L"abcdef";
    overlapping.insert(2, overlapping, 1, 4);
    EXPECT_EQ(overlapping, L"abbcdecdef");
}

TEST(WideString, BytesAreSignExtendedAndCutOff)
{
    const std::string bytes = allBytes();
    const wstring wide = Utils::string2wstring(bytes);
    ASSERT_EQ(wide.size(), 256u);
    EXPECT_EQ(uint32_t(wide[0x7F]), 0x7Fu);
    EXPECT_EQ(uint32_t(wide[0x80]), 0xFFFFFF80u);
    EXPECT_EQ(uint32_t(wide[0xE9]), 0xFFFFFFE9u);
    EXPECT_EQ(Utils::wstring2string(wide), bytes);
    EXPECT_EQ(Utils::wstring2string(L"\x141\x1F600"), "A\0"s);
}

TEST(WideString, SixteenBitUnitsStayApart)
{
    const unsigned short units[] = {'a', 0xD83D, 0xDE00, 0xFFFF, 0, 'x'};
    const wstring expected = {L'a', 0xD83D, 0xDE00, 0xFFFF};
    EXPECT_EQ(Utils::wshort2wstring(units), expected);
    const std::unique_ptr<wchar_t[]> copy(Utils::wshort2wchar(units));
    EXPECT_EQ(wstring(copy.get()), expected);
    EXPECT_EQ(Utils::wshort2wstring(units + 4), L"");
    EXPECT_EQ(Utils::wshort2wstring(nullptr), L"");
    EXPECT_EQ(std::unique_ptr<wchar_t[]>(Utils::wshort2wchar(nullptr))[0], 0);
}

TEST(WideString, FromPlatformStrings)
{
    EXPECT_EQ(Utils::nsstring2wstring(nil), L"");
    EXPECT_EQ(Utils::nsstring2wstring(@""), L"");
    EXPECT_EQ(Utils::nsstring2wstring([NSString stringWithUTF8String:"a\xE2\x82\xAC\xF0\x9F\x98\x80"]),
              wstring(L"a\x20AC\xD83D\xDE00"));
    NSString *const pair = [NSString stringWithUTF8String:"\xF0\x9F\x98\x80"];
    EXPECT_EQ(Utils::nsstring2wstring([pair substringFromIndex:1]), wstring(L"\xDE00"));
    const unichar withZero[] = {0x20AC, 0, 'z'};
    EXPECT_EQ(Utils::nsstring2wstring([NSString stringWithCharacters:withZero length:3]),
              wstring(L"\x20AC\0z", 3));
    NSString *const many = [@"" stringByPaddingToLength:5000 withString:@"0123456789" startingAtIndex:0];
    const wstring wide = Utils::nsstring2wstring(many);
    ASSERT_EQ(wide.size(), 5000u);
    EXPECT_EQ(wide.substr(1020, 10), L"0123456789");
    EXPECT_EQ(wide[4999], L'9');
}

TEST(NumberText, WritingAndReading)
{
    EXPECT_EQ(Utils::int2string(0), "0");
    EXPECT_EQ(Utils::int2string(INT32_MIN), "-2147483648");
    EXPECT_EQ(Utils::long2string(INT32_MAX), "2147483647");
    EXPECT_EQ(Utils::int2wstring(-42), L"-42");
    EXPECT_EQ(Utils::long2wstring(42), L"42");
    const std::pair<std::string, int32_t> cases[] = {
        {"", 0},
        {"x7", 0},
        {" \t\n-17 files", -17},
        {"+5", 5},
        {"- 5", 0},
        {"007", 7},
        {"0x10", 0},
        {"12\0"
         "34"s,
         12},
        {"2147483648", INT32_MAX},
        {"4294967297", INT32_MAX},
        {"-99999999999999999999", INT32_MIN},
    };
    for (const auto &[text, number] : cases) {
        EXPECT_EQ(Utils::string2int(text), number) << text;
        EXPECT_EQ(Utils::string2long(text), number) << text;
        EXPECT_EQ(Utils::wstring2int(Utils::string2wstring(text)), number) << text;
        EXPECT_EQ(Utils::wstring2long(Utils::string2wstring(text)), number) << text;
    }
    EXPECT_EQ(Utils::wstring2int(L"\x131\x10032"), 12);  // low eight bits of each element
}

TEST(NumberText, ByteSizes)
{
    const std::pair<uint32_t, const char *> cases[] = {
        {0, "0 Bytes"},       {1024, "1024 Bytes"}, {1025, "1 KB"},    {2047, "1 KB"},
        {1048576, "1024 KB"}, {1049599, "1024 KB"}, {1049600, "1 MB"}, {UINT32_MAX, "4095 MB"}};
    for (const auto &[size, text] : cases)
        EXPECT_EQ(Utils::bytesize2string(size), text);
}

TEST(Version, Comparing)
{
    struct {
        const wchar_t *a, *b;
        int order;
    } const cases[] = {
        {L"10.4.10", L"10.4.9", 1},
        {L"1..2", L"1.2", 0},
        {L".1.2.", L"1.2", 0},
        {L"1.0", L"1", 1},
        {L"1.2.0", L"1.2", 1},
        {L"", L"0", -1},
        {L"", L"...", 0},
        {L"b2", L"0", 0},
        {L"3rc1", L"3", 0},
        {L"2", L"1.9.9", 1},
        {L"-1", L"0", -1},
        {L"01.02", L"1.2", 0},
        {L"99999999999", L"2147483647", 0},
    };
    for (const auto &[a, b, order] : cases) {
        EXPECT_EQ(Utils::compare_version(a, b), order)
            << Utils::wstring2string(a) << " " << Utils::wstring2string(b);
        EXPECT_EQ(Utils::compare_version(b, a), -order)
            << Utils::wstring2string(b) << " " << Utils::wstring2string(a);
    }
}

}  // namespace
