#include <Carbon/FileOperations.h>

#include "platform/Files/private/ItemCopy.h"
#include "platform/Files/private/Names.h"
#include "platform/Files/private/References.h"

#import <Foundation/Foundation.h>

#include <Tarvik/support/Guard.h>
#include <Tarvik/support/Pool.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <thread>
#include <vector>

using namespace tarvik::files;
using Clock = std::chrono::steady_clock;

namespace {

/// The name on the disk; empty for null.
OSStatus getName(CFStringRef text, std::string &name)
{
    if (!text)
        return noErr;
    std::vector<UniChar> units(size_t(CFStringGetLength(text)));
    CFStringGetCharacters(text, CFRangeMake(0, CFIndex(units.size())), units.data());
    return nameFromUnicode(units.data(), units.size(), name);
}

/// One copy, shared by the operation and the thread that makes it.
struct Work {
    FSRef source, folder;
    std::string name;
    OptionBits options = 0;

    CopyStatus status;
    std::atomic<FSFileOperationStage> stage{kFSOperationStageUndefined};
    std::atomic<Clock::rep> begun{0}, ended{0};
    FSRef copy{};            // once the stage is complete
    OSStatus error = noErr;  // then too

    void run()
    {
        begun = Clock::now().time_since_epoch().count();
        OSStatus result;
        try {
            result = measureAndCopy();
        } catch (const std::exception &) {
            result = memFullErr;
        }
        end(result);
    }
    void end(OSStatus result)
    {
        error = result;
        ended = Clock::now().time_since_epoch().count();
        stage = kFSOperationStageComplete;
    }

    FSRef current() const
    {
        FSRef ref{};
        if (stage == kFSOperationStageComplete && error == noErr)
            ref = copy;
        else if (const std::string path = status.current(); !path.empty())
            makeReference(path, Leaf::asIs, &ref);
        return ref;
    }

    NSDictionary *dictionary() const
    {
        const auto number = [](uint64_t value) { return [NSNumber numberWithUnsignedLongLong:value]; };
        const auto left = [](uint64_t total, uint64_t done) { return total > done ? total - done : 0; };
        const uint64_t bytes = status.bytes, objects = status.objects, totalBytes = status.totalBytes,
                       totalObjects = status.totalObjects;
        const Clock::duration time(
            begun == 0 ? 0 : (ended != 0 ? ended.load() : Clock::now().time_since_epoch().count()) - begun);
        const double seconds = std::chrono::duration<double>(time).count();
        return [NSDictionary
            dictionaryWithObjectsAndKeys:number(totalBytes), kFSOperationTotalBytesKey, number(bytes),
                                         kFSOperationBytesCompleteKey, number(left(totalBytes, bytes)),
                                         kFSOperationBytesRemainingKey, number(totalObjects),
                                         kFSOperationTotalObjectsKey, number(objects),
                                         kFSOperationObjectsCompleteKey, number(left(totalObjects, objects)),
                                         kFSOperationObjectsRemainingKey,
                                         number(seconds > 0 ? uint64_t(double(bytes) / seconds) : 0),
                                         kFSOperationThroughputKey, nil];
    }

private:
    OSStatus measureAndCopy()
    {
        OSStatus result = noErr;
        if (!(options & kFSFileOperationSkipPreflight)) {
            stage = kFSOperationStagePreflighting;
            result = measureItem(source, status);
        }
        stage = kFSOperationStageRunning;
        const CopyOptions how{.overwrites = bool(options & kFSFileOperationOverwrite),
                              .skipsUnreadable = bool(options & kFSFileOperationSkipSourcePermissionErrors)};
        return result == noErr ? copyItem(source, folder, name, how, status, &copy) : OSErr(result);
    }
};

}  // namespace

const CFStringRef kFSOperationTotalBytesKey = CFStringRef(@"kFSOperationTotalBytesKey");
const CFStringRef kFSOperationBytesCompleteKey = CFStringRef(@"kFSOperationBytesCompleteKey");
const CFStringRef kFSOperationBytesRemainingKey = CFStringRef(@"kFSOperationBytesRemainingKey");
const CFStringRef kFSOperationTotalObjectsKey = CFStringRef(@"kFSOperationTotalObjectsKey");
const CFStringRef kFSOperationObjectsCompleteKey = CFStringRef(@"kFSOperationObjectsCompleteKey");
const CFStringRef kFSOperationObjectsRemainingKey = CFStringRef(@"kFSOperationObjectsRemainingKey");
const CFStringRef kFSOperationThroughputKey = CFStringRef(@"kFSOperationThroughputKey");

/// A loop's timer holds it until the copy is complete.
@interface TarvikFileOperation : NSObject {
@public
    std::shared_ptr<Work> mWork;
    FSFileOperationStatusProcPtr mCallback;
    NSTimeInterval mInterval;
    FSFileOperationClientContext mContext;
    Clock::time_point mLastCall;
    BOOL mIsBegun, mHasEnded;
    NSMutableArray *mLoops;  // for each: the loop, its mode, and its timer once the copy has begun
}
- (void)schedule:(NSRunLoop *)loop mode:(NSString *)mode;
- (void)unschedule:(NSRunLoop *)loop mode:(NSString *)mode;
- (void)begin;
@end

@implementation TarvikFileOperation

- (id)init
{
    if ((self = [super init])) {
        mWork = std::make_shared<Work>();
        mLoops = [[NSMutableArray alloc] init];
    }
    return self;
}

- (void)dealloc
{
    if (mContext.release && mContext.info)
        mContext.release(mContext.info);
    [mLoops release];
    [super dealloc];
}

- (void)addTimer:(NSMutableArray *)entry
{
    constexpr NSTimeInterval kShortest = 0.01,
                             kLongest = 0.05;  // an end is told of soon, whatever the interval
    NSTimer *timer = [NSTimer timerWithTimeInterval:std::clamp(mInterval, kShortest, kLongest)
                                             target:self
                                           selector:@selector(look:)
                                           userInfo:nil
                                            repeats:YES];
    [[entry objectAtIndex:0] addTimer:timer forMode:[entry objectAtIndex:1]];
    [entry addObject:timer];
}

- (void)schedule:(NSRunLoop *)loop mode:(NSString *)mode
{
    NSMutableArray *entry = [NSMutableArray arrayWithObjects:loop, mode, nil];
    [mLoops addObject:entry];
    if (mIsBegun && !mHasEnded && mCallback)
        [self addTimer:entry];
}

- (void)unschedule:(NSRunLoop *)loop mode:(NSString *)mode
{
    for (NSUInteger i = [mLoops count]; i-- > 0;) {
        NSArray *entry = [mLoops objectAtIndex:i];
        if ([entry objectAtIndex:0] != loop || ![[entry objectAtIndex:1] isEqual:mode])
            continue;
        if ([entry count] > 2)
            [[entry objectAtIndex:2] invalidate];
        [mLoops removeObjectAtIndex:i];
    }
}

- (void)begin
{
    mIsBegun = YES;
    mLastCall = Clock::now();
    if (mCallback)
        for (NSUInteger i = 0; i < [mLoops count]; ++i)
            [self addTimer:[mLoops objectAtIndex:i]];
    const auto work = mWork;  // which the thread keeps alive
    if (!tarvik::attempt([&] { std::thread([work] { work->run(); }).detach(); }))
        work->end(memFullErr);
}

- (void)look:(NSTimer *)timer
{
    (void)timer;
    const FSFileOperationStage stage = mWork->stage;
    const bool isOver = stage == kFSOperationStageComplete;
    const auto now = Clock::now();
    if (mHasEnded || (!isOver && std::chrono::duration<double>(now - mLastCall).count() < mInterval))
        return;
    mLastCall = now;
    mHasEnded = isOver;
    [[self retain] autorelease];  // the timer may be the last to hold it
    const FSRef current = mWork->current();
    const OSStatus error = isOver ? mWork->error : OSStatus(noErr);
    tarvik::attempt([&] {
        self->mCallback(reinterpret_cast<FSFileOperationRef>(self), &current, stage, error,
                        CFDictionaryRef(self->mWork->dictionary()), self->mContext.info);
    });
    if (isOver)
        for (NSUInteger i = 0; i < [mLoops count]; ++i)
            [[[mLoops objectAtIndex:i] lastObject] invalidate];
}

@end

namespace {

TarvikFileOperation *operationOf(FSFileOperationRef ref)
{
    return reinterpret_cast<TarvikFileOperation *>(ref);
}

}  // namespace

OSStatus FSCopyObjectSync(const FSRef *source, const FSRef *destDir, CFStringRef destName, FSRef *target,
                          OptionBits options)
{
    if (!source || !destDir)
        return paramErr;
    Work work;
    work.source = *source;
    work.folder = *destDir;
    work.options = options | kFSFileOperationSkipPreflight;
    if (const OSStatus error = getName(destName, work.name); error != noErr)
        return error;
    work.run();
    if (work.error == noErr && target)
        *target = work.copy;
    return work.error;
}

FSFileOperationRef FSFileOperationCreate(CFAllocatorRef)
{
    tarvik::Pool pool;
    return reinterpret_cast<FSFileOperationRef>([[TarvikFileOperation alloc] init]);
}

OSStatus FSFileOperationScheduleWithRunLoop(FSFileOperationRef fileOp, CFRunLoopRef runLoop,
                                            CFStringRef runLoopMode)
{
    if (!fileOp || !runLoop || !runLoopMode)
        return paramErr;
    tarvik::Pool pool;
    [operationOf(fileOp) schedule:(NSRunLoop *)runLoop mode:(NSString *)runLoopMode];
    return noErr;
}

OSStatus FSFileOperationUnscheduleFromRunLoop(FSFileOperationRef fileOp, CFRunLoopRef runLoop,
                                              CFStringRef runLoopMode)
{
    if (!fileOp || !runLoop || !runLoopMode)
        return paramErr;
    tarvik::Pool pool;
    [operationOf(fileOp) unschedule:(NSRunLoop *)runLoop mode:(NSString *)runLoopMode];
    return noErr;
}

OSStatus FSCopyObjectAsync(FSFileOperationRef fileOp, const FSRef *source, const FSRef *destDir,
                           CFStringRef destName, OptionBits flags, FSFileOperationStatusProcPtr callback,
                           CFTimeInterval statusChangeInterval,
                           const FSFileOperationClientContext *clientContext)
{
    TarvikFileOperation *const operation = operationOf(fileOp);
    if (!operation || !source || !destDir || operation->mIsBegun)
        return paramErr;
    Work &work = *operation->mWork;
    if (const OSStatus error = getName(destName, work.name); error != noErr)
        return error;
    work.source = *source;
    work.folder = *destDir;
    work.options = flags;
    operation->mCallback = callback;
    operation->mInterval = statusChangeInterval;
    if (clientContext) {
        operation->mContext = *clientContext;
        if (clientContext->retain && clientContext->info)
            operation->mContext.info = const_cast<void *>(clientContext->retain(clientContext->info));
    }
    tarvik::Pool pool;
    [operation begin];
    return noErr;
}

OSStatus FSFileOperationCancel(FSFileOperationRef fileOp)
{
    if (!fileOp)
        return paramErr;
    operationOf(fileOp)->mWork->status.isCancelled = true;
    return noErr;
}

OSStatus FSFileOperationCopyStatus(FSFileOperationRef fileOp, FSRef *currentItem, FSFileOperationStage *stage,
                                   OSStatus *error, CFDictionaryRef *statusDictionary, void **info)
{
    TarvikFileOperation *const operation = operationOf(fileOp);
    if (!operation)
        return paramErr;
    tarvik::Pool pool;
    const Work &work = *operation->mWork;
    const FSFileOperationStage now = work.stage;
    if (stage)
        *stage = now;
    if (error)
        *error = now == kFSOperationStageComplete ? work.error : OSStatus(noErr);
    if (currentItem)
        *currentItem = work.current();
    if (statusDictionary)
        *statusDictionary = CFDictionaryRef([work.dictionary() retain]);
    if (info)
        *info = operation->mContext.info;
    return noErr;
}
