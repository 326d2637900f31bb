/// \file
/// A window as a sheet, and placed as the toolbox places windows.
///
/// Thread: main.
#pragma once
#include <Carbon/MacWindows.h>
#ifdef __OBJC__
#import <AppKit/NSWindow.h>

#include <stdint.h>

@interface NSWindow (AppKitXSheets)
/// Begins the receiver as a sheet of the window; returns at once.
- (void)beginSheetForWindow:(NSWindow *)window
              modalDelegate:(id)delegate
             didEndSelector:(SEL)didEnd
                contextInfo:(void *)context;
/// Ends the sheet and closes it; the selector's code is the platform's for a stopped session, or the given one.
- (void)closeSheet;
- (void)closeSheetWithReturnCode:(int32_t)code;

/// Moves the window to where the toolbox would put a document window whose content has the size of the receiver's frame
/// (kWindowCenterOnMainScreen and so on). NO when a toolbox call fails: a method that does not exist, or one that names a
/// parent without it.
- (BOOL)reposition:(WindowPositionMethod)method parentWindow:(WindowRef)parent;
@end
#endif
