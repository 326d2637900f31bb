#include "../support/Namespace.h"
#include "../support/TemporaryFolder.h"

#import <Foundation/Foundation.h>
#include <Tarvik/core/Assert.h>
#include <Tarvik/core/BitFlags.h>
#include <Tarvik/core/CString.h>
#import <Tarvik/core/Objects.h>
#include <Tarvik/core/User.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <fstream>
#include <string>

namespace {

TEST(BitFlags, LeastSignificantFirst)
{
    EXPECT_TRUE(CharGetBitFlagAtIndex(0x01, 0));
    EXPECT_TRUE(CharGetBitFlagAtIndex(0x80, 7));
    EXPECT_FALSE(CharGetBitFlagAtIndex(0x80, 0));
    uint8_t byte = 0;
    CharSetBitFlagAtIndex(&byte, 6);
    CharSetBitFlagAtIndex(&byte, 1);
    CharUnsetBitFlagAtIndex(&byte, 6);
    EXPECT_EQ(byte, 0x02);
    CharSetBitFlagAtIndex(nullptr, 0);
    CharUnsetBitFlagAtIndex(nullptr, 0);

    const uint8_t data[2] = {0x01, 0x80};
    std::array<uint8_t, 17> flags;
    flags.fill(9);
    MemCopyBitFlags(data, 2, flags.data());
    for (size_t i = 0; i < 16; ++i)
        EXPECT_EQ(flags[i], i == 0 || i == 15) << i;
    EXPECT_EQ(flags[16], 9);
}

TEST(BitFlags, EveryByteSurvivesTheRoundTrip)
{
    for (unsigned value = 0; value < 256; ++value) {
        uint8_t flags[8], back = 0;
        EXPECT_EQ(CharCopyBitFlags(uint8_t(value), flags), 8u);
        for (uint8_t &flag : flags)
            flag = flag ? 0x82 : 0;  // any non-zero flag counts
        EXPECT_EQ(CharFromBitFlags(flags), value);
        MemSetBitFlags(&back, 1, flags);
        EXPECT_EQ(back, value);
    }
    uint8_t untouched = 5;
    MemSetBitFlags(&untouched, 1, nullptr);
    MemSetBitFlags(&untouched, 0, &untouched);
    MemCopyBitFlags(nullptr, 1, &untouched);
    EXPECT_EQ(untouched, 5);
}

TEST(CStrings, TheLastPlaceCountsOverlaps)
{
    const char *text = "aaaa";
    EXPECT_EQ(StringGetLastSubstring(text, "aa", false), text + 2);
    const char *mixed = "x.TXT.txt.Txt";
    EXPECT_EQ(StringGetLastSubstring(mixed, ".txt", true), mixed + 9);
    EXPECT_EQ(StringGetLastSubstring(mixed, ".txt", false), mixed + 5);
    EXPECT_EQ(StringGetLastSubstring(mixed, "", false), nullptr);
    EXPECT_EQ(StringGetLastSubstring("", "a", false), nullptr);
    EXPECT_EQ(StringGetLastSubstring(nullptr, "a", false), nullptr);
    EXPECT_EQ(StringGetLastSubstring("a", nullptr, false), nullptr);
}

TEST(CStrings, Endings)
{
    EXPECT_TRUE(StringIsEndWith("file.TXT", ".txt", true));
    EXPECT_FALSE(StringIsEndWith("file.TXT", ".txt", false));
    EXPECT_TRUE(StringIsEndWith("abab", "ab", false));
    EXPECT_FALSE(StringIsEndWith("aba", "ab", false));
    EXPECT_FALSE(StringIsEndWith("a", "", false));
    EXPECT_FALSE(StringIsEndWith("a", "aa", true));
    EXPECT_EQ(UTF8StringGetLength("éé"), 4u);
    EXPECT_EQ(UTF8StringGetLength(nullptr), 0u);
}

TEST(Users, RootIsTheEffectiveUserZero)
{
    EXPECT_EQ(UserIsRoot(), geteuid() == 0);
    EXPECT_FALSE(UserIsBelongToGroup(nullptr));
    EXPECT_FALSE(UserIsBelongToGroup("no such group"));
}

// With a group file and a login of our own: the member list alone decides.
TEST(Users, OnlyListedMembersBelong)
{
    if (!enterPrivateMounts())
        GTEST_SKIP() << "the kernel gives this user no mount namespace";
    std::ofstream("/proc/self/loginuid") << geteuid();  // what getlogin reads first
    const char *login = getlogin();
    if (!login)
        GTEST_SKIP() << "this session has no login name and may not set one";
    const std::string name = login;
    TemporaryFolder folder;
    const std::string groups =
        folder.write("group", "listed:x:901:other," + name + "\nprimary:x:" + std::to_string(getegid()) +
                                  ":\ncase:x:902:" + std::string(1, char(name[0] ^ 0x20)) + name.substr(1) +
                                  "\nlonger:x:903:" + name + "x\n");
    ASSERT_TRUE(bindMount(groups, "/etc/group"));
    EXPECT_TRUE(UserIsBelongToGroup("listed"));
    EXPECT_FALSE(UserIsBelongToGroup("primary"));
    EXPECT_FALSE(UserIsBelongToGroup("case"));
    EXPECT_FALSE(UserIsBelongToGroup("longer"));
}

TEST(Objects, NullsAreNotEqual)
{
    NSString *text = @"a", *same = [NSMutableString stringWithString:@"a"];
    EXPECT_TRUE(NSIsEqual(text, same));
    EXPECT_FALSE(NSIsEqual(nil, nil));
    EXPECT_FALSE(NSIsEqual(text, nil));
    EXPECT_TRUE(CFTypeIsEqualTo(text, same));
    EXPECT_FALSE(CFTypeIsEqualTo(nullptr, nullptr));
    EXPECT_TRUE(NSIsNull(nil));
    EXPECT_TRUE(NSIsNull([NSNull null]));
    EXPECT_FALSE(NSIsNull(@""));
    EXPECT_EQ(CFTypeRetain(nullptr), nullptr);
    const NSUInteger before = [same retainCount];
    EXPECT_EQ(CFTypeRetain(same), same);
    EXPECT_EQ([same retainCount], before + 1);
    [same release];
}

}  // namespace

@interface ExitWitness : NSObject
@end
static int gWitnessesGone = 0;
@implementation ExitWitness
- (void)dealloc
{
    ++gWitnessesGone;
    std::fprintf(stderr, "gone ");
    [super dealloc];
}
@end

namespace {

TEST(ExitPool, KeepsItsObjectsUntilReleased)
{
    EXPECT_EQ(AddToExitPool(nil), nil);
    ReleaseExitPool();  // none yet: nothing happens
    ExitWitness *witness = [ExitWitness new];
    EXPECT_EQ(AddToExitPool(witness), witness);
    AddToExitPool(witness);
    [witness release];
    EXPECT_EQ(gWitnessesGone, 0);
    ReleaseExitPool();
    EXPECT_EQ(gWitnessesGone, 1);
    // A pool after an explicit release starts anew.
    witness = [ExitWitness new];
    AddToExitPool(witness);
    [witness release];
    ReleaseExitPool();
    EXPECT_EQ(gWitnessesGone, 2);
}

TEST(ExitPoolDeathTest, IsReleasedAtExit)
{
    EXPECT_EXIT(
        {
            [AddToExitPool([ExitWitness new]) release];
            std::exit(0);
        },
        testing::ExitedWithCode(0), "gone");
}

TEST(AssertDeathTest, ReportsPlaceAndExpressionInEveryBuild)
{
    const int two = 2;
    TARVIK_ASSERT(two == 2);
    EXPECT_EXIT(TARVIK_ASSERT(two == 3), testing::KilledBySignal(SIGABRT),
                "CoreHelpersTests.mm:[0-9]+: failed assertion `two == 3'\n");
    EXPECT_EXIT(TARVIK_ASSERT_IN("Other", two != 2), testing::KilledBySignal(SIGABRT),
                "^Other:[0-9]+: failed assertion `two != 2'\n");
}

}  // namespace
