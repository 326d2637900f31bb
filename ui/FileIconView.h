/// \file
/// A view that shows the icon of a file, or of several, and lets it be dragged out as those files.
///
///     [iconView setFile:@"/home/anna/Backup.img"];    // a press on it drags the file to another window
///
/// Thread: main.
#pragma once
#ifdef __OBJC__
#import <AppKit/NSImageView.h>

@class NSMutableArray;

@interface FileIconView : NSImageView {
    NSMutableArray *mFiles;  // of paths
}
/// Registers for files dragged onto it, too.
- (id)init;
- (BOOL)makeMembers;
/// Shows the file's icon; "~" is not expanded. Nil changes nothing, here and below.
- (void)setFile:(NSString *)path;
/// Shows one icon for all.
- (void)setFiles:(NSArray *)paths;
/// Drags the files, their icon centred on the mouse; nothing without files.
- (void)mouseDown:(NSEvent *)event;
@end
#endif
