#define TARVIK_METHOD_CLASS
#import <Tarvik/system/Method.h>  // first

#import <Tarvik/Tarvik.h>
#import <Tarvik/support/Guard.h>
#import <Tarvik/support/Pool.h>
#include <gtest/gtest.h>

@interface Deriving : Method
@end
@implementation Deriving
@end

namespace {

TEST(Method, SendsItsSelectorToItsTarget)
{
    tarvik::Pool pool;
    NSMutableString *const text = [NSMutableString stringWithString:@"b"];
    Method *const append = [Method methodWithTarget:text selector:@selector(appendString:)];
    EXPECT_TRUE([append responds]);
    [append performWithObject:@"c"];
    EXPECT_TRUE([text isEqualToString:@"bc"]);
    EXPECT_TRUE([[[Method methodWithTarget:text
                                  selector:@selector(uppercaseString)] perform] isEqualToString:@"BC"]);
    NSMutableDictionary *const table = [NSMutableDictionary dictionary];
    [[Method methodWithTarget:table selector:@selector(setObject:forKey:)] performWithObject:text
                                                                                  withObject:@"key"];
    EXPECT_EQ([table objectForKey:@"key"], text);

    Method *const missing = [Method methodWithTarget:text selector:@selector(invalidate)];
    EXPECT_FALSE([missing responds]);
    EXPECT_FALSE(tarvik::attempt([&] { [missing perform]; }));
    EXPECT_EQ([Method methodWithTarget:nil selector:@selector(length)], nil);
    EXPECT_EQ([[Method alloc] initWithTarget:text selector:nullptr], nil);
    Method *const empty = [[[Method alloc] init] autorelease];
    EXPECT_FALSE([empty responds]);
    EXPECT_EQ([empty perform], nil);
    EXPECT_EQ([empty performWithObject:text], nil);
}

TEST(Method, IsKnownToTheRuntimeByItsName)
{
    tarvik::Pool pool;
    EXPECT_EQ(NSClassFromString(@"Method"), (Class)MethodClass());
    EXPECT_TRUE([[[Method class] description] isEqualToString:@"Method"]);
    EXPECT_EQ([Method superclass], [NSObject class]);
    id<Method> made = [MethodClass() methodWithTarget:@"x" selector:@selector(length)];
    EXPECT_TRUE([made isMemberOfClass:[Method class]] && [made responds]);
    EXPECT_TRUE([[Deriving methodWithTarget:@"x"
                                   selector:@selector(length)] isMemberOfClass:[Deriving class]]);
    NSMutableString *const target = [NSMutableString string];
    const NSUInteger before = [target retainCount];
    [Method methodWithTarget:target selector:@selector(length)];
    EXPECT_EQ([target retainCount], before);
}

}  // namespace
