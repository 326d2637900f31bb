#import <Foundation/Foundation.h>
#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/Guard.h>
#include <Tarvik/support/Handle.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <random>
#include <stdexcept>

using namespace std::literals;

namespace {

TEST(Bridge, TextIsByteExact)
{
    const std::string_view cases[] = {
        "", "plain", "a\0b\0"sv, "é€", "\U0001F600 \U0010FFFF", "\uFFFE\uFEFF", "\uFEFF", "\uFEFF\uFEFFx"};
    for (std::string_view text : cases)
        EXPECT_EQ(tarvik::utf8(tarvik::nsstring(text)), text);
    for (std::string_view bad : {"\xFF"sv, "\xC3"sv, "\xED\xA0\x80"sv, "a\xF4\x90\x80\x80"sv})
        EXPECT_EQ(tarvik::nsstring(bad), nil) << bad;
    EXPECT_EQ(tarvik::utf8(nil), std::nullopt);
}

TEST(Bridge, HalfAPairHasNoUTF8Form)
{
    // The platform makes none of units, but it cuts them.
    NSString *whole = tarvik::nsstring(std::string(255, 'x') + "\U0001F600");
    NSString *high = [whole substringToIndex:256];
    NSMutableString *between = [NSMutableString string];
    [between appendString:high];
    [between appendString:@"y"];
    for (NSString *half : {high, [whole substringFromIndex:256], [high substringFromIndex:255],
                           static_cast<NSString *>(between)}) {
        EXPECT_GT([half length], 0u);
        EXPECT_EQ(tarvik::utf8(half), std::nullopt);
    }
}

// Pairs that straddle the stretches in which the text is read.
TEST(Bridge, LongTextsOfEveryPlane)
{
    std::mt19937 random(7);
    for (size_t length : {255u, 256u, 257u, 5000u}) {
        std::string text;
        for (size_t i = 0; i < length; ++i) {
            switch (random() % 4) {
            case 0: text += char('a' + random() % 26); break;
            case 1: text += "é"; break;
            case 2: text += "€"; break;
            default: text += "\U0001F600";
            }
        }
        EXPECT_EQ(tarvik::utf8(tarvik::nsstring(text)), text);
    }
}

TEST(Bridge, DataKeepsZeroBytes)
{
    EXPECT_EQ(tarvik::bytes(tarvik::nsdata("\0\xFF\0"sv)), "\0\xFF\0"sv);
    EXPECT_EQ(tarvik::bytes([NSData data]), ""sv);
    EXPECT_EQ(tarvik::bytes(nil), std::nullopt);
}

TEST(Guard, CatchesBothKindsAndLetsValuesThrough)
{
    tarvik::Retained<NSException *> raised;
    EXPECT_TRUE(tarvik::attempt([] {}, &raised));
    EXPECT_FALSE(raised);
    EXPECT_FALSE(tarvik::attempt([] { [[NSArray array] objectAtIndex:3]; }, &raised));
    EXPECT_TRUE([[raised.get() name] isEqual:NSRangeException]);
    EXPECT_FALSE(tarvik::attempt([] { throw std::runtime_error("what"); }, &raised));
    EXPECT_TRUE([[raised.get() reason] isEqual:@"what"]);
}

TEST(Handle, ClosesOnce)
{
    int descriptor = open("/dev/null", O_RDONLY | O_CLOEXEC);
    {
        tarvik::FileDescriptor first(descriptor);
        tarvik::FileDescriptor second(std::move(first));
        EXPECT_FALSE(first);
        EXPECT_EQ(second.get(), descriptor);
    }
    EXPECT_EQ(fcntl(descriptor, F_GETFD), -1);
}

TEST(ArrayRange, WalksAnArrayAndTakesNilForEmpty)
{
    NSMutableString *joined = [NSMutableString string];
    for (NSString *text : tarvik::each<NSString>([NSArray arrayWithObjects:@"a", @"b", nil]))
        [joined appendString:text];
    EXPECT_TRUE([joined isEqual:@"ab"]);
    for ([[maybe_unused]] NSString *text : tarvik::each<NSString>(nil))
        ADD_FAILURE();
}

}  // namespace
