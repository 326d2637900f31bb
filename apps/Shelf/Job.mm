#include "Job.h"

#import <AppKit/AppKit.h>
#import <Tarvik/support/Guard.h>
#import <Tarvik/support/Pool.h>

#include <utility>

@interface JobQueue (Running)
- (void)startNext;
- (void)jobEnded:(Job *)job;
@end

@implementation Job

- (void)dealloc
{
    [mTitle release];
    [mUnexpected release];
    [super dealloc];
}

- (void)runFor:(JobQueue *)queue
{
    tarvik::Pool pool;
    tarvik::Retained<NSException *> raised;
    if (!tarvik::attempt([self] { self->mWork(self); }, &raised))
        mUnexpected = [[raised.get() reason] copy];
    [queue performSelectorOnMainThread:@selector(jobEnded:)
                            withObject:self
                         waitUntilDone:NO
                                 modes:[JobQueue modes]];
}

@end

Job *makeJob(NSString *title, JobStep work, JobStep end)
{
    Job *job = [[[Job alloc] init] autorelease];
    job->mTitle = [title copy];
    job->mWork = std::move(work);
    job->mEnd = std::move(end);
    job->mFraction = -1;
    return job;
}

@implementation JobQueue

- (id)init
{
    if ((self = [super init]))
        mJobs = [[NSMutableArray alloc] init];
    return self;
}

- (void)dealloc
{
    [mJobs release];
    [super dealloc];
}

+ (NSArray *)modes
{
    return [NSArray
        arrayWithObjects:NSDefaultRunLoopMode, NSModalPanelRunLoopMode, NSEventTrackingRunLoopMode, nil];
}

- (void)add:(Job *)job
{
    [mJobs addObject:job];
    if ([mJobs count] == 1)
        [self startNext];
}

- (Job *)current
{
    return [mJobs count] ? [mJobs objectAtIndex:0] : nil;
}
- (NSUInteger)count
{
    return [mJobs count];
}

- (void)cancelCurrent
{
    if (Job *job = [self current])
        job->mCancelled = true;
}

- (BOOL)finishWithin:(NSTimeInterval)seconds
{
    if ([mJobs count] > 1)
        [mJobs removeObjectsInRange:NSMakeRange(1, [mJobs count] - 1)];
    [self cancelCurrent];
    NSDate *end = [NSDate dateWithTimeIntervalSinceNow:seconds];
    while ([self current] && [end timeIntervalSinceNow] > 0) {
        tarvik::Pool pool;
        [[NSRunLoop currentRunLoop] runMode:NSDefaultRunLoopMode
                                 beforeDate:[NSDate dateWithTimeIntervalSinceNow:0.05]];
    }
    return ![self current];
}

- (void)startNext
{
    if (Job *job = [self current])
        [NSThread detachNewThreadSelector:@selector(runFor:) toTarget:job withObject:self];
    if (mChanged)
        mChanged();
}

- (void)jobEnded:(Job *)job
{
    [[job retain] autorelease];
    [mJobs removeObjectIdenticalTo:job];
    [self startNext];
    job->mEnd(job);
}

@end
