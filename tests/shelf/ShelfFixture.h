// The application's own objects in a window on the display, for tests that look at them and drive them.
#pragma once
#import <Tarvik/support/Bridge.h>
#include <apps/Shelf/ShelfController.h>
#include <gtest/gtest.h>
#include <tests/support/TemporaryFolder.h>
#include <tests/ui/Desktop.h>

#include <initializer_list>
#include <string>

inline NSString *ns(const std::string &text) { return tarvik::nsstring(text); }
inline std::string str(NSString *text) { return tarvik::utf8(text).value_or("(nil)"); }

class ShelfApplication : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    /// Shelf as it is launched, and as it ends.
    void open();
    void close();
    /// Has the window get what is typed.
    bool toFront();
    /// The hand does it, and sooner or later the condition holds.
    bool drive(const std::string &words, const std::function<bool()> &condition);
    /// The sheet over the window, when it is there, shown and in front.
    NSWindow *sheet();
    /// Whether the display has the window as large as its content is, without the window manager's frame.
    static bool isWhole(NSWindow *window);
    /// What the sheet's texts say, those of its fields and buttons.
    static std::string texts(NSView *view);
    static NSView *find(NSView *view, const std::function<bool(NSView *)> &isIt);
    /// No job runs, and what the system says is known.
    bool idle();

    std::string add(const std::string &name);  ///< a new file at the end of the table; its path
    void select(std::initializer_list<int> rows);
    std::string names() const;
    std::string cell(int row, NSString *key);
    NSRect rowOnTable(int row) const { return [shelf_->mWindow->mTable rectOfRow:row]; }

    TemporaryFolder folder_;
    ShelfController *shelf_ = nil;

private:
    bool isLaunched_ = false;
};
