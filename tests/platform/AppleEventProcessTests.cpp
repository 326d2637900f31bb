// Events between two processes.
#include <Carbon/AEMach.h>
#include <Carbon/Processes.h>
#include <CoreFoundation/CFRunLoop.h>
#include <gtest/gtest.h>

#include "tests/support/AppleEvents.h"
#include "tests/support/LocalServer.h"
#include "tests/support/Program.h"
#include "tests/support/Scripting.h"
#include "tests/support/TemporaryFolder.h"

#include <chrono>
#include <filesystem>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using tarvik::OwnedDesc;

namespace {

constexpr AEEventClass kTest = "test"_code;

/// A process that serves events, ended with the object.
class Peer : public Companion {
public:
    explicit Peer(const std::string &mode = "", const std::string &argument = "",
                  const std::string &program = TARVIK_TESTS_HELPER "/tarvik-test-eventpeer")
        : Companion({program, mode, argument})
    {
        EXPECT_EQ(firstLine(), "ready");
    }
    /// Until nothing of it is left but its status.
    void awaitEnd() const
    {
        siginfo_t ended;
        waitid(P_PID, id_t(process()), &ended, WEXITED | WNOWAIT);
    }
    OwnedDesc address() const { return descOfNumber(typeKernelProcessID, SInt32(process())); }
};

OwnedDesc event(AEEventID id, const OwnedDesc &target, std::string_view text = "")
{
    OwnedDesc made;
    AECreateAppleEvent(kTest, id, target.get(), kAutoGenerateReturnID, kAnyTransactionID, made.out());
    AEPutParamPtr(made.get(), keyDirectObject, typeUTF8Text, text.data(), Size(text.size()));
    return made;
}

struct Sent {
    OSStatus status;
    OwnedDesc reply;
    double seconds;
};
Sent send(const OwnedDesc &made, AESendMode mode = kAEWaitReply, long timeOut = 300)
{
    Sent sent;
    const auto start = std::chrono::steady_clock::now();
    sent.status = AESendMessage(made.get(), sent.reply.out(), mode, timeOut);
    sent.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return sent;
}

/// Runs the run loop until the condition holds, for at most two seconds.
template <class Condition>
bool runUntil(Condition &&condition)
{
    for (int i = 0; i < 200 && !condition(); ++i)
        CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0.01, true);
    return condition();
}

std::string runtimeFolder() { return std::string(getenv("XDG_RUNTIME_DIR")) + "/apple-events"; }

}  // namespace

TEST(AppleEventProcessTest, AQuestionAndItsAnswer)
{
    for (const char *mode : {"", "poll"}) {
        const Peer peer(mode);
        ProcessSerialNumber serial;
        ASSERT_EQ(GetProcessForPID(peer.process(), &serial), noErr);
        const OwnedDesc byNumber = descOfNumber(typeProcessSerialNumber, serial);
        for (const std::string &text :
             {std::string("Zoë"), std::string(), std::string(3 << 20, 'x'), std::string("again")}) {
            const Sent sent = send(event("echo"_code, byNumber, text));
            EXPECT_EQ(sent.status, noErr);
            EXPECT_EQ(textParam(sent.reply.get(), keyDirectObject), text);
            EXPECT_EQ(numberParam(sent.reply.get(), "sent"_code), getpid());
        }
        SInt32 answerer = 0;
        const Sent sent = send(event("echo"_code, peer.address()));
        AEGetAttributePtr(sent.reply.get(), keySenderPIDAttr, typeSInt32, nullptr, &answerer, sizeof answerer,
                          nullptr);
        EXPECT_EQ(answerer, peer.process());
        EXPECT_EQ(send(event("none"_code, peer.address())).status, errAEEventNotHandled);
        const Sent refused = send(event("refu"_code, peer.address()));
        EXPECT_EQ(refused.status, noErr);
        EXPECT_EQ(numberParam(refused.reply.get(), keyErrorNumber), -1234);
    }
}

TEST(AppleEventProcessTest, NoReplyKeepsItsOrder)
{
    Peer peer;
    for (const char *text : {"one", "two", "three"})
        EXPECT_EQ(send(event("note"_code, peer.address(), text), kAENoReply).status, noErr);
    EXPECT_EQ(send(event("note"_code, peer.address(), "four")).status, noErr);
    for (const char *text : {"one", "two", "three", "four, answered"})
        EXPECT_EQ(peer.firstLine(), text);
}

TEST(AppleEventProcessTest, QueuedRepliesComeThroughTheRunLoop)
{
    static std::vector<std::pair<SInt32, std::string>> answers;  // return identifier; text or error
    AEInstallEventHandler(
        kCoreEventClass, kAEAnswer,
        [](const AppleEvent *event, AppleEvent *, SRefCon) -> OSErr {
            SInt32 id = 0;
            AEGetAttributePtr(event, keyReturnIDAttr, typeSInt32, nullptr, &id, sizeof id, nullptr);
            const SInt32 error = numberParam(event, keyErrorNumber);
            answers.emplace_back(id, error ? std::to_string(error) : textParam(event, keyDirectObject));
            return noErr;
        },
        0, false);
    const Peer peer, mortal, deaf("deaf");
    const struct {
        const Peer &peer;
        AEEventID id;
        std::string answer;
        OwnedDesc event;
    } cases[] = {{peer, "echo"_code, "hello", event("echo"_code, peer.address(), "hello")},
                 {mortal, "die "_code, "-609", event("die "_code, mortal.address())},
                 {deaf, "echo"_code, "-1712", event("echo"_code, deaf.address())},
                 {peer, "late"_code, "late", event("late"_code, peer.address())}};
    std::vector<std::pair<SInt32, std::string>> expected;
    for (const auto &one : cases) {
        const Sent sent = send(one.event, kAEQueueReply, 6);
        EXPECT_EQ(sent.status, noErr);
        EXPECT_EQ(sent.reply->descriptorType, DescType(typeNull));
        SInt32 id = 0;
        AEGetAttributePtr(one.event.get(), keyReturnIDAttr, typeSInt32, nullptr, &id, sizeof id, nullptr);
        expected.emplace_back(id, one.answer);
    }
    EXPECT_TRUE(answers.empty());
    EXPECT_TRUE(runUntil([] { return answers.size() == 4; }));
    std::sort(answers.begin(), answers.end());
    EXPECT_EQ(answers, expected);

    // To oneself: at once, and through the run loop.
    answers.clear();
    AEInstallEventHandler(
        kTest, "self"_code,
        [](const AppleEvent *, AppleEvent *reply, SRefCon) {
            return AEPutParamPtr(reply, keyDirectObject, typeUTF8Text, "me", 2);
        },
        0, false);
    EXPECT_EQ(textParam(send(event("self"_code, OwnedDesc()), kAEQueueReply).reply.get(), keyDirectObject),
              "me");
    EXPECT_TRUE(runUntil([] { return answers.size() == 1 && answers[0].second == "me"; }));
}

TEST(AppleEventProcessTest, ReceiversThatFail)
{
    {
        const Peer mortal;
        EXPECT_EQ(send(event("die "_code, mortal.address())).status, connectionInvalid);
        mortal.awaitEnd();
        EXPECT_EQ(send(event("echo"_code, mortal.address())).status, procNotFound);
    }
    const Peer deaf("deaf");
    const Sent late = send(event("echo"_code, deaf.address()), kAEWaitReply, 6);
    EXPECT_EQ(late.status, errAETimeout);
    EXPECT_GE(late.seconds, 0.1);
    EXPECT_EQ(send(event("echo"_code, descOfNumber(typeKernelProcessID, SInt32(getppid())))).status,
              procNotFound);
    EXPECT_EQ(
        send(event("echo"_code, descOfNumber(typeProcessSerialNumber, ProcessSerialNumber{77, 77}))).status,
        procNotFound);

    // A head with its serial ("**") as it came, whose kind, length or body is off; a stranger's serial is passed over.
    const std::string head = "41456d73"
                             "01"
                             "03"
                             "0000"
                             "****************";
    const struct {
        std::string bytes;
        OSStatus status;
    } answers[] = {{"ff00", errAETimeout},
                   {std::string(80, 'f'), errAECorruptData},
                   {"41456d73"
                    "02"
                    "03"
                    "0000"
                    "****************"
                    "0100000000000000"
                    "00",
                    errAECorruptData},
                   {head + "0100000000000000"
                           "00",
                    errAECorruptData},
                   {head + "ffffffffffffff7f", errAECorruptData},
                   {head + "0000000001000000", errAECorruptData},
                   {"41456d73"
                    "01"
                    "03"
                    "0000"
                    "ffffffffffffffff"
                    "0100000000000000"
                    "00",
                    errAETimeout}};
    for (const auto &[bytes, status] : answers) {
        const Peer rubbish("raw", bytes);
        EXPECT_EQ(send(event("echo"_code, rubbish.address()), kAEWaitReply, 6).status, status) << bytes;
    }
    const Peer peer;
    EXPECT_EQ(send(event("echo"_code, peer.address(), std::string(65 << 20, 'x'))).status, memFullErr);
    const Sent huge = send(event("huge"_code, peer.address()));
    EXPECT_EQ(numberParam(huge.reply.get(), keyErrorNumber), memFullErr);
}

TEST(AppleEventProcessTest, TimeIsGivenAgain)
{
    const Peer peer;
    OwnedDesc slow = event("slow"_code, peer.address());
    const SInt32 milliseconds = 300;
    AEPutParamPtr(slow.get(), keyDirectObject, typeSInt32, &milliseconds, sizeof milliseconds);
    EXPECT_EQ(send(slow, kAEWaitReply, 12).status, noErr);  // 200 ms, three times
    EXPECT_EQ(textParam(send(event("late"_code, peer.address())).reply.get(), keyDirectObject), "late");

    static int asked = 0;
    const Peer deaf("deaf");
    OwnedDesc reply;
    const AEIdleUPP impatient = [](EventRecord *, SInt32 *sleepTime, RgnHandle *) -> Boolean {
        return *sleepTime = 1, ++asked == 4;
    };
    EXPECT_EQ(AESend(event("echo"_code, deaf.address()).get(), reply.out(), kAEWaitReply, kAENormalPriority,
                     kNoTimeOut, impatient, nullptr),
              errAEWaitCanceled);
    EXPECT_EQ(asked, 4);
}

TEST(AppleEventProcessTest, ServingWhileWaiting)
{
    AEInstallEventHandler(
        kTest, "name"_code,
        [](const AppleEvent *, AppleEvent *reply, SRefCon) {
            return AEPutParamPtr(reply, keyDirectObject, typeUTF8Text, "tester", 6);
        },
        0, false);
    const Peer peer;
    EXPECT_EQ(
        textParam(
            send(event("back"_code, peer.address()), kAEWaitReply | kAEProcessNonReplyEvents).reply.get(),
            keyDirectObject),
        "tester");
    // Without the flag the question back is not served, and its time runs out before ours.
    const Sent sent = send(event("back"_code, peer.address()), kAEWaitReply, 30);
    EXPECT_EQ(sent.status, errAETimeout);
}

TEST(AppleEventProcessTest, ApplicationsBySignatureIdentifierAndPlace)
{
    const TemporaryFolder folder;
    std::filesystem::create_directories(folder / "Peer.app/Resources");
    std::filesystem::copy(TARVIK_TESTS_HELPER "/tarvik-test-eventpeer", folder / "Peer.app/Peer");
    folder.write(
        "Peer.app/Resources/Info-gnustep.plist",
        "{ NSExecutable = Peer; CFBundleIdentifier = \"org.example.peer\"; CFBundleSignature = Peer; }");
    const auto url = [&](const std::string &host, const char *name) {
        return "file://" + host + (folder / name).string();
    };
    const OwnedDesc bySignature = descOfNumber(typeApplSignature, "Peer"_code),
                    byIdentifier = descOf(typeApplicationBundleID, "org.example.peer"),
                    byPlace = descOf(typeApplicationURL, url("", "Peer.app/"));
    EXPECT_EQ(send(event("echo"_code, bySignature)).status, procNotFound);  // nothing is launched
    {
        const Peer peer("", "", folder / "Peer.app/Peer");
        for (const OwnedDesc *target : {&bySignature, &byIdentifier, &byPlace}) {
            const Sent sent = send(event("echo"_code, *target, "hello"));
            EXPECT_EQ(sent.status, noErr);
            EXPECT_EQ(textParam(sent.reply.get(), keyDirectObject), "hello");
        }
        EXPECT_EQ(send(event("echo"_code, descOf(typeApplicationBundleID, "org.example.other"))).status,
                  procNotFound);
        // The folder stands for the process, not the executable within; and where it is now.
        EXPECT_EQ(send(event("echo"_code, descOf(typeApplicationURL, url("", "Peer.app/Peer")))).status,
                  procNotFound);
        std::filesystem::rename(folder / "Peer.app", folder / "My Peer.app");
        EXPECT_EQ(send(event("echo"_code, byPlace)).status, procNotFound);
        EXPECT_EQ(
            send(event("echo"_code, descOf(typeApplicationURL, url("localhost", "My%20Peer.app")))).status,
            noErr);
        for (const std::string &elsewhere :
             {url("elsewhere", "My%20Peer.app"), std::string("eppc://host/Peer"), std::string()})
            EXPECT_EQ(send(event("echo"_code, descOf(typeApplicationURL, elsewhere))).status,
                      errAEUnknownAddressType);
    }
    EXPECT_EQ(send(event("echo"_code, byIdentifier)).status, procNotFound);
}

// A script that asks a program that doesn't answer.
TEST(AppleEventProcessTest, ScriptsWaitAsLongAsTheySay)
{
    const TemporaryFolder folder;
    const std::string program = std::filesystem::canonical(folder.path()) / "a-deaf-peer";
    std::filesystem::copy(TARVIK_TESTS_HELPER "/tarvik-test-eventpeer", program);
    const Peer deaf("deaf", "", program);
    const auto start = std::chrono::steady_clock::now();
    Scripting scripting;
    EXPECT_EQ(scripting.run("try\nwith timeout of 0.2 seconds\ntell application \"" + program +
                            "\" to «event testecho»\nend timeout\non error m number n\n{m, n}\nend"),
              "{\"" + program + " got an error: AppleEvent timed out.\", -1712}");
    EXPECT_EQ(scripting.run("ignoring application responses\ntell application \"" + program +
                            "\" to «event testnote» \"one\"\n7\nend"),
              "7");
    EXPECT_LT(std::chrono::steady_clock::now() - start,
              std::chrono::seconds(50));  // a minute is what it would have had otherwise
}

// A program that ends before its answer goes out has done what it was asked for only where that was to quit.
TEST(AppleEventProcessTest, ScriptsTellAProgramToEnd)
{
    const TemporaryFolder folder;
    const std::string program = std::filesystem::canonical(folder.path()) / "a-hasty-peer";
    std::filesystem::copy(TARVIK_TESTS_HELPER "/tarvik-test-eventpeer", program);
    Scripting scripting;
    const auto told = [&](const std::string &command) {
        const Peer peer("hasty", "", program);
        return scripting.run("try\ntell application \"" + program + "\" to " + command +
                             "\non error m number n\n{m, n}\nend");
    };
    EXPECT_EQ(told("quit"), "");
    EXPECT_EQ(told("«event testdie »"), "{\"" + program + " got an error: Connection is invalid.\", -609}");
}

TEST(AppleEventProcessTest, NobodyElseGetsIn)
{
    AEInstallEventHandler(
        kTest, "echo"_code, [](const AppleEvent *, AppleEvent *, SRefCon) -> OSErr { return noErr; }, 0,
        false);
    struct stat about;
    const std::string own = runtimeFolder() + "/" + std::to_string(getpid());
    ASSERT_EQ(stat(own.c_str(), &about), 0);
    EXPECT_EQ(about.st_mode, mode_t(S_IFSOCK | 0600));
    ASSERT_EQ(stat(runtimeFolder().c_str(), &about), 0);
    EXPECT_EQ(about.st_mode, mode_t(S_IFDIR | 0700));
    {
        // A socket under another process's number.
        const Peer deaf("deaf"), peer;
        std::filesystem::rename(runtimeFolder() + "/" + std::to_string(peer.process()),
                                runtimeFolder() + "/" + std::to_string(deaf.process()));
        EXPECT_EQ(send(event("echo"_code, deaf.address())).status, procNotFound);
    }
    // What those have left who were killed is cleared away by the next one.
    const auto sockets = [] {
        return std::distance(std::filesystem::directory_iterator(runtimeFolder()), {});
    };
    const Peer peer;
    EXPECT_EQ(sockets(), 2);
    EXPECT_EQ(send([&] {
                  OwnedDesc quit;
                  AECreateAppleEvent(kCoreEventClass, kAEQuitApplication, peer.address().get(),
                                     kAutoGenerateReturnID, 0, quit.out());
                  return quit;
              }())
                  .status,
              noErr);
    EXPECT_TRUE(runUntil([&] { return sockets() == 1; }));  // who ends by himself leaves nothing

    // Who may be everybody's is nobody's.
    std::filesystem::permissions(runtimeFolder(), std::filesystem::perms::others_exec,
                                 std::filesystem::perm_options::add);
    EXPECT_EQ(send(event("echo"_code, descOfNumber(typeKernelProcessID, SInt32(getppid())))).status,
              procNotFound);
}

TEST(AppleEventProcessTest, ManyThreadsAndAForkedChild)
{
    const Peer peer;
    std::vector<std::thread> threads;
    std::atomic<int> good{0};
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&, t] {
            for (int i = 0; i < 50; ++i) {
                const std::string text = std::to_string(t) + "/" + std::to_string(i);
                good += textParam(send(event("echo"_code, peer.address(), text)).reply.get(),
                                  keyDirectObject) == text;
            }
        });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(good, 200);
    // A child has connections of its own.
    const pid_t child = fork();
    if (child == 0)
        _exit(numberParam(send(event("echo"_code, peer.address())).reply.get(), "sent"_code) == getpid() ? 0
                                                                                                         : 1);
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(numberParam(send(event("echo"_code, peer.address())).reply.get(), "sent"_code), getpid());
    const size_t before = openDescriptors();
    for (int i = 0; i < 20; ++i)
        send(event("echo"_code, peer.address()));
    EXPECT_EQ(openDescriptors(), before);
}

TEST(AppleEventProcessTest, TheSystemProcess)
{
    const auto ask = [](AEEventID id, AESendMode mode = kAENoReply) {
        OwnedDesc event;
        AECreateAppleEvent(
            kCoreEventClass, id,
            descOfNumber(typeProcessSerialNumber, ProcessSerialNumber{0, kSystemProcess}).get(),
            kAutoGenerateReturnID, 0, event.out());
        return send(event, mode).status;
    };
    // Never the machine's own.
    for (const char *bus : {"DBUS_SYSTEM_BUS_ADDRESS", "DBUS_SESSION_BUS_ADDRESS"})
        setenv(bus, "unix:path=/nonexistent", true);
    for (const AEEventID id : {kAERestart, kAEReallyLogOut})
        EXPECT_EQ(ask(id), procNotFound);
    EXPECT_EQ(ask("what"_code), errAEEventNotHandled);

    Companion login({TARVIK_TESTS_HELPER "/tarvik-test-eventpeer", "login"});
    const std::string address = login.firstLine();
    for (const char *bus : {"DBUS_SYSTEM_BUS_ADDRESS", "DBUS_SESSION_BUS_ADDRESS"})
        setenv(bus, address.c_str(), true);
    EXPECT_EQ(ask(kAERestart), noErr);
    EXPECT_EQ(login.firstLine(), "Reboot(true,)");
    EXPECT_EQ(ask(kAEShutDown), permErr);
    EXPECT_EQ(ask(kAESleep), errAEEventNotHandled);
    EXPECT_EQ(ask(kAELogOut, kAEWaitReply), noErr);
    EXPECT_EQ(login.firstLine(), "Logout(0,)");
    EXPECT_EQ(ask(kAEReallyLogOut), noErr);
    EXPECT_EQ(login.firstLine(), "Logout(1,)");
}
