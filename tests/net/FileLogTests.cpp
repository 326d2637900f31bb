// The file log: its switch, its lines, and two processes that write it together.
#include "../support/TemporaryFolder.h"

#include <Tarvik/net/FileLog.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <set>
#include <sstream>

namespace {

class FileLog : public testing::Test {
protected:
    FileLog() { setenv("TMPDIR", folder.path().c_str(), 1); }
    void switchOn() { std::filesystem::create_directory(folder / "tarvik-logs"); }
    std::string text() const { return folder.read("tarvik-logs/log.txt"); }
    /// What follows the time in the only line; the file is removed.
    std::string message()
    {
        const std::string line = text();
        std::filesystem::remove(folder / "tarvik-logs/log.txt");
        return line.size() > 24 ? line.substr(24) : "";
    }
    const TemporaryFolder folder;
};

TEST_F(FileLog, IsWrittenWhileItsFolderExists)
{
    EXPECT_EQ(Utils::GetLogFilename(), folder / "tarvik-logs/log.txt");
    EXPECT_FALSE(Utils::IsLoggingOn());
    Utils::LogMessage("lost");
    EXPECT_TRUE(std::filesystem::is_empty(folder.path())) << "nothing is made";
    switchOn();
    setenv("TZ", "Asia/Tokyo", 1);
    tzset();
    const time_t before = time(nullptr);
    Utils::LogMessage("hello");
    tm broken = {};
    const std::string line = text();
    ASSERT_EQ(line.substr(24), "  Message: hello\n");
    ASSERT_TRUE(strptime(line.substr(0, 24).c_str(), "%a %b %e %H:%M:%S %Y", &broken));
    EXPECT_LE(before, timegm(&broken));
    EXPECT_GE(time(nullptr), timegm(&broken)) << "in UTC, wherever we are";
    EXPECT_TRUE(Utils::IsLoggingOn());
    setenv("TMPDIR", (folder / "tarvik-logs").c_str(), 1);
    Utils::LogMessage("lost, at once");
    setenv("TMPDIR", folder.path().c_str(), 1);
    EXPECT_EQ(text(), line);
    std::filesystem::remove_all(folder / "tarvik-logs");
    Utils::LogMessage("lost again");
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST_F(FileLog, LinesHaveTheirForms)
{
    switchOn();
    Utils::LogMessage("code", -7);
    EXPECT_EQ(message(), "  Message: code ErrorCode: -7\n");
    Utils::LogMessage(std::string("cut\0off", 7));
    EXPECT_EQ(message(), "  Message: cut\n");
    Utils::LogMessage(wstring(L"\u00e9\u20ac\U0001F600"), 1);
    EXPECT_EQ(message(), "  Message: \xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80 ErrorCode: 1\n");
    // A wide message is cut between characters, within 1023 bytes; a narrow one is not.
    const struct {
        wchar_t character;
        size_t bytes;
    } cuts[] = {{L'a', 1023}, {L'\u00e9', 1022}, {L'\u20ac', 1023}, {L'\U0001F600', 1020}};
    for (const auto &[character, bytes] : cuts) {
        Utils::LogMessage(wstring(1200, character));
        EXPECT_EQ(message().size(), 11 + bytes + 1);
    }
    Utils::LogMessage(std::string(5000, 'n'));
    EXPECT_EQ(message().size(), 11u + 5000 + 1);
    InitializeLogWriter();
    CreateLogFolder();
    WriteMessageLog("nothing");
    WriteMessageLogStr("nothing", "at all");
    EXPECT_EQ(text(), "");
}

TEST_F(FileLog, ProcessesNeverTearALine)
{
    switchOn();
    constexpr int kProcesses = 3, kLines = 1500;
    for (int process = 0; process < kProcesses; ++process) {
        if (fork() == 0) {
            for (int i = 0; i < kLines; ++i)
                Utils::LogMessage(std::to_string(process) + "-" + std::to_string(i) +
                                      std::string(300, char('a' + process)),
                                  i);
            _exit(0);
        }
    }
    while (wait(nullptr) > 0) {
    }
    std::set<std::string> seen;
    std::istringstream file(text());
    for (std::string line; std::getline(file, line);) {
        const size_t at = line.find("Message: ");
        ASSERT_NE(at, line.npos) << line;
        int process = -1, number = -1;
        ASSERT_EQ(sscanf(line.c_str() + at, "Message: %d-%d", &process, &number), 2) << line;
        const std::string start = "Message: " + std::to_string(process) + "-" + std::to_string(number);
        ASSERT_EQ(line.substr(at),
                  start + std::string(300, char('a' + process)) + " ErrorCode: " + std::to_string(number));
        seen.insert(start);
    }
    EXPECT_EQ(seen.size(), size_t(kProcesses * kLines));
}

}  // namespace
