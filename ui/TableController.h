/// \file
/// Rows for a table view: an array of dictionaries, shown, edited, sorted, moved, cut and pasted, and kept in the user
/// defaults.
///
///     TableController *rows = [[TableController alloc] initWithTableView:table userDefaultKey:@"Images"];
///     [rows setDelegate:self];                       // what it implements is what the Edit menu can do
///     [rows addDatasourceArray:paths ofColumn:@"path" visibleValue:NO];
///     ...
///     [rows release];                                // the rows are in the defaults under "Images"
///
/// A row is a mutable dictionary from column identifier to value; a column without an identifier uses the key "<default>".
/// Rows are handed out as they are, not as copies. A row number beyond the table does nothing.
///
/// The controller is the table's data source, its delegate the table's, and it stands behind the table (or behind
/// `vPreviousResponder`) in the responder chain, so that the Edit menu's `cut:`, `copy:`, `paste:` and `delete:` and its own
/// sort actions reach it. Menus are validated by `respondsToSelector:`, which looks at the selection and the delegate.
///
/// New rows go behind the selected one; with nothing selected to the top. A change of rows ends an open edit first, which
/// stores it where it was typed.
///
/// Rows are stored at `dealloc` and by `storeDatasource:`, not by edits. A stored row that is no dictionary is kept, shows empty cells and is
/// handed neither to the comparison nor to the enumerations. Rows that no property list can hold are not stored (a message
/// is logged, and what was stored before stays).
///
/// Every action's cost is linear in rows and selection (sorting: n log n), except where the result itself grows faster:
/// see `replaceSelectionWithDatasourceArray:`.
/// Row numbers of this interface are signed 32-bit. Nothing raises. Thread: main.
#pragma once
#ifdef __OBJC__
#import <AppKit/NSDragging.h>
#import <AppKit/NSResponder.h>
#import <AppKit/NSTableView.h>

#include <stdint.h>

@class NSArray, NSData, NSMutableArray, NSMutableData, NSMutableDictionary, NSString, NSTableColumn;

@interface TableController : NSResponder {
    NSTableView *vTableView;  // retained
    NSResponder *
        vPreviousResponder;  // outlet: whom the controller follows in the chain; nil: the table; not retained
    NSMutableArray *mDatasourceArray;
    NSString *mDatasourceUDKey;  // retained, not copied; nil: the rows are not kept
    id mDelegate;                // not retained
    BOOL mAutosetWindowEdited;
    BOOL mDontDeselectTemporary;  // while surplus rows of a replacement are added
}

/// Without a table, the rows empty. A controller of an interface file is wired by `awakeFromNib`.
- (id)init;
- (id)initWithTableView:(NSTableView *)table;
/// With the rows that the user defaults hold under the key (nil: none, and nothing is kept).
- (id)initWithTableView:(NSTableView *)table userDefaultKey:(NSString *)key;
- (void)awakeFromNib;

- (NSTableView *)tableView;
- (void)setTableView:(NSTableView *)table;
- (NSString *)userDefaultKey;
/// With load the rows are those stored under the new key; without it, the present rows are stored there next.
- (void)setUserDefaultKey:(NSString *)key andLoad:(BOOL)load;
- (id)delegate;
/// The table's delegate too.
- (void)setDelegate:(id)delegate;
- (BOOL)autosetWindowEdited;
/// With YES every change marks the table's window as edited. Loading does too; adding a row by `addNewRow:` doesn't, nor
/// does an edit by which the delegate removes its row.
- (void)setAutosetWindowEdited:(BOOL)flag;
/// Lets the table take drops of these pasteboard types. Nil: nothing.
- (void)setDropTargetForTypes:(NSArray *)types;

- (void)connectViewToModel;
- (void)releaseTableView;
- (void)loadDatasource;
- (void)loadDatasourceIfNeed;
- (void)releaseDatasource;
- (void)storeDatasource:(id)sender;
- (void)setWindowEditedIfNeed:(BOOL)flag;

/// For the table view: "" for a row or a value that is not there.
- (NSInteger)numberOfRowsInTableView:(NSTableView *)table;
- (id)tableView:(NSTableView *)table objectValueForTableColumn:(NSTableColumn *)column row:(NSInteger)row;
- (void)tableView:(NSTableView *)table
    setObjectValue:(id)value
    forTableColumn:(NSTableColumn *)column
               row:(NSInteger)row;
/// Passed on to a delegate that implements them; NO or none otherwise.
- (BOOL)tableView:(NSTableView *)table writeRows:(NSArray *)rows toPasteboard:(NSPasteboard *)pasteboard;
- (BOOL)tableView:(NSTableView *)table
    writeRowsWithIndexes:(NSIndexSet *)rows
            toPasteboard:(NSPasteboard *)pasteboard;
- (NSDragOperation)tableView:(NSTableView *)table
                validateDrop:(id<NSDraggingInfo>)info
                 proposedRow:(NSInteger)row
       proposedDropOperation:(NSTableViewDropOperation)operation;
- (BOOL)tableView:(NSTableView *)table
       acceptDrop:(id<NSDraggingInfo>)info
              row:(NSInteger)row
    dropOperation:(NSTableViewDropOperation)operation;

- (BOOL)respondsToSelector:(SEL)selector;
@end

@interface TableController (Actions)
/// Adds a row behind the selected one, selects it and opens it for editing.
- (void)addNewRow:(id)sender;
/// The delegate's `tableController:delete:`, then the selected rows are gone; nothing without such a delegate.
- (void)delete:(id)sender;
- (void)deleteForward:(id)sender;
- (void)deleteBackward:(id)sender;
/// `copy:`, then `delete:`.
- (void)cut:(id)sender;
- (void)copy:(id)sender;
/// Adds the rows that the delegate answers.
- (void)paste:(id)sender;
/// By the delegate's comparison; nothing without it. The order of equal rows is left open.
- (void)sortAll:(id)sender;
/// Among the places of the selected rows.
- (void)sortSelection:(id)sender;
@end

@interface TableController (Rows)
/// The rows themselves.
- (NSMutableArray *)datasourceArray;
/// The selected ones, in a new array.
- (NSMutableArray *)selectedDatasourceArray;
/// Numbers of the selected rows, ascending: unsigned 32-bit in this processor's byte order.
- (NSMutableData *)selectedRowArray;
/// Behind the selected row; 0 when none is.
- (int32_t)insertIndexToAdd;
/// The first selected row; 0 when none is.
- (int32_t)insertIndexToReplace;
/// A new row: the delegate's, or an empty one.
- (NSMutableDictionary *)initialRowDatasourceForIndex:(int32_t)index;

/// An empty table is left alone, unmarked.
- (void)emptyDatasourceArray;
/// Inserts (a negative index: at the top, one beyond the end: behind the last) and selects what was inserted; in a table of single selection
/// the last of it. Nil: nothing.
- (void)insertDatasourceArray:(NSArray *)rows atIndex:(int32_t)index;
- (void)setDatasourceArray:(NSArray *)rows;
- (void)addDatasourceArray:(NSArray *)rows;
/// Puts rows into the places of the selected ones, in order. Selected rows that receive nothing are removed.
/// Callers rely on what happens to more rows than places: the surplus is added (selected too), and then the remaining rows are written over
/// the selected rows found from the old end of the table on, and added again whenever there are none. So three rows for
/// the last one selected of A, B, C give A, B, one, three: what is left selected behind is removed.
- (void)replaceSelectionWithDatasourceArray:(NSArray *)rows;
/// Removes the selected rows from this one on; neither tells the table nor marks the window.
- (void)deleteSelectedRowAfter:(int32_t)first;
/// Moves rows (as `selectedRowArray` lists them) in front of the row at the destination and selects them where they then stand.
/// A negative destination is the unsigned number that it converts to, beyond the end.
- (void)moveRows:(NSData *)rows to:(int32_t)destination;

/// Every row in turn goes to the delegate's method, until it answers NO.
- (void)enumerateRows;
/// The same with the delegate's other method: every row, not only the selected ones, as callers rely on.
- (void)enumerateSelectedRows;
@end

/// One column's values. A nil identifier means "<default>". With visibleValue the delegate's conversions apply.
@interface TableController (Columns)
/// Nil as soon as one row has no value.
- (NSMutableArray *)datasourceOfColumn:(id)identifier
                          visibleValue:(BOOL)visible
                          onlySelected:(BOOL)onlySelected;
- (NSMutableArray *)datasourceOfColumn:(id)identifier visibleValue:(BOOL)visible;
- (NSMutableArray *)selectedDatasourceOfColumn:(id)identifier visibleValue:(BOOL)visible;
/// Makes a row of each value. Values that the delegate converts to nil are left out; it is given the value's position in the array as its row.
/// NO for nil.
- (BOOL)insertDatasourceArray:(NSArray *)values
                     ofColumn:(id)identifier
                 visibleValue:(BOOL)visible
                      atIndex:(int32_t)index;
- (BOOL)setDatasourceArray:(NSArray *)values ofColumn:(id)identifier visibleValue:(BOOL)visible;
- (BOOL)addDatasourceArray:(NSArray *)values ofColumn:(id)identifier visibleValue:(BOOL)visible;
/// Neither tells the table nor marks the window. NO for nil, also from the delegate, and for no such row.
- (BOOL)replaceValue:(id)value ofRow:(int32_t)row ofColumn:(id)identifier visibleValue:(BOOL)visible;
/// Puts values into the selected rows, in order, and adds rows of the surplus. The first value that can't be stored ends it
/// (NO). At the end the selected rows behind the last place are removed; callers rely on that taking in rows just added
/// there.
- (BOOL)replaceSelectionWithDatasourceArray:(NSArray *)values
                                   ofColumn:(id)identifier
                               visibleValue:(BOOL)visible;
@end

/// What a delegate may implement; asked for before each use.
@interface NSObject (TableControllerDelegate)
/// A new row; nil: an empty one is taken.
- (NSMutableDictionary *)tableController:(TableController *)controller makeInitialRowForIndex:(int32_t)index;
- (NSComparisonResult)tableController:(TableController *)controller
                          compareRows:(NSDictionary *)row
                                 with:(NSDictionary *)other;
/// What a cell shows for the stored value (nil when there is none); nil shows as "".
- (id)tableController:(TableController *)controller
    convertVisibleValue:(id)value
    forColumnIdentifier:(id)identifier
                    row:(int32_t)row;
/// What is stored for the value that was entered. Nil removes the edited row.
- (id)tableController:(TableController *)controller
    convertSetEditedValue:(id)value
      forColumnIdentifier:(id)identifier
                      row:(int32_t)row;
/// Puts the selected rows on the pasteboard.
- (void)tableController:(TableController *)controller copy:(id)sender;
/// Rows to add, or nil.
- (NSArray *)tableController:(TableController *)controller paste:(id)sender;
/// Before the selected rows are removed.
- (void)tableController:(TableController *)controller delete:(id)sender;
/// NO stops.
- (BOOL)tableController:(TableController *)controller enumerateRows:(NSMutableDictionary *)row;
- (BOOL)tableController:(TableController *)controller enumerateSelectedRows:(NSMutableDictionary *)row;
@end

#ifdef __cplusplus
extern "C" {
#endif
/// Compares two rows by the delegate's `tableController:compareRows:with:`; the context is the controller.
NSInteger DatasourceRowCompare(id row, id other, void *controller);
#ifdef __cplusplus
}
#endif
#endif
