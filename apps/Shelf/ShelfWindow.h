/// \file
/// The window: buttons above, the table, and below it the selected image, what goes on and how many there are.
/// It holds no logic: its buttons send their actions to the target, or along the responder chain.
#pragma once
#import <AppKit/AppKit.h>
#include <Tarvik/TarvikUI.h>

#include "Style.h"

/// A table whose Return key opens and whose Delete key deletes.
@interface ShelfTable : TableView
@end

@interface ShelfWindow : NSWindow {
@public
    ShelfTable *mTable;
    NSMutableArray *mButtons;  // those above: each enabled when its action may be done
    FileIconView *mIcon;
    NSTextField *mTitle, *mDetail, *mStatus, *mEmpty;
    FlatProgress *mProgress;
    NSButton *mCancel;
}
- (id)initWithTarget:(id)target labels:(NSMenu *)labels;
/// What goes on, how far (below 0: not known) and whether it can be cancelled; nil: nothing goes on.
- (void)showWork:(NSString *)text fraction:(double)fraction;
@end
