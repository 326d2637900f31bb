/// \file
/// Paths with backslashes, which are characters as all others: gnustep-base makes slashes of them where it standardizes a path,
/// and so where it abbreviates one that does not lie in the home, whatever it was told of path handling.
#include "platform/Foundation/private/HiddenMethod.h"

#import <Foundation/Foundation.h>

namespace {

using Rewrite = NSString *(*)(id, SEL);

/// Runs one of the class's own methods with a character in their stead that no path holds.
NSString *withoutBackslashes(NSString *path, SEL name, Rewrite original)
{
    static const unichar kNoCharacter = 0xFDD0;
    static NSString *const standIn = [[NSString alloc] initWithCharacters:&kNoCharacter length:1];
    NSString *const backslash = @"\\";
    if ([path rangeOfString:backslash].length == 0)
        return original(path, name);
    NSString *const replaced = [path stringByReplacingOccurrencesOfString:backslash withString:standIn];
    return [original(replaced, name) stringByReplacingOccurrencesOfString:standIn withString:backslash];
}

}  // namespace

@interface NSString (TarvikBackslashes)
@end

@implementation NSString (TarvikBackslashes)

- (NSString *)stringByStandardizingPath
{
    static const auto original = tarvik::hiddenMethod<Rewrite>([NSString class], _cmd);
    return withoutBackslashes(self, _cmd, original);
}

- (NSString *)stringByAbbreviatingWithTildeInPath
{
    static const auto original = tarvik::hiddenMethod<Rewrite>([NSString class], _cmd);
    return withoutBackslashes(self, _cmd, original);
}

@end
