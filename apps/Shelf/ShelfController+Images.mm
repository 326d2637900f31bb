#include "ShelfController.h"

#include "Images.h"
#include "Panels.h"

#import <Tarvik/support/ArrayRange.h>

#include <memory>
#include <utility>

namespace {

NSString *shortName(NSString *path) { return [path lastPathComponent]; }

/// Lets the work go on until the job is cancelled; its part of the job begins at `from`.
shelf::Progress progressOf(Job *job, double from = 0, double share = 1)
{
    return [=](double fraction) {
        job->mFraction = from + share * fraction;
        return !job->mCancelled;
    };
}

/// What happened to each of several images.
struct Outcomes {
    tarvik::Retained<NSMutableArray *> failures = tarvik::adopt<NSMutableArray>([NSMutableArray new]);
    tarvik::Retained<NSMutableDictionary *> checksums =
        tarvik::adopt<NSMutableDictionary>([NSMutableDictionary new]);
};

/// Does something to each path, with the job's progress going along; ends when the job is cancelled.
void forEach(Job *job, NSArray *paths,
             const std::function<void(NSString *path, const shelf::Progress &)> &step)
{
    const double count = double([paths count]);
    for (NSUInteger i = 0; i < [paths count] && !job->mCancelled; ++i)
        step([paths objectAtIndex:i], progressOf(job, double(i) / count, 1 / count));
}

}  // namespace

@interface ShelfController (ImageWork)
- (NSArray *)selectedPathsMounted:(bool)mounted;
- (NSMutableDictionary *)rowOfPath:(NSString *)path;
- (NSString *)titleOf:(NSString *)one many:(NSString *)many paths:(NSArray *)paths;
- (void)mount:(NSArray *)paths thenOpen:(BOOL)opens;
- (void)openMounted:(NSArray *)paths;
- (void)verified:(NSDictionary *)checksums failures:(NSArray *)failures;
@end

@implementation ShelfController (Images)

- (NSArray *)selectedPathsMounted:(bool)mounted
{
    NSMutableArray *paths = [NSMutableArray array];
    for (NSString *path : tarvik::each<NSString>([self selectedPaths])) {
        if (([mMounts objectForKey:path] != nil) == mounted)
            [paths addObject:path];
    }
    return paths;
}

/// The row of a path, wherever it has gone to while a job ran.
- (NSMutableDictionary *)rowOfPath:(NSString *)path
{
    for (NSMutableDictionary *row : tarvik::each<NSMutableDictionary>([mRows datasourceArray])) {
        if ([shelf::text(row, shelf::kPath) isEqual:path])
            return row;
    }
    return nil;
}

- (NSString *)titleOf:(NSString *)one many:(NSString *)many paths:(NSArray *)paths
{
    return [paths count] == 1 ? [NSString stringWithFormat:[one localize], shortName([paths objectAtIndex:0])]
                              : [NSString stringWithFormat:[many localize], int([paths count])];
}

- (IBAction)addImages:(id)sender
{
    (void)sender;
    shelf::chooseImages(
        mWindow, [self](NSArray *paths) { [self addPaths:paths atIndex:[self->mRows insertIndexToAdd]]; });
}

- (IBAction)newImageFromFolder:(id)sender
{
    (void)sender;
    shelf::chooseFolder(mWindow, [@"Make an image of which folder?" localize], [self](NSString *folder) {
        NSString *name = [[folder lastPathComponent] stringByAppendingPathExtension:@"img"];
        const auto kept = tarvik::retain(folder);
        shelf::chooseDestination(
            self->mWindow,
            {.title = [@"Save the image" localize],
             .name = name,
             .type = @"img",
             .folder = [folder stringByDeletingLastPathComponent]},  // not into what it is made of
            [=](NSString *path) { [self makeImage:path ofFolder:kept.get()]; });
    });
}

- (void)makeImage:(NSString *)given ofFolder:(NSString *)folder
{
    const auto path = tarvik::retain(shelf::fullPath(given)), source = tarvik::retain(folder);
    auto made = std::make_shared<bool>(false);
    [mJobs add:makeJob(
                   [NSString stringWithFormat:[@"Making “%@”…" localize], shortName(path.get())],
                   [=](Job *me) { *made = shelf::createImage(source.get(), path.get(), progressOf(me)); },
                   [=](Job *me) {
                       if (*made) {
                           if (NSMutableDictionary *row =
                                   [self rowOfPath:path.get()])  // a new file under an old name
                               [row removeObjectForKey:shelf::kChecksum];
                           [self->mVerified removeObjectForKey:path.get()];
                           [self addPaths:[NSArray arrayWithObject:path.get()]
                                  atIndex:[self->mRows insertIndexToAdd]];
                       } else if (!me->mCancelled) {
                           [self failed:[NSString stringWithFormat:[@"No image was made of “%@”." localize],
                                                                   shortName(source.get())]
                                because:[@"Check that you may read everything in the folder and write where "
                                         @"the image is to be, "
                                         @"and that there is room on the disk." localize]];
                       }
                   })];
}

- (void)mount:(NSArray *)given thenOpen:(BOOL)opens
{
    const auto paths = tarvik::retain(given);
    auto outcomes = std::make_shared<Outcomes>();
    const auto work = [=](Job *me) {
        forEach(me, paths.get(), [=](NSString *path, const shelf::Progress &progress) {
            NSString *reason = nil;
            if (!shelf::mountImage(path, reason))
                [outcomes->failures.get()
                    addObject:[NSString stringWithFormat:@"%@\n%@", shortName(path), reason ? reason : @""]];
            progress(1);
        });
    };
    [mJobs
        add:makeJob(
                [self titleOf:@"Mounting “%@”…" many:@"Mounting %d images…" paths:given], work, [=](Job *) {
                    [self survey];
                    NSArray *failures = outcomes->failures.get();
                    if ([failures count])
                        [self failed:[@"This could not be mounted." localize]
                             because:
                                 [NSString
                                     stringWithFormat:
                                         @"%@\n\n%@", [failures componentsJoinedByString:@"\n"],
                                         [@"Check that the file is a disk image (squashfs, ext4 or ISO 9660) "
                                          @"and that it is whole: Verify compares its checksum." localize]]];
                    else if (opens)
                        [self performSelector:@selector(openMounted:) withObject:paths.get() afterDelay:0];
                })];
}

/// Shows the folders in the file viewer.
- (void)openMounted:(NSArray *)paths
{
    NSDictionary *volumes = mMounts;
    for (NSString *path : tarvik::each<NSString>(paths)) {
        NSString *point = [volumes objectForKey:path];
        if (!point)
            point = [DiskImage mountingVolumeOfFilepath:path];
        if (point && ![point open])
            [self failed:[@"The folder could not be opened." localize]
                 because:[NSString stringWithFormat:[@"There is no file manager that opens “%@”. Install "
                                                     @"one, or choose one for folders." localize],
                                                    point]];
    }
}

- (IBAction)mountImages:(id)sender
{
    (void)sender;
    NSArray *paths = [self selectedPathsMounted:false];
    if ([paths count])
        [self mount:paths thenOpen:NO];
}

- (IBAction)openImages:(id)sender
{
    // A double click on a heading is no wish to open.
    if (sender == mWindow->mTable && [mWindow->mTable clickedRow] < 0 &&
        [[NSApp currentEvent] type] != NSKeyDown)
        return;
    NSArray *paths = [self selectedPathsMounted:false];
    if ([paths count])
        [self mount:paths thenOpen:YES];
    [self openMounted:[self selectedPathsMounted:true]];
}

- (IBAction)unmountImages:(id)sender
{
    (void)sender;
    const auto paths = tarvik::retain([self selectedPathsMounted:true]);
    if (![paths.get() count])
        return;
    auto outcomes = std::make_shared<Outcomes>();
    const auto work = [=](Job *me) {
        forEach(me, paths.get(), [outcomes](NSString *path, const shelf::Progress &progress) {
            if (![[DiskImage diskImageWithFilepath:path] unmount])
                [outcomes->failures.get() addObject:shortName(path)];
            progress(1);
        });
    };
    [mJobs
        add:makeJob([self titleOf:@"Unmounting “%@”…" many:@"Unmounting %d images…" paths:paths.get()], work,
                    [=](Job *) {
                        [self survey];
                        NSArray *failures = outcomes->failures.get();
                        if ([failures count])
                            [self failed:[@"This is still mounted." localize]
                                 because:[NSString
                                             stringWithFormat:@"%@\n\n%@",
                                                              [failures componentsJoinedByString:@"\n"],
                                                              [@"A program has a file or folder of it open. "
                                                               @"Close it, then unmount again." localize]]];
                    })];
}

- (IBAction)revealImages:(id)sender
{
    (void)sender;
    for (NSString *path : tarvik::each<NSString>([self selectedPaths])) {
        if (![path exists])
            [self failed:[NSString stringWithFormat:[@"“%@” is not there." localize], shortName(path)]
                 because:[@"It was moved to another disk or deleted. Put it back, or delete the row."
                             localize]];
        else if (![path show])
            [self failed:[@"The file could not be shown." localize]
                 because:[@"There is no file manager that shows files. Install one." localize]];
        else
            continue;
        return;
    }
}

// ---- Checksums

- (IBAction)verifyImages:(id)sender
{
    (void)sender;
    const auto paths = tarvik::retain([self selectedPaths]);
    if (![paths.get() count])
        return;
    auto outcomes = std::make_shared<Outcomes>();
    const auto work = [=](Job *me) {
        forEach(me, paths.get(), [outcomes](NSString *path, const shelf::Progress &progress) {
            NSString *reason = nil;
            if (NSString *checksum = shelf::checksumOfImage(path, progress, reason))
                [outcomes->checksums.get() setObject:checksum forKey:path];
            else if (reason)
                [outcomes->failures.get()
                    addObject:[NSString stringWithFormat:@"%@: %@", shortName(path), reason]];
        });
    };
    [mJobs add:makeJob([self titleOf:@"Verifying “%@”…" many:@"Verifying %d images…" paths:paths.get()], work,
                       [=](Job *) {
                           [self verified:outcomes->checksums.get() failures:outcomes->failures.get()];
                       })];
}

/// A first checksum is kept; another one than before is kept only when the user says so.
- (void)verified:(NSDictionary *)checksums failures:(NSArray *)failures
{
    NSMutableArray *different = [NSMutableArray array];
    for (NSMutableDictionary *row : tarvik::each<NSMutableDictionary>([mRows datasourceArray])) {
        NSString *path = shelf::text(row, shelf::kPath), *checksum = [checksums objectForKey:path];
        if (!checksum)
            continue;
        NSString *before = shelf::text(row, shelf::kChecksum);
        const bool isSame = ![before length] || [before isEqual:checksum];
        if (isSame)
            [row setObject:checksum forKey:shelf::kChecksum];
        else
            [different addObject:path];
        [mVerified setObject:[NSNumber numberWithBool:isSame] forKey:path];
    }
    [self rowsChanged];
    if ([failures count]) {
        [self failed:[@"Not everything could be verified." localize]
             because:[failures componentsJoinedByString:@"\n"]];
    } else if ([different count]) {
        const auto changed = tarvik::retain(different);
        const auto found = tarvik::retain(checksums);
        NSMutableArray *names = [NSMutableArray array];
        for (NSString *path : tarvik::each<NSString>(different))
            [names addObject:shortName(path)];
        NSString *message = [NSString
            stringWithFormat:
                @"%@\n\n%@", [names componentsJoinedByString:@"\n"],
                [@"If you changed it yourself, keep the new checksum. If not, the file may be damaged: "
                 @"take it from a backup." localize]];
        shelf::ask(mWindow,
                   {.title = [@"The checksum is not the one in the catalogue." localize],
                    .message = message,
                    .defaultButton = [@"Keep Old" localize],
                    .alternateButton = [@"Keep New" localize]},
                   [=](bool keepsOld) {
                       for (NSString *path : tarvik::each<NSString>(keepsOld ? nil : changed.get())) {
                           [[self rowOfPath:path] setObject:[found.get() objectForKey:path]
                                                     forKey:shelf::kChecksum];
                           [self->mVerified setObject:[NSNumber numberWithBool:YES] forKey:path];
                       }
                       [self rowsChanged];
                   });
    }
}

// ---- Labels: of the row, and of the file, where other programs see it

- (IBAction)setImageLabel:(id)sender
{
    const int label = int([sender tag]);
    if (!shelf::labelName(label))
        return;
    for (NSMutableDictionary *row : tarvik::each<NSMutableDictionary>([self selectedRows])) {
        [row setObject:[NSNumber numberWithInt:label] forKey:shelf::kLabel];
        [shelf::text(row, shelf::kPath)
            setLabelColorIndex:UInt32(label)];  // a file that may not be written keeps its own
    }
    [self rowsChanged];
}

@end
