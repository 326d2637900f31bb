#import <Foundation/Foundation.h>
#import <Tarvik/core/Guard.h>
#import <Tarvik/support/Pool.h>
#import <Tarvik/support/Retained.h>
#import <Tarvik/text/NSArray+Collections.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <vector>

namespace {

using Indexes = std::vector<uint32_t>;

/// What a comparison selector answers. Read as an int, which holds a method that is declared to answer one too.
int compare(id one, SEL selector, id other)
{
    using Compare = int (*)(id, SEL, id);
    return reinterpret_cast<Compare>(reinterpret_cast<void (*)()>([one methodForSelector:selector]))(one, selector, other);
}

bool isAscending(const Indexes &indexes)
{
    return std::adjacent_find(indexes.begin(), indexes.end(), std::greater_equal<>()) == indexes.end();
}

/// The steps of the move, one object at a time: what a list that is not ascending means.
uint32_t moveStepByStep(NSMutableArray *array, const Indexes &indexes, uint32_t destination)
{
    auto moved = tarvik::adopt([[NSMutableArray alloc] initWithCapacity:indexes.size()]);
    for (const uint32_t index : indexes)
        [moved.get() addObject:[array objectAtIndex:index]];
    for (auto index = indexes.rbegin(); index != indexes.rend(); ++index) {
        [array removeObjectAtIndex:*index];
        if (destination > *index && destination != 0)
            --destination;
    }
    for (NSUInteger i = [moved.get() count]; i-- > 0;)
        [array insertOrAddObject:[moved.get() objectAtIndex:i] atIndex:destination];
    return destination;
}

/// The same for an ascending list, in three strokes: what lies between the objects moves once, and what lies behind them once more.
uint32_t moveAscending(NSMutableArray *array, const Indexes &indexes, uint32_t destination)
{
    const NSUInteger count = [array count];
    if (indexes.back() >= count)
        [NSException raise:NSRangeException format:@"Index %u is beyond the end of %lu objects", indexes.back(), (unsigned long)count];
    const auto before = std::lower_bound(indexes.begin(), indexes.end(), destination) - indexes.begin();
    const uint32_t adjusted = destination - uint32_t(before);

    std::vector<NSUInteger> places(indexes.begin(), indexes.end());
    std::vector<id> moved(places.size());
    std::transform(places.begin(), places.end(), moved.begin(), [&](NSUInteger place) { return [array objectAtIndex:place]; });
    // Put in one by one, from the last, each is appended as long as the end lies before the destination: those end up in reverse.
    const size_t left = count - moved.size();
    if (adjusted > left) {
        const size_t appended = std::min<size_t>(moved.size(), adjusted - left + 1);
        std::rotate(moved.begin(), moved.end() - ptrdiff_t(appended) + 1, moved.end());
        std::reverse(moved.begin(), moved.begin() + ptrdiff_t(appended) - 1);
    }
    auto held = tarvik::adopt([[NSArray alloc] initWithObjects:moved.data() count:moved.size()]);
    [array removeObjectsFromIndices:places.data() numIndices:places.size()];
    [array replaceObjectsInRange:NSMakeRange(std::min<size_t>(adjusted, left), 0) withObjectsFromArray:held.get()];
    return adjusted;
}

} // namespace

@implementation NSArray (FoundationXCollections)

- (BOOL)containsObject:(id)object usingSelector:(SEL)selector
{
    if (!object || !selector)
        return NO;
    const NSUInteger count = [self count];
    for (NSUInteger i = 0; i < count; ++i) {
        id element = [self objectAtIndex:i];
        if (element && compare(element, selector, object) == NSOrderedSame)
            return YES;
    }
    return NO;
}

@end

@implementation NSMutableArray (FoundationXCollections)

- (uint32_t)moveObjects:(NSData *)list toIndex:(uint32_t)index
{
    const NSUInteger count = [list length] / sizeof(uint32_t);
    if (count == 0 || ![list bytes])
        return kTarvikNotFound;
    tarvik::Pool pool;
    return tarvik::guarded("-[NSMutableArray(FoundationX) moveObjects:toIndex:]", __LINE__, uint32_t{kTarvikNotFound}, [&] {
        Indexes indexes(count);
        memcpy(indexes.data(), [list bytes], count * sizeof(uint32_t));
        return isAscending(indexes) ? moveAscending(self, indexes, index) : moveStepByStep(self, indexes, index);
    });
}

- (uint32_t)insertObject:(id)object atIndexUsingSelector:(SEL)selector
{
    if (!object)
        return 0;
    const NSUInteger count = [self count];
    NSUInteger index = 0;
    for (; index < count; ++index) {
        id element = [self objectAtIndex:index];
        if (element && compare(object, selector ? selector : @selector(compare:), element) != NSOrderedDescending)
            break;
    }
    [self insertObject:object atIndex:index];
    return uint32_t(index);
}

- (void)insertObjectsFromArray:(NSArray *)objects atIndex:(uint32_t)index
{
    if ([objects count] == 0)
        return;
    const NSUInteger place = std::min<NSUInteger>(index, [self count]);
    [self replaceObjectsInRange:NSMakeRange(place, 0) withObjectsFromArray:objects];
}

- (BOOL)insertOrAddObject:(id)object atIndex:(uint32_t)index
{
    const bool isInside = index < [self count];
    if (isInside)
        [self insertObject:object atIndex:index];
    else
        [self addObject:object];
    return isInside;
}

- (BOOL)replaceOrAddObjectAtIndex:(uint32_t)index withObject:(id)object
{
    if (!object)
        return NO;
    const bool isInside = index < [self count];
    if (isInside)
        [self replaceObjectAtIndex:index withObject:object];
    else
        [self addObject:object];
    return isInside;
}

- (id)copyRemoveObjectAtIndex:(uint32_t)index
{
    auto object = tarvik::retain<NSObject>([self objectAtIndex:index]);
    [self removeObjectAtIndex:index];
    return object.release();
}

@end
