#include "BackgroundRun.h"

#import <Tarvik/support/Pool.h>

@interface EndOfRun : NSObject {
@public
    BOOL mSeen;
}
@end

@implementation EndOfRun
- (void)didRun:(NSNotification *)notification
{
    (void)notification;
    mSeen = YES;
}
@end

void runInBackground(CommandTool *tool, id delegate)
{
    constexpr NSTimeInterval kTurn =
        0.1;  // a loop's turn does not end with the timer that has told us of the end
    EndOfRun *end = [[[EndOfRun alloc] init] autorelease];
    NSNotificationCenter *centre = [NSNotificationCenter defaultCenter];
    [centre addObserver:end selector:@selector(didRun:) name:CommandToolDidRunNotification object:tool];
    [tool setDelegate:delegate];
    [tool run:YES];
    while (!end->mSeen) {
        tarvik::Pool pool;
        [[NSRunLoop currentRunLoop] runMode:NSDefaultRunLoopMode
                                 beforeDate:[NSDate dateWithTimeIntervalSinceNow:kTurn]];
    }
    [tool setDelegate:nil];
    [centre removeObserver:end];
}
