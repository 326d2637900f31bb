/// \file
/// Rows of a table view: the ones selected, the one under the mouse, and one selected, shown and edited.
///
///     [table selectRow:99 asExtending:NO andEdit:YES];    // in a table of five rows: row 4, its editor open
///
/// Thread: main.
#pragma once
#ifdef __OBJC__
#import <AppKit/NSTableView.h>

@interface NSTableView (AppKitX)

/// The row under the mouse; -1 where there is none.
- (NSInteger)mouseOverRow;
/// The lowest selected row, or -1.
- (NSInteger)topSelectedRow;
/// The highest selected row, or -1. Callers rely on its limit: row 0 is never answered.
- (NSInteger)bottomSelectedRow;

/// Selects the row (in addition to the others when extending), scrolls to it, and then edits its editable columns, one after
/// the other, so that the last one's editor stays open. An editor that gives way to the next one stores nothing.
/// A row outside the table means its nearest one; nothing happens in an empty table. Where only one row may be selected,
/// extending selects the row alone.
- (void)selectRow:(NSInteger)row asExtending:(BOOL)extend andEdit:(BOOL)edit;

@end
#endif
