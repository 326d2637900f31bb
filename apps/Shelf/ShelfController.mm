#include "ShelfController.h"

#include "MainMenu.h"
#include "Panels.h"
#include "Theme.h"

#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/support/Pool.h>

#include <utility>

namespace {

constexpr NSTimeInterval kTick = 0.1, kSurveyInterval = 5, kStoreDelay = 1, kPatience = 5;

/// `object` in the place of what was there.
template <class T>
void assign(T *&place, T *object)
{
    [object retain];
    [std::exchange(place, object) release];
}

}  // namespace

@interface ShelfController (Upkeep)
- (void)tick:(NSTimer *)timer;
- (void)showIconOf:(NSArray *)paths;
- (void)surveyRows:(NSArray *)rows;
- (void)surveyed:(NSArray *)answer;
@end

@implementation ShelfController

- (id)init
{
    if (!(self = [super init]))
        return nil;
    NSUserDefaults *defaults = [NSUserDefaults standardUserDefaults];
    shelf::putForeignCatalogueAside(defaults);
    mUndo = [[NSUndoManager alloc] init];
    mJobs = [[JobQueue alloc] init];
    mJobs->mChanged = [self] { [self refresh]; };
    mVerified = [[NSMutableDictionary alloc] init];
    mLabels = [shelf::labelMenu(self) retain];
    mWindow = [[ShelfWindow alloc] initWithTarget:self labels:mLabels];
    [mWindow setDelegate:self];
    mRows = [[TableController alloc] initWithTableView:mWindow->mTable userDefaultKey:shelf::kImagesDefault];
    [mRows setDelegate:self];
    [mRows setDropTargetForTypes:[NSArray arrayWithObjects:@"TarvikShelfRows", NSFilenamesPboardType, nil]];
    [mWindow->mTable setTarget:self];
    [mWindow->mTable setDoubleAction:@selector(openImages:)];
    [self refresh];
    return self;
}

- (void)dealloc
{
    [NSObject cancelPreviousPerformRequestsWithTarget:self];
    [mTimer invalidate];
    [mWindow setDelegate:nil];
    [mRows setDelegate:nil];
    [mRows release];
    [mWindow close];
    [mWindow release];
    mJobs->mChanged = nullptr;
    for (NSObject *owned : {(NSObject *)mJobs, (NSObject *)mUndo, (NSObject *)mLabels, (NSObject *)mMounts,
                            (NSObject *)mMissing, (NSObject *)mVerified, (NSObject *)mSortKey,
                            (NSObject *)mLastSurvey, (NSObject *)mNews})
        [owned release];
    [super dealloc];
}

- (void)show
{
    if (![mWindow setFrameUsingName:@"Shelf"])
        [mWindow center];
    [mWindow setFrameAutosaveName:@"Shelf"];
    [mWindow makeKeyAndOrderFront:nil];
    [mWindow makeFirstResponder:mWindow->mTable];
    mTimer = [NSTimer timerWithTimeInterval:kTick
                                     target:self
                                   selector:@selector(tick:)
                                   userInfo:nil
                                    repeats:YES];
    for (NSString *mode : tarvik::each<NSString>([JobQueue modes]))
        [[NSRunLoop currentRunLoop] addTimer:mTimer forMode:mode];
    [self survey];
}

// ---- What the window shows

- (void)refresh
{
    for (NSButton *button : tarvik::each<NSButton>(mWindow->mButtons))
        [button setEnabled:[button isKindOfClass:[MenuButton class]] ? [[self selectedPaths] count] > 0
                                                                     : [self validateAction:[button action]]];
    const NSUInteger count = [[mRows datasourceArray] count];
    [mWindow->mEmpty setHidden:count > 0];

    NSArray *selected = [self selectedRows];
    NSDictionary *row = [selected count] == 1 ? [selected objectAtIndex:0] : nil;
    NSArray *paths = [self selectedPaths];
    if ([paths count])
        [self showIconOf:paths];
    [mWindow->mIcon setHidden:![paths count]];
    NSString *title = @"", *detail = @"";
    if (row) {
        NSString *path = shelf::text(row, shelf::kPath), *point = [mMounts objectForKey:path];
        title = shelf::text(row, shelf::kName);
        detail = [mMissing containsObject:path]
                     ? [@"The image is not where it was: put it back, or delete the row." localize]
                 : point ? [NSString stringWithFormat:[@"Mounted at %@" localize], point]
                         : path;
    } else if ([selected count]) {
        int64_t size = 0;
        for (id each : tarvik::each<NSObject>(selected))
            size += shelf::number(each, shelf::kSize);
        title = [NSString stringWithFormat:[@"%d images selected" localize], int([selected count])];
        detail = [NSString stringWithFormat:[@"%@ together" localize], shelf::shownSize(size)];
    }
    [mWindow->mTitle setStringValue:title];
    [mWindow->mDetail setStringValue:detail];

    if (Job *job = [mJobs current]) {
        assign<NSString>(mNews, nil);
        [mWindow showWork:job->mTitle fraction:job->mFraction];
    } else {
        [mWindow showWork:nil fraction:0];
        int mounted = 0;
        for (id each : tarvik::each<NSObject>([mRows datasourceArray]))
            mounted += [mMounts objectForKey:shelf::text(each, shelf::kPath)] != nil;
        NSString *format =
            count == 1 ? [@"%d image, %d mounted" localize] : [@"%d images, %d mounted" localize];
        [mWindow->mStatus
            setStringValue:mNews ? mNews : [NSString stringWithFormat:format, int(count), mounted]];
    }
}

- (void)tell:(NSString *)news
{
    assign(mNews, news);
    [self refresh];
}

- (void)showIconOf:(NSArray *)paths
{
    [mWindow->mIcon setFiles:paths];
    if (NSImage *icon = [NSImage imageNamed:@"DiskImage"])  // the desktop has none for images
        [mWindow->mIcon setImage:icon];
}

- (void)failed:(NSString *)title because:(NSString *)message
{
    shelf::ask(mWindow, {.title = title, .message = message});
}

- (void)rowsChanged
{
    [mRows
        storeDatasource:
            self];  // at once, so that they are kept if the display goes away; the file is written a little later
    [NSObject cancelPreviousPerformRequestsWithTarget:self selector:@selector(store) object:nil];
    [self performSelector:@selector(store) withObject:nil afterDelay:kStoreDelay inModes:[JobQueue modes]];
    [mWindow->mTable reloadData];
    [self tell:nil];
}

- (void)store
{
    [NSObject cancelPreviousPerformRequestsWithTarget:self selector:@selector(store) object:nil];
    [mRows storeDatasource:self];
    [[NSUserDefaults standardUserDefaults] synchronize];
}

- (void)survey
{
    if (mIsSurveying) {
        mSurveyAgain = YES;
        return;
    }
    mIsSurveying = YES;
    [NSThread detachNewThreadSelector:@selector(surveyRows:)
                             toTarget:self
                           withObject:shelf::snapshot([mRows datasourceArray])];
}

- (void)surveyRows:(NSArray *)rows
{
    tarvik::Pool pool;
    const shelf::Survey found = shelf::survey(rows);
    NSArray *answer =
        [NSArray arrayWithObjects:found.mounts.get(), found.missing.get(), found.moved.get(), nil];
    [self performSelectorOnMainThread:@selector(surveyed:)
                           withObject:answer
                        waitUntilDone:NO
                                modes:[JobQueue modes]];
}

- (void)surveyed:(NSArray *)answer
{
    NSDictionary *mounts = [answer objectAtIndex:0], *moved = [answer objectAtIndex:2];
    NSSet *missing = [answer objectAtIndex:1];
    const bool isNews = ![mounts isEqual:mMounts] || ![missing isEqual:mMissing] || [moved count];
    assign(mMounts, mounts);
    assign(mMissing, missing);
    NSDate *const now = [NSDate date];
    assign(mLastSurvey, now);
    mIsSurveying = NO;
    for (NSMutableDictionary *row :
         tarvik::each<NSMutableDictionary>([moved count] ? [mRows datasourceArray] : nil)) {
        if (NSString *now = [moved objectForKey:shelf::text(row, shelf::kPath)])
            [row setObject:now forKey:shelf::kPath];
    }
    if ([moved count])
        [self rowsChanged];
    else if (isNews)
        [mWindow->mTable reloadData];
    if (isNews)
        [self refresh];
    if (std::exchange(mSurveyAgain, NO))
        [self survey];
}

- (void)tick:(NSTimer *)timer
{
    (void)timer;
    if (Job *job = [mJobs current])
        [mWindow showWork:job->mTitle fraction:job->mFraction];
    else if ([NSApp isActive] && mLastSurvey && -[mLastSurvey timeIntervalSinceNow] > kSurveyInterval)
        [self survey];
}

// ---- Actions and whether they may be done

- (IBAction)cancelWork:(id)sender
{
    (void)sender;
    [mJobs cancelCurrent];
}

- (BOOL)validateAction:(SEL)action
{
    NSArray *paths = [self selectedPaths];
    if (sel_isEqual(action, @selector(undo:)))
        return [mUndo canUndo];
    if (sel_isEqual(action, @selector(redo:)))
        return [mUndo canRedo];
    if (sel_isEqual(action, @selector(mountImages:)) || sel_isEqual(action, @selector(unmountImages:))) {
        const bool wanted = sel_isEqual(action, @selector(unmountImages:));
        for (NSString *path : tarvik::each<NSString>(paths)) {
            if (([mMounts objectForKey:path] != nil) == wanted && (wanted || ![mMissing containsObject:path]))
                return YES;
        }
        return NO;
    }
    for (SEL needsSelection : {
             @selector(openImages:), @selector(revealImages:), @selector(verifyImages:),
                 @selector(setImageLabel:)
         }) {
        if (sel_isEqual(action, needsSelection))
            return [paths count] > 0;
    }
    for (SEL needsRows : {
             @selector(exportCatalogue:), @selector(publishCatalogue:), @selector(printNotes:),
                 @selector(sortByColumn:)
         }) {
        if (sel_isEqual(action, needsRows))
            return [[mRows datasourceArray] count] > 0;
    }
    return YES;
}

- (BOOL)validateMenuItem:(id<NSMenuItem>)item
{
    if ([mWindow attachedSheet])  // first the answer
        return NO;
    if (sel_isEqual([item action], @selector(setImageLabel:))) {
        NSArray *rows = [self selectedRows];
        [(NSMenuItem *)item setState:[rows count] == 1 && shelf::label([rows objectAtIndex:0]) == [item tag]];
    }
    return [self validateAction:[item action]];
}

// ---- The application's and the window's delegate

- (void)applicationWillFinishLaunching:(NSNotification *)notification
{
    (void)notification;
    shelf::putOnTheme();
    [NSApp setMainMenu:shelf::mainMenu()];
}

- (void)applicationDidFinishLaunching:(NSNotification *)notification
{
    (void)notification;
    [self show];
}

- (BOOL)application:(NSApplication *)application openFile:(NSString *)path
{
    (void)application;
    [self addPaths:[NSArray arrayWithObject:path] atIndex:[mRows insertIndexToAdd]];
    return YES;
}

- (void)applicationDidBecomeActive:(NSNotification *)notification
{
    (void)notification;
    // Window managers that hand the focus to and fro are not asked along.
    if (mLastSurvey && -[mLastSurvey timeIntervalSinceNow] > 1)
        [self survey];
}

- (BOOL)applicationShouldTerminateAfterLastWindowClosed:(NSApplication *)application
{
    return (void)application, YES;
}

- (void)applicationWillTerminate:(NSNotification *)notification
{
    (void)notification;
    [mWindow endEditingFor:nil];
    [mWindow saveFrameUsingName:@"Shelf"];
    [self store];
    [mJobs finishWithin:kPatience];
    [mTimer invalidate];  // it holds this object
    mTimer = nil;
}

- (NSUndoManager *)windowWillReturnUndoManager:(NSWindow *)window
{
    return (void)window, mUndo;
}

@end
