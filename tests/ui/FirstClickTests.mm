// The first click of a process.
#include <gtest/gtest.h>
#include <tests/ui/Desktop.h>

#include <cstdio>
#include <unistd.h>

// Press and release come in one go, and the press has the display's side start a daemon before it is handed on.
TEST(FirstClick, IsOneWhoeverIsAskedMeanwhile)
{
    [NSApplication sharedApplication];
    [NSApp finishLaunching];
    const TestWindow window;
    NSButton *button = window.add([[[NSButton alloc] initWithFrame:NSMakeRect(20, 20, 100, 40)] autorelease]);
    [button setButtonType:NSPushOnPushOffButton];
    window.show();
    Hand("mousemove " + middleOf(button) + " sleep 0.1");
    eventually([] { return [NSApp isActive]; });
    Hand("mousedown 1 mouseup 1");  // has done both when it returns
    later(20, [] {
        std::fputs("the release came before its press\n", stderr);
        _exit(1);  // from within the button's wait
    });
    EXPECT_TRUE(eventually([&] { return [button state] == NSOnState; }));
}
