#include "../support/Categories.h"

#import <Foundation/Foundation.h>
#include <gtest/gtest.h>

// What the check must find: on a class itself, on one above a class that has the method, below one, and on a metaclass.
@interface NSString (ReplacedInTests)
- (NSString *)uppercaseString;
- (BOOL)isKindOfClass:(Class)other;
+ (id)string;
- (int)ownOfTheTests;
@end
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpragmas"
@implementation NSString (ReplacedInTests)
- (NSString *)uppercaseString { return @"replaced"; }
- (BOOL)isKindOfClass:(Class)other { return [super isKindOfClass:other]; }
+ (id)string { return [[[self alloc] init] autorelease]; }
- (int)ownOfTheTests { return 1; }
@end
#pragma GCC diagnostic pop

namespace {

// The methods that we replace on purpose; each says in its source what was wrong. A new repair is added here, a method that
// meets one of the platform's by accident gets another name.
const std::set<std::string> kRepairs = {
    "+[NSTask allocWithZone:]",
    "+[NSTask initialize]",
    "-[GSFileHandle availableData]",
    "-[GSFileHandle readDataToEndOfFile]",
    "-[GSFileHandle writeData:]",
    "-[NSMutableDataMalloc setCapacity:]",
    "-[NSPipe init]",
};

TEST(Categories, NoneReplacesAMethodOfThePlatform)
{
    std::set<std::string> replaced = methodsReplacedBy("libtarvik.so");
    for (const std::string &repair : kRepairs)
        replaced.erase(repair);
    EXPECT_EQ(replaced, std::set<std::string>{});
}

TEST(Categories, AReplacedMethodIsNoticed)
{
    const std::set<std::string> expected = {"-[NSString uppercaseString]", "-[NSString isKindOfClass:]", "+[NSString string]"};
    EXPECT_EQ(methodsReplacedBy("tarvik-tests-platform"), expected);
}

}  // namespace
