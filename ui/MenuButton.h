/// \file
/// A button that pops up a menu as soon as it is pressed.
///
///     [button setPulldownMenu:labels];    // or the outlet vPulldownMenu of an interface file
///
/// Without a menu of its own it shows its context menu; without that, nothing. Thread: main.
#pragma once
#ifdef __OBJC__
#import <AppKit/NSButton.h>
#import <AppKit/NSNibDeclarations.h>

@class NSMenu;

@interface MenuButton : NSButton {
    IBOutlet NSMenu *vPulldownMenu;  // not retained
}
/// Makes the button its own target, with the action `popPulldownMenu:`. Send it to one that does not come from an interface file.
- (void)awakeFromNib;
- (void)setPulldownMenu:(NSMenu *)menu;
- (IBAction)popPulldownMenu:(id)sender;
/// The menu, shown below the button when asked for: then this returns when it has been closed.
- (NSMenu *)pulldownMenuCore:(BOOL)show;
- (void)mouseDown:(NSEvent *)event;
@end
#endif
