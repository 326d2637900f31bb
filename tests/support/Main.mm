// main of every test binary: a pool around each test.
#import <Foundation/Foundation.h>
#import <Tarvik/support/Pool.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <thread>

#ifdef __SANITIZE_ADDRESS__
extern "C" {
void __lsan_disable();
void __lsan_enable();
}
#endif

namespace {

class PoolAroundEachTest : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo &) override { pool_ = std::make_unique<tarvik::Pool>(); }
    void OnTestEnd(const testing::TestInfo &) override { pool_.reset(); }
    std::unique_ptr<tarvik::Pool> pool_;
};

// The first use of the user defaults keeps 62 bytes for good.
void warmUp()
{
    tarvik::Pool pool;
#ifdef __SANITIZE_ADDRESS__
    __lsan_disable();
#endif
    [NSUserDefaults standardUserDefaults];
#ifdef __SANITIZE_ADDRESS__
    __lsan_enable();
#endif
}

#ifdef __SANITIZE_ADDRESS__
// A thread whose work is done may be just ending. What it holds then would be found as a leak.
void letThreadsEnd()
{
    using namespace std;
    for (int tries = 0; tries < 50; ++tries) {
        const filesystem::directory_iterator threads("/proc/self/task");
        if (distance(begin(threads), end(threads)) == 1)
            return;
        this_thread::sleep_for(10ms);
    }
}
#endif

}  // namespace

int main(int argc, char **argv)
{
    testing::InitGoogleTest(&argc, argv);
    if (!testing::GTEST_FLAG(list_tests))
        warmUp();
    testing::UnitTest::GetInstance()->listeners().Append(new PoolAroundEachTest);
    const int result = RUN_ALL_TESTS();
#ifdef __SANITIZE_ADDRESS__
    letThreadsEnd();
#endif
    return result;
}
