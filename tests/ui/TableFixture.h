// A table in a window, driven by a controller whose rows are letters: their value in the column "name".
#pragma once
#import <AppKit/AppKit.h>
#import <Tarvik/TarvikUI.h>
#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/support/Bridge.h>
#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <string>

/// Implements what is named in `mCan`.
@interface TableDelegate : NSObject {
@public
    std::set<std::string> mCan;
    id (*mShow)(id value);
    id (*mStore)(id value);
    NSArray *mPasted;  // not retained
    int mCopies, mDeletes, mEnumerated, mSelectionChanges;
    std::string mCallOrder;
}
@end

class TableTest : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    /// Sets the rows: one for each letter; capital letters are selected.
    void rows(const std::string &letters);
    /// The rows as they stand, likewise.
    std::string rows() const;
    /// One row for each letter.
    NSMutableArray *made(const std::string &letters) const;
    /// The letters themselves.
    NSMutableArray *values(const std::string &letters) const;
    /// Whether the window was marked as edited since the last time.
    bool marked();
    /// Lets the application handle its events until the condition holds; false after a few seconds.
    bool turnUntil(const std::function<bool()> &condition);

    /// Makes the window the one that keys and menus go to; false when it does not become that.
    bool comesToFront();

    NSWindow *window_ = nil;
    TableView *table_ = nil;
    NSTableColumn *column_ = nil;
    TableDelegate *delegate_ = nil;
    TableController *controller_ = nil;
};
