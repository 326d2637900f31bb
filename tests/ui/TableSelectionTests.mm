#import <AppKit/AppKit.h>
#import <Tarvik/TarvikUI.h>
#include <gtest/gtest.h>
#include <tests/ui/Desktop.h>

@interface PlainRows : NSObject {
@public
    int mRows, mStored;
}
@end
@implementation PlainRows
- (NSInteger)numberOfRowsInTableView:(NSTableView *)table
{
    return (void)table, mRows;
}
- (id)tableView:(NSTableView *)table objectValueForTableColumn:(NSTableColumn *)column row:(NSInteger)row
{
    (void)table;
    return [NSString stringWithFormat:@"%@%d", [column identifier], int(row)];
}
- (void)tableView:(NSTableView *)table
    setObjectValue:(id)value
    forTableColumn:(NSTableColumn *)column
               row:(NSInteger)row
{
    (void)table, (void)value, (void)column, (void)row;
    ++mStored;
}
@end

namespace {

class TableSelection : public testing::Test {
protected:
    void SetUp() override
    {
        rows_ = [[PlainRows alloc] init];
        rows_->mRows = 5;
        table_ = [[[NSTableView alloc] initWithFrame:NSMakeRect(0, 0, 300, 200)] autorelease];
        for (NSString *name : {@"fixed", @"one", @"two"}) {
            NSTableColumn *column = [[[NSTableColumn alloc] initWithIdentifier:name] autorelease];
            [column setEditable:![name isEqual:@"fixed"]];
            [table_ addTableColumn:column];
        }
        [table_ setAllowsMultipleSelection:YES];
        [table_ setHeaderView:nil];
        [table_ setDataSource:rows_];
        [table_ setDelegate:rows_];
        NSScrollView *scroller =
            window_.add([[[NSScrollView alloc] initWithFrame:NSMakeRect(0, 0, 300, 200)] autorelease]);
        [scroller setDocumentView:table_];
        window_.show();
    }
    void TearDown() override
    {
        [table_ setDataSource:nil];
        [table_ setDelegate:nil];
        [rows_ release];
    }
    const TestWindow window_;
    PlainRows *rows_ = nil;
    NSTableView *table_ = nil;
};

TEST_F(TableSelection, ItsTopAndBottom)
{
    [table_ deselectAll:nil];
    EXPECT_EQ([table_ topSelectedRow], -1);
    EXPECT_EQ([table_ bottomSelectedRow], -1);
    [table_ selectRow:0 asExtending:NO andEdit:NO];
    EXPECT_EQ([table_ topSelectedRow], 0);
    EXPECT_EQ([table_ bottomSelectedRow], -1);  // row 0 is never the bottom one
    [table_ selectRow:3 asExtending:YES andEdit:NO];
    EXPECT_EQ([table_ topSelectedRow], 0);
    EXPECT_EQ([table_ bottomSelectedRow], 3);
    rows_->mRows = 2;  // not told to the table yet
    EXPECT_EQ([table_ bottomSelectedRow], -1);
}

TEST_F(TableSelection, ARowOutsideMeansTheNearest)
{
    [table_ selectRow:99 asExtending:NO andEdit:NO];
    EXPECT_EQ([table_ selectedRow], 4);
    [table_ selectRow:-3 asExtending:NO andEdit:NO];
    EXPECT_EQ([table_ selectedRow], 0);
    EXPECT_EQ([table_ numberOfSelectedRows], 1);
    rows_->mRows = 0;
    [table_ reloadData];
    [table_ selectRow:0 asExtending:NO andEdit:YES];
    EXPECT_EQ([table_ selectedRow], -1);
}

TEST_F(TableSelection, IsScrolledTo)
{
    rows_->mRows = 1000;
    [table_ reloadData];
    [table_ selectRow:700 asExtending:NO andEdit:NO];
    EXPECT_TRUE(NSLocationInRange(700, [table_ rowsInRect:[table_ visibleRect]]));
}

TEST_F(TableSelection, EditsColumnByColumnAndStoresNothing)
{
    [table_ selectRow:2 asExtending:NO andEdit:YES];
    EXPECT_EQ([table_ editedRow], 2);
    EXPECT_EQ([table_ editedColumn], 2);
    EXPECT_EQ(rows_->mStored, 0);
    NSText *editor = (NSText *)[window_.get() firstResponder];
    ASSERT_TRUE([editor isKindOfClass:[NSText class]]);
    EXPECT_STREQ([[editor string] UTF8String], "two2");
    EXPECT_EQ([editor selectedRange].length, 4u);
    [table_ abortEditing];
    EXPECT_EQ(rows_->mStored, 0);
    [table_ setAllowsMultipleSelection:NO];
    [table_ selectRow:3 asExtending:YES andEdit:YES];
    EXPECT_EQ([table_ editedRow], 3);
    EXPECT_EQ([table_ numberOfSelectedRows], 1);
}

TEST_F(TableSelection, TheRowUnderTheMouse)
{
    {
        const Hand hand("mousemove " + onScreen(table_, NSMakePoint(20, NSMidY([table_ rectOfRow:1]))));
    }
    EXPECT_EQ([table_ mouseOverRow], 1);
    {
        const Hand hand("mousemove 1 1");
    }
    EXPECT_EQ([table_ mouseOverRow], -1);
}

}  // namespace
