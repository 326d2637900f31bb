#import <AppKit/AppKit.h>
#import <Tarvik/core/Guard.h>
#import <Tarvik/core/Objects.h>
#include <Tarvik/core/SystemVersion.h>
#import <Tarvik/support/Retained.h>
#import <Tarvik/text/NSUserDefaults+Values.h>
#import <Tarvik/text/PropertyLists.h>
#import <Tarvik/ui/NSResponder+Chain.h>
#import <Tarvik/ui/TableController.h>

#include "ui/private/SystemGates.h"
#include "ui/private/TableRows.h"

@implementation TableController

- (id)init
{
    if ((self = [super init]))
        [self loadDatasourceIfNeed];
    return self;
}

- (id)initWithTableView:(NSTableView *)table
{
    return [self initWithTableView:table userDefaultKey:nil];
}

- (id)initWithTableView:(NSTableView *)table userDefaultKey:(NSString *)key
{
    if ((self = [super init])) {
        [self setTableView:table];
        [self setUserDefaultKey:key andLoad:YES];
    }
    return self;
}

// The outlets, as an interface file sets them: without these the platform would retain what it sets.
- (void)setVTableView:(NSTableView *)table
{
    vTableView = table;
}
- (void)setVPreviousResponder:(NSResponder *)responder
{
    vPreviousResponder = responder;
}

- (void)awakeFromNib
{
    if (!vTableView)
        return;
    [vTableView retain];
    [self loadDatasourceIfNeed];
    [self connectViewToModel];
}

- (void)dealloc
{
    [self releaseTableView];
    [self releaseDatasource];
    [super dealloc];
}

- (NSTableView *)tableView
{
    return vTableView;
}

- (void)setTableView:(NSTableView *)table
{
    const auto kept = tarvik::retain(table);
    [self releaseTableView];
    vTableView = [kept.get() retain];
    [self loadDatasourceIfNeed];
    [self connectViewToModel];
}

- (NSString *)userDefaultKey
{
    return mDatasourceUDKey;
}

- (void)setUserDefaultKey:(NSString *)key andLoad:(BOOL)load
{
    [key retain];
    [mDatasourceUDKey release];
    mDatasourceUDKey = key;
    if (load)
        [self loadDatasource];
}

- (id)delegate
{
    return mDelegate;
}

- (void)setDelegate:(id)delegate
{
    mDelegate = delegate;
    [vTableView setDelegate:delegate];
}

- (BOOL)autosetWindowEdited
{
    return mAutosetWindowEdited;
}
- (void)setAutosetWindowEdited:(BOOL)flag
{
    mAutosetWindowEdited = flag;
}

- (void)setDropTargetForTypes:(NSArray *)types
{
    if (types)
        [vTableView registerForDraggedTypes:types];
}

- (void)connectViewToModel
{
    if (!vTableView)
        return;
    [vTableView setDelegate:mDelegate];
    [vTableView setDataSource:self];
    [vPreviousResponder ? vPreviousResponder : vTableView insertNextResponder:self];
}

- (void)releaseTableView
{
    if (!vTableView)
        return;
    [vTableView setDelegate:nil];
    [vTableView setDataSource:nil];
    // The table may outlive the controller, and the chain retains nobody.
    if ([vTableView nextResponder] == self)
        [vTableView setNextResponder:[self nextResponder]];
    [vTableView release];
    vTableView = nil;
}

- (void)loadDatasource
{
    // An open edit goes with its row: ended later, it would be stored in the one loaded in its place.
    [vTableView abortEditing];
    [mDatasourceArray release];
    mDatasourceArray = nil;
    if (mDatasourceUDKey)
        mDatasourceArray =
            [[[NSUserDefaults standardUserDefaults] mutableArrayForKey:mDatasourceUDKey] retain];
    else
        mDatasourceArray = [[NSMutableArray alloc] init];
    if (!mDatasourceArray)
        return;
    [self setWindowEditedIfNeed:YES];
    [vTableView noteNumberOfRowsChanged];
}

- (void)loadDatasourceIfNeed
{
    if (!mDatasourceArray)
        [self loadDatasource];
}

- (void)storeDatasource:(id)sender
{
    (void)sender;
    if (!mDatasourceArray || !mDatasourceUDKey)
        return;
    tarvik::guarded("-[TableController storeDatasource:]", __LINE__, [&] {
        // A copy: the defaults keep the rows themselves, and later edits would be changes of the defaults.
        const auto rows = tarvik::adopt([self->mDatasourceArray propertyListDeepCopy:0]);
        if (rows)
            [[NSUserDefaults standardUserDefaults] setObject:rows.get() forKey:self->mDatasourceUDKey];
        else
            LogCore("-[TableController storeDatasource:]", __LINE__,
                    "rows not stored: they hold what a property list can't: key[%@]", self->mDatasourceUDKey);
    });
}

- (void)releaseDatasource
{
    [self storeDatasource:self];
    [mDatasourceArray release];
    mDatasourceArray = nil;
    [mDatasourceUDKey release];
    mDatasourceUDKey = nil;
}

- (void)setWindowEditedIfNeed:(BOOL)flag
{
    if (mAutosetWindowEdited)
        [[vTableView window] setDocumentEdited:flag];
}

- (NSInteger)numberOfRowsInTableView:(NSTableView *)table
{
    return table == vTableView ? NSInteger([mDatasourceArray count]) : 0;
}

- (id)tableView:(NSTableView *)table objectValueForTableColumn:(NSTableColumn *)column row:(NSInteger)row
{
    if (table != vTableView || row < 0 || NSUInteger(row) >= [mDatasourceArray count])
        return @"";
    id key = tarvik::columnKey([column identifier]);
    id value = tarvik::visibleValue(
        self, mDelegate, tarvik::valueInRow([mDatasourceArray objectAtIndex:NSUInteger(row)], key), key, row);
    return value ? value : @"";
}

- (void)tableView:(NSTableView *)table
    setObjectValue:(id)value
    forTableColumn:(NSTableColumn *)column
               row:(NSInteger)row
{
    if (table != vTableView || !value || ![column isEditable] || row < 0 ||
        NSUInteger(row) >= [mDatasourceArray count])
        return;
    id key = tarvik::columnKey([column identifier]);
    value = tarvik::storedValue(self, mDelegate, value, key, row);
    // The delegate may have changed the rows.
    const bool isThere = NSUInteger(row) < [mDatasourceArray count];
    if (!value) {
        if (isThere)
            [mDatasourceArray removeObjectAtIndex:NSUInteger(row)];
        [vTableView noteNumberOfRowsChanged];
    } else if (isThere &&
               !NSIsEqual(value, tarvik::valueInRow([mDatasourceArray objectAtIndex:NSUInteger(row)], key)) &&
               tarvik::setValueInRow(mDatasourceArray, NSUInteger(row), value, key)) {
        [self setWindowEditedIfNeed:YES];
    }
}

- (BOOL)tableView:(NSTableView *)table writeRows:(NSArray *)rows toPasteboard:(NSPasteboard *)pasteboard
{
    return [mDelegate respondsToSelector:_cmd] && [mDelegate tableView:table
                                                             writeRows:rows
                                                          toPasteboard:pasteboard];
}

- (BOOL)tableView:(NSTableView *)table
    writeRowsWithIndexes:(NSIndexSet *)rows
            toPasteboard:(NSPasteboard *)pasteboard
{
    return [mDelegate respondsToSelector:_cmd] && [mDelegate tableView:table
                                                      writeRowsWithIndexes:rows
                                                              toPasteboard:pasteboard];
}

- (NSDragOperation)tableView:(NSTableView *)table
                validateDrop:(id<NSDraggingInfo>)info
                 proposedRow:(NSInteger)row
       proposedDropOperation:(NSTableViewDropOperation)operation
{
    if (![mDelegate respondsToSelector:_cmd])
        return NSDragOperationNone;
    return [mDelegate tableView:table validateDrop:info proposedRow:row proposedDropOperation:operation];
}

- (BOOL)tableView:(NSTableView *)table
       acceptDrop:(id<NSDraggingInfo>)info
              row:(NSInteger)row
    dropOperation:(NSTableViewDropOperation)operation
{
    return [mDelegate respondsToSelector:_cmd] && [mDelegate tableView:table
                                                            acceptDrop:info
                                                                   row:row
                                                         dropOperation:operation];
}

// The question that menu validation asks, and the table view before it drags. Selectors are compared by name, whatever
// their types.
- (BOOL)respondsToSelector:(SEL)selector
{
    if (!selector)
        return NO;
    const auto is = [&](SEL name) { return sel_isEqual(selector, name); };
    if (is(@selector(delete:)))
        return [mDelegate respondsToSelector:@selector(tableController:delete:)] &&
               [vTableView numberOfSelectedRows] > 0;
    if (is(@selector(cut:)) || is(@selector(copy:)))
        return [vTableView numberOfSelectedRows] > 0 &&
               [mDelegate respondsToSelector:@selector(tableController:copy:)];
    if (is(@selector(paste:)))
        return [mDelegate respondsToSelector:@selector(tableController:paste:)];
    if (is(@selector(sortSelection:)))
        return vTableView && [vTableView selectedRow] >= 0;
    if (mDelegate) {
        const bool isByNumbers = is(@selector(tableView:writeRows:toPasteboard:));
        if (isByNumbers || is(@selector(tableView:writeRowsWithIndexes:toPasteboard:))) {
            const bool isOldSystem = GestaltSystemVersion() <= kLastSystemDraggingRowNumbers;
            return isByNumbers == isOldSystem && [mDelegate respondsToSelector:selector];
        }
        if (is(@selector(tableView:validateDrop:proposedRow:proposedDropOperation:)) ||
            is(@selector(tableView:acceptDrop:row:dropOperation:)))
            return [mDelegate respondsToSelector:selector];
    }
    return [super respondsToSelector:selector];
}

@end

@implementation TableController (Editing)

- (void)endEditing
{
    if ([vTableView currentEditor])
        [[vTableView window] makeFirstResponder:vTableView];
}

- (void)noteRowsChanged
{
    [vTableView noteNumberOfRowsChanged];
    [self setWindowEditedIfNeed:YES];
}

@end
