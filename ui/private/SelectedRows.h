// The selected rows of a table, in order.
#pragma once
#import <AppKit/NSTableView.h>
#import <Foundation/NSIndexSet.h>
#import <Tarvik/support/Retained.h>

#include <vector>

namespace tarvik {

/// Those of [first, end).
inline std::vector<NSUInteger> selectedRows(NSTableView *table, NSUInteger first, NSUInteger end)
{
    NSIndexSet *selected = [table selectedRowIndexes];
    std::vector<NSUInteger> rows([selected count]);
    NSRange range = NSMakeRange(first, end > first ? end - first : 0);
    rows.resize(rows.empty() ? 0
                             : [selected getIndexes:rows.data() maxCount:rows.size() inIndexRange:&range]);
    return rows;
}

/// Finds one after the other, in the selection as it was when last looked at: to ask the table row by row costs more than
/// what is done with those found.
class SelectedRows {
public:
    explicit SelectedRows(NSTableView *table) : table_(table) { look(); }
    /// Looks at the table's selection anew.
    void look() { selected_ = retain([table_ selectedRowIndexes]); }  // the table hands out a copy
    /// The first from `row` on, or `end` when there is none before it.
    NSUInteger next(NSUInteger row, NSUInteger end) const
    {
        const NSUInteger found =
            selected_ ? [selected_.get() indexGreaterThanOrEqualToIndex:row] : NSUInteger(NSNotFound);
        return found < end ? found : end;
    }

private:
    NSTableView *table_;
    Retained<NSIndexSet *> selected_;
};

}  // namespace tarvik
