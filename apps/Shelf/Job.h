/// \file
/// Work in the background, one piece after the other, told about on the main thread.
///
///     [jobs add:makeJob(@"Verifying", [](Job *job) { ... job->mFraction = 0.5; ... }, [](Job *job) { ... })];
#pragma once
#import <Foundation/Foundation.h>

#include "Closure.h"

#include <atomic>
#include <functional>

@class Job;
using JobStep = std::function<void(Job *)>;

/// \invariant `mWork` runs on a thread of the job's own, `mEnd` on the main thread after it, also of a cancelled job.
@interface Job : NSObject {
@public
    NSString *mTitle;
    Closure<JobStep> mWork, mEnd;
    std::atomic<double> mFraction;  // of the work done; below 0: not known
    std::atomic<bool> mCancelled;   // for the work to look at
    NSString *mUnexpected;          // an exception that left the work, nil otherwise
}
@end

/// A new job.
Job *makeJob(NSString *title, JobStep work, JobStep end);

/// Runs its jobs in their order. Thread: main.
@interface JobQueue : NSObject {
    NSMutableArray *mJobs;  // the first one runs
@public
    Closure<std::function<void()>> mChanged;  // a job has begun or ended
}
- (void)add:(Job *)job;
/// The job that runs, or nil.
- (Job *)current;
- (NSUInteger)count;
/// Tells the current job that it is no longer wanted; it ends when it has noticed.
- (void)cancelCurrent;
/// Drops the waiting jobs, cancels the current one and waits for its end, at most so long. Whether it has ended.
- (BOOL)finishWithin:(NSTimeInterval)seconds;
/// The run loop's modes in which the application stays alive: panels and tracked mouse included.
+ (NSArray *)modes;
@end
