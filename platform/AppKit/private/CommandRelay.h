// What becomes of a click that no action was given for.
#pragma once
#include <CoreFoundation/CFBase.h>
#import <Foundation/NSObject.h>

@class NSControl, NSMenuItem;

/// A click on the control is sent to its window's event handlers: that it was hit, and, when nobody takes that, its command.
/// A control with an action of its own keeps it.
void RelayHits(NSControl *control);
/// Choosing the item is sent to the application's event handlers as the command. An item with an action keeps it.
void RelayCommand(NSMenuItem *item, UInt32 command);
