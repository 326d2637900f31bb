// main of every test binary: a pool around each test.
#import <Foundation/Foundation.h>
#import <Tarvik/support/Pool.h>
#include <gtest/gtest.h>

#include <memory>

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

}  // namespace

int main(int argc, char **argv)
{
    testing::InitGoogleTest(&argc, argv);
    if (!testing::GTEST_FLAG(list_tests))
        warmUp();
    testing::UnitTest::GetInstance()->listeners().Append(new PoolAroundEachTest);
    return RUN_ALL_TESTS();
}
