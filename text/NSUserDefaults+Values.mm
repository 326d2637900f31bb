#import <Foundation/Foundation.h>
#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/text/NSUserDefaults+Values.h>
#import <Tarvik/text/PropertyLists.h>

namespace {

/// A deep mutable copy of what is stored, or a new empty object of the class.
id mutableCopyOf(id stored, Class kind)
{
    id copy = [[stored propertyListMutableCopy] autorelease];
    return copy ? copy : [[kind new] autorelease];
}

}  // namespace

@implementation NSUserDefaults (FoundationXValues)

- (int)cellStateForBoolKey:(NSString *)key
{
    return [self boolForKey:key] ? 1 : 0;
}

- (NSMutableArray *)mutableArrayForKey:(NSString *)key
{
    return mutableCopyOf(key ? [self arrayForKey:key] : nil, [NSMutableArray class]);
}

- (NSMutableDictionary *)mutableDictionaryForKey:(NSString *)key
{
    return mutableCopyOf(key ? [self dictionaryForKey:key] : nil, [NSMutableDictionary class]);
}

- (void)removeAllObject
{
    for (NSString *key : tarvik::each<NSString>([[self dictionaryRepresentation] allKeys]))
        [self removeObjectForKey:key];
    [self synchronize];
}

@end
