// gnustep-base's arrays remove a list of indexes, and replace a range, one object at a time: each step moves all that stands behind
// it, so that taking 100,000 objects out of 1,000,000, or putting them in, takes minutes. Here both move the memory once.
#import <Foundation/Foundation.h>

#include "platform/Foundation/private/HiddenMethod.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <functional>
#include <new>
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
            return ivar && ivar_getOffset(ivar) == offset && strcmp(ivar_getTypeEncoding(ivar), encoding) == 0;
        };
        constexpr ptrdiff_t pointer = sizeof(void *), number = sizeof(unsigned);
        return stands("_contents_array", "^@", pointer) && stands("_count", "I", 2 * pointer) &&
               stands("_capacity", "I", 2 * pointer + number) && stands("_version", "Q", 2 * pointer + 3 * number + 4);
    }();
    return same;
}

template <class Function>
Function original(SEL name)
{
    // The methods stand in the abstract class: the category's do not hide them there.
    return reinterpret_cast<Function>(reinterpret_cast<void (*)()>(class_getMethodImplementation([NSMutableArray class], name)));
}

void releaseAll(const std::vector<id> &objects)
{
    for (id object : objects)
        [object release];
}

} // namespace

@implementation GSMutableArray (Ranges)

- (void)removeObjectsFromIndices:(NSUInteger *)indices numIndices:(NSUInteger)count
{
    const bool isAscending = std::adjacent_find(indices, indices + count, std::greater_equal<>()) == indices + count;
    if (!isAsDeclared() || !isAscending || (count > 0 && indices[count - 1] >= _count)) {
        static const auto remove = original<void (*)(id, SEL, NSUInteger *, NSUInteger)>(_cmd);
        return remove(self, _cmd, indices, count);
    }
    if (count == 0)
        return;
    ++_version;
    std::vector<id> removed(count);
    id *out = _contents_array + indices[0];
    for (NSUInteger i = 0; i < count; ++i) {
        removed[i] = _contents_array[indices[i]];
        const NSUInteger next = i + 1 < count ? indices[i + 1] : _count, length = next - indices[i] - 1;
        memmove(out, _contents_array + indices[i] + 1, length * sizeof(id));
        out += length;
    }
    _count -= unsigned(count);
    ++_version;
    releaseAll(removed);
}

- (void)replaceObjectsInRange:(NSRange)range withObjectsFromArray:(NSArray *)objects
{
    const NSUInteger more = [objects count];
    const bool isWithin = range.location <= _count && range.length <= _count - range.location;
    if (!isAsDeclared() || !isWithin || more > UINT_MAX / 2 - _count) {
        static const auto replace = original<void (*)(id, SEL, NSRange, NSArray *)>(_cmd);
        return replace(self, _cmd, range, objects);
    }
    std::vector<id> fresh(more); // taken first: the array may be the receiver itself
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
