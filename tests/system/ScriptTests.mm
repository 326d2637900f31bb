// Scripts from strings and files through the toolkit: statuses, texts and results.
#include "tests/support/TemporaryFolder.h"

#import <Tarvik/Tarvik.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/OwnedDesc.h>
#import <Tarvik/support/Pool.h>

#include <Carbon/AERegistry.h>
#include <Carbon/OSA.h>

#include <fstream>
#include <gtest/gtest.h>

namespace {

using tarvik::OwnedDesc;

std::string bytesOf(const AEDesc *desc)
{
    std::string bytes(size_t(AEGetDescDataSize(desc)), '\0');
    AEGetDescData(desc, bytes.data(), Size(bytes.size()));
    return bytes;
}

struct Outcome {
    OSStatus status;
    DescType textType, resultType;
    std::string text;
    bool operator==(const Outcome &) const = default;
};
void PrintTo(const Outcome &outcome, std::ostream *out)
{
    *out << outcome.status << " " << std::hex << outcome.textType << " " << outcome.resultType << " "
         << outcome.text;
}

template <class Run>
Outcome outcomeOf(Run run)
{
    OwnedDesc text, result;
    const OSStatus status = run(text.get(), result.get());
    return {status, text->descriptorType, result->descriptorType, bytesOf(text.get())};
}

TEST(Scripts, FromStrings)
{
    const tarvik::Pool pool;
    const auto run = [](NSString *source) {
        return outcomeOf(
            [&](AEDesc *text, AEDesc *result) { return [source executeOSAScript:text returned:result]; });
    };
    const Outcome unavailable{-4960, typeNull, typeNull, ""};
    EXPECT_EQ(run(@"2 + 3"), (Outcome{0, typeChar, typeSInt32, "5"}));
    EXPECT_EQ(run(@"\"é\" & 1"), (Outcome{0, typeChar, typeChar, "é1"}));
    EXPECT_EQ(run(@"{1, \"a\", {x:2}}"), (Outcome{0, typeChar, typeAEList, "1, a, x:2"}));
    EXPECT_EQ(run(@"1 = 1"), (Outcome{0, typeChar, typeBoolean, "true"}));
    EXPECT_EQ(run(@"error \"no\" number 9"), (Outcome{errOSAScriptError, typeChar, typeNull, "no"}));
    EXPECT_EQ(run(@"if"), (Outcome{errOSAScriptError, typeChar, typeNull,
                                   "Expected expression but found end of script."}));
    EXPECT_EQ(run(@"return"), (Outcome{0, typeNull, typeNull, ""})) << "a script that gives nothing";
    EXPECT_EQ(run(@""), unavailable);
    EXPECT_EQ(
        outcomeOf([](AEDesc *text, AEDesc *result) { return OSAExecuteScriptString(nullptr, text, result); }),
        unavailable);
    EXPECT_EQ(OSAExecuteScriptString(CFSTR("1"), nullptr, nullptr), 0);
}

TEST(Scripts, FromFiles)
{
    const tarvik::Pool pool;
    const TemporaryFolder folder;
    const auto write = [&](const char *name, const std::string &bytes) {
        std::ofstream(folder.path() / name, std::ios::binary) << bytes;
        return tarvik::nsstring((folder.path() / name).string());
    };
    NSString *source =
        write("run.applescript", "property n : 1\non run\nset n to n + 1\nend run\non open files\ncount "
                                 "files\nend open\non add(a, b)\na + b\nend add\n");
    const auto run = [](NSString *path, const AppleEvent *event = nullptr) {
        return outcomeOf([&](AEDesc *text, AEDesc *result) {
            return [path executeOSAScriptFile:event result:text returned:result];
        });
    };
    EXPECT_EQ(run(source), (Outcome{0, typeChar, typeSInt32, "2"}));
    const Outcome unavailable{-4960, typeNull, typeNull, ""};
    EXPECT_EQ(run(write("broken", "if")), unavailable);
    EXPECT_EQ(run(write("binary", std::string("a\0b", 3))), unavailable);
    EXPECT_EQ(run(@"/no/such/file"), unavailable);
    EXPECT_EQ(run(@""), unavailable);
    EXPECT_EQ(run(write("utf16", std::string("\xFF\xFE"
                                             "3\0 \0+\0 \0004\0",
                                             12))),
              (Outcome{0, typeChar, typeSInt32, "7"}));
    EXPECT_EQ(run(write("failing", "error \"x\"")), (Outcome{errOSAScriptError, typeChar, typeNull, "x"}));

    // Events: open, a subroutine, and one that the script doesn't know.
    AppleEvent event;
    OwnedDesc list;
    AECreateList(nullptr, 0, false, list.out());
    AEPutPtr(list.get(), 0, typeUTF8Text, "a", 1);
    AEPutPtr(list.get(), 0, typeUTF8Text, "b", 1);
    AECreateAppleEvent(kCoreEventClass, kAEOpenDocuments, nullptr, kAutoGenerateReturnID, kAnyTransactionID,
                       &event);
    AEPutParamDesc(&event, keyDirectObject, list.get());
    EXPECT_EQ(run(source, &event), (Outcome{0, typeChar, typeSInt32, "2"}));
    AEDisposeDesc(&event);
    AECreateAppleEvent(0x61736372 /* 'ascr' */, 0x70736272 /* 'psbr' */, nullptr, kAutoGenerateReturnID,
                       kAnyTransactionID, &event);
    AEPutParamPtr(&event, 0x736E616D /* 'snam' */, typeUTF8Text, "add", 3);
    AEPutParamDesc(&event, keyDirectObject, list.get());
    EXPECT_EQ(run(source, &event).text, "Can’t make \"a\" into type number.");
    AEDisposeDesc(&event);
    AECreateAppleEvent(0x77686174, 0x65766572, nullptr, kAutoGenerateReturnID, kAnyTransactionID, &event);
    EXPECT_EQ(run(source, &event), (Outcome{errAEEventNotHandled, typeNull, typeNull, ""}));
    AEDisposeDesc(&event);

    FSRef ref;
    ASSERT_TRUE([source getFSRef:&ref]);
    EXPECT_EQ(
        outcomeOf([&](AEDesc *text, AEDesc *result) { return OSARunScriptFileRef(&ref, text, result); }),
        (Outcome{0, typeChar, typeSInt32, "2"}));
    EXPECT_EQ(
        outcomeOf([](AEDesc *text, AEDesc *result) { return OSARunScriptFileRef(nullptr, text, result); }),
        unavailable);
    EXPECT_EQ(outcomeOf([&](AEDesc *text, AEDesc *result) {
                  return [source runOSAScriptFile:text returned:result];
              }),
              (Outcome{0, typeChar, typeSInt32, "2"}));

    ComponentInstance component = OpenDefaultComponent(kOSAComponentType, kAppleScriptSubtype);
    EXPECT_NE([source loadOSAFile:component], OSAID(kOSANullScript));
    EXPECT_NE(OSALoadFileFromRef(component, &ref), OSAID(kOSANullScript));
    EXPECT_EQ([@"/no/such/file" loadOSAFile:component], OSAID(kOSANullScript));
    EXPECT_EQ([source loadOSAFile:nullptr], OSAID(kOSANullScript));
    CloseComponent(component);
}

}  // namespace
