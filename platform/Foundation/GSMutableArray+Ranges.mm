// gnustep-base's arrays replace a range one object at a time: each one that is put in moves all that stands
// behind it, so that putting 100,000 objects into 1,000,000 takes minutes. Here the memory moves once.
#import <Foundation/Foundation.h>

#include "platform/Foundation/private/HiddenMethod.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <new>
#include <utility>
#include <vector>

/// Foundation's own mutable array, as its library lays it out.
@interface GSMutableArray : NSMutableArray {
@public
    id *_contents_array;
    unsigned _count;
    unsigned _capacity;
    int _grow_factor;
    unsigned long _version;
}
@end

namespace {

/// Whether the library at hand lays its arrays out as declared above.
bool isAsDeclared()
{
    static const bool same = [] {
        Class type = objc_getClass("GSMutableArray");
        const auto stands = [&](const char *name, const char *encoding, ptrdiff_t offset) {
            Ivar ivar = type ? class_getInstanceVariable(type, name) : nullptr;
            return ivar && ivar_getOffset(ivar) == offset &&
                   strcmp(ivar_getTypeEncoding(ivar), encoding) == 0;
        };
        constexpr ptrdiff_t pointer = sizeof(void *), number = sizeof(unsigned);
        return stands("_contents_array", "^@", pointer) && stands("_count", "I", 2 * pointer) &&
               stands("_capacity", "I", 2 * pointer + number) &&
               stands("_version", "Q", 2 * pointer + 3 * number + 4);
    }();
    return same;
}

template <class Function>
Function original(SEL name)
{
    // The methods stand in the abstract class: the category's do not hide them there.
    return reinterpret_cast<Function>(
        reinterpret_cast<void (*)()>(class_getMethodImplementation([NSMutableArray class], name)));
}

void releaseAll(const std::vector<id> &objects)
{
    for (id object : objects)
        [object release];
}

}  // namespace

@implementation GSMutableArray (Ranges)

// An exchange counts as two changes there, each of which waits for the one before: moving rows takes a
// million of them.
- (void)exchangeObjectAtIndex:(NSUInteger)one withObjectAtIndex:(NSUInteger)other
{
    if (one >= _count || other >= _count || !isAsDeclared()) {
        static const auto exchange = tarvik::hiddenMethod<void (*)(id, SEL, NSUInteger, NSUInteger)>(
            objc_getClass("GSMutableArray"), _cmd);
        return exchange(self, _cmd, one, other);
    }
    ++_version;
    std::swap(_contents_array[one], _contents_array[other]);
}

- (void)replaceObjectsInRange:(NSRange)range withObjectsFromArray:(NSArray *)objects
{
    const NSUInteger more = [objects count];
    const bool isWithin = range.location <= _count && range.length <= _count - range.location;
    if (!isAsDeclared() || !isWithin || more > UINT_MAX / 2 - _count) {
        static const auto replace = original<void (*)(id, SEL, NSRange, NSArray *)>(_cmd);
        return replace(self, _cmd, range, objects);
    }
    std::vector<id> fresh(more);  // taken first: the array may be the receiver itself
    [objects getObjects:fresh.data()];
    const unsigned needed = _count - unsigned(range.length) + unsigned(more);
    if (needed > _capacity) {
        const unsigned capacity = std::max(needed, _capacity + _capacity / 2);
        auto *grown = static_cast<id *>(NSZoneRealloc([self zone], _contents_array, capacity * sizeof(id)));
        if (!grown)
            throw std::bad_alloc();
        _contents_array = grown;
        _capacity = capacity;
    }
    ++_version;
    for (id object : fresh)
        [object retain];
    id *const first = _contents_array + range.location;
    const std::vector<id> removed(first, first + range.length);
    memmove(first + more, first + range.length, (_count - NSMaxRange(range)) * sizeof(id));
    std::copy(fresh.begin(), fresh.end(), first);
    _count = needed;
    ++_version;
    releaseAll(removed);
}

@end
