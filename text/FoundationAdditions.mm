#import <Foundation/Foundation.h>
#import <Tarvik/core/Objects.h>
#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/support/Pool.h>
#import <Tarvik/text/FoundationAdditions.h>

namespace {

/// A boolean that the exit pool keeps.
NSNumber *shared(BOOL value)
{
    NSNumber *number = [[NSNumber alloc] initWithBool:value];
    [AddToExitPool(number) release];
    return number;
}

}  // namespace

@implementation NSObject (FoundationXAdditions)
- (NSNumber *)hashNumber
{
    return [NSNumber numberWithUnsignedLong:[self hash]];
}
@end

@implementation NSNumber (FoundationXAdditions)

+ (NSNumber *)yesNumber
{
    static NSNumber *const yes = shared(YES);
    return yes;
}

+ (NSNumber *)noNumber
{
    static NSNumber *const no = shared(NO);
    return no;
}

@end

@implementation NSFileManager (FoundationXAdditions)

- (int)enumerateSubpathsAtPath:(NSString *)path
                  withFunction:(SubpathFunction)function
                      userdata:(void *)userdata
{
    if (!path || !function)
        return 0;
    tarvik::Pool pool;
    int result = 0;
    for (NSString *subpath : tarvik::each<NSString>([self subpathsAtPath:path])) {
        result = function(path, subpath, userdata);
        if (result == 0)
            break;
    }
    return result;
}

@end
