/// \file
/// Check marks of buttons, cells and menu items.
///
///     [item setChecked:YES];        // state 1
///     [button setState:NSMixedState];
///     [button checked]              -> YES: a mixed state counts as checked
///
/// Thread: main.
#pragma once
#ifdef __OBJC__
#import <AppKit/NSButton.h>
#import <AppKit/NSCell.h>
#import <AppKit/NSMenuItem.h>

@interface NSButton (AppKitX)
- (BOOL)checked;  ///< whether the state is not 0
- (void)setChecked:(BOOL)checked;
@end

@interface NSCell (AppKitX)
- (BOOL)checked;
- (void)setChecked:(BOOL)checked;
@end

@interface NSMenuItem (AppKitX)
- (BOOL)checked;
- (void)setChecked:(BOOL)checked;
- (void)toggleChecked;  ///< a mixed one is off then
@end
#endif
