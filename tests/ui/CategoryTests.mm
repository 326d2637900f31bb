#include "../support/Categories.h"

#include <gtest/gtest.h>

// Replaced on purpose: the source says what was wrong.
TEST(Categories, NoneReplacesAMethodOfAppKit)
{
    const std::set<std::string> repairs = {"-[NSWorkspace unmountAndEjectDeviceAtPath:]", "-[NSWindow windowRef]",
                                           "-[NSWindow initWithWindowRef:]"};
    EXPECT_EQ(methodsReplacedBy("libtarvik-ui.so"), repairs);
}
