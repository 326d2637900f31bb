// main of every test binary: a pool around each test, and what the sanitizers are to overlook.
#include <gtest/gtest.h>
#import <Foundation/Foundation.h>
#import <Tarvik/support/Pool.h>

#include <memory>

extern "C" {
// What the Objective-C runtime keeps for its classes is no leak. (Set here and not in the environment, as the tests
// are also run by hand.) Weak: a program with other needs brings its own.
__attribute__((weak)) const char *__asan_default_options() { return "fast_unwind_on_malloc=0:detect_stack_use_after_return=0"; }
__attribute__((weak)) const char *__lsan_default_options() { return "print_suppressions=0"; }
__attribute__((weak)) const char *__lsan_default_suppressions() { return "leak:libobjc.so\n"; }
#ifdef __SANITIZE_ADDRESS__
void __lsan_disable();
void __lsan_enable();
#endif
}

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
