#import <Foundation/Foundation.h>
#import <Tarvik/core/Guard.h>
#import <Tarvik/support/Pool.h>
#import <Tarvik/support/Retained.h>
#import <Tarvik/text/NSDictionary+Keys.h>

namespace {

NSString *keyOf(long number) { return [NSString stringWithFormat:@"%ld", number]; }

/// One step of a nested lookup; nil where there is no dictionary.
id step(id from, id key)
{
    return [from respondsToSelector:@selector(objectForKey:)] ? [from objectForKey:key] : nil;
}

}  // namespace

@implementation NSDictionary (FoundationXKeys)

- (id)objectForNumber:(long)number
{
    return tarvik::guarded("-[NSDictionary(FoundationX) objectForNumber:]", __LINE__, id(nil),
                           [&] { return [self objectForKey:keyOf(number)]; });
}

- (id)objectForKeys:(id)firstKey, ...
{
    va_list keys;
    va_start(keys, firstKey);
    id object = [self objectForKeys:firstKey arguments:keys];
    va_end(keys);
    return object;
}

- (id)objectForKeys:(id)firstKey arguments:(va_list)keys
{
    id object = self;
    for (id key = firstKey; key && object; key = va_arg(keys, id))
        object = step(object, key);
    return object;
}

- (id)objectForKeyStrings:(id const *)keys
{
    id object = keys ? self : nil;
    for (; object && *keys; ++keys)
        object = step(object, *keys);
    return object;
}

@end

@implementation NSMutableDictionary (FoundationXKeys)

- (void)setObject:(id)object forNumber:(long)number
{
    if (object)
        [self setObject:object forKey:keyOf(number)];
}

- (BOOL)changeKey:(id)key toKey:(id)newKey replace:(BOOL)replace
{
    if (key && newKey && (replace || ![self objectForKey:newKey])) {
        auto object = tarvik::retain<NSObject>([self objectForKey:key]);
        if (!object)
            [NSException raise:NSInvalidArgumentException format:@"No object under the key %@", key];
        [self removeObjectForKey:key];
        [self setObject:object.get() forKey:newKey];  // last: onto itself the entry stays
    }
    return NO;
}

- (id)copyRemoveObjectForKey:(id)key
{
    if (!key)
        return nil;
    auto object = tarvik::retain<NSObject>([self objectForKey:key]);
    if (object)
        [self removeObjectForKey:key];
    return object.release();
}

- (id)exchangeObject:(id)object forKey:(id)key
{
    if (!key)
        return nil;
    id old = [[[self objectForKey:key] retain] autorelease];
    if (object)
        [self setObject:object forKey:key];
    return old;
}

- (id)objectForKey:(id)key withSpare:(id)spare
{
    if (!key)
        return nil;
    id object = [self objectForKey:key];
    if (object || !spare)
        return object;
    [self setObject:spare forKey:key];
    return spare;
}

@end

CFTypeRef CFDictionaryGetValueForNumber(CFDictionaryRef dictionary, long number)
{
    if (!dictionary)
        return nullptr;
    tarvik::Pool pool;
    CFStringRef key = CFStringCreateWithFormat(kCFAllocatorDefault, nullptr, CFSTR("%ld"), number);
    CFTypeRef value = CFDictionaryGetValue(dictionary, key);
    CFRelease(key);
    return value;
}
