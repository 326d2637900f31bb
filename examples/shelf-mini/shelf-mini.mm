// A catalogue of disk images in a hundred lines:
//     g++ -std=c++20 shelf-mini.mm $(pkg-config --cflags --libs tarvik-ui) -o shelf-mini && ./shelf-mini Photos.img
#import <AppKit/AppKit.h>
#include <Tarvik/TarvikUI.h>
#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/support/Pool.h>

@interface Shelf : NSObject {
    NSWindow *mWindow;
    TableController *mRows;
}
@end

@implementation Shelf

// ---- The window: a table whose columns are the keys of a row

- (void)applicationWillFinishLaunching:(NSNotification *)notification
{
    NSMenu *menu = [[[NSMenu alloc] initWithTitle:@"Shelf"] autorelease];
    [menu addItemWithTitle:@"Copy" action:@selector(copy:) keyEquivalent:@"c"];
    [menu addItemWithTitle:@"Paste" action:@selector(paste:) keyEquivalent:@"v"];
    [menu addItemWithTitle:@"Delete" action:@selector(delete:) keyEquivalent:@"d"];
    [menu addItemWithTitle:@"Sort" action:@selector(sortAll:) keyEquivalent:@"s"];
    [menu addItemWithTitle:@"Mount or Unmount" action:@selector(toggleMount:) keyEquivalent:@"m"];
    [menu addItemWithTitle:@"Quit" action:@selector(terminate:) keyEquivalent:@"q"];
    [NSApp setMainMenu:menu];

    mWindow = [[NSWindow alloc] initWithContentRect:NSMakeRect(200, 300, 640, 320)
                                          styleMask:NSTitledWindowMask | NSResizableWindowMask
                                            backing:NSBackingStoreBuffered
                                              defer:NO];
    [mWindow setTitle:@"Little Shelf"];
    NSScrollView *scroller =
        [[[NSScrollView alloc] initWithFrame:[[mWindow contentView] bounds]] autorelease];
    [scroller setHasVerticalScroller:YES];
    [scroller setAutoresizingMask:NSViewWidthSizable | NSViewHeightSizable];
    TableView *table = [[[TableView alloc] initWithFrame:[scroller bounds]] autorelease];
    for (NSString *key : {@"path", @"mounted", @"note"}) {
        NSTableColumn *column = [[[NSTableColumn alloc] initWithIdentifier:key] autorelease];
        [[column headerCell] setStringValue:[key capitalizedString]];
        [column setEditable:[key isEqual:@"note"]];
        [column setWidth:200];
        [table addTableColumn:column];
    }
    [scroller setDocumentView:table];
    [[mWindow contentView] addSubview:scroller];
    // The controller shows, edits, sorts, moves and keeps the rows: in the user defaults, under "Images".
    mRows = [[TableController alloc] initWithTableView:table userDefaultKey:@"Images"];
    [mRows setDelegate:self];
    [mWindow makeKeyAndOrderFront:nil];
}

- (BOOL)application:(NSApplication *)application openFile:(NSString *)path
{
    return [mRows addDatasourceArray:[NSArray arrayWithObject:path] ofColumn:@"path" visibleValue:NO];
}

- (void)applicationWillTerminate:(NSNotification *)notification
{
    [mRows storeDatasource:self];
    [[NSUserDefaults standardUserDefaults] synchronize];
}

// ---- What the Edit menu can do is what is here

- (id)tableController:(TableController *)rows
    convertVisibleValue:(id)value
    forColumnIdentifier:(id)key
                    row:(int32_t)row
{
    if (![key isEqual:@"mounted"])
        return value;
    return [DiskImage
        mountingVolumeOfFilepath:[[[rows datasourceArray] objectAtIndex:row] objectForKey:@"path"]];
}
- (void)tableController:(TableController *)rows delete:(id)sender
{
}
- (void)tableController:(TableController *)rows copy:(id)sender
{
    NSPasteboard *pasteboard = [NSPasteboard generalPasteboard];
    [pasteboard declareTypes:[NSArray arrayWithObject:NSFilenamesPboardType] owner:nil];
    [pasteboard setPropertyList:[rows selectedDatasourceOfColumn:@"path" visibleValue:NO]
                        forType:NSFilenamesPboardType];
}
- (NSArray *)tableController:(TableController *)rows paste:(id)sender
{
    NSArray *paths = [[NSPasteboard generalPasteboard] propertyListForType:NSFilenamesPboardType];
    return [rows addDatasourceArray:paths ofColumn:@"path" visibleValue:NO], nil;
}
- (NSComparisonResult)tableController:(TableController *)rows
                          compareRows:(NSDictionary *)row
                                 with:(NSDictionary *)other
{
    return [[row objectForKey:@"path"] compare:[other objectForKey:@"path"]];
}

- (void)toggleMount:(id)sender
{
    for (NSString *path : tarvik::each<NSString>([mRows selectedDatasourceOfColumn:@"path"
                                                                      visibleValue:NO])) {
        DiskImage *image = [DiskImage diskImageWithFilepath:path];
        if ([image mountPoint] ? ![image unmount] : ![image mount])
            NSRunAlertPanel(@"Little Shelf", @"%@ could not be mounted or unmounted.", @"OK", nil, nil, path);
    }
    [[mRows tableView] reloadData];
}

@end

int main()
{
    tarvik::Pool pool;
    [[NSApplication sharedApplication] setDelegate:(id)[[Shelf alloc] init]];
    [NSApp run];
    return 0;
}
