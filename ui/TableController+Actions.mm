#import <AppKit/AppKit.h>
#import <Tarvik/ui/NSTableView+Selection.h>
#import <Tarvik/ui/TableController.h>

#include "ui/private/TableRows.h"

NSInteger DatasourceRowCompare(id row, id other, void *controller)
{
    auto *const of = static_cast<TableController *>(controller);
    return [[of delegate] tableController:of compareRows:row with:other];
}

namespace {

/// The same where some of the rows are none: those come last.
NSInteger compareAmongOthers(id row, id other, void *controller)
{
    const bool isRow = tarvik::isRow(row), isOther = tarvik::isRow(other);
    if (isRow && isOther)
        return DatasourceRowCompare(row, other, controller);
    return isRow == isOther ? NSOrderedSame : isRow ? NSOrderedAscending : NSOrderedDescending;
}

void sort(NSMutableArray *rows, TableController *controller)
{
    const NSUInteger count = [rows count];
    NSUInteger checked = 0;
    while (checked < count && tarvik::isRow([rows objectAtIndex:checked]))
        ++checked;
    [rows sortUsingFunction:checked == count ? DatasourceRowCompare : compareAmongOthers context:controller];
}

}  // namespace

@implementation TableController (Actions)

- (void)addNewRow:(id)sender
{
    (void)sender;
    [self endEditing];
    const int32_t index = [self insertIndexToAdd];
    NSMutableDictionary *row = [self initialRowDatasourceForIndex:index];
    if (row && mDatasourceArray) {
        [mDatasourceArray insertObject:row atIndex:NSUInteger(index)];
        [vTableView noteNumberOfRowsChanged];
        [vTableView selectRow:index asExtending:NO andEdit:YES];
    }
    [vTableView noteNumberOfRowsChanged];
}

- (void)delete:(id)sender
{
    if (![mDelegate respondsToSelector:@selector(tableController:delete:)])
        return;
    [mDelegate tableController:self delete:sender];
    [self deleteSelectedRowAfter:0];
    [self noteRowsChanged];
}

- (void)deleteForward:(id)sender
{
    [self delete:sender];
}
- (void)deleteBackward:(id)sender
{
    [self delete:sender];
}

- (void)cut:(id)sender
{
    [self copy:sender];
    [self delete:sender];
}

- (void)copy:(id)sender
{
    if ([mDelegate respondsToSelector:@selector(tableController:copy:)])
        [mDelegate tableController:self copy:sender];
}

- (void)paste:(id)sender
{
    if ([mDelegate respondsToSelector:@selector(tableController:paste:)])
        [self addDatasourceArray:[mDelegate tableController:self paste:sender]];
}

- (void)sortAll:(id)sender
{
    (void)sender;
    if (![mDelegate respondsToSelector:@selector(tableController:compareRows:with:)])
        return;
    [self endEditing];
    sort(mDatasourceArray, self);
    [self noteRowsChanged];
}

- (void)sortSelection:(id)sender
{
    (void)sender;
    if (![mDelegate respondsToSelector:@selector(tableController:compareRows:with:)])
        return;
    [self endEditing];
    NSMutableArray *rows = [self selectedDatasourceArray];
    if (!rows)
        return;
    sort(rows, self);
    [self replaceSelectionWithDatasourceArray:rows];
}

@end
