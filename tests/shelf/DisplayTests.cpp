// A display that goes away: the application ends by itself, and its rows are kept.
#include <gtest/gtest.h>
#include <tests/support/Program.h>
#include <tests/support/TemporaryFolder.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

/// A program that runs beside the test, and no longer than it.
class Beside {
public:
    explicit Beside(std::vector<std::string> words, int output = -1)
    {
        std::vector<char *> argv;
        for (std::string &word : words)
            argv.push_back(word.data());
        argv.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
        if (output >= 0)
            posix_spawn_file_actions_adddup2(&actions, output, 1);
        if (posix_spawnp(&process_, argv[0], &actions, nullptr, argv.data(), environ) != 0)
            process_ = 0;
        posix_spawn_file_actions_destroy(&actions);
    }
    ~Beside() { end(SIGKILL); }
    Beside(const Beside &) = delete;
    Beside &operator=(const Beside &) = delete;
    void end(int signal)
    {
        if (process_ > 0) {
            kill(process_, signal);
            waitpid(process_, nullptr, 0);
            process_ = 0;
        }
    }
    /// Whether it has a handler of its own for the signal.
    bool catches(int signal) const
    {
        const std::string status = readFile("/proc/" + std::to_string(process_) + "/status");
        const size_t mask = status.find("SigCgt:");
        return mask != std::string::npos &&
               (std::stoull(status.substr(mask + 7), nullptr, 16) >> (signal - 1) & 1);
    }
    void send(int signal) const { kill(process_, signal); }
    bool endsWithin(std::chrono::seconds patience)
    {
        const auto end = std::chrono::steady_clock::now() + patience;
        while (waitpid(process_, &status_, WNOHANG) == 0) {
            if (std::chrono::steady_clock::now() > end)
                return false;
            std::this_thread::sleep_for(20ms);
        }
        process_ = 0;
        return true;
    }
    /// How it ended, as waitpid tells.
    int status() const { return status_; }

private:
    pid_t process_ = 0;
    int status_ = -1;
};

class Display : public testing::Test {
protected:
    void SetUp() override
    {
        int ends[2];
        ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
        server_.emplace(std::vector<std::string>{"Xvfb", "-displayfd", "1", "-screen", "0", "1024x640x24",
                                                 "-nolisten", "tcp", "-r", "-noreset"},
                        ends[1]);
        close(ends[1]);
        std::string number;
        for (char c; read(ends[0], &c, 1) == 1 && c != '\n';)
            number += c;
        close(ends[0]);
        ASSERT_FALSE(number.empty()) << "Xvfb did not start";
        setenv("DISPLAY", (":" + number).c_str(), 1);
        const std::string image = folder_.write("Some.img", "not really");
        shelf_.emplace(std::vector<std::string>{SHELF_APPLICATION, image});
    }
    void awaitWindow()
    {
        const auto isShown = [] {
            return runProgram({"xdotool", "search", "--onlyvisible", "--name", "^Shelf$"}).status == 0;
        };
        for (int i = 0; i < 300 && !isShown(); ++i)
            std::this_thread::sleep_for(100ms);
        ASSERT_TRUE(isShown());
    }
    static fs::path defaults()
    {
        for (const auto &entry : fs::recursive_directory_iterator(std::getenv("HOME")))
            if (entry.path().filename() == "Shelf.plist")
                return entry.path();
        return {};
    }

    TemporaryFolder folder_;
    std::optional<Beside> server_, shelf_;
};

TEST_F(Display, ThatGoesAwayEndsShelfWithItsRowsKept)
{
    awaitWindow();
    server_->end(SIGKILL);
    EXPECT_TRUE(shelf_->endsWithin(30s));
    EXPECT_NE(readFile(defaults()).find("Some.img"), std::string::npos) << "the row added last";
}

// As after the end of a test that was cut off: nothing can be written any more, and nobody is there to be told.
TEST_F(Display, ThatGoesAwayWithTheHomeEndsShelfToo)
{
    awaitWindow();
    for (const auto &entry : fs::directory_iterator(std::getenv("HOME")))
        fs::remove_all(entry.path());
    server_->end(SIGKILL);
    EXPECT_TRUE(shelf_->endsWithin(30s));
}

// AppKit takes the signal long before it can do as told.
TEST_F(Display, ShelfToldToEndWhileItStartsDoes)
{
    for (int i = 0; i < 3000 && !shelf_->catches(SIGTERM); ++i)
        std::this_thread::sleep_for(10ms);
    ASSERT_TRUE(shelf_->catches(SIGTERM));
    shelf_->send(SIGTERM);
    EXPECT_TRUE(shelf_->endsWithin(30s));
}

// Another process was killed while it held the lock of the ports' names, which are to be taken back at the end.
TEST_F(Display, ShelfEndsWellThoughItCantTidyUp)
{
    awaitWindow();
    // It and GNUstep's notification daemon have their names by then, and want the lock no more until they end.
    const fs::path names = fs::path(std::getenv("TEMP")) / "NSMessagePort/names";
    const auto namesTaken = [&] {
        std::error_code none;
        return std::distance(fs::directory_iterator(names, none), {});
    };
    for (int i = 0; i < 300 && namesTaken() < 2; ++i)
        std::this_thread::sleep_for(100ms);
    ASSERT_GE(namesTaken(), 2);
    std::this_thread::sleep_for(1s);
    ASSERT_TRUE(fs::create_directory(names / "lock"));
    shelf_->send(SIGTERM);
    EXPECT_TRUE(shelf_->endsWithin(30s));
    EXPECT_EQ(shelf_->status(), 0);
}

}  // namespace
