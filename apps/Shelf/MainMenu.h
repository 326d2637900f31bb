/// \file
/// The menus. Items send their actions along the responder chain; who takes one says whether it may be chosen.
#pragma once
#import <AppKit/AppKit.h>

namespace shelf {

NSMenu *mainMenu();
/// "None" and the colours; the items' tags are the labels' numbers, their action is the target's `setImageLabel:`. Nil: of the
/// responder chain, as in the menu bar, where the numbers are their keys too.
NSMenu *labelMenu(id target);

}  // namespace shelf
