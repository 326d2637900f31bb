#include "../support/Categories.h"

#include <gtest/gtest.h>

// Replaced on purpose: the source says what was wrong.
TEST(Categories, NoneReplacesAMethodOfAppKit)
{
    const std::set<std::string> repairs = {
        "-[NSWorkspace unmountAndEjectDeviceAtPath:]", "-[NSWindow windowRef]",
        "-[NSWindow initWithWindowRef:]", "-[NSWindow sendEvent:]",
        "-[NSApplication beginSheet:modalForWindow:modalDelegate:didEndSelector:contextInfo:]",
        "-[NSApplication endSheet:]", "-[NSApplication endSheet:returnCode:]",
        "-[NSApplication stopModalWithCode:]", "-[NSApplication terminate:]",
        "-[NSAlert beginSheetModalForWindow:modalDelegate:didEndSelector:contextInfo:]",
        "-[NSWorkspace openFile:]", "-[NSWorkspace openURL:]", "-[NSWorkspace iconForFiles:]",
        "-[NSWorkspace selectFile:inFileViewerRootedAtPath:]", "+[NSMenu load]",
        "+[NSPrintInfo sharedPrintInfo]", "-[NSTableView _numRows]",
        // ours on every object; classes that write to a pasteboard have their own
        "-[NSObject pasteboardPropertyListForType:]"};
    EXPECT_EQ(methodsReplacedBy("libtarvik-ui.so"), repairs);
}
