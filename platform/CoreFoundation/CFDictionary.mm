#include "platform/CoreFoundation/private/Bridging.h"

#include <functional>
#include <unordered_map>
#include <vector>

using namespace tarvik::cf;

namespace {

const void *retainObject(CFAllocatorRef, const void *value) { return CFRetain(value); }
void releaseObject(CFAllocatorRef, const void *value) { CFRelease(value); }
const void *copyString(CFAllocatorRef, const void *value)
{
    return CFStringCreateCopy(nullptr, CFStringRef(value));
}

struct KeyHash {
    CFDictionaryHashCallBack hash;
    size_t operator()(const void *key) const { return hash ? hash(key) : std::hash<const void *>()(key); }
};
struct KeyEqual {
    CFDictionaryEqualCallBack equal;
    bool operator()(const void *a, const void *b) const { return a == b || (equal && equal(a, b)); }
};
using PointerMap = std::unordered_map<const void *, const void *, KeyHash, KeyEqual>;

}  // namespace

const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks = {
    0, retainObject, releaseObject, CFCopyDescription, CFEqual, CFHash};
const CFDictionaryKeyCallBacks kCFCopyStringDictionaryKeyCallBacks = {
    0, copyString, releaseObject, CFCopyDescription, CFEqual, CFHash};
const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks = {0, retainObject, releaseObject,
                                                                    CFCopyDescription, CFEqual};

/// Walks the keys of a map, taken when the walk began.
@interface TarvikPointerEnumerator : NSEnumerator {
    std::vector<const void *> pointers;
    size_t next;
}
- (id)initWithPointers:(std::vector<const void *> &&)list;
@end

@implementation TarvikPointerEnumerator
- (id)initWithPointers:(std::vector<const void *> &&)list
{
    pointers = std::move(list);
    return self;
}
- (id)nextObject
{
    return next < pointers.size() ? ns(CFTypeRef(pointers[next++])) : nil;
}
@end

/// A dictionary of plain pointers, kept and compared as the callbacks say.
@interface TarvikPointerDictionary : NSMutableDictionary {
    PointerMap *map;
    CFDictionaryKeyCallBacks keyCallBacks;
    CFDictionaryValueCallBacks valueCallBacks;
}
- (id)initWithKeyCallBacks:(const CFDictionaryKeyCallBacks *)keys
            valueCallBacks:(const CFDictionaryValueCallBacks *)values;
- (BOOL)value:(const void *)value equals:(const void *)other;
- (BOOL)getValue:(const void **)value forKey:(const void *)key;
@end

@implementation TarvikPointerDictionary
- (id)initWithKeyCallBacks:(const CFDictionaryKeyCallBacks *)keys
            valueCallBacks:(const CFDictionaryValueCallBacks *)values
{
    keyCallBacks = keys ? *keys : CFDictionaryKeyCallBacks{};
    valueCallBacks = values ? *values : CFDictionaryValueCallBacks{};
    map = new PointerMap(0, KeyHash{keyCallBacks.hash}, KeyEqual{keyCallBacks.equal});
    return self;
}

- (void)dealloc
{
    [self removeAllObjects];
    delete map;
    [super dealloc];
}

- (NSUInteger)count
{
    return map->size();
}

- (BOOL)getValue:(const void **)value forKey:(const void *)key
{
    const auto found = map->find(key);
    if (found == map->end())
        return NO;
    *value = found->second;
    return YES;
}

- (id)objectForKey:(id)key
{
    const void *value = nullptr;
    [self getValue:&value forKey:key];
    return ns(CFTypeRef(value));
}

- (void)setObject:(id)object forKey:(id)key
{
    const void *value = valueCallBacks.retain ? valueCallBacks.retain(nullptr, object) : object;
    const auto found = map->find(key);
    if (found == map->end()) {
        map->emplace(keyCallBacks.retain ? keyCallBacks.retain(nullptr, key) : key, value);
        return;
    }
    const void *old = std::exchange(found->second, value);
    if (valueCallBacks.release)
        valueCallBacks.release(nullptr, old);
}

- (void)removeObjectForKey:(id)key
{
    const auto found = map->find(key);
    if (found == map->end())
        return;
    const auto [oldKey, oldValue] = *found;
    map->erase(found);
    if (keyCallBacks.release)
        keyCallBacks.release(nullptr, oldKey);
    if (valueCallBacks.release)
        valueCallBacks.release(nullptr, oldValue);
}

- (void)removeAllObjects
{
    std::vector<std::pair<const void *, const void *>> old(map->begin(), map->end());
    map->clear();
    for (const auto &[key, value] : old) {
        if (keyCallBacks.release)
            keyCallBacks.release(nullptr, key);
        if (valueCallBacks.release)
            valueCallBacks.release(nullptr, value);
    }
}

- (NSEnumerator *)keyEnumerator
{
    std::vector<const void *> keys;
    for (const auto &entry : *map)
        keys.push_back(entry.first);
    return [[[TarvikPointerEnumerator alloc] initWithPointers:std::move(keys)] autorelease];
}

- (NSEnumerator *)objectEnumerator
{
    std::vector<const void *> values;
    for (const auto &entry : *map)
        values.push_back(entry.second);
    return [[[TarvikPointerEnumerator alloc] initWithPointers:std::move(values)] autorelease];
}

- (BOOL)value:(const void *)value equals:(const void *)other
{
    return value == other || (valueCallBacks.equal && valueCallBacks.equal(value, other));
}

// What NSDictionary does by sending messages to keys and values.

- (BOOL)isEqual:(id)other
{
    if (other == self)
        return YES;
    if (![other isKindOfClass:[NSDictionary class]] || [other count] != map->size())
        return NO;
    for (const auto &[key, value] : *map) {
        const void *there = nullptr;
        if (!CFDictionaryGetValueIfPresent(CFDictionaryRef(other), key, &there) || ![self value:value
                                                                                         equals:there])
            return NO;
    }
    return YES;
}

- (BOOL)isEqualToDictionary:(NSDictionary *)other
{
    return [self isEqual:other];
}
- (NSUInteger)hash
{
    return map->size();
}
- (id)copyWithZone:(NSZone *)zone
{
    return [self mutableCopyWithZone:zone];
}

- (id)mutableCopyWithZone:(NSZone *)zone
{
    TarvikPointerDictionary *copy = [[[self class] allocWithZone:zone] initWithKeyCallBacks:&keyCallBacks
                                                                             valueCallBacks:&valueCallBacks];
    for (const auto &[key, value] : *map)
        [copy setObject:ns(CFTypeRef(value)) forKey:ns(CFTypeRef(key))];
    return copy;
}

- (NSString *)description
{
    NSMutableString *text = [NSMutableString stringWithString:@"{"];
    auto append = [&](CFStringRef (*describe)(const void *), const void *pointer, const char *end) {
        CFStringRef one = describe ? describe(pointer) : nullptr;
        if (one)
            [text appendFormat:@"%@%s", ns(one), end];
        else
            [text appendFormat:@"%p%s", pointer, end];
        CFRelease(one);
    };
    for (const auto &[key, value] : *map) {
        append(self->keyCallBacks.copyDescription, key, " = ");
        append(self->valueCallBacks.copyDescription, value, "; ");
    }
    [text appendString:@"}"];
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

/// Whether keys and values are objects, so that Foundation's own dictionary holds them.
bool holdsObjects(const CFDictionaryKeyCallBacks *keys, const CFDictionaryValueCallBacks *values)
{
    return keys && values && (keys->retain == retainObject || keys->retain == copyString) &&
           keys->release == releaseObject && keys->equal == CFEqual && keys->hash == CFHash &&
           values->retain == retainObject && values->release == releaseObject && values->equal == CFEqual;
}

NSMutableDictionary *newDictionary(const CFDictionaryKeyCallBacks *keys,
                                   const CFDictionaryValueCallBacks *values)
{
    if (holdsObjects(keys, values))
        return [NSMutableDictionary new];
    return [[TarvikPointerDictionary alloc] initWithKeyCallBacks:keys valueCallBacks:values];
}

bool holdsPointers(CFDictionaryRef dictionary)
{
    return [ns(dictionary) isKindOfClass:[TarvikPointerDictionary class]];
}

}  // namespace

CFDictionaryRef CFDictionaryCreate(CFAllocatorRef, const void **keys, const void **values, CFIndex count,
                                   const CFDictionaryKeyCallBacks *keyCallBacks,
                                   const CFDictionaryValueCallBacks *valueCallBacks)
{
    if (count < 0 || ((!keys || !values) && count > 0))
        return nullptr;
    return made<CFDictionaryRef>([&]() -> NSDictionary * {
        if (holdsObjects(keyCallBacks, valueCallBacks))
            return [[NSDictionary alloc] initWithObjects:(id *)values
                                                 forKeys:(id *)keys
                                                   count:NSUInteger(count)];
        auto dictionary = tarvik::adopt(newDictionary(keyCallBacks, valueCallBacks));
        for (CFIndex i = 0; i < count; ++i)
            [dictionary.get() setObject:ns(CFTypeRef(values[i])) forKey:ns(CFTypeRef(keys[i]))];
        return dictionary.release();
    });
}

CFDictionaryRef CFDictionaryCreateCopy(CFAllocatorRef, CFDictionaryRef dictionary)
{
    return made<CFDictionaryRef>([&] { return [ns(dictionary) copy]; });
}

CFMutableDictionaryRef CFDictionaryCreateMutable(CFAllocatorRef, CFIndex,
                                                 const CFDictionaryKeyCallBacks *keyCallBacks,
                                                 const CFDictionaryValueCallBacks *valueCallBacks)
{
    return made<CFMutableDictionaryRef>([&] { return newDictionary(keyCallBacks, valueCallBacks); });
}

CFMutableDictionaryRef CFDictionaryCreateMutableCopy(CFAllocatorRef, CFIndex, CFDictionaryRef dictionary)
{
    return made<CFMutableDictionaryRef>([&] { return [ns(dictionary) mutableCopy]; });
}

CFIndex CFDictionaryGetCount(CFDictionaryRef dictionary) { return CFIndex([ns(dictionary) count]); }

const void *CFDictionaryGetValue(CFDictionaryRef dictionary, const void *key)
{
    const void *value = nullptr;
    CFDictionaryGetValueIfPresent(dictionary, key, &value);
    return value;
}

Boolean CFDictionaryGetValueIfPresent(CFDictionaryRef dictionary, const void *key, const void **value)
{
    if (!dictionary)
        return false;
    return answer(false, [&] {
        const void *found = nullptr;
        bool present = false;
        if (holdsPointers(dictionary)) {
            present = [(TarvikPointerDictionary *)ns(dictionary) getValue:&found forKey:key];
        } else if (key) {
            found = [ns(dictionary) objectForKey:ns(CFTypeRef(key))];
            present = found != nullptr;
        }
        if (present && value)
            *value = found;
        return present;
    });
}

Boolean CFDictionaryContainsKey(CFDictionaryRef dictionary, const void *key)
{
    return CFDictionaryGetValueIfPresent(dictionary, key, nullptr);
}

Boolean CFDictionaryContainsValue(CFDictionaryRef dictionary, const void *value)
{
    return CFDictionaryGetCountOfValue(dictionary, value) > 0;
}

CFIndex CFDictionaryGetCountOfValue(CFDictionaryRef dictionary, const void *value)
{
    return answer<CFIndex>(0, [&] {
        std::vector<const void *> values(size_t(CFDictionaryGetCount(dictionary)));
        CFDictionaryGetKeysAndValues(dictionary, nullptr, values.data());
        CFIndex found = 0;
        for (const void *one : values)
            found += holdsPointers(dictionary)
                         ? bool([(TarvikPointerDictionary *)ns(dictionary) value:one equals:value])
                         : bool(CFEqual(one, value));
        return found;
    });
}

void CFDictionaryGetKeysAndValues(CFDictionaryRef dictionary, const void **keys, const void **values)
{
    perform([&] {
        NSEnumerator *walk = [ns(dictionary) keyEnumerator];
        const CFIndex count = CFDictionaryGetCount(dictionary);
        for (CFIndex i = 0; i < count; ++i) {  // a null pointer may be a key: the count ends the walk
            const void *key = [walk nextObject];
            if (keys)
                keys[i] = key;
            if (values)
                values[i] = CFDictionaryGetValue(dictionary, key);
        }
    });
}

void CFDictionaryApplyFunction(CFDictionaryRef dictionary, CFDictionaryApplierFunction function,
                               void *context)
{
    if (!function)
        return;
    perform([&] {
        std::vector<const void *> keys(size_t(CFDictionaryGetCount(dictionary))), values(keys.size());
        CFDictionaryGetKeysAndValues(dictionary, keys.data(), values.data());
        for (size_t i = 0; i < keys.size(); ++i)
            function(keys[i], values[i], context);
    });
}

void CFDictionaryAddValue(CFMutableDictionaryRef dictionary, const void *key, const void *value)
{
    if (!CFDictionaryContainsKey(dictionary, key))
        CFDictionarySetValue(dictionary, key, value);
}

void CFDictionarySetValue(CFMutableDictionaryRef dictionary, const void *key, const void *value)
{
    perform([&] { [ns(dictionary) setObject:ns(CFTypeRef(value)) forKey:ns(CFTypeRef(key))]; });
}

void CFDictionaryReplaceValue(CFMutableDictionaryRef dictionary, const void *key, const void *value)
{
    if (CFDictionaryContainsKey(dictionary, key))
        CFDictionarySetValue(dictionary, key, value);
}

void CFDictionaryRemoveValue(CFMutableDictionaryRef dictionary, const void *key)
{
    perform([&] {
        if (key || holdsPointers(dictionary))
            [ns(dictionary) removeObjectForKey:ns(CFTypeRef(key))];
    });
}

void CFDictionaryRemoveAllValues(CFMutableDictionaryRef dictionary)
{
    perform([&] { [ns(dictionary) removeAllObjects]; });
}
