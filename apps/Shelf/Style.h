/// \file
/// How Shelf looks and feels, as defaults of this application: the user's own settings come first.
#pragma once
#import <AppKit/AppKit.h>

namespace shelf {

/// Before the application object is made.
void registerStyle();
/// A round spot of a label's colour; an empty image for no label. Shared; not to be changed.
NSImage *labelSpot(int label);
/// The label's colour; clear for none.
NSColor *labelColor(int label);
/// A rectangle with round corners.
NSBezierPath *roundedShape(NSRect edge, CGFloat radius);

}  // namespace shelf

/// A bar that fills up, or a piece that wanders when it is not known how far the work is.
@interface FlatProgress : NSView {
@public
    double mFraction;  // below 0: not known
}
@end

/// Shows a label (its index as object value) as a spot and its name.
@interface LabelCell : NSTextFieldCell
@end

/// One line of text in the middle of its row, with "…" in the place of what there is no room for.
@interface LineCell : NSTextFieldCell
@end

/// A column's heading: flat, with thin lines.
@interface FlatHeaderCell : NSTableHeaderCell
@end
