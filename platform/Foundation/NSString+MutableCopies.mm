// gnustep-base makes a mutable copy through an initialiser that drops U+FEFF in the first place and refuses
// half a surrogate pair (and loses the object it was to initialise): the copy of such a text, a file's name
// that is no UTF-8 say, is nil. Setting the text of an empty string takes any.
#import <Foundation/Foundation.h>

@interface GSUnicodeString : NSString
@end
@interface GSMutableString : NSMutableString
@end

namespace {

id newMutableCopy(NSString *string, NSZone *zone)
{
    NSMutableString *copy = [[NSMutableString allocWithZone:zone] initWithCapacity:[string length]];
    [copy setString:string];
    return copy;
}

}  // namespace

@implementation NSString (MutableCopies)

- (id)mutableCopyWithZone:(NSZone *)zone
{
    return newMutableCopy(self, zone);
}

@end

@implementation GSUnicodeString (MutableCopies)

- (id)mutableCopyWithZone:(NSZone *)zone
{
    return newMutableCopy(self, zone);
}

- (id)mutableCopy
{
    return newMutableCopy(self, NSDefaultMallocZone());
}

@end

@implementation GSMutableString (MutableCopies)

- (id)mutableCopyWithZone:(NSZone *)zone
{
    return newMutableCopy(self, zone);
}

- (id)mutableCopy
{
    return newMutableCopy(self, NSDefaultMallocZone());
}

@end
