#import <AppKit/NSTableColumn.h>
#import <Foundation/NSIndexSet.h>
#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/ui/NSTableView+Selection.h>
#import <Tarvik/ui/NSView+Geometry.h>

#include <algorithm>

@implementation NSTableView (AppKitX)

- (NSInteger)mouseOverRow
{
    return [self rowAtPoint:[self mouseLocation]];
}

- (NSInteger)topSelectedRow
{
    NSIndexSet *rows = [self selectedRowIndexes];
    const NSUInteger first = [rows firstIndex];
    return [rows count] && first < NSUInteger([self numberOfRows]) ? NSInteger(first) : -1;
}

- (NSInteger)bottomSelectedRow
{
    NSIndexSet *rows = [self selectedRowIndexes];
    NSInteger last = [rows count] ? std::min(NSInteger([rows lastIndex]), [self numberOfRows] - 1) : -1;
    while (
        last > 0 &&
        ![rows containsIndex:NSUInteger(last)])  // rows that went, but were not told of, are still selected
        --last;
    return last > 0 ? last : -1;
}

- (void)selectRow:(NSInteger)row asExtending:(BOOL)extend andEdit:(BOOL)edit
{
    const NSInteger count = [self numberOfRows];
    if (count <= 0)
        return;
    row = std::clamp<NSInteger>(row, 0, count - 1);
    extend = extend && [self allowsMultipleSelection];  // extending raises where only one may be selected
    if ([self respondsToSelector:@selector(selectRowIndexes:byExtendingSelection:)])
        [self selectRowIndexes:[NSIndexSet indexSetWithIndex:NSUInteger(row)] byExtendingSelection:extend];
    else
        [self selectRow:row byExtendingSelection:extend];
    [self scrollRowToVisible:row];
    if (!edit || ![self isRowSelected:row])  // editing a row that is not selected raises
        return;
    bool opened = false;
    NSInteger index = 0;
    for (NSTableColumn *column : tarvik::each<NSTableColumn>([self tableColumns])) {
        if ([column isEditable]) {
            if (opened)
                [self abortEditing];
            [self editColumn:index row:row withEvent:nil select:YES];
            opened = true;
        }
        ++index;
    }
}

@end
