#import <Tarvik/support/Guard.h>
#import <Tarvik/support/Pool.h>
#import <system/private/StreamDrain.h>

namespace {
enum { kNothing, kSomething };
}

@implementation StreamDrain

+ (StreamDrain *)drainWithHandle:(NSFileHandle *)handle
{
    StreamDrain *drain = [[[StreamDrain alloc] init] autorelease];
    drain->mHandle = [handle retain];
    drain->mLock = [[NSConditionLock alloc] initWithCondition:kNothing];
    drain->mPending = [[NSMutableData alloc] initWithCapacity:0];
    [NSThread detachNewThreadSelector:@selector(drain:) toTarget:drain withObject:nil];
    return drain;
}

- (void)dealloc
{
    [mHandle release];
    [mLock release];
    [mPending release];
    [super dealloc];
}

- (void)drain:(id)unused
{
    (void)unused;
    for (BOOL ended = NO; !ended;) {
        tarvik::Pool pool;
        NSData *piece = nil;
        tarvik::attempt([&] { piece = [self->mHandle availableData]; });
        ended = [piece length] == 0;
        [mLock lock];
        ended = ended || mIsStopped;
        if (!ended)
            [mPending appendData:piece];
        mEnded = ended;
        [mLock unlockWithCondition:kSomething];
    }
    // While this is still a thread of Foundation's: the handle asks for its thread's run loop on its way out, and the last
    // reference to this object may fall when the thread is no longer one.
    tarvik::Pool pool;
    [mHandle release];
    mHandle = nil;
}

- (NSData *)availableData
{
    [mLock lockWhenCondition:kSomething];
    NSMutableData *taken = [mPending autorelease];
    mPending = [[NSMutableData alloc] initWithCapacity:0];
    [mLock unlockWithCondition:mEnded ? kSomething : kNothing];
    return taken;
}

- (void)stop
{
    [mLock lock];
    mIsStopped = YES;
    [mLock unlock];
}

@end
