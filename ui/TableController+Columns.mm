#import <AppKit/AppKit.h>
#import <Tarvik/core/Guard.h>
#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/ui/TableController.h>

#include "ui/private/SelectedRows.h"
#include "ui/private/TableRows.h"

#include <algorithm>

@implementation TableController (Columns)

- (NSMutableArray *)datasourceOfColumn:(id)identifier
                          visibleValue:(BOOL)visible
                          onlySelected:(BOOL)onlySelected
{
    id key = tarvik::columnKey(identifier);
    NSMutableArray *values = [NSMutableArray array];
    const tarvik::SelectedRows selected(vTableView);
    const NSUInteger count = [mDatasourceArray count];
    for (NSUInteger i = 0; i < count; ++i) {
        if (onlySelected && (i = selected.next(i, count)) == count)
            break;
        id value = tarvik::valueInRow([mDatasourceArray objectAtIndex:i], key);
        if (visible)
            value = tarvik::visibleValue(self, mDelegate, value, key, NSInteger(i));
        if (!value)
            return nil;
        [values addObject:value];
    }
    return values;
}

- (NSMutableArray *)datasourceOfColumn:(id)identifier visibleValue:(BOOL)visible
{
    return [self datasourceOfColumn:identifier visibleValue:visible onlySelected:NO];
}

- (NSMutableArray *)selectedDatasourceOfColumn:(id)identifier visibleValue:(BOOL)visible
{
    return [self datasourceOfColumn:identifier visibleValue:visible onlySelected:YES];
}

- (BOOL)insertDatasourceArray:(NSArray *)values
                     ofColumn:(id)identifier
                 visibleValue:(BOOL)visible
                      atIndex:(int32_t)index
{
    const char *const signature = "-[TableController insertDatasourceArray:ofColumn:visibleValue:atIndex:]";
    return tarvik::guarded(signature, __LINE__, BOOL(NO), [&]() -> BOOL {
        if (!values)
            return NO;
        const auto place = std::min(std::max(index, 0), int32_t([self->mDatasourceArray count]));
        id key = tarvik::columnKey(identifier);
        NSMutableArray *rows = [NSMutableArray arrayWithCapacity:[values count]];
        int32_t position = 0;
        for (id value : tarvik::each(values)) {
            if (visible)
                value = tarvik::storedValue(self, self->mDelegate, value, key, position);
            ++position;
            if (!value)
                continue;
            [rows addObject:[self initialRowDatasourceForIndex:place]];
            tarvik::setValueInRow(rows, [rows count] - 1, value, key);
        }
        [self insertDatasourceArray:rows atIndex:place];
        return YES;
    });
}

- (BOOL)setDatasourceArray:(NSArray *)values ofColumn:(id)identifier visibleValue:(BOOL)visible
{
    [self emptyDatasourceArray];
    return [self insertDatasourceArray:values ofColumn:identifier visibleValue:visible atIndex:0];
}

- (BOOL)addDatasourceArray:(NSArray *)values ofColumn:(id)identifier visibleValue:(BOOL)visible
{
    return [self insertDatasourceArray:values
                              ofColumn:identifier
                          visibleValue:visible
                               atIndex:[self insertIndexToAdd]];
}

- (BOOL)replaceValue:(id)value ofRow:(int32_t)row ofColumn:(id)identifier visibleValue:(BOOL)visible
{
    if (!value || row < 0 || NSUInteger(row) >= [mDatasourceArray count])
        return NO;
    id key = tarvik::columnKey(identifier);
    if (visible)
        value = tarvik::storedValue(self, mDelegate, value, key, row);
    return value && NSUInteger(row) < [mDatasourceArray count] &&
           tarvik::setValueInRow(mDatasourceArray, NSUInteger(row), value, key);
}

- (BOOL)replaceSelectionWithDatasourceArray:(NSArray *)values
                                   ofColumn:(id)identifier
                               visibleValue:(BOOL)visible
{
    const char *const signature =
        "-[TableController replaceSelectionWithDatasourceArray:ofColumn:visibleValue:]";
    const BOOL done = tarvik::guarded(signature, __LINE__, BOOL(NO), [&]() -> BOOL {
        if (!values)
            return NO;
        [self endEditing];
        NSUInteger j = 0;
        const tarvik::SelectedRows selected(self->vTableView);
        for (NSUInteger k = 0; k < [values count]; ++k, ++j) {
            j = selected.next(j, [self->mDatasourceArray count]);
            if (j == [self->mDatasourceArray count]) {
                NSArray *surplus = [values subarrayWithRange:NSMakeRange(k, [values count] - k)];
                self->mDontDeselectTemporary = YES;
                if (![self addDatasourceArray:surplus ofColumn:identifier visibleValue:visible])
                    return NO;
                break;
            }
            if (![self replaceValue:[values objectAtIndex:k]
                              ofRow:int32_t(j)
                           ofColumn:identifier
                       visibleValue:visible])
                return NO;
        }
        if (j < [self->mDatasourceArray count])
            [self deleteSelectedRowAfter:int32_t(j)];
        return YES;
    });
    [self noteRowsChanged];
    mDontDeselectTemporary = NO;
    return done;
}

@end
