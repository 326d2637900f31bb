#import <Foundation/Foundation.h>
#import <Tarvik/core/Guard.h>
#import <Tarvik/support/Pool.h>
#import <Tarvik/support/Retained.h>
#import <Tarvik/text/NSArray+Collections.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <numeric>
#include <vector>

namespace {

using Indexes = std::vector<uint32_t>;

/// What a comparison selector answers. Read as an int, which holds a method that is declared to answer one
/// too.
int compare(id one, SEL selector, id other)
{
    using Compare = int (*)(id, SEL, id);
    return reinterpret_cast<Compare>(reinterpret_cast<void (*)()>([one methodForSelector:selector]))(
        one, selector, other);
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

/// Changes places within an array. No object is retained, released or looked at: that alone would cost more
/// than the move.
class Places {
public:
    explicit Places(NSMutableArray *array) : array_(array)
    {
        exchange_ = reinterpret_cast<Exchange>(reinterpret_cast<void (*)()>([array methodForSelector:name_]));
    }
    void exchange(size_t one, size_t other) const { exchange_(array_, name_, one, other); }

private:
    using Exchange = void (*)(id, SEL, NSUInteger, NSUInteger);
    NSMutableArray *array_;
    SEL name_ = @selector(exchangeObjectAtIndex:withObjectAtIndex:);
    Exchange exchange_;
};

/// Brings the listed places together, next to where the walk ends, and keeps the others in their order. The
/// walk goes from the first place of the list, `length` places on, up or down. What has been gathered stands
/// in a window right behind the walk: each other object on the way changes places with the one at the
/// window's start, which so comes to its end. Answers which entry of the list stands at each place of the
/// window, in the order of the walk.
template <class Position>
std::vector<uint32_t> gather(const Places &places, const std::vector<uint32_t> &list, uint32_t length,
                             Position &&position)
{
    if (list.empty())
        return {};
    const uint32_t first = list[0];
    std::vector<uint32_t> entries(length -
                                  first);  // which entry stands at each place of the walk, within the window
    uint32_t at = first, start = first, next = 0;
    for (;;) {
        entries[at++ - first] = next++;
        const uint32_t end = next < list.size() ? list[next] : length;
        for (; at < end; ++at, ++start) {
            places.exchange(position(start), position(at));
            entries[at - first] = entries[start - first];
        }
        if (next == list.size())
            return {entries.begin() + (start - first), entries.end()};
    }
}

/// The same for an ascending list, in one walk from each side towards the destination.
uint32_t moveAscending(NSMutableArray *array, const Indexes &indexes, uint32_t destination)
{
    const auto count = uint32_t([array count]), moved = uint32_t(indexes.size());
    if (indexes.back() >= count)
        [NSException raise:NSRangeException
                    format:@"Index %u is beyond the end of %u objects", indexes.back(), count];
    const auto behind = std::lower_bound(indexes.begin(), indexes.end(), destination);
    const auto before = uint32_t(behind - indexes.begin());
    const uint32_t adjusted = destination - before, left = count - moved,
                   split = std::min(destination, count), place = split - before;

    const Places places(array);
    std::vector<uint32_t> fromBelow(indexes.begin(), behind), fromAbove;
    for (auto index = indexes.rbegin(); index.base() != behind; ++index)
        fromAbove.push_back(count - 1 - *index);
    const auto below = gather(places, fromBelow, split, [](uint32_t at) { return at; });
    const auto above = gather(places, fromAbove, count - split, [&](uint32_t at) { return count - 1 - at; });

    std::vector<uint32_t> standing(below), wanted(moved), where(moved);
    for (auto entry = above.rbegin(); entry != above.rend(); ++entry)
        standing.push_back(moved - 1 - *entry);
    std::iota(wanted.begin(), wanted.end(), 0);
    // Put in one by one, from the last, each is appended as long as the end lies before the destination:
    // those stand in reverse.
    if (adjusted > left) {
        const uint32_t appended = std::min(moved, adjusted - left + 1);
        std::rotate(wanted.begin(), wanted.end() - appended + 1, wanted.end());
        std::reverse(wanted.begin(), wanted.begin() + appended - 1);
    }
    for (uint32_t i = 0; i < moved; ++i)
        where[standing[i]] = i;
    for (uint32_t i = 0; i < moved; ++i) {
        const uint32_t from = where[wanted[i]];
        if (from == i)
            continue;
        places.exchange(place + i, place + from);
        where[standing[i]] = from;
        std::swap(standing[i], standing[from]);
    }
    return adjusted;
}

}  // namespace

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
    return tarvik::guarded("-[NSMutableArray(FoundationX) moveObjects:toIndex:]", __LINE__,
                           uint32_t{kTarvikNotFound}, [&] {
                               Indexes indexes(count);
                               memcpy(indexes.data(), [list bytes], count * sizeof(uint32_t));
                               return isAscending(indexes) ? moveAscending(self, indexes, index)
                                                           : moveStepByStep(self, indexes, index);
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
        if (element &&
            compare(object, selector ? selector : @selector(compare:), element) != NSOrderedDescending)
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
