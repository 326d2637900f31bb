#include "../support/TemporaryFolder.h"

#include <Carbon/MacMemory.h>
#import <Tarvik/Tarvik.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/Pool.h>
#include <gtest/gtest.h>

namespace {

TEST(ResourceFileFunctions, ResourcesOfAFileKeepBesideItsContents)
{
    const TemporaryFolder folder;
    const std::string path = folder.write("f", "the data");
    FSRef ref;
    ASSERT_EQ(FSPathMakeRef(reinterpret_cast<const UInt8 *>(path.c_str()), &ref, nullptr), noErr);
    EXPECT_EQ(RFOpen(nullptr, true), -1);
    EXPECT_EQ(RFOpen(&ref, false), -1);  // there is none
    EXPECT_FALSE(std::filesystem::exists(folder / "._f"));

    ResFileRefNum file = RFOpen(&ref, true);
    ASSERT_NE(file, -1);
    EXPECT_EQ(CurResFile(), file);
    Handle text = nullptr;
    ASSERT_EQ(PtrToHand("hello", &text, 5), noErr);
    AddResource(text, 0x54455854, 128, nullptr);
    ASSERT_TRUE(FSSetLabelColorIndex(&ref, 2));  // meanwhile
    RFClose(&file);
    EXPECT_EQ(file, -1);
    RFClose(&file);

    file = RFOpen(&ref, false);
    ASSERT_NE(file, -1);
    text = Get1Resource(0x54455854, 128);
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(std::string(*text, size_t(GetHandleSize(text))), "hello");
    RFClose(&file);
    const tarvik::Pool pool;
    NSString *const name = tarvik::nsstring(path);
    for (BOOL create : {NO, YES}) {
        file = [name openResourceFork:create];
        EXPECT_EQ(CurResFile(), file);
        EXPECT_NE(Get1Resource(0x54455854, 128), nullptr);
        RFClose(&file);
    }
    EXPECT_EQ([[name stringByAppendingString:@"/none"] openResourceFork:YES], -1);
    EXPECT_EQ(FSGetLabelColorIndex(&ref), 2u);
    EXPECT_EQ(folder.read("f"), "the data");
    folder.write("._f", "foreign");
    EXPECT_EQ(RFOpen(&ref, true), -1);
    EXPECT_EQ(folder.read("._f"), "foreign");
}

}  // namespace
