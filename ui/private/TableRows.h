// What the parts of the table controller share.
#pragma once
#import <Foundation/Foundation.h>
#include <objc/runtime.h>

@class NSTableView;

namespace tarvik {

/// The key of a column's values in a row.
inline id columnKey(id identifier) { return identifier ? identifier : @"<default>"; }

/// Rows read from the user defaults may be anything.
inline bool isRow(id object)
{
    static Class last = Nil;  // asked for each cell, and nearly always of the same class
    Class is = object ? object_getClass(object) : Nil;
    if (is == last)
        return is != Nil;
    if (![object isKindOfClass:[NSDictionary class]])
        return false;
    last = is;
    return true;
}
inline id valueInRow(id row, id key) { return isRow(row) ? [row objectForKey:key] : nil; }
/// Stores a value in the row at an index; a row that can't be changed gives way to a copy that can. False for what is no row.
bool setValueInRow(NSMutableArray *rows, NSUInteger index, id value, id key);

/// What a delegate makes of a value, when asked to and able to.
id visibleValue(id controller, id delegate, id value, id key, NSInteger row);
id storedValue(id controller, id delegate, id value, id key, NSInteger row);

/// Selects rows `first` to `last` as one by one would: in addition to the others in a table of multiple selection, only the
/// last otherwise, scrolled to the first and then to the last. A row outside the table is its nearest one.
void selectRows(NSTableView *table, uint32_t first, uint32_t last);

}  // namespace tarvik

@interface TableController (Editing)
/// Ends an open edit, which stores it, before its row's number changes.
- (void)endEditing;
/// What every change of the rows ends with.
- (void)noteRowsChanged;
@end
