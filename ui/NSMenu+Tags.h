/// \file
/// Menu items in submenus, by the tags on the way.
///
///     [menu itemWithTags:3, 7, 0]    -> item 7 of the submenu of item 3
#pragma once
#ifdef __OBJC__
#import <AppKit/NSMenu.h>
#import <AppKit/NSMenuItem.h>

#include <stdarg.h>

/// Nil where an item or a submenu is missing on the way, and for a first tag of 0. Tags are passed as int, the last one is 0.
/// Thread: main.
@interface NSMenu (AppKitX)
- (NSMenuItem *)itemWithTags:(int)tag, ...;
/// The tags after the first one; null is answered with nil.
- (NSMenuItem *)itemWithTags:(int)tag arguments:(va_list)tags;
@end
#endif
