/// \file
/// What a dragging-info object carries.
///
///     - (BOOL)performDragOperation:(id<NSDraggingInfo>)info {
///         NSArray *paths = [(id)info pasteboardPropertyListForType:NSFilenamesPboardType];
#pragma once
#ifdef __OBJC__
#import <Foundation/NSObject.h>

@class NSData, NSString;

/// For objects with a `draggingPasteboard`. Nil without one, for a nil type and for a type that the pasteboard does not hold.
/// Thread: main.
@interface NSObject (PasteboardAdditions)
- (NSData *)pasteboardDataForType:(NSString *)type;
- (id)pasteboardPropertyListForType:(NSString *)type;
- (NSString *)pasteboardStringForType:(NSString *)type;
@end
#endif
