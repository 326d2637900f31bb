#import <AppKit/AppKit.h>
#import <Tarvik/core/Guard.h>
#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/support/Pool.h>
#import <Tarvik/text/NSArray+Collections.h>
#import <Tarvik/ui/NSTableView+Selection.h>
#import <Tarvik/ui/TableController.h>

#include "ui/private/SelectedRows.h"
#include "ui/private/TableRows.h"

#include <algorithm>
#include <vector>

namespace {

/// Removes the objects at ascending indexes in one pass.
void removeObjects(NSMutableArray *array, const std::vector<NSUInteger> &indexes)
{
    if (indexes.empty())
        return;
    const NSUInteger first = indexes.front(), count = [array count];
    auto kept = tarvik::adopt([[NSMutableArray alloc] initWithCapacity:count - first]);
    auto next = indexes.begin();
    for (NSUInteger i = first; i < count; ++i) {
        if (next != indexes.end() && *next == i)
            ++next;
        else
            [kept.get() addObject:[array objectAtIndex:i]];
    }
    [array replaceObjectsInRange:NSMakeRange(first, count - first) withObjectsFromArray:kept.get()];
}

}  // namespace

@implementation TableController (Rows)

- (NSMutableArray *)datasourceArray
{
    return mDatasourceArray;
}

- (NSMutableArray *)selectedDatasourceArray
{
    NSMutableArray *rows = [NSMutableArray array];
    for (const NSUInteger row : tarvik::selectedRows(vTableView, 0, [mDatasourceArray count]))
        [rows addObject:[mDatasourceArray objectAtIndex:row]];
    return rows;
}

- (NSMutableData *)selectedRowArray
{
    const auto selected = tarvik::selectedRows(vTableView, 0, [mDatasourceArray count]);
    const std::vector<uint32_t> numbers(selected.begin(), selected.end());
    return [NSMutableData dataWithBytes:numbers.data() length:numbers.size() * sizeof(uint32_t)];
}

- (int32_t)insertIndexToAdd
{
    const NSInteger selected = vTableView ? [vTableView selectedRow] : -1;
    return selected >= 0 && NSUInteger(selected) < [mDatasourceArray count] ? int32_t(selected) + 1 : 0;
}

- (int32_t)insertIndexToReplace
{
    return std::max(int32_t([vTableView topSelectedRow]), 0);
}

- (NSMutableDictionary *)initialRowDatasourceForIndex:(int32_t)index
{
    NSMutableDictionary *row = nil;
    if ([mDelegate respondsToSelector:@selector(tableController:makeInitialRowForIndex:)])
        row = [mDelegate tableController:self makeInitialRowForIndex:index];
    return row ? row : [NSMutableDictionary dictionary];
}

- (void)emptyDatasourceArray
{
    if ([mDatasourceArray count] == 0)
        return;
    [vTableView deselectAll:self];
    [mDatasourceArray removeAllObjects];
    [self noteRowsChanged];
}

- (void)insertDatasourceArray:(NSArray *)rows atIndex:(int32_t)index
{
    if (!rows)
        return;
    [self endEditing];
    const auto place = std::min<NSUInteger>(NSUInteger(std::max(index, 0)), [mDatasourceArray count]);
    const NSUInteger more = [rows count];
    [mDatasourceArray insertObjectsFromArray:rows atIndex:uint32_t(place)];
    if (!mDontDeselectTemporary)
        [vTableView deselectAll:self];
    [vTableView noteNumberOfRowsChanged];
    const NSUInteger end = std::min(place + more, NSUInteger([vTableView numberOfRows]));
    if (place < end)
        tarvik::selectRows(vTableView, uint32_t(place), uint32_t(end - 1));
    [self noteRowsChanged];
}

- (void)setDatasourceArray:(NSArray *)rows
{
    const auto kept = tarvik::adopt([rows copy]);  // they may be the rows themselves
    [self emptyDatasourceArray];
    [self insertDatasourceArray:kept.get() atIndex:0];
}

- (void)addDatasourceArray:(NSArray *)rows
{
    [self insertDatasourceArray:rows atIndex:[self insertIndexToAdd]];
}

- (void)replaceSelectionWithDatasourceArray:(NSArray *)rows
{
    tarvik::guarded("-[TableController replaceSelectionWithDatasourceArray:]", __LINE__, [&] {
        [self endEditing];
        NSUInteger j = 0;
        tarvik::SelectedRows selected(self->vTableView);
        for (NSUInteger k = 0; k < [rows count]; ++k) {
            j = selected.next(j, [self->mDatasourceArray count]);
            if (j < [self->mDatasourceArray count]) {
                [self->mDatasourceArray replaceObjectAtIndex:j++ withObject:[rows objectAtIndex:k]];
                continue;
            }
            self->mDontDeselectTemporary = YES;
            [self addDatasourceArray:[rows subarrayWithRange:NSMakeRange(k, [rows count] - k)]];
            selected.look();
        }
        if (j < [self->mDatasourceArray count])
            [self deleteSelectedRowAfter:int32_t(j)];
    });
    [self noteRowsChanged];
    mDontDeselectTemporary = NO;
}

- (void)deleteSelectedRowAfter:(int32_t)first
{
    const NSUInteger count = [mDatasourceArray count];
    if (first < 0 || NSUInteger(first) >= count)
        return;
    [self endEditing];
    auto doomed = tarvik::selectedRows(vTableView, NSUInteger(first), count);
    if (NSInteger(doomed.size()) == [vTableView numberOfSelectedRows])
        [vTableView selectRowIndexes:[NSIndexSet indexSet] byExtendingSelection:NO];
    else
        for (auto row = doomed.rbegin(); row != doomed.rend(); ++row)
            [vTableView deselectRow:NSInteger(*row)];
    // Whoever watches the selection may have changed the rows.
    doomed.erase(std::lower_bound(doomed.begin(), doomed.end(), [mDatasourceArray count]), doomed.end());
    removeObjects(mDatasourceArray, doomed);
}

- (void)moveRows:(NSData *)rows to:(int32_t)destination
{
    tarvik::guarded("-[TableController moveRows:to:]", __LINE__, [&] {
        [self endEditing];
        const auto count = uint32_t([rows length] / sizeof(uint32_t));
        NSData *list = [NSData dataWithBytes:[rows bytes] length:count * sizeof(uint32_t)];
        const uint32_t place = [self->mDatasourceArray moveObjects:list toIndex:uint32_t(destination)];
        [self->vTableView deselectAll:self];
        if (place != kTarvikNotFound)
            tarvik::selectRows(self->vTableView, place, place + count - 1);
    });
    [self noteRowsChanged];
}

- (void)enumerateRows
{
    if (![mDelegate respondsToSelector:@selector(tableController:enumerateRows:)])
        return;
    for (NSUInteger i = 0; i < [mDatasourceArray count]; ++i) {
        id row = [mDatasourceArray objectAtIndex:i];
        if (tarvik::isRow(row) && ![mDelegate tableController:self enumerateRows:row])
            return;
    }
}

- (void)enumerateSelectedRows
{
    if (![mDelegate respondsToSelector:@selector(tableController:enumerateSelectedRows:)])
        return;
    for (NSUInteger i = 0; i < [mDatasourceArray count]; ++i) {
        id row = [mDatasourceArray objectAtIndex:i];
        if (tarvik::isRow(row) && ![mDelegate tableController:self enumerateSelectedRows:row])
            return;
    }
}

@end
