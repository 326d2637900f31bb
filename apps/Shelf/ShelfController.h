/// \file
/// Shelf itself: the application's and the table's delegate, and the target of the actions.
///
/// | file | what is in it |
/// |---|---|
/// | ShelfController.mm | the application's life; what the system says about the images; what the window shows; menus |
/// | ShelfController+Rows.mm | the table's delegate: values, sorting, editing, dragging, the pasteboard, undo of deletion |
/// | ShelfController+Images.mm | adding, making, mounting, verifying, labels |
/// | ShelfController+Catalogue.mm | export, publishing, printing |
///
/// Rows are in `mRows` (the toolkit's TableController), which keeps them in the user defaults. Long work is a Job.
#pragma once
#import <AppKit/AppKit.h>
#include <Tarvik/TarvikUI.h>

#include "Catalogue.h"
#include "Job.h"
#include "ShelfWindow.h"

@interface ShelfController : NSObject {
@public
    ShelfWindow *mWindow;
    TableController *mRows;
    JobQueue *mJobs;
    NSUndoManager *mUndo;
    NSMenu *mLabels;
    NSTimer *mTimer;        // moves the progress, surveys now and then
    NSDictionary *mMounts;  // mount point by image path, as the system said last
    NSSet *mMissing;        // paths where nothing is
    NSMutableDictionary
        *mVerified;  // by path, whether the checksum was the one in the catalogue; of this session
    NSString *mSortKey;
    BOOL mSortsDown, mIsSurveying, mSurveyAgain;
    NSDate *mLastSurvey;
    NSString *mNews;  // of the last job, in place of the count
}
/// Makes the window, with the rows of the user defaults.
- (id)init;
- (void)show;
/// What the window shows beside the rows: buttons, the selected image, the count.
- (void)refresh;
/// Shows the news in place of the count, until a job begins or the rows or the selection change; nil: the count again.
- (void)tell:(NSString *)news;
/// Rows have changed: they are stored soon, and shown.
- (void)rowsChanged;
/// Writes the rows to the user defaults now.
- (void)store;
/// Asks the system, in the background, which images are mounted and where those are that were moved.
- (void)survey;
- (void)failed:(NSString *)title because:(NSString *)message;
- (BOOL)validateAction:(SEL)action;
- (IBAction)cancelWork:(id)sender;
@end

@interface ShelfController (Rows)
/// Adds files: images, and exported catalogues. What can't be added is told of.
- (void)addPaths:(NSArray *)paths atIndex:(int32_t)index;
/// Paths of the selected rows that have one.
- (NSArray *)selectedPaths;
/// The selected rows that are dictionaries.
- (NSArray *)selectedRows;
- (void)setSortKey:(NSString *)key;
- (IBAction)sortByColumn:(id)sender;
- (IBAction)undo:(id)sender;
- (IBAction)redo:(id)sender;
@end

@interface ShelfController (Images)
- (IBAction)addImages:(id)sender;
- (IBAction)newImageFromFolder:(id)sender;
/// What newImageFromFolder: does with its answers.
- (void)makeImage:(NSString *)path ofFolder:(NSString *)folder;
- (IBAction)mountImages:(id)sender;
- (IBAction)unmountImages:(id)sender;
/// Mounts what is not mounted, and shows the mounted folder.
- (IBAction)openImages:(id)sender;
- (IBAction)revealImages:(id)sender;
- (IBAction)verifyImages:(id)sender;
- (IBAction)setImageLabel:(id)sender;
@end

@interface ShelfController (Catalogue)
- (IBAction)exportCatalogue:(id)sender;
- (IBAction)publishCatalogue:(id)sender;
- (IBAction)printNotes:(id)sender;
- (void)exportTo:(NSString *)path;
- (void)publishTo:(NSString *)url;
/// The text that is printed.
- (NSString *)notesText;
@end
