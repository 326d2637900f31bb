#import <AppKit/AppKit.h>
#import <Tarvik/TarvikUI.h>
#include <gtest/gtest.h>

#include <string>

@interface NamedResponder : NSResponder {
    NSString *mName;
}
- (id)initWithName:(NSString *)name next:(NSResponder *)next;
@end
@implementation NamedResponder
- (id)initWithName:(NSString *)name next:(NSResponder *)next
{
    if ((self = [super init])) {
        mName = name;
        [self setNextResponder:next];
    }
    return self;
}
- (NSString *)description
{
    return mName;
}
@end

TEST(Responder, LogsTheChainFromTheReceiverOn)
{
    NamedResponder *last = [[[NamedResponder alloc] initWithName:@"last %d" next:nil] autorelease];
    NamedResponder *middle = [[[NamedResponder alloc] initWithName:@"middle" next:last] autorelease];
    NamedResponder *first = [[[NamedResponder alloc] initWithName:@"first" next:middle] autorelease];
    [first setNextResponder:middle];
    testing::internal::CaptureStderr();
    [middle logResponderChain];
    const std::string log = testing::internal::GetCapturedStderr();
    const size_t banner = log.find("---------------------- ResponderChain ----------------------\n");
    const size_t one = log.find("middle\n"), two = log.find("last %d\n");
    EXPECT_TRUE(banner < one && one < two && two != std::string::npos) << log;
    EXPECT_EQ(log.find("first"), std::string::npos) << log;
}

TEST(Responder, IsPutBehindAnother)
{
    NamedResponder *last = [[[NamedResponder alloc] initWithName:@"last" next:nil] autorelease];
    NamedResponder *first = [[[NamedResponder alloc] initWithName:@"first" next:last] autorelease];
    NamedResponder *between = [[[NamedResponder alloc] initWithName:@"between" next:nil] autorelease];
    [first insertNextResponder:nil];
    [first insertNextResponder:last];
    EXPECT_EQ([first nextResponder], last);
    EXPECT_EQ([last nextResponder], nil);
    for (int times = 0; times < 2; ++times)
        [first insertNextResponder:between];
    EXPECT_EQ([first nextResponder], between);
    EXPECT_EQ([between nextResponder], last);
    [last insertNextResponder:[[[NamedResponder alloc] initWithName:@"end" next:between] autorelease]];
    EXPECT_EQ([[last nextResponder] nextResponder], between);  // its own next one stays where there was none
    [last setNextResponder:nil];
}
