#include "../support/Namespace.h"
#include "../support/Program.h"

#include <Carbon/Dialogs.h>
#include <Carbon/Gestalt.h>
#import <Foundation/Foundation.h>
#include <Tarvik/core/Guard.h>
#include <Tarvik/core/Log.h>
#include <Tarvik/core/SystemVersion.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <optional>
#include <string>
#include <vector>

namespace {

// A datagram socket where the C library's syslog looks for the system log, in a mount namespace of our own.
class SystemLog : public testing::Test {
protected:
    void SetUp() override
    {
        if (!enterPrivateMounts() || !mountPrivateDev())
            GTEST_SKIP() << "the kernel gives this user no mount namespace";
        socket_ = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
        sockaddr_un address{AF_UNIX, "/dev/log"};
        ASSERT_EQ(bind(socket_, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
    }
    void TearDown() override
    {
        SetLogPreprocess(nullptr);
        if (socket_ >= 0)
            close(socket_);
    }

    // Every record received so far: "<PRIORITY>" and what follows "IDENT: ".
    struct Record {
        int priority;
        std::string text;
        bool operator==(const Record &) const = default;
    };
    std::vector<Record> records()
    {
        std::vector<Record> all;
        char buffer[8192];
        for (ssize_t size; (size = recv(socket_, buffer, sizeof buffer, 0)) > 0;) {
            const std::string record(buffer, size_t(size));
            const std::string ident = std::string(program_invocation_short_name) + ": ";
            const size_t at = record.find(ident);
            all.push_back({std::atoi(record.c_str() + 1),
                           at == std::string::npos ? record : record.substr(at + ident.size())});
        }
        return all;
    }

    static constexpr int kUserFacility = 8;
    static std::vector<Record> errors(std::initializer_list<const char *> texts)
    {
        std::vector<Record> all;
        for (const char *text : texts)
            all.push_back({kUserFacility | 3, text});
        return all;
    }

private:
    int socket_ = -1;
};

TEST_F(SystemLog, RecordsCarryFunctionLineAndMessage)
{
    LogCore(nullptr, 7, "%d", 5);
    LogCore("f", 1, nullptr);
    LogCore("f", 2, "\xFF\xFE");  // not UTF-8
    LogCore("-[A b]", 3, "%@ and %@, %s", @"é\U0001F600 100%s", [NSNumber numberWithInt:42], "%d");
    LogString("g", 4, nullptr);
    LogString("g", 5, "50% %n");
    EXPECT_EQ(records(), errors({"<unknown function>:7: 5", "f:1: <NULL>", "f:2: <NULL>",
                                 "-[A b]:3: é\U0001F600 100%s and 42, %d", "g:4: <NULL>", "g:5: 50% %n"}));
}

TEST_F(SystemLog, PriorityIsAStampAndNoThreshold)
{
    EXPECT_EQ(LogGetPriority(), 3);
    LogSetPriority(7);
    LogString("f", 1, "debug");
    LogSetPriority(16 << 3 | 6);  // a facility of the caller's choice
    LogString("f", 2, "local0");
    EXPECT_EQ(LogGetPriority(), 134);
    EXPECT_EQ(records(), (std::vector<Record>{{kUserFacility | 7, "f:1: debug"}, {134, "f:2: local0"}}));
}

std::vector<std::string> gSeen;
Boolean dropSecret(const char *function, unsigned long line, const char *message)
{
    gSeen.push_back(std::string(function) + "|" + std::to_string(line) + "|" + message);
    return std::string(function) != "secret";
}

TEST_F(SystemLog, TheHookSeesSubstitutedTextsAndCanDropAMessage)
{
    SetLogPreprocess(dropSecret);
    LogCore("secret", 1, "hidden");
    LogString(nullptr, 2, nullptr);
    SetLogPreprocess(nullptr);
    LogCore("secret", 3, "seen");
    EXPECT_EQ(gSeen, (std::vector<std::string>{"secret|1|hidden", "<unknown function>|2|<NULL>"}));
    EXPECT_EQ(records(), errors({"<unknown function>:2: <NULL>", "secret:3: seen"}));
}

TEST_F(SystemLog, MainArgumentsAreARecordEach)
{
    char name[] = "prog", path[] = "/tmp/é", odd[] = "%@%s";
    char *argv[] = {name, path, odd, nullptr};
    LogMainArguments(3, argv);
    LogMainArguments(0, argv);
    LogMainArguments(2, nullptr);
    const auto all = records();
    std::vector<std::string> tails;
    for (const Record &record : all)
        tails.push_back(record.text.substr(0, 17) + "*" + record.text.substr(record.text.rfind(": ") + 2));
    EXPECT_EQ(tails, (std::vector<std::string>{"LogMainArguments:*argc=03", "LogMainArguments:*argv[00]=prog",
                                               "LogMainArguments:*argv[01]=/tmp/é",
                                               "LogMainArguments:*argv[02]=%@%s", "LogMainArguments:*argc=00",
                                               "LogMainArguments:*argc=02"}));
}

TEST_F(SystemLog, GuardLogsTheExceptionAndAnswersTheFailure)
{
    const int answer = tarvik::guarded("-[A b]", 9, -1, [] {
        [NSException raise:@"Odd" format:@"reason %%s"];
        return 1;
    });
    EXPECT_EQ(answer, -1);
    EXPECT_FALSE(tarvik::guarded("-[A c]", 10, [] { throw std::runtime_error("from C++"); }));
    EXPECT_EQ(tarvik::guarded("-[A d]", 11, -1, [] { return 5; }), 5);
    EXPECT_EQ(records(), errors({"-[A b]:9: unexpected exception: name[Odd] reason[reason %s]",
                                 "-[A c]:10: unexpected exception: name[CxxException] reason[from C++]"}));
}

// The command is a host: its record arrives like any other's.
TEST_F(SystemLog, TheCommandWritesARecord)
{
    const ProgramResult result =
        runTarvik({"log", "--priority=6", "-f", "run", "--line", "12", "3", "files"});
    EXPECT_EQ(result.status, 0) << result.error;
    const auto all = records();
    ASSERT_EQ(all.size(), 1u);
    EXPECT_EQ(all[0].priority, kUserFacility | 6);
    EXPECT_NE(all[0].text.find("tarvik: run:12: 3 files"), std::string::npos) << all[0].text;
}

// --- the alert of systems before 10.0

struct Alert {
    AlertType type;
    std::string error, explanation;
    AlertStdAlertParamRec parameters;
};
std::optional<Alert> gAlert;
SInt16 gPressed = 1;
SInt32 gVersion = 0x0922;

std::string pascal(ConstStr255Param text) { return {reinterpret_cast<const char *>(text) + 1, text[0]}; }

class OldSystem : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(ReplaceGestalt(
                      gestaltSystemVersion,
                      [](OSType, SInt32 *response) -> OSErr {
                          if (!gVersion)
                              return gestaltUnknownErr;
                          *response = gVersion;
                          return noErr;
                      },
                      nullptr),
                  noErr);
        SetStandardAlertPresenter([](AlertType type, ConstStr255Param error, ConstStr255Param explanation,
                                     const AlertStdAlertParamRec *parameters, SInt16 *hit) -> OSErr {
            gAlert = Alert{type, pascal(error), pascal(explanation), *parameters};
            *hit = gPressed;
            return noErr;
        });
    }
};

TEST_F(OldSystem, ShowsACautionAlertUntilToldToStop)
{
    LogCore("-[DiskImage mount]", 200, "no %@", @"luck");
    ASSERT_TRUE(gAlert);
    EXPECT_EQ(gAlert->type, kAlertCautionAlert);
    EXPECT_EQ(gAlert->error, "no luck");
    EXPECT_EQ(gAlert->explanation, "-[DiskImage mount]:200");
    const AlertStdAlertParamRec &shown = gAlert->parameters;
    EXPECT_TRUE(shown.movable && !shown.helpButton && !shown.filterProc && !shown.otherText);
    EXPECT_EQ(pascal(shown.defaultText), "Continue");
    EXPECT_EQ(pascal(shown.cancelText), "Don't Alert After");
    EXPECT_EQ(shown.defaultButton, 1);
    EXPECT_EQ(shown.cancelButton, 2);

    // The length byte wraps: 300 bytes show as 44.
    LogString("f", 1, std::string(300, 'x').c_str());
    EXPECT_EQ(gAlert->error, std::string(44, 'x'));

    gPressed = 2;
    LogString("f", 2, "last");
    EXPECT_EQ(gAlert->error, "last");
    gAlert.reset();
    LogString("f", 3, "never shown");
    EXPECT_FALSE(gAlert);
}

TEST_F(OldSystem, AFailedVersionLookUpCountsAsOldAndIsTriedAgain)
{
    gVersion = 0;
    EXPECT_EQ(GestaltSystemVersion(), 0u);
    LogString("f", 1, "shown");
    EXPECT_TRUE(gAlert);
    gVersion = 0x1049;
    EXPECT_EQ(GestaltSystemVersion(), 0x1049u);
    gVersion = 0x1050;
    EXPECT_EQ(GestaltSystemVersion(), 0x1049u);  // cached once read
}

TEST(StandardAlertTest, FailsWhereNothingCanShowIt)
{
    SInt16 hit = 77;
    SetStandardAlertPresenter(nullptr);
    EXPECT_EQ(StandardAlert(kAlertNoteAlert, nullptr, nullptr, nullptr, &hit), unimpErr);
    EXPECT_EQ(hit, 77);
}

}  // namespace
