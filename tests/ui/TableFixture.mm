#import "tests/ui/TableFixture.h"

#include <cctype>

@implementation TableDelegate
- (BOOL)respondsToSelector:(SEL)selector
{
    const std::string name = sel_getName(selector);
    const bool isOfTable = name.starts_with("tableController:") || name.starts_with("tableView:");
    return isOfTable ? mCan.count(name) > 0 : [super respondsToSelector:selector];
}
- (NSMutableDictionary *)tableController:(TableController *)controller makeInitialRowForIndex:(int32_t)index
{
    (void)controller;
    return [NSMutableDictionary dictionaryWithObject:[NSString stringWithFormat:@"%d", index] forKey:@"name"];
}
- (NSComparisonResult)tableController:(TableController *)controller
                          compareRows:(NSDictionary *)row
                                 with:(NSDictionary *)other
{
    (void)controller;
    return [[row objectForKey:@"name"] compare:[other objectForKey:@"name"]];
}
- (id)tableController:(TableController *)controller
    convertVisibleValue:(id)value
    forColumnIdentifier:(id)identifier
                    row:(int32_t)row
{
    (void)controller, (void)identifier, (void)row;
    return mShow(value);
}
- (id)tableController:(TableController *)controller
    convertSetEditedValue:(id)value
      forColumnIdentifier:(id)identifier
                      row:(int32_t)row
{
    (void)controller, (void)identifier;
    mCallOrder += std::to_string(row);
    return mStore(value);
}
- (void)tableController:(TableController *)controller copy:(id)sender
{
    (void)controller, (void)sender, ++mCopies;
}
- (NSArray *)tableController:(TableController *)controller paste:(id)sender
{
    return (void)controller, (void)sender, mPasted;
}
- (void)tableController:(TableController *)controller delete:(id)sender
{
    (void)controller, (void)sender, ++mDeletes;
}
- (BOOL)tableController:(TableController *)controller enumerateRows:(NSMutableDictionary *)row
{
    (void)controller, (void)row;
    return ++mEnumerated < 2;
}
- (BOOL)tableController:(TableController *)controller enumerateSelectedRows:(NSMutableDictionary *)row
{
    (void)controller, (void)row;
    return ++mEnumerated < 100;
}
- (void)tableViewSelectionDidChange:(NSNotification *)notification
{
    (void)notification, ++mSelectionChanges;
}
- (BOOL)tableView:(NSTableView *)table
    writeRowsWithIndexes:(NSIndexSet *)rows
            toPasteboard:(NSPasteboard *)pasteboard
{
    (void)table, (void)rows;
    [pasteboard declareTypes:[NSArray arrayWithObject:@"test.rows"] owner:nil];
    return [pasteboard setData:[(TableController *)[table dataSource] selectedRowArray] forType:@"test.rows"];
}
- (BOOL)tableView:(NSTableView *)table writeRows:(NSArray *)rows toPasteboard:(NSPasteboard *)pasteboard
{
    return (void)table, (void)rows, (void)pasteboard, NO;
}
- (NSDragOperation)tableView:(NSTableView *)table
                validateDrop:(id<NSDraggingInfo>)info
                 proposedRow:(NSInteger)row
       proposedDropOperation:(NSTableViewDropOperation)operation
{
    (void)info, (void)operation;
    [table setDropRow:row dropOperation:NSTableViewDropAbove];
    return NSDragOperationCopy;
}
- (BOOL)tableView:(NSTableView *)table
       acceptDrop:(id<NSDraggingInfo>)info
              row:(NSInteger)row
    dropOperation:(NSTableViewDropOperation)operation
{
    (void)operation;
    [(TableController *)[table dataSource] moveRows:[[info draggingPasteboard] dataForType:@"test.rows"]
                                                 to:int32_t(row)];
    return YES;
}
@end

void TableTest::SetUp()
{
    [NSApplication sharedApplication];
    window_ = [[NSWindow alloc] initWithContentRect:NSMakeRect(200, 300, 300, 200)
                                          styleMask:NSTitledWindowMask
                                            backing:NSBackingStoreBuffered
                                              defer:NO];
    [window_ setReleasedWhenClosed:NO];
    table_ = [[[TableView alloc] initWithFrame:NSMakeRect(0, 0, 300, 200)] autorelease];
    column_ = [[[NSTableColumn alloc] initWithIdentifier:@"name"] autorelease];
    [column_ setEditable:YES];
    [column_ setWidth:200];
    [table_ addTableColumn:column_];
    [table_ setHeaderView:nil];
    [table_ setAllowsMultipleSelection:YES];
    NSScrollView *scroller =
        [[[NSScrollView alloc] initWithFrame:[[window_ contentView] bounds]] autorelease];
    [scroller setDocumentView:table_];
    [[window_ contentView] addSubview:scroller];
    delegate_ = [[TableDelegate alloc] init];
    controller_ = [[TableController alloc] initWithTableView:table_];
    [controller_ setDelegate:delegate_];
    [controller_ setAutosetWindowEdited:YES];
    [window_ makeKeyAndOrderFront:nil];
    [window_ makeFirstResponder:table_];
}

void TableTest::TearDown()
{
    [controller_ release];
    [window_ close];
    [window_ release];
    [delegate_ release];
}

NSMutableArray *TableTest::values(const std::string &letters) const
{
    NSMutableArray *all = [NSMutableArray array];
    for (const char letter : letters)
        [all addObject:tarvik::nsstring(std::string(1, letter))];
    return all;
}

NSMutableArray *TableTest::made(const std::string &letters) const
{
    NSMutableArray *all = [NSMutableArray array];
    for (NSString *value : tarvik::each<NSString>(values(letters)))
        [all addObject:[NSMutableDictionary dictionaryWithObject:value forKey:@"name"]];
    return all;
}

void TableTest::rows(const std::string &letters)
{
    std::string small;
    NSMutableIndexSet *selected = [NSMutableIndexSet indexSet];
    for (const char letter : letters) {
        if (isupper(letter))
            [selected addIndex:small.size()];
        small += char(tolower(letter));
    }
    [controller_ setDatasourceArray:made(small)];
    [table_ selectRowIndexes:selected byExtendingSelection:NO];
    marked();
}

std::string TableTest::rows() const
{
    std::string letters;
    for (NSDictionary *row : tarvik::each<NSDictionary>([controller_ datasourceArray])) {
        const char letter = (*tarvik::utf8([row objectForKey:@"name"]))[0];
        letters += char([table_ isRowSelected:NSInteger(letters.size())] ? toupper(letter) : letter);
    }
    EXPECT_EQ(size_t([table_ numberOfRows]), letters.size());
    return letters;
}

bool TableTest::marked()
{
    const bool was = [window_ isDocumentEdited];
    [window_ setDocumentEdited:NO];
    return was;
}

bool TableTest::turnUntil(const std::function<bool()> &condition)
{
    NSDate *end = [NSDate dateWithTimeIntervalSinceNow:5];
    while (!condition() && [end timeIntervalSinceNow] > 0) {
        NSEvent *event = [NSApp nextEventMatchingMask:NSAnyEventMask
                                            untilDate:[NSDate dateWithTimeIntervalSinceNow:0.02]
                                               inMode:NSDefaultRunLoopMode
                                              dequeue:YES];
        if (event)
            [NSApp sendEvent:event];
    }
    return condition();
}

bool TableTest::comesToFront()
{
    [NSApp finishLaunching];
    [NSApp activateIgnoringOtherApps:YES];
    [window_ makeKeyAndOrderFront:nil];
    return turnUntil([&] { return [NSApp isActive] && [NSApp keyWindow] == window_; });
}
