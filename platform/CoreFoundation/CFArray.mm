#include "platform/CoreFoundation/private/Bridging.h"

#include <algorithm>
#include <vector>

using namespace tarvik::cf;

namespace {

const void *retainObject(CFAllocatorRef, const void *value) { return CFRetain(value); }
void releaseObject(CFAllocatorRef, const void *value) { CFRelease(value); }

}  // namespace

const CFArrayCallBacks kCFTypeArrayCallBacks = {0, retainObject, releaseObject, CFCopyDescription, CFEqual};

/// An array of plain pointers, kept as the callbacks say. It is an NSArray, so that one function serves every
/// array.
@interface TarvikPointerArray : NSMutableArray {
    std::vector<const void *> values;
    CFArrayCallBacks callBacks;
}
- (id)initWithCallBacks:(const CFArrayCallBacks *)wanted;
- (BOOL)value:(const void *)value equals:(const void *)other;
@end

@implementation TarvikPointerArray
- (id)initWithCallBacks:(const CFArrayCallBacks *)wanted
{
    callBacks = wanted ? *wanted : CFArrayCallBacks{};
    return self;
}

- (void)dealloc
{
    [self removeAllObjects];
    [super dealloc];
}

- (NSUInteger)count
{
    return values.size();
}

- (id)objectAtIndex:(NSUInteger)index
{
    if (index >= values.size())
        [NSException raise:NSRangeException
                    format:@"Index %lu beyond %lu", (unsigned long)index, (unsigned long)values.size()];
    return ns(CFTypeRef(values[index]));
}

- (void)insertObject:(id)object atIndex:(NSUInteger)index
{
    if (index > values.size())
        [NSException raise:NSRangeException
                    format:@"Index %lu beyond %lu", (unsigned long)index, (unsigned long)values.size()];
    const void *value = callBacks.retain ? callBacks.retain(nullptr, object) : object;
    values.insert(values.begin() + ptrdiff_t(index), value);
}

- (void)addObject:(id)object
{
    [self insertObject:object atIndex:values.size()];
}

- (void)replaceObjectAtIndex:(NSUInteger)index withObject:(id)object
{
    const void *old = [self objectAtIndex:index];
    values[index] = callBacks.retain ? callBacks.retain(nullptr, object) : object;
    if (callBacks.release)
        callBacks.release(nullptr, old);
}

- (void)removeObjectAtIndex:(NSUInteger)index
{
    const void *old = [self objectAtIndex:index];
    values.erase(values.begin() + ptrdiff_t(index));
    if (callBacks.release)
        callBacks.release(nullptr, old);
}

- (void)removeLastObject
{
    [self removeObjectAtIndex:values.size() - 1];
}

- (void)removeAllObjects
{
    std::vector<const void *> old;
    old.swap(values);
    if (callBacks.release)
        for (const void *value : old)
            callBacks.release(nullptr, value);
}

- (BOOL)value:(const void *)value equals:(const void *)other
{
    return value == other || (callBacks.equal && callBacks.equal(value, other));
}

// What NSArray does by sending messages to the elements.

- (BOOL)isEqual:(id)other
{
    if (other == self)
        return YES;
    if (![other isKindOfClass:[NSArray class]] || [other count] != values.size())
        return NO;
    for (NSUInteger i = 0; i < values.size(); ++i)
        if (![self value:values[i] equals:[other objectAtIndex:i]])
            return NO;
    return YES;
}

- (BOOL)isEqualToArray:(NSArray *)other
{
    return [self isEqual:other];
}
- (NSUInteger)hash
{
    return values.size();
}

- (id)copyWithZone:(NSZone *)zone
{
    return [self mutableCopyWithZone:zone];
}

- (id)mutableCopyWithZone:(NSZone *)zone
{
    TarvikPointerArray *copy = [[[self class] allocWithZone:zone] initWithCallBacks:&callBacks];
    for (const void *value : values)
        [copy addObject:ns(CFTypeRef(value))];
    return copy;
}

- (NSString *)description
{
    NSMutableString *text = [NSMutableString stringWithString:@"("];
    for (NSUInteger i = 0; i < values.size(); ++i) {
        CFStringRef one = callBacks.copyDescription ? callBacks.copyDescription(values[i]) : nullptr;
        if (one)
            [text appendFormat:@"%s%@", i ? ", " : "", ns(one)];
        else
            [text appendFormat:@"%s%p", i ? ", " : "", values[i]];
        CFRelease(one);
    }
    [text appendString:@")"];
    return text;
}

- (NSString *)descriptionWithLocale:(id)__attribute__((unused))locale
{
    return [self description];
}
- (NSString *)descriptionWithLocale:(id)__attribute__((unused))locale
                             indent:(NSUInteger)__attribute__((unused))level
{
    return [self description];
}
@end

namespace {

/// Whether elements are objects, so that Foundation's own array holds them.
bool holdsObjects(const CFArrayCallBacks *callBacks)
{
    return callBacks && callBacks->retain == retainObject && callBacks->release == releaseObject &&
           callBacks->equal == CFEqual;
}

NSMutableArray *newArray(const CFArrayCallBacks *callBacks, CFIndex capacity = 0)
{
    if (holdsObjects(callBacks))
        return [[NSMutableArray alloc] initWithCapacity:NSUInteger(std::max<CFIndex>(capacity, 0))];
    return [[TarvikPointerArray alloc] initWithCallBacks:callBacks];
}

bool equalIn(CFArrayRef array, const void *value, const void *other)
{
    if (value == other)
        return true;
    if ([ns(array) isKindOfClass:[TarvikPointerArray class]])
        return [(TarvikPointerArray *)ns(array) value:value equals:other];
    return CFEqual(value, other);
}

}  // namespace

CFArrayRef CFArrayCreate(CFAllocatorRef, const void **values, CFIndex count,
                         const CFArrayCallBacks *callBacks)
{
    if (count < 0 || (!values && count > 0))
        return nullptr;
    return made<CFArrayRef>([&]() -> NSArray * {
        if (holdsObjects(callBacks))
            return [[NSArray alloc] initWithObjects:(id *)values count:NSUInteger(count)];
        auto array = tarvik::adopt(newArray(callBacks));
        for (CFIndex i = 0; i < count; ++i)
            [array.get() addObject:ns(CFTypeRef(values[i]))];
        return array.release();
    });
}

CFArrayRef CFArrayCreateCopy(CFAllocatorRef, CFArrayRef array)
{
    return made<CFArrayRef>([&] { return [ns(array) copy]; });
}

CFMutableArrayRef CFArrayCreateMutable(CFAllocatorRef, CFIndex capacity, const CFArrayCallBacks *callBacks)
{
    return made<CFMutableArrayRef>([&] { return newArray(callBacks, capacity); });
}

CFMutableArrayRef CFArrayCreateMutableCopy(CFAllocatorRef, CFIndex, CFArrayRef array)
{
    return made<CFMutableArrayRef>([&] { return [ns(array) mutableCopy]; });
}

CFIndex CFArrayGetCount(CFArrayRef array) { return CFIndex([ns(array) count]); }

const void *CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index)
{
    return index >= 0 && index < CFArrayGetCount(array) ? [ns(array) objectAtIndex:NSUInteger(index)] : nil;
}

void CFArrayGetValues(CFArrayRef array, CFRange range, const void **values)
{
    if (!values || !contains(CFArrayGetCount(array), range))
        return;
    for (CFIndex i = 0; i < range.length; ++i)
        values[i] = CFArrayGetValueAtIndex(array, range.location + i);
}

CFIndex CFArrayGetCountOfValue(CFArrayRef array, CFRange range, const void *value)
{
    CFIndex found = 0;
    if (contains(CFArrayGetCount(array), range))
        for (CFIndex i = range.location; i < range.location + range.length; ++i)
            found += equalIn(array, CFArrayGetValueAtIndex(array, i), value);
    return found;
}

Boolean CFArrayContainsValue(CFArrayRef array, CFRange range, const void *value)
{
    return CFArrayGetFirstIndexOfValue(array, range, value) != kCFNotFound;
}

CFIndex CFArrayGetFirstIndexOfValue(CFArrayRef array, CFRange range, const void *value)
{
    if (contains(CFArrayGetCount(array), range))
        for (CFIndex i = range.location; i < range.location + range.length; ++i)
            if (equalIn(array, CFArrayGetValueAtIndex(array, i), value))
                return i;
    return kCFNotFound;
}

CFIndex CFArrayGetLastIndexOfValue(CFArrayRef array, CFRange range, const void *value)
{
    if (contains(CFArrayGetCount(array), range))
        for (CFIndex i = range.location + range.length; i-- > range.location;)
            if (equalIn(array, CFArrayGetValueAtIndex(array, i), value))
                return i;
    return kCFNotFound;
}

void CFArrayApplyFunction(CFArrayRef array, CFRange range, CFArrayApplierFunction function, void *context)
{
    if (function && contains(CFArrayGetCount(array), range))
        for (CFIndex i = range.location; i < range.location + range.length; ++i)
            function(CFArrayGetValueAtIndex(array, i), context);
}

void CFArrayAppendValue(CFMutableArrayRef array, const void *value)
{
    perform([&] { [ns(array) addObject:ns(CFTypeRef(value))]; });
}

void CFArrayAppendArray(CFMutableArrayRef array, CFArrayRef other, CFRange range)
{
    if (contains(CFArrayGetCount(other), range))
        for (CFIndex i = 0; i < range.length; ++i)
            CFArrayAppendValue(array, CFArrayGetValueAtIndex(other, range.location + i));
}

void CFArrayInsertValueAtIndex(CFMutableArrayRef array, CFIndex index, const void *value)
{
    if (index >= 0)
        perform([&] { [ns(array) insertObject:ns(CFTypeRef(value)) atIndex:NSUInteger(index)]; });
}

void CFArraySetValueAtIndex(CFMutableArrayRef array, CFIndex index, const void *value)
{
    if (index == CFArrayGetCount(array))
        CFArrayAppendValue(array, value);
    else if (index >= 0)
        perform([&] { [ns(array) replaceObjectAtIndex:NSUInteger(index) withObject:ns(CFTypeRef(value))]; });
}

void CFArrayRemoveValueAtIndex(CFMutableArrayRef array, CFIndex index)
{
    if (index >= 0 && index < CFArrayGetCount(array))
        perform([&] { [ns(array) removeObjectAtIndex:NSUInteger(index)]; });
}

void CFArrayRemoveAllValues(CFMutableArrayRef array)
{
    perform([&] { [ns(array) removeAllObjects]; });
}

void CFArrayExchangeValuesAtIndices(CFMutableArrayRef array, CFIndex index1, CFIndex index2)
{
    const CFIndex count = CFArrayGetCount(array);
    if (index1 < 0 || index2 < 0 || index1 >= count || index2 >= count)
        return;
    perform(
        [&] { [ns(array) exchangeObjectAtIndex:NSUInteger(index1) withObjectAtIndex:NSUInteger(index2)]; });
}

void CFArraySortValues(CFMutableArrayRef array, CFRange range, CFComparatorFunction comparator, void *context)
{
    if (!comparator || !contains(CFArrayGetCount(array), range))
        return;
    perform([&] {
        std::vector<const void *> values(size_t(range.length));
        CFArrayGetValues(array, range, values.data());
        auto sorted = values;
        std::stable_sort(sorted.begin(), sorted.end(), [&](const void *a, const void *b) {
            return comparator(a, b, context) == kCFCompareLessThan;
        });
        // The elements are all there already: held once more while they change places.
        auto keep = tarvik::adopt([ns(array) copy]);
        for (size_t i = 0; i < sorted.size(); ++i)
            if (sorted[i] != values[i])
                CFArraySetValueAtIndex(array, range.location + CFIndex(i), sorted[i]);
    });
}
