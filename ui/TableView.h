/// \file
/// A table view whose rows may be dragged with every operation on old systems too.
#pragma once
#ifdef __OBJC__
#import <AppKit/NSTableView.h>

@interface TableView : NSTableView
/// Every bit on systems before 10.4, whose own answer leaves operations out; the platform's own answer from 10.4 on.
- (NSDragOperation)draggingSourceOperationMaskForLocal:(BOOL)isLocal;
@end
#endif
