/// \file
/// What programs drag to each other over the display, as the pasteboard has it.
#pragma once
#import <AppKit/NSPasteboard.h>

#include <span>

namespace tarvik::drags {

/// A form that a drag's data is asked for in, and the pasteboard's type for it.
struct Target {
    const char *name;
    NSString *const *type;
};
/// Those that are understood; of one type's, the better ones first.
std::span<const Target> targets();
/// The pasteboard's contents in that form; nil when there are none.
NSData *contents(NSPasteboard *pasteboard, const Target &target);
/// The pasteboard's value for data in that form: the names of files of this machine, text, or data; nil for what is broken or empty.
id valueOf(NSData *data, const Target &target);
/// The value under the target's type, which the pasteboard declares.
void put(id value, const Target &target, NSPasteboard *pasteboard);

}  // namespace tarvik::drags
