// A table of 100,000 rows: the controller's operations beside the same by hand on the array, with the table's own refresh in both.
#import <AppKit/AppKit.h>
#import <Tarvik/TarvikUI.h>
#import <Tarvik/support/Pool.h>
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <vector>

@interface TableBenchDelegate : NSObject
@end
@implementation TableBenchDelegate
- (NSComparisonResult)tableController:(TableController *)controller
                          compareRows:(NSDictionary *)row
                                 with:(NSDictionary *)other
{
    (void)controller;
    return [[row objectForKey:@"number"] compare:[other objectForKey:@"number"]];
}
- (void)tableController:(TableController *)controller delete:(id)sender
{
    (void)controller, (void)sender;
}
@end

/// What a host would write for one table.
@interface RowsByHand : NSObject {
@public
    NSMutableArray *mRows;
}
@end
@implementation RowsByHand
- (void)dealloc
{
    [mRows release];
    [super dealloc];
}
- (NSInteger)numberOfRowsInTableView:(NSTableView *)table
{
    return (void)table, NSInteger([mRows count]);
}
- (id)tableView:(NSTableView *)table objectValueForTableColumn:(NSTableColumn *)column row:(NSInteger)row
{
    (void)table;
    id value = row >= 0 && NSUInteger(row) < [mRows count]
                   ? [[mRows objectAtIndex:NSUInteger(row)] objectForKey:[column identifier]]
                   : nil;
    return value ? value : @"";
}
@end

namespace {

constexpr NSUInteger kRows = 100000, kSome = 10000;

NSMutableArray *made(NSUInteger count)
{
    NSMutableArray *rows = [NSMutableArray arrayWithCapacity:count];
    for (NSUInteger i = 0; i < count; ++i)
        [rows addObject:[NSMutableDictionary
                            dictionaryWithObject:[NSNumber numberWithUnsignedInteger:i * 7919 % count]
                                          forKey:@"number"]];
    return rows;
}

/// Every tenth row.
NSIndexSet *scattered()
{
    NSMutableIndexSet *rows = [NSMutableIndexSet indexSet];
    for (NSUInteger i = 0; i < kSome; ++i)
        [rows addIndex:i * (kRows / kSome)];
    return rows;
}

/// A table in a window, and who gives it its rows: the controller, or an object written by hand.
class Table {
public:
    explicit Table(bool byHand)
    {
        [NSApplication sharedApplication];
        window_ = [[NSWindow alloc] initWithContentRect:NSMakeRect(100, 100, 300, 300)
                                              styleMask:NSTitledWindowMask
                                                backing:NSBackingStoreBuffered
                                                  defer:NO];
        [window_ setReleasedWhenClosed:NO];
        view = [[[NSTableView alloc] initWithFrame:NSMakeRect(0, 0, 300, 300)] autorelease];
        column = [[[NSTableColumn alloc] initWithIdentifier:@"number"] autorelease];
        [view addTableColumn:column];
        [view setAllowsMultipleSelection:YES];
        NSScrollView *scroller =
            [[[NSScrollView alloc] initWithFrame:NSMakeRect(0, 0, 300, 300)] autorelease];
        [scroller setDocumentView:view];
        [[window_ contentView] addSubview:scroller];
        [window_ orderFront:nil];
        delegate = [[TableBenchDelegate alloc] init];
        if (byHand) {
            source_ = [[RowsByHand alloc] init];
            source_->mRows = [made(kRows) retain];
            [view setDataSource:source_];
        } else {
            controller = [[TableController alloc] initWithTableView:view];
            [controller setDelegate:delegate];
            [controller setDatasourceArray:made(kRows)];
        }
        start_ = [rows() copy];
        some = [made(kSome) retain];
        chosen = [scattered() retain];
        reset();
    }
    ~Table()
    {
        [view setDataSource:nil];
        [controller release];
        [source_ release];
        [delegate release];
        [start_ release];
        [some release];
        [chosen release];
        [window_ close];
        [window_ release];
    }
    NSMutableArray *rows() const { return controller ? [controller datasourceArray] : source_->mRows; }
    /// All rows as at first, every tenth selected.
    void reset()
    {
        [view selectRowIndexes:[NSIndexSet indexSet] byExtendingSelection:NO];
        [rows() replaceObjectsInRange:NSMakeRange(0, [rows() count]) withObjectsFromArray:start_];
        [view noteNumberOfRowsChanged];
        [view selectRowIndexes:chosen byExtendingSelection:NO];
    }
    void selectByHand(NSRange range)
    {
        [view deselectAll:nil];
        [view noteNumberOfRowsChanged];
        [view selectRowIndexes:[NSIndexSet indexSetWithIndexesInRange:range] byExtendingSelection:YES];
        [view scrollRowToVisible:NSInteger(NSMaxRange(range)) - 1];
    }

    NSTableView *view = nil;
    NSTableColumn *column = nil;
    TableController *controller = nil;
    TableBenchDelegate *delegate = nil;
    NSArray *some = nil;
    NSIndexSet *chosen = nil;

private:
    NSWindow *window_ = nil;
    RowsByHand *source_ = nil;
    NSArray *start_ = nil;
};

NSInteger compareByHand(id row, id other, void *delegate)
{
    return [static_cast<TableBenchDelegate *>(delegate) tableController:nil compareRows:row with:other];
}

// By hand, in one pass each.
NSArray *takeOut(NSMutableArray *rows, NSIndexSet *chosen)
{
    std::vector<NSUInteger> indexes([chosen count]);
    [chosen getIndexes:indexes.data() maxCount:indexes.size() inIndexRange:nullptr];
    NSMutableArray *kept = [NSMutableArray arrayWithCapacity:[rows count]],
                   *taken = [NSMutableArray arrayWithCapacity:indexes.size()];
    size_t next = 0;
    for (NSUInteger i = 0; i < [rows count]; ++i) {
        const bool isChosen = next < indexes.size() && indexes[next] == i;
        next += isChosen;
        [isChosen ? taken : kept addObject:[rows objectAtIndex:i]];
    }
    [rows replaceObjectsInRange:NSMakeRange(0, [rows count]) withObjectsFromArray:kept];
    return taken;
}

using Step = void (*)(Table &table);

void cells(Table &table)
{
    id source = [table.view dataSource];
    for (NSUInteger i = 0; i < kRows; ++i)
        benchmark::DoNotOptimize([source tableView:table.view
                         objectValueForTableColumn:table.column
                                               row:NSInteger(i)]);
}
void insert(Table &table) { [table.controller insertDatasourceArray:table.some atIndex:0]; }
void insertByHand(Table &table)
{
    [table.rows() replaceObjectsInRange:NSMakeRange(0, 0) withObjectsFromArray:table.some];
    table.selectByHand(NSMakeRange(0, kSome));
}
void remove(Table &table) { [table.controller delete:nil]; }
void removeByHand(Table &table)
{
    takeOut(table.rows(), [table.view selectedRowIndexes]);
    [table.view deselectAll:nil];
    [table.view noteNumberOfRowsChanged];
}
void move(Table &table) { [table.controller moveRows:[table.controller selectedRowArray] to:kRows / 2]; }
void moveByHand(Table &table)
{
    NSArray *taken = takeOut(table.rows(), [table.view selectedRowIndexes]);
    const NSUInteger place = kRows / 2 - kSome / 2;
    [table.rows() replaceObjectsInRange:NSMakeRange(place, 0) withObjectsFromArray:taken];
    table.selectByHand(NSMakeRange(place, kSome));
}
void replace(Table &table) { [table.controller replaceSelectionWithDatasourceArray:table.some]; }
void replaceByHand(Table &table)
{
    NSIndexSet *selected = [table.view selectedRowIndexes];
    NSUInteger k = 0;
    for (NSUInteger i = [selected firstIndex]; i != NSNotFound; i = [selected indexGreaterThanIndex:i])
        [table.rows() replaceObjectAtIndex:i withObject:[table.some objectAtIndex:k++]];
    [table.view noteNumberOfRowsChanged];
}
void sort(Table &table) { [table.controller sortAll:nil]; }
void sortByHand(Table &table)
{
    [table.rows() sortUsingFunction:compareByHand context:table.delegate];
    [table.view noteNumberOfRowsChanged];
}

void run(benchmark::State &state, bool byHand, Step step, bool changes)
{
    if (!std::getenv("DISPLAY"))
        return state.SkipWithError("there is no display");
    tarvik::Pool pool;
    Table table(byHand);
    for (auto _ : state) {
        tarvik::Pool each;
        step(table);
        if (!changes)
            continue;
        state.PauseTiming();
        table.reset();
        state.ResumeTiming();
    }
}

#define BENCH(NAME, OURS, HAND, CHANGES)                                                                     \
    BENCHMARK_CAPTURE(run, OURS, false, OURS, CHANGES)                                                       \
        ->Name("table/" NAME ":tarvik")                                                                      \
        ->Unit(benchmark::kMillisecond);                                                                     \
    BENCHMARK_CAPTURE(run, HAND, true, HAND, CHANGES)                                                        \
        ->Name("table/" NAME ":by hand")                                                                     \
        ->Unit(benchmark::kMillisecond)

BENCH("100000 cells", cells, cells, false);
BENCH("insert 10000 at the top", insert, insertByHand, true);
BENCH("delete 10000 selected", remove, removeByHand, true);
BENCH("move 10000", move, moveByHand, true);
BENCH("replace 10000 selected", replace, replaceByHand, true);
BENCH("sort 100000", sort, sortByHand, true);

}  // namespace
