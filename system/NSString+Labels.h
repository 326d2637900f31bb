/// \file
/// Label colours of the item at a path: see FileLabels.h. The receiver is the path; no tilde is expanded.
#pragma once
#ifdef __OBJC__
#include <Carbon/MacTypes.h>
#import <Foundation/NSString.h>

@interface NSString (FoundationXLabels)

- (UInt32)labelColorIndex;  ///< 0 for none, and when nothing is there
- (UInt8)labelColorValue;
- (BOOL)setLabelColorIndex:(UInt32)index;  ///< above 7: no label
- (BOOL)setLabelColorValue:(UInt8)value;

@end
#endif
