#include "platform/OpenScripting/private/Applications.h"

#include <Carbon/Processes.h>
#include <gtest/gtest.h>

#include <signal.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace {

uint64_t serial(const ProcessSerialNumber &number)
{
    return uint64_t(number.highLongOfPSN) << 32 | number.lowLongOfPSN;
}

/// A child that waits to be ended.
class Child {
public:
    Child() : pid_(fork())
    {
        if (pid_ == 0) {
            pause();
            _exit(0);
        }
    }
    ~Child() { collect(); }
    pid_t pid() const { return pid_; }
    void kill() const
    {
        ::kill(pid_, SIGKILL);
        siginfo_t about;
        waitid(P_PID, id_t(pid_), &about, WEXITED | WNOWAIT);
    }
    void collect()
    {
        if (pid_ > 0) {
            ::kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
        }
        pid_ = 0;
    }

private:
    pid_t pid_;
};

std::vector<uint64_t> walk()
{
    std::vector<uint64_t> found;
    ProcessSerialNumber number = {0, kNoProcess};
    OSErr error;
    while ((error = GetNextProcess(&number)) == noErr)
        found.push_back(serial(number));
    EXPECT_EQ(error, procNotFound);
    EXPECT_EQ(serial(number), 0u);
    return found;
}

TEST(ProcessManager, NumbersLastAsLongAsTheirProcesses)
{
    ProcessSerialNumber self, again, other;
    ASSERT_EQ(GetCurrentProcess(&self), noErr);
    pid_t pid = 0;
    EXPECT_EQ(GetProcessPID(&self, &pid), noErr);
    EXPECT_EQ(pid, getpid());
    ASSERT_EQ(GetProcessForPID(getpid(), &again), noErr);
    EXPECT_EQ(serial(again), serial(self));
    const ProcessSerialNumber current = {0, kCurrentProcess}, none = {0, kNoProcess},
                              system = {0, kSystemProcess};
    EXPECT_EQ(GetProcessPID(&current, &pid), noErr);
    EXPECT_EQ(pid, getpid());
    Boolean same = false;
    EXPECT_EQ(SameProcess(&self, &current, &same), noErr);
    EXPECT_TRUE(same);
    for (const ProcessSerialNumber &number :
         {none, system, ProcessSerialNumber{0, 0xFFFFFFFF}, ProcessSerialNumber{0xFFFFFFFF, 0xFFFFFFFF}})
        EXPECT_EQ(GetProcessPID(&number, &pid), procNotFound);

    Child child;
    ASSERT_EQ(GetProcessForPID(child.pid(), &other), noErr);
    EXPECT_EQ(SameProcess(&self, &other, &same), noErr);
    EXPECT_FALSE(same);
    EXPECT_EQ(GetProcessPID(&other, &pid), noErr);
    EXPECT_EQ(pid, child.pid());
    // The id lives on for as long as nobody has waited for the child; the process doesn't.
    child.kill();
    EXPECT_EQ(GetProcessPID(&other, &pid), procNotFound);
    EXPECT_EQ(pid, 0);
    EXPECT_EQ(GetProcessForPID(child.pid(), &again), procNotFound);
    child.collect();
    EXPECT_EQ(GetProcessPID(&other, &pid), procNotFound);
    // The same id with another start is another process.
    ProcessSerialNumber earlier = self;
    earlier.highLongOfPSN -= 1;
    EXPECT_EQ(GetProcessPID(&earlier, &pid), procNotFound);
    EXPECT_EQ(GetProcessPID(nullptr, &pid), paramErr);
    EXPECT_EQ(GetProcessForPID(getpid(), nullptr), paramErr);
    EXPECT_EQ(GetProcessForPID(0, &again), procNotFound);
    EXPECT_EQ(GetProcessForPID(-1, &again), procNotFound);
}

TEST(ProcessManager, ThreadsAreNoProcessesAndForksAreOthers)
{
    ProcessSerialNumber number, parent;
    std::thread([&] { EXPECT_EQ(GetProcessForPID(gettid(), &number), procNotFound); }).join();
    ASSERT_EQ(GetCurrentProcess(&parent), noErr);
    const pid_t child = fork();
    if (child == 0) {
        ProcessSerialNumber self;
        pid_t pid = 0;
        _exit(GetCurrentProcess(&self) == noErr && serial(self) != serial(parent) &&
                      GetProcessPID(&self, &pid) == noErr && pid == getpid()
                  ? 0
                  : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
}

TEST(ProcessManager, AWalkMeetsEveryProcessOnceInTheOrderOfTheirStarts)
{
    Child first;
    usleep(20000);  // a tick of the kernel's clock and another
    Child second;
    ProcessSerialNumber numbers[3];
    ASSERT_EQ(GetCurrentProcess(&numbers[0]), noErr);
    ASSERT_EQ(GetProcessForPID(first.pid(), &numbers[1]), noErr);
    ASSERT_EQ(GetProcessForPID(second.pid(), &numbers[2]), noErr);
    for (int round = 0; round < 2; ++round) {  // the second one knows the starts already
        const std::vector<uint64_t> found = walk();
        EXPECT_TRUE(std::is_sorted(found.begin(), found.end(), std::less_equal<>()));
        size_t before = 0;
        for (const ProcessSerialNumber &number : numbers) {
            const auto at = std::find(found.begin(), found.end(), serial(number));
            ASSERT_NE(at, found.end());
            EXPECT_GE(size_t(at - found.begin()), before);
            before = size_t(at - found.begin());
        }
    }
    // From a process that has ended, the walk goes on.
    first.collect();
    ProcessSerialNumber number = numbers[1];
    EXPECT_EQ(GetNextProcess(&number), noErr);
    EXPECT_GT(serial(number), serial(numbers[1]));
    const std::vector<uint64_t> found = walk();
    EXPECT_EQ(std::count(found.begin(), found.end(), serial(numbers[1])), 0);
}

// Between fork and exec a child still executes its parent's program.
TEST(ApplicationsOfScripts, AChildThatIsYetToExecuteIsNoneOfItsParentsName)
{
    const std::string own = std::filesystem::read_symlink("/proc/self/exe");
    const Child child;
    std::vector<pid_t> found;
    for (const ProcessSerialNumber &number : tarvik::osa::applications::running(own)) {
        pid_t pid = 0;
        if (GetProcessPID(&number, &pid) == noErr)
            found.push_back(pid);
    }
    ASSERT_FALSE(found.empty());
    EXPECT_EQ(found.front(), getpid()) << "it means itself";
    EXPECT_EQ(std::count(found.begin(), found.end(), child.pid()), 0);
}

}  // namespace
