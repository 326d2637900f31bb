#import <AppKit/AppKit.h>
#import <Tarvik/support/Retained.h>
#import <Tarvik/ui/NSTableView+Selection.h>
#import <Tarvik/ui/TableController.h>

#include "ui/private/TableRows.h"

#include <algorithm>

namespace tarvik {

bool setValueInRow(NSMutableArray *rows, NSUInteger index, id value, id key)
{
    id row = [rows objectAtIndex:index];
    if (!isRow(row))
        return false;
    if (![row isKindOfClass:[NSMutableDictionary class]]) {
        row = adopt([row mutableCopy]).autoreleased();
        [rows replaceObjectAtIndex:index withObject:row];
    }
    [row setObject:value forKey:key];
    return true;
}

id visibleValue(id controller, id delegate, id value, id key, NSInteger row)
{
    const SEL convert = @selector(tableController:convertVisibleValue:forColumnIdentifier:row:);
    if (![delegate respondsToSelector:convert])
        return value;
    return [delegate tableController:controller
                 convertVisibleValue:value
                 forColumnIdentifier:key
                                 row:int32_t(row)];
}

id storedValue(id controller, id delegate, id value, id key, NSInteger row)
{
    const SEL convert = @selector(tableController:convertSetEditedValue:forColumnIdentifier:row:);
    if (![delegate respondsToSelector:convert])
        return value;
    return [delegate tableController:controller
               convertSetEditedValue:value
                 forColumnIdentifier:key
                                 row:int32_t(row)];
}

// One message for all rows: a message for each makes the table redraw and scroll for each.
void selectRows(NSTableView *table, uint32_t first, uint32_t last)
{
    const NSInteger count = [table numberOfRows];
    if (count <= 0)
        return;
    const NSInteger top = std::min<NSInteger>(first, count - 1),
                    bottom = std::min<NSInteger>(last, count - 1);
    if ([table allowsMultipleSelection] && top < bottom) {
        const NSRange rows = NSMakeRange(NSUInteger(top), NSUInteger(bottom - top) + 1);
        [table selectRowIndexes:[NSIndexSet indexSetWithIndexesInRange:rows] byExtendingSelection:YES];
        [table scrollRowToVisible:top];
        [table scrollRowToVisible:bottom];
    } else {
        [table selectRow:bottom asExtending:[table allowsMultipleSelection] andEdit:NO];
    }
}

}  // namespace tarvik
