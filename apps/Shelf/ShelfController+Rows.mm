#include "ShelfController.h"

#include "CatalogueXML.h"
#include "Panels.h"

#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/Guard.h>

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

namespace {

NSString *const kRowsType = @"TarvikShelfRows";  // a property list: the rows
NSString *const kMovedType =
    @"TarvikShelfRowNumbers";  // as the TableController lists rows; within this window

/// Full paths among a text's lines, file URLs included.
NSArray *pathsInText(NSString *text)
{
    NSMutableArray *paths = [NSMutableArray array];
    for (NSString *line : tarvik::each<NSString>([text componentsSeparatedByString:@"\n"])) {
        NSString *path =
            [line stringByTrimmingCharactersInSet:[NSCharacterSet whitespaceAndNewlineCharacterSet]];
        if ([path hasPrefix:@"file:///"])
            path = [[NSURL URLWithString:path] path];
        if ([path isAbsolutePath])
            [paths addObject:path];
    }
    return paths;
}

/// The strings of a property list that should be an array of them: a pasteboard may hold anything.
NSArray *strings(id list)
{
    NSMutableArray *found = [NSMutableArray array];
    for (id each : tarvik::each<NSObject>([list isKindOfClass:[NSArray class]] ? list : nil)) {
        if ([each isKindOfClass:[NSString class]])
            [found addObject:each];
    }
    return found;
}

/// Rows, and files, and what a text editor makes of them.
void write(NSArray *rows, NSPasteboard *pasteboard, NSData *numbers)
{
    NSMutableArray *paths = [NSMutableArray array], *lines = [NSMutableArray array];
    for (id row : tarvik::each<NSObject>(rows)) {
        NSString *path = shelf::text(row, shelf::kPath);
        [paths addObject:path];
        [lines addObject:path];
    }
    NSMutableArray *types =
        [NSMutableArray arrayWithObjects:kRowsType, NSFilenamesPboardType, NSStringPboardType, nil];
    if (numbers)
        [types addObject:kMovedType];
    [pasteboard declareTypes:types owner:nil];
    [pasteboard setPropertyList:rows forType:kRowsType];
    [pasteboard setPropertyList:paths forType:NSFilenamesPboardType];
    [pasteboard setString:[lines componentsJoinedByString:@"\n"] forType:NSStringPboardType];
    if (numbers)
        [pasteboard setData:numbers forType:kMovedType];
}

/// Nil when there is none of the type, and when what calls itself so is no property list, at which the platform raises.
id pastedPropertyList(NSPasteboard *pasteboard, NSString *type)
{
    id list = nil;
    tarvik::attempt([&] {
        list = [[pasteboard types] containsObject:type] ? [pasteboard propertyListForType:type] : nil;
    });
    return list;
}

}  // namespace

@interface ShelfController (Undo)
- (void)putBack:(NSDictionary *)removed;
- (void)takeOut:(NSDictionary *)removed;
@end

@implementation ShelfController (Rows)

// ---- Rows that are selected, rows that come

- (NSArray *)selectedRows
{
    NSMutableArray *rows = [NSMutableArray array];
    for (id row : tarvik::each<NSObject>([mRows selectedDatasourceArray])) {
        if ([row isKindOfClass:[NSDictionary class]])
            [rows addObject:row];
    }
    return rows;
}

- (NSArray *)selectedPaths
{
    NSMutableArray *paths = [NSMutableArray array];
    for (id row : tarvik::each<NSObject>([self selectedRows])) {
        if ([shelf::text(row, shelf::kPath) length])
            [paths addObject:shelf::text(row, shelf::kPath)];
    }
    return paths;
}

- (void)addRows:(NSArray *)rows atIndex:(int32_t)index
{
    NSArray *fresh = shelf::unknownRows(rows, shelf::pathsOf([mRows datasourceArray]));
    if ([fresh count]) {
        [mRows insertDatasourceArray:fresh atIndex:index];
        [self rowsChanged];
        [self survey];
        return;
    }
    // All there already: show them.
    NSSet *wanted = shelf::pathsOf(rows);
    NSMutableIndexSet *there = [NSMutableIndexSet indexSet];
    NSUInteger number = 0;
    for (id row : tarvik::each<NSObject>([mRows datasourceArray])) {
        if ([wanted containsObject:shelf::text(row, shelf::kPath)])
            [there addIndex:number];
        ++number;
    }
    if (![there count])
        return;
    [mWindow->mTable selectRowIndexes:there byExtendingSelection:NO];
    [mWindow->mTable scrollRowToVisible:NSInteger([there firstIndex])];
}

- (void)addPaths:(NSArray *)paths atIndex:(int32_t)index
{
    NSMutableArray *rows = [NSMutableArray array], *failures = [NSMutableArray array];
    for (NSString *path : tarvik::each<NSString>(paths)) {
        NSString *failure = nil;
        if ([[[path pathExtension] lowercaseString] isEqual:@"xml"]) {
            NSData *file = [NSData dataWithContentsOfFile:path];
            if (const auto read = shelf::rowsOfXML(tarvik::bytes(file).value_or("")))
                [rows addObjectsFromArray:*read];
            else
                failure =
                    [NSString stringWithFormat:[@"“%@” is no catalogue that Shelf has exported." localize],
                                               [path lastPathComponent]];
        } else if (NSMutableDictionary *row = shelf::rowForImage(path, failure)) {
            [rows addObject:row];
        }
        if (failure)
            [failures addObject:failure];
    }
    [self addRows:rows atIndex:index];
    if (![failures count])
        return;
    constexpr NSUInteger kMost = 8;
    if ([failures count] > kMost)
        [failures replaceObjectsInRange:NSMakeRange(kMost, [failures count] - kMost)
                   withObjectsFromArray:[NSArray arrayWithObject:@"…"]];
    [self failed:[@"Not everything could be added." localize]
         because:[failures componentsJoinedByString:@"\n"]];
}

// ---- Values

- (id)tableController:(TableController *)controller
    convertVisibleValue:(id)value
    forColumnIdentifier:(id)column
                    row:(int32_t)index
{
    (void)value;
    NSArray *rows = [controller datasourceArray];
    id row = index >= 0 && NSUInteger(index) < [rows count] ? [rows objectAtIndex:NSUInteger(index)] : nil;
    NSString *path = shelf::text(row, shelf::kPath);
    if ([column isEqual:shelf::kSize])
        return [path length] ? shelf::shownSize(shelf::number(row, column)) : @"";
    if ([column isEqual:shelf::kLabel])
        return [NSNumber numberWithInt:shelf::label(row)];
    if ([column isEqual:shelf::kMounted])
        return [mMissing containsObject:path] ? [@"not found" localize] : [mMounts objectForKey:path];
    if ([column isEqual:shelf::kChecksum]) {
        NSString *checksum = shelf::text(row, column);
        NSNumber *verified = [mVerified objectForKey:path];
        NSString *mark = !verified ? @"" : [verified boolValue] ? @"✓ " : @"✗ ";
        return [checksum length] ? [mark stringByAppendingString:checksum] : @"";
    }
    return shelf::text(row, column);
}

- (id)tableController:(TableController *)controller
    convertSetEditedValue:(id)value
      forColumnIdentifier:(id)column
                      row:(int32_t)index
{
    NSString *text = [value isKindOfClass:[NSString class]] ? value : [value description];
    // An answer of nil would remove the row: an emptied name stays what it was.
    if ([column isEqual:shelf::kName] &&
        ![[text stringByTrimmingCharactersInSet:[NSCharacterSet whitespaceAndNewlineCharacterSet]] length])
        text = shelf::text([[controller datasourceArray] objectAtIndex:NSUInteger(index)], column);
    [self performSelector:@selector(rowsChanged) withObject:nil afterDelay:0];
    return text;
}

- (void)tableView:(NSTableView *)table
    willDisplayCell:(id)cell
     forTableColumn:(NSTableColumn *)column
                row:(NSInteger)index
{
    (void)table;
    NSArray *rows = [mRows datasourceArray];
    if (![cell respondsToSelector:@selector(setTextColor:)] || NSUInteger(index) >= [rows count])
        return;
    NSString *path = shelf::text([rows objectAtIndex:NSUInteger(index)], shelf::kPath);
    NSColor *color = [NSColor controlTextColor];
    if ([mMissing containsObject:path])
        color = [[column identifier] isEqual:shelf::kMounted]
                    ? [NSColor colorWithCalibratedRed:0.75 green:0.15 blue:0.1 alpha:1]
                    : [NSColor colorWithCalibratedWhite:0.5 alpha:1];
    else if ([[column identifier] isEqual:shelf::kPath] || [[column identifier] isEqual:shelf::kSize])
        color = [NSColor colorWithCalibratedWhite:0.35 alpha:1];
    else if ([[column identifier] isEqual:shelf::kChecksum] &&
             [[[mVerified objectForKey:path] description] isEqual:@"0"])
        color = [NSColor colorWithCalibratedRed:0.75 green:0.15 blue:0.1 alpha:1];
    [cell setTextColor:color];
}

- (void)tableViewSelectionDidChange:(NSNotification *)notification
{
    (void)notification;
    [self tell:nil];
}

// ---- Sorting

- (NSComparisonResult)tableController:(TableController *)controller
                          compareRows:(NSDictionary *)row
                                 with:(NSDictionary *)other
{
    (void)controller;
    NSComparisonResult result =
        shelf::compare(row, other, mSortKey ? mSortKey : (NSString *)shelf::kName, mMounts);
    if (mSortsDown)
        result = NSComparisonResult(-result);
    // Rows alike are in the order of their paths, so that the order doesn't change by sorting again.
    return result != NSOrderedSame ? result : shelf::compare(row, other, shelf::kPath, mMounts);
}

- (void)setSortKey:(NSString *)key
{
    mSortsDown = [key isEqual:mSortKey] && !mSortsDown;
    [key retain];
    [std::exchange(mSortKey, key) release];
    NSCharacterSet *marks = [NSCharacterSet characterSetWithCharactersInString:@" ▲▼"];
    for (NSTableColumn *column : tarvik::each<NSTableColumn>([mWindow->mTable tableColumns])) {
        NSString *title = [[[column headerCell] stringValue] stringByTrimmingCharactersInSet:marks];
        if ([[column identifier] isEqual:key])
            title = [title stringByAppendingString:mSortsDown ? @" ▼" : @" ▲"];
        [[column headerCell] setStringValue:title];
    }
    [[mWindow->mTable headerView] setNeedsDisplay:YES];
    NSSet *selected = [NSSet setWithArray:[self selectedPaths]];
    [mRows sortAll:self];
    NSMutableIndexSet *now = [NSMutableIndexSet indexSet];
    NSUInteger number = 0;
    for (id row : tarvik::each<NSObject>([selected count] ? [mRows datasourceArray] : nil)) {
        if ([selected containsObject:shelf::text(row, shelf::kPath)])
            [now addIndex:number];
        ++number;
    }
    [mWindow->mTable selectRowIndexes:now byExtendingSelection:NO];
    [mUndo removeAllActions];  // places of deleted rows mean nothing now
    [self rowsChanged];
}

- (void)tableView:(NSTableView *)table didClickTableColumn:(NSTableColumn *)column
{
    (void)table;
    [self setSortKey:[column identifier]];
}

- (IBAction)sortByColumn:(id)sender
{
    NSString *const keys[] = {shelf::kName,     shelf::kPath,  shelf::kMounted, shelf::kSize,
                              shelf::kChecksum, shelf::kLabel, shelf::kNote};
    const NSInteger tag = [sender tag];
    if (tag >= 0 && tag < NSInteger(std::size(keys)))
        [self setSortKey:keys[tag]];
}

// ---- Dragging

- (BOOL)tableView:(NSTableView *)table
    writeRowsWithIndexes:(NSIndexSet *)indexes
            toPasteboard:(NSPasteboard *)pasteboard
{
    (void)table;
    NSMutableArray *rows = [NSMutableArray array];
    NSMutableData *numbers = [NSMutableData data];
    NSArray *all = [mRows datasourceArray];
    for (NSUInteger index = [indexes firstIndex]; index != NSNotFound;
         index = [indexes indexGreaterThanIndex:index]) {
        const auto number = uint32_t(index);
        [numbers appendBytes:&number length:sizeof number];
        if (index < [all count] && [[all objectAtIndex:index] isKindOfClass:[NSDictionary class]])
            [rows addObject:[all objectAtIndex:index]];
    }
    if (![rows count])
        return NO;
    write(rows, pasteboard, numbers);
    return YES;
}

- (NSDragOperation)tableView:(NSTableView *)table
                validateDrop:(id<NSDraggingInfo>)info
                 proposedRow:(NSInteger)row
       proposedDropOperation:(NSTableViewDropOperation)operation
{
    (void)row, (void)operation;
    // Between two rows, above or below the middle of the one under the mouse; below the last row, at the end.
    const NSPoint mouse = [table convertPoint:[info draggingLocation] fromView:nil];
    const NSInteger over = [table rowAtPoint:mouse];
    const bool isBelow = over >= 0 && mouse.y > NSMidY([table rectOfRow:over]);
    [table setDropRow:over < 0  ? [table numberOfRows]
                      : isBelow ? over + 1
                                : over
        dropOperation:NSTableViewDropAbove];
    if ([info draggingSource] == table)
        return NSDragOperationMove;
    return [info draggingSource] == mWindow->mIcon ? NSDragOperationNone : NSDragOperationCopy;
}

- (BOOL)tableView:(NSTableView *)table
       acceptDrop:(id<NSDraggingInfo>)info
              row:(NSInteger)row
    dropOperation:(NSTableViewDropOperation)operation
{
    (void)operation;
    NSPasteboard *pasteboard = [info draggingPasteboard];
    const int32_t place = row < 0 ? int32_t([[mRows datasourceArray] count]) : int32_t(row);
    if ([info draggingSource] == table) {
        NSData *numbers =
            [[pasteboard types] containsObject:kMovedType] ? [pasteboard dataForType:kMovedType] : nil;
        if (![numbers length])
            return NO;
        [mRows moveRows:numbers to:place];
        [mUndo removeAllActions];
        [self rowsChanged];
        return YES;
    }
    if (NSArray *rows = shelf::adoptedRows(pastedPropertyList(pasteboard, kRowsType));[rows count]) {
        [self addRows:rows atIndex:place];
        return YES;
    }
    NSArray *paths = strings(pastedPropertyList(pasteboard, NSFilenamesPboardType));
    [self addPaths:paths atIndex:place];
    return [paths count] > 0;
}

// ---- The pasteboard

- (void)tableController:(TableController *)controller copy:(id)sender
{
    (void)controller, (void)sender;
    write([self selectedRows], [NSPasteboard generalPasteboard], nil);
}

- (NSArray *)tableController:(TableController *)controller paste:(id)sender
{
    (void)sender;
    NSPasteboard *pasteboard = [NSPasteboard generalPasteboard];
    if (NSArray *rows = shelf::adoptedRows(pastedPropertyList(pasteboard, kRowsType));[rows count]) {
        [self performSelector:@selector(rowsChanged) withObject:nil afterDelay:0];
        [self performSelector:@selector(survey) withObject:nil afterDelay:0];
        return shelf::unknownRows(rows, shelf::pathsOf([controller datasourceArray]));
    }
    NSArray *paths = strings(pastedPropertyList(pasteboard, NSFilenamesPboardType));
    if (![paths count] && [[pasteboard types] containsObject:NSStringPboardType])
        paths = pathsInText([pasteboard stringForType:NSStringPboardType]);
    if ([paths count])
        [self addPaths:paths atIndex:[controller insertIndexToAdd]];
    return nil;
}

// ---- Undo of deletion: the rows with their places, in ascending order

- (void)tableController:(TableController *)controller delete:(id)sender
{
    (void)sender;
    NSMutableData *numbers = [controller selectedRowArray];
    NSArray *rows = [controller selectedDatasourceArray];
    NSDictionary *removed =
        [NSDictionary dictionaryWithObjectsAndKeys:numbers, @"numbers", rows, @"rows", nil];
    [mUndo registerUndoWithTarget:self selector:@selector(putBack:) object:removed];
    [mUndo setActionName:[@"Delete" localize]];
    [self performSelector:@selector(rowsChanged) withObject:nil afterDelay:0];
}

- (IBAction)undo:(id)sender
{
    (void)sender;
    [mWindow endEditingFor:nil];
    [mUndo undo];
}

- (IBAction)redo:(id)sender
{
    (void)sender;
    [mWindow endEditingFor:nil];
    [mUndo redo];
}

@end

@implementation ShelfController (Undo)

- (void)putBack:(NSDictionary *)removed
{
    NSArray *rows = [removed objectForKey:@"rows"];
    NSData *numbers = [removed objectForKey:@"numbers"];
    const auto *place = static_cast<const uint32_t *>([numbers bytes]);
    NSArray *kept = [NSArray arrayWithArray:[mRows datasourceArray]];
    NSMutableArray *merged = [NSMutableArray arrayWithCapacity:[kept count] + [rows count]];
    NSMutableIndexSet *back = [NSMutableIndexSet indexSet];
    // Not those that have been added again meanwhile.
    NSMutableSet *known = shelf::pathsOf(kept);
    NSUInteger next = 0;
    for (NSUInteger i = 0; i < [rows count]; ++i) {
        NSString *path = shelf::text([rows objectAtIndex:i], shelf::kPath);
        if ([path length] && [known containsObject:path])
            continue;
        for (;[merged count] < place[i] && next < [kept count]; ++next)
            [merged addObject:[kept objectAtIndex:next]];
        [back addIndex:[merged count]];
        [merged addObject:[rows objectAtIndex:i]];
    }
    for (; next < [kept count]; ++next)
        [merged addObject:[kept objectAtIndex:next]];
    [[mRows datasourceArray] setArray:merged];
    [mWindow->mTable noteNumberOfRowsChanged];
    [mWindow->mTable selectRowIndexes:back byExtendingSelection:NO];
    if ([back count])
        [mWindow->mTable scrollRowToVisible:NSInteger([back firstIndex])];
    [mUndo registerUndoWithTarget:self selector:@selector(takeOut:) object:removed];
    [mUndo setActionName:[@"Delete" localize]];
    [self rowsChanged];
    [self survey];
}

- (void)takeOut:(NSDictionary *)removed
{
    // Rows may have come between them since; each image is in the catalogue once.
    NSArray *put = [removed objectForKey:@"rows"];
    NSSet *paths = shelf::pathsOf(put);
    NSMutableIndexSet *rows = [NSMutableIndexSet indexSet];
    NSUInteger number = 0;
    for (id row : tarvik::each<NSObject>([mRows datasourceArray])) {
        NSString *path = shelf::text(row, shelf::kPath);
        if ([path length] ? [paths containsObject:path] : [put indexOfObjectIdenticalTo:row] != NSNotFound)
            [rows addIndex:number];
        ++number;
    }
    [mWindow->mTable selectRowIndexes:rows byExtendingSelection:NO];
    if ([rows count])
        [mRows delete:self];
}

@end
