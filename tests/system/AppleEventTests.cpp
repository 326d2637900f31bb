#include <Tarvik/Tarvik.h>
#include <Tarvik/support/CFOwned.h>
#include <gtest/gtest.h>

#include "tests/support/AppleEvents.h"
#include "tests/support/TemporaryFolder.h"

#include <unistd.h>

using tarvik::CFOwned;
using tarvik::OwnedDesc;

namespace {

constexpr AEEventClass kTest = "test"_code;
const SInt32 gSelf = getpid();

std::string gSeen;  // what the handler was given

OSErr look(const AppleEvent *event, AppleEvent *reply, SRefCon refcon)
{
    long count = 0;
    AECountItems(event, &count);
    gSeen = std::to_string(count) + " " + textParam(event, keyDirectObject) + " " +
            textParam(event, "more"_code) + (reply->dataHandle ? " asked" : "");
    const SInt32 n = SInt32(refcon);
    return reply->dataHandle ? AEPutParamPtr(reply, keyDirectObject, typeSInt32, &n, sizeof n) : OSErr(noErr);
}

std::string dataIn(const AEDescList *list, DescType type)
{
    const CFOwned<CFDataRef> data(AppleEventCopyData(list, type));
    return data ? std::string(reinterpret_cast<const char *>(CFDataGetBytePtr(data.get())),
                              size_t(CFDataGetLength(data.get())))
                : "none";
}

}  // namespace

TEST(AppleEventFunctionTest, SendsPlainData)
{
    ASSERT_TRUE(AppleEventInstallHandler(kTest, "look"_code, look, 7));
    const auto send = [&](AEEventID id, AppleEvent *reply, std::initializer_list<AppleEventParam> params) {
        return AppleEventSendDataArray(typeKernelProcessID, &gSelf, sizeof gSelf, kTest, id, reply,
                                       params.begin(), CFIndex(params.size()));
    };
    const AppleEventParam object = {keyDirectObject, typeUTF8Text, "Emma", 4},
                          more = {"more"_code, typeText, "x", 1};
    EXPECT_TRUE(send("look"_code, nullptr, {object, more}));
    EXPECT_EQ(gSeen, "2 Emma x");
    // Without data, without size, and what no descriptor can be made of: left out, and the event is sent.
    EXPECT_TRUE(send("look"_code, nullptr,
                     {object,
                      {"nul1"_code, typeText, nullptr, 4},
                      {"nul2"_code, typeText, "x", 0},
                      {"nul3"_code, typeText, "x", -1},
                      {"nul4"_code, typeAEList, "x", 1}}));
    EXPECT_EQ(gSeen, "1 Emma none");
    OwnedDesc reply;
    EXPECT_TRUE(AppleEventSendData(typeKernelProcessID, &gSelf, sizeof gSelf, kTest, "look"_code, reply.get(),
                                   typeUTF8Text, "Jane", 4));
    EXPECT_EQ(gSeen, "1 Jane none asked");
    SInt32 n = 0;
    EXPECT_TRUE(AppleEventGetParamDescData(reply.get(), keyDirectObject, typeSInt32, &n, sizeof n));
    EXPECT_EQ(n, 7);
    EXPECT_TRUE(AppleEventSend(typeKernelProcessID, &gSelf, sizeof gSelf, kTest, "look"_code, nullptr));
    EXPECT_EQ(gSeen, "0 none none");

    gSeen = "";
    AEDesc out = {typeText, nullptr};
    EXPECT_FALSE(AppleEventSend(typeKernelProcessID, &gSelf, 0, kTest, "look"_code, &out));
    EXPECT_EQ(out.descriptorType, DescType(typeNull));
    EXPECT_FALSE(AppleEventSend(typeKernelProcessID, nullptr, 4, kTest, "look"_code, nullptr));
    EXPECT_EQ(gSeen, "");
    EXPECT_FALSE(AppleEventInstallHandler(kTest, "look"_code, nullptr, 0));
    EXPECT_FALSE(AppleEventUninstallHandler(kTest, "look"_code, nullptr));
    EXPECT_TRUE(AppleEventUninstallHandler(kTest, "look"_code, look));
    testing::internal::CaptureStderr();
    EXPECT_FALSE(AppleEventSend(typeKernelProcessID, &gSelf, sizeof gSelf, kTest, "look"_code, nullptr));
    const std::string shown = testing::internal::GetCapturedStderr();
    EXPECT_EQ(shown.substr(0, 23), "AESend failed (result=%") << shown;
}

TEST(AppleEventFunctionTest, GetsDataOut)
{
    OwnedDesc event, inner, outer;
    AECreateAppleEvent(kTest, "data"_code, nullptr, kAutoGenerateReturnID, kAnyTransactionID, event.out());
    const AppleEventParam five = {keyDirectObject, typeUTF8Text, "12345", 5};
    EXPECT_TRUE(AppleEventPutAppleEventParam(event.get(), &five));
    char buffer[6] = "-----";
    EXPECT_FALSE(AppleEventGetParamDescData(event.get(), keyDirectObject, typeUTF8Text, buffer, 4));
    EXPECT_STREQ(buffer, "-----");
    EXPECT_TRUE(AppleEventGetParamDescData(event.get(), keyDirectObject, typeWildCard, buffer, 5));
    EXPECT_STREQ(buffer, "12345");
    SInt32 n = 0;
    EXPECT_TRUE(AppleEventGetParamDescData(event.get(), keyDirectObject, typeSInt32, &n, sizeof n));
    EXPECT_EQ(n, 12345);
    EXPECT_FALSE(AppleEventGetParamDescData(event.get(), keyDirectObject, typeWildCard, buffer, 0));
    EXPECT_FALSE(AppleEventGetParamDescData(event.get(), keyDirectObject, typeWildCard, nullptr, 5));
    EXPECT_FALSE(AppleEventGetParamDescData(event.get(), "none"_code, typeWildCard, buffer, 5));

    AECreateList(nullptr, 0, false, inner.out());
    AECreateList(nullptr, 0, false, outer.out());
    for (const char *text : {"b", "c"})
        AEPutPtr(inner.get(), 0, typeText, text, 1);
    AEPutPtr(outer.get(), 0, typeText, "a", 1);
    AEPutDesc(outer.get(), 0, inner.get());
    AEPutPtr(outer.get(), 0, typeUTF8Text, "-", 1);
    AEPutPtr(outer.get(), 0, typeText, "d", 1);
    EXPECT_EQ(dataIn(outer.get(), typeText), "abcd");
    EXPECT_EQ(dataIn(outer.get(), typeUTF8Text), "-");
    EXPECT_EQ(dataIn(outer.get(), typeAlias), "none");
    EXPECT_EQ(dataIn(descOf(typeText, "no list").get(), typeText), "none");
    EXPECT_EQ(AppleEventCopyData(nullptr, typeText), nullptr);
}

TEST(AppleEventFunctionTest, MakesAliasesAndLists)
{
    const TemporaryFolder folder;
    FSRef target, from;
    const std::string path = folder.write("a", ""), other = folder.write("b", "");
    ASSERT_EQ(FSPathMakeRef(reinterpret_cast<const UInt8 *>(path.c_str()), &target, nullptr), noErr);
    ASSERT_EQ(FSPathMakeRef(reinterpret_cast<const UInt8 *>(other.c_str()), &from, nullptr), noErr);
    for (const FSRef *start : {static_cast<const FSRef *>(nullptr), static_cast<const FSRef *>(&from)}) {
        OwnedDesc alias, found;
        EXPECT_TRUE(AECreateAliasDescWithFSRef(alias.get(), start, &target));
        FSRef back;
        ASSERT_EQ(AECoerceDesc(alias.get(), typeFSRef, found.out()), noErr);
        AEGetDescData(found.get(), &back, sizeof back);
        EXPECT_EQ(FSCompareFSRefs(&back, &target), noErr);
    }
    AEDesc none = {typeText, nullptr};
    EXPECT_FALSE(AECreateAliasDescWithFSRef(&none, nullptr, nullptr));
    EXPECT_EQ(none.descriptorType, DescType(typeNull));

    struct Plan {
        CFIndex end;
    };
    const AECreateDescListProc letters = [](AEDesc *item, CFIndex index, void *context) -> Boolean {
        const char letter = char('a' + index);
        EXPECT_EQ(item->descriptorType, DescType(typeNull));
        return index < static_cast<Plan *>(context)->end && AECreateDesc(typeText, &letter, 1, item) == noErr;
    };
    for (const auto &[end, expected] : {std::pair(10, "abcd"), std::pair(2, "ab"), std::pair(0, "none")}) {
        Plan plan = {end};
        OwnedDesc list;
        EXPECT_TRUE(AECreateDescListWithFunction(list.get(), letters, 4, &plan));
        EXPECT_EQ(list->descriptorType, DescType(typeAEList));
        EXPECT_EQ(dataIn(list.get(), typeText), expected);
    }
    none.descriptorType = typeText;
    EXPECT_FALSE(AECreateDescListWithFunction(&none, nullptr, 4, nullptr));
    EXPECT_EQ(none.descriptorType, DescType(typeNull));
    EXPECT_FALSE(AECreateDescListWithFunction(nullptr, letters, 4, nullptr));
}
