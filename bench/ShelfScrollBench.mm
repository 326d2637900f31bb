// The longest pause while a table of 10,000 rows is scrolled from top to bottom: Shelf's, beside a bare one of the same texts.
#import <AppKit/AppKit.h>
#import <GNUstepGUI/GSDisplayServer.h>
#import <Tarvik/support/Pool.h>
#include <apps/Shelf/ShelfController.h>
#include <apps/Shelf/Style.h>
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>

extern "C" int XSync(void *display, int discard);  // Xlib's header and AppKit's share names

/// A table's texts out of an array, and nothing more.
@interface BareRows : NSObject {
@public
    NSArray *mRows;
}
@end
@implementation BareRows
- (NSInteger)numberOfRowsInTableView:(NSTableView *)table
{
    return (void)table, NSInteger([mRows count]);
}
- (id)tableView:(NSTableView *)table objectValueForTableColumn:(NSTableColumn *)column row:(NSInteger)row
{
    (void)table;
    return [[mRows objectAtIndex:NSUInteger(row)] objectForKey:[column identifier]];
}
@end

namespace {

constexpr int kRows = 10000, kStep = 3 * 22;  // points: what a notch of the wheel moves

/// Names that fit and paths that must be cut, labels, notes.
NSArray *made()
{
    NSMutableArray *rows = [NSMutableArray arrayWithCapacity:kRows];
    for (int i = 0; i < kRows; ++i) {
        NSString *path = [NSString
            stringWithFormat:@"/srv/images of the archive/%d/shelf %d/Volume %d.img", i / 1000, i / 100, i];
        [rows
            addObject:[NSDictionary
                          dictionaryWithObjectsAndKeys:[NSString stringWithFormat:@"Volume %d", i],
                                                       shelf::kName, path, shelf::kPath,
                                                       [NSNumber numberWithInt:i * 7919], shelf::kSize,
                                                       [NSString stringWithFormat:@"%040x", i * 7919],
                                                       shelf::kChecksum, [NSNumber numberWithInt:i % 8],
                                                       shelf::kLabel,
                                                       i % 3 ? @""
                                                             : @"a note on it that is longer than its column",
                                                       shelf::kNote, nil]];
    }
    return rows;
}

/// Lets the application do what it has to do.
void rest(NSTimeInterval seconds)
{
    for (NSDate *end = [NSDate dateWithTimeIntervalSinceNow:seconds];[end timeIntervalSinceNow] > 0;) {
        tarvik::Pool pool;
        if (NSEvent *event = [NSApp nextEventMatchingMask:NSAnyEventMask
                                                untilDate:end
                                                   inMode:NSDefaultRunLoopMode
                                                  dequeue:YES])
            [NSApp sendEvent:event];
    }
}

/// From top to bottom, at first by notches of the wheel, then by pages; the longest step with all its drawing, in seconds.
double longestPause(NSTableView *table)
{
    NSScrollView *scroller = [table enclosingScrollView];
    NSClipView *clip = [scroller contentView];
    double longest = 0;
    const CGFloat page = [clip bounds].size.height, bottom = [table frame].size.height - page;
    [clip scrollToPoint:NSZeroPoint];
    [[table window] displayIfNeeded];
    for (CGFloat y = 0; y < bottom; y += y < 60 * kStep ? kStep : 10 * page) {
        tarvik::Pool pool;
        const auto before = std::chrono::steady_clock::now();
        [clip scrollToPoint:NSMakePoint(0, y)];
        [scroller reflectScrolledClipView:clip];
        [[table window] displayIfNeeded];
        [[table window] flushWindow];
        XSync([GSCurrentServer() serverDevice], 0);  // drawn, not only asked for
        const std::chrono::duration<double> time = std::chrono::steady_clock::now() - before;
        longest = std::max(longest, time.count());
    }
    return longest;
}

void measure(benchmark::State &state, NSTableView *table)
{
    rest(0.5);
    for (auto _ : state)
        state.SetIterationTime(longestPause(table));
}

void scrollShelf(benchmark::State &state)
{
    if (!std::getenv("DISPLAY"))
        return state.SkipWithError("there is no display");
    tarvik::Pool pool;
    [[NSUserDefaults standardUserDefaults] setObject:made() forKey:shelf::kImagesDefault];
    shelf::registerStyle();
    [NSApplication sharedApplication];
    ShelfController *shelf = [[ShelfController alloc] init];
    [shelf show];
    while (shelf->mIsSurveying)
        rest(0.1);
    measure(state, shelf->mWindow->mTable);
    [(id)shelf applicationWillTerminate:nil];
    [shelf release];
}

void scrollBare(benchmark::State &state)
{
    if (!std::getenv("DISPLAY"))
        return state.SkipWithError("there is no display");
    tarvik::Pool pool;
    shelf::registerStyle();  // the same fonts
    [NSApplication sharedApplication];
    NSWindow *window = [[NSWindow alloc] initWithContentRect:NSMakeRect(160, 240, 960, 560)
                                                   styleMask:NSTitledWindowMask
                                                     backing:NSBackingStoreBuffered
                                                       defer:NO];
    [window setReleasedWhenClosed:NO];
    NSTableView *table = [[[NSTableView alloc] initWithFrame:NSMakeRect(0, 0, 960, 200)] autorelease];
    const struct {
        NSString *key;
        CGFloat width;
    } columns[] = {{shelf::kName, 150},     {shelf::kPath, 230}, {shelf::kMounted, 140}, {shelf::kSize, 76},
                   {shelf::kChecksum, 110}, {shelf::kLabel, 82}, {shelf::kNote, 140}};
    for (const auto &each : columns) {
        NSTableColumn *column = [[[NSTableColumn alloc] initWithIdentifier:each.key] autorelease];
        [column setWidth:each.width];
        [[column dataCell] setFont:[NSFont systemFontOfSize:11]];
        [table addTableColumn:column];
    }
    [table setRowHeight:22];
    BareRows *rows = [[BareRows alloc] init];
    rows->mRows = made();
    [table setDataSource:rows];
    NSScrollView *scroller = [[[NSScrollView alloc] initWithFrame:NSMakeRect(0, 74, 960, 434)] autorelease];
    [scroller setHasVerticalScroller:YES];
    [scroller setDocumentView:table];
    [[window contentView] addSubview:scroller];
    [window makeKeyAndOrderFront:nil];
    measure(state, table);
    [table setDataSource:nil];
    [window close];
    [window release];
    [rows release];
}

BENCHMARK(scrollShelf)
    ->Name("shelf/scroll 10000 rows, longest pause:tarvik")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(2);
BENCHMARK(scrollBare)
    ->Name("shelf/scroll 10000 rows, longest pause:bare NSTableView")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(2);

}  // namespace
