// What a host offers to scripts: of its own process and of another one.
#include "tests/support/Program.h"

#include <Tarvik/Tarvik.h>
#include <Tarvik/support/OwnedDesc.h>

#include <CoreFoundation/CFRunLoop.h>

#include <atomic>
#include <gtest/gtest.h>
#include <thread>

namespace {

using tarvik::OwnedDesc;

class ScriptingDictionary : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(ScriptingInstallDictionary());
        ScriptingRegisterProperty(
            CFSTR("shelf title"),
            [](AEDesc *value, void *held) {
                return AEDuplicateDesc(static_cast<OwnedDesc *>(held)->get(), value);
            },
            [](const AEDesc *value, void *held) {
                return AEDuplicateDesc(value, static_cast<OwnedDesc *>(held)->out());
            },
            &title_);
        ScriptingRegisterProperty(
            CFSTR("fixed"),
            [](AEDesc *value, void *) {
                const SInt32 n = 7;
                return AECreateDesc(typeSInt32, &n, sizeof n, value);
            },
            nullptr, nullptr);
        ScriptingRegisterCommand(
            CFSTR("total"),
            [](const AEDescList *arguments, AEDesc *result, void *) {
                long count = 0;
                SInt32 sum = 0;
                AECountItems(arguments, &count);
                for (long i = 1; i <= count; ++i) {
                    SInt32 n = 0;
                    if (const OSErr error =
                            AEGetNthPtr(arguments, i, typeSInt32, nullptr, nullptr, &n, sizeof n, nullptr))
                        return error;
                    sum += n;
                }
                return AECreateDesc(typeSInt32, &sum, sizeof sum, result);
            },
            nullptr);
        AECreateDesc(typeUTF8Text, "Winter", 6, title_.out());
    }
    void TearDown() override { ScriptingRemoveDictionary(); }

    static std::string run(const std::string &source)
    {
        OwnedDesc text, result;
        const CFStringRef string = CFStringCreateWithCString(nullptr, source.c_str(), kCFStringEncodingUTF8);
        const OSStatus status = OSAExecuteScriptString(string, text.get(), result.get());
        CFRelease(string);
        std::string bytes(size_t(AEGetDescDataSize(text.get())), '\0');
        AEGetDescData(text.get(), bytes.data(), Size(bytes.size()));
        return status ? std::to_string(status) + " " + bytes : bytes;
    }
    OwnedDesc title_;
};

TEST_F(ScriptingDictionary, OfThisProcess)
{
    EXPECT_EQ(run("tell current application\nget |shelf title|\nend tell"), "Winter");
    EXPECT_EQ(
        run("tell current application\nset its |shelf title| to \"Spring\"\n|shelf title| & fixed\nend tell"),
        "Spring7");
    EXPECT_EQ(run("tell current application to total(1, 2, \"3\")"), "6");
    EXPECT_EQ(run("name of current application"), "tarvik-tests-system");
    EXPECT_EQ(run("{running of current application, running of application \"no such program\"}"),
              "true, false");
    EXPECT_EQ(run("set fixed of current application to 1"),
              "-1753 current application got an error: Can’t set fixed of current application to 1.");
    EXPECT_EQ(run("nonsense of current application"),
              "-1753 current application got an error: Can’t get nonsense of current application.");
    EXPECT_EQ(run("tell current application to nonsense(1)"),
              "-1753 current application got an error: It doesn’t understand the “nonsense” message.");
    EXPECT_EQ(run("tell application \"no such program\" to activate"), "-1753 Application isn’t running.");
    unsetenv("DISPLAY");
    EXPECT_EQ(run("frontmost of current application"), "false");
    EXPECT_EQ(run("activate"), "-1753 current application got an error: There is no window manager that "
                               "could bring it to the front.");
    EXPECT_EQ(run("quit"),
              "-1753 current application got an error: It doesn’t understand the “quit” message.");
    EXPECT_EQ(run("the clipboard"),
              "-1753 No user interaction allowed: “the clipboard” needs a program with windows.");
    EXPECT_EQ(run("try\ntell application \"no such program\" to quit\non error number n\nn\nend try"),
              "-600");
}

TEST_F(ScriptingDictionary, OfAnotherProcess)
{
    static std::string opened;
    AppleEventInstallHandler(
        kCoreEventClass, kAEOpenDocuments,
        [](const AppleEvent *event, AppleEvent *, SRefCon) {
            OwnedDesc list;
            long count = 0;
            AEGetParamDesc(event, keyDirectObject, typeAEList, list.out());
            AECountItems(list.get(), &count);
            opened += std::to_string(count);
            return OSErr(noErr);
        },
        0);
    ProgramResult result;
    std::atomic<bool> done = false;
    std::thread script([&] {
        result = runTarvik({"script", "-e", "tell application \"tarvik-tests-system\"", "-e",
                            "open {POSIX file \"/etc/hosts\", POSIX file \"/etc/passwd\"}", "-e",
                            "open POSIX file \"/etc/hosts\"", "-e",
                            "set its |shelf title| to name & total(20, length of (get |shelf title|))", "-e",
                            "get |shelf title|", "-e", "end tell"});
        done = true;
    });
    while (!done)
        CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0.02, true);
    script.join();
    EXPECT_EQ(result.out, "tarvik-tests-system26\n") << result.error;
    EXPECT_EQ(opened, "21");
}

}  // namespace
