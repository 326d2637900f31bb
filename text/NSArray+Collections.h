/// \file
/// Arrays: rows moved, inserted in order, put in or added.
///
///     // A B C D E, rows 0 and 1 moved to 4            -> C D A B E, returns 2
///     [rows moveObjects:indexes toIndex:4];
///     // 1 2 3, a 2 inserted in order                  -> 1 2' 2 3, returns 1
///     [numbers insertObject:two atIndexUsingSelector:NULL];
///
/// Indexes are unsigned 32-bit. What is not stated to be answered otherwise (an index beyond the end, say) raises as
/// NSMutableArray's own methods do.
/// Thread: as the receiver.
#pragma once
#ifdef __OBJC__
#import <Foundation/NSArray.h>
#include <Tarvik/core/Types.h>

@class NSData;

@interface NSArray (FoundationXCollections)

/// Whether some element, sent the selector with the object, answers 0 (as `compare:` does for equal values).
/// NO for a nil object or a null selector.
- (BOOL)containsObject:(id)object usingSelector:(SEL)selector;

@end

@interface NSMutableArray (FoundationXCollections)

/// Moves the objects at the listed indexes, in the order of the list, in front of the object that stands at the destination (at the
/// end, when it is at or beyond it), and returns where the first of them then stands.
/// \param indexes unsigned 32-bit indexes in this processor's byte order, ascending; bytes after the last whole one are not looked at
/// \return kTarvikNotFound for nil or less than four bytes, and for an index beyond the end, which is logged.
///
/// Linear in the length of the array for an ascending list. Callers rely on this too: a list that is not ascending, or that names an
/// index twice, is followed as it stands, removing from its last entry to its first, each index counted in the array as it then is.
- (uint32_t)moveObjects:(NSData *)indexes toIndex:(uint32_t)index;

/// Inserts into an array kept in ascending order by the selector (NULL: `compare:`), before the first element that the object is not
/// greater than, so that the newest of equal ones comes first. Returns the index; 0, nothing inserted, for nil.
- (uint32_t)insertObject:(id)object atIndexUsingSelector:(SEL)selector;

/// Inserts all objects of the array, in their order; at or beyond the end they are appended. The memory behind moves once.
- (void)insertObjectsFromArray:(NSArray *)objects atIndex:(uint32_t)index;

/// Inserts inside the array (YES), or appends (NO).
- (BOOL)insertOrAddObject:(id)object atIndex:(uint32_t)index;
/// Replaces inside the array (YES), or appends (NO). Nil: NO, nothing changed.
- (BOOL)replaceOrAddObjectAtIndex:(uint32_t)index withObject:(id)object;
/// Removes the object and returns it, owned by the caller.
- (id)copyRemoveObjectAtIndex:(uint32_t)index;

@end
#endif
