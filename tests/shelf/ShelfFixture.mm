#include "ShelfFixture.h"

#import <GNUstepGUI/GSDisplayServer.h>
#import <Tarvik/support/ArrayRange.h>
#include <apps/Shelf/Style.h>
#include <tests/support/Program.h>

void ShelfApplication::SetUp()
{
    shelf::registerStyle();
    CDSAUtilityBase::cssmStartup();
    [NSApplication sharedApplication];
    open();
}

void ShelfApplication::TearDown() { close(); }

void ShelfApplication::open()
{
    shelf_ = [[ShelfController alloc] init];
    [NSApp setDelegate:(id)shelf_];
    if (!std::exchange(isLaunched_, true))
        [NSApp finishLaunching];
    [shelf_ show];
    ASSERT_TRUE(eventually([this] { return [shelf_->mWindow isVisible] && !shelf_->mIsSurveying; }));
}

void ShelfApplication::close()
{
    [(id)shelf_ applicationWillTerminate:nil];
    EXPECT_TRUE(idle());
    [NSApp setDelegate:nil];
    [shelf_ release];
    shelf_ = nil;
}

namespace {

std::string numberOnDisplay(NSWindow *window)
{
    return std::to_string(
        reinterpret_cast<uintptr_t>([GSCurrentServer() windowDevice:int([window windowNumber])]));
}

/// Whether the application and the display agree that it gets what is typed.
bool hasKeyboard(NSWindow *window)
{
    if (![NSApp isActive] || [NSApp keyWindow] != window)
        return false;
    return runProgram({"xdotool", "getwindowfocus", "-f"}).out == numberOnDisplay(window) + "\n";
}

}  // namespace

bool ShelfApplication::toFront()
{
    [NSApp activateIgnoringOtherApps:YES];
    [shelf_->mWindow makeKeyAndOrderFront:nil];
    return eventually([=, this] { return hasKeyboard(shelf_->mWindow); });
}

bool ShelfApplication::drive(const std::string &words, const std::function<bool()> &condition)
{
    const Hand hand(words);
    return eventually(condition);
}

NSWindow *ShelfApplication::sheet()
{
    NSWindow *found = nil;
    eventually([&] {
        return (found = [shelf_->mWindow attachedSheet]) != nil && [found isVisible] && hasKeyboard(found);
    });
    return found;
}

bool ShelfApplication::isWhole(NSWindow *window)
{
    const NSSize size = [[window contentView] frame].size;
    const std::string expected =
        "Geometry: " + std::to_string(int(size.width)) + "x" + std::to_string(int(size.height)) + "\n";
    return runProgram({"xdotool", "getwindowgeometry", numberOnDisplay(window)}).out.ends_with(expected);
}

NSView *ShelfApplication::find(NSView *view, const std::function<bool(NSView *)> &isIt)
{
    if (isIt(view))
        return view;
    for (NSView *each : tarvik::each<NSView>([view subviews])) {
        if (NSView *found = find(each, isIt))
            return found;
    }
    return nil;
}

std::string ShelfApplication::texts(NSView *view)
{
    std::string said;
    find(view, [&](NSView *each) {
        if ([each isKindOfClass:[NSButton class]])
            said += str([(NSButton *)each title]) + "\n";
        else if ([each isKindOfClass:[NSTextField class]])
            said += str([(NSTextField *)each stringValue]) + "\n";
        return false;
    });
    return said;
}

bool ShelfApplication::idle()
{
    return eventually([this] { return [shelf_->mJobs count] == 0 && !shelf_->mIsSurveying; });
}

std::string ShelfApplication::add(const std::string &name)
{
    const std::string file = folder_.write(name, "image " + name);
    [shelf_ addPaths:[NSArray arrayWithObject:ns(file)] atIndex:1000];
    return file;
}

void ShelfApplication::select(std::initializer_list<int> rows)
{
    NSMutableIndexSet *set = [NSMutableIndexSet indexSet];
    for (int row : rows)
        [set addIndex:NSUInteger(row)];
    [shelf_->mWindow->mTable selectRowIndexes:set byExtendingSelection:NO];
}

std::string ShelfApplication::names() const
{
    std::string all;
    for (id row : tarvik::each<NSObject>([shelf_->mRows datasourceArray]))
        all += str(shelf::text(row, shelf::kName));
    return all;
}

std::string ShelfApplication::cell(int row, NSString *key)
{
    NSTableColumn *column = [shelf_->mWindow->mTable tableColumnWithIdentifier:key];
    return str([[shelf_->mRows tableView:shelf_->mWindow->mTable objectValueForTableColumn:column
                                     row:row] description]);
}
