/// \file
/// Takes what a tool writes to one stream on a thread of its own, while the tool's runner waits for another stream: a tool
/// that fills the pipe that nobody reads at the moment would otherwise wait for its runner, which waits for the tool.
#pragma once
#import <Foundation/Foundation.h>

@interface StreamDrain : NSObject {
    NSFileHandle *mHandle;
    NSConditionLock *mLock;
    NSMutableData *mPending;  // taken from the stream, not yet from here
    BOOL mEnded, mIsStopped;
}
/// Starts at once, and lives on until the stream's end or until it is stopped, also when it has been released.
+ (StreamDrain *)drainWithHandle:(NSFileHandle *)handle;
/// As the handle's own: waits until there is something; empty at the stream's end and after a failed read.
- (NSData *)availableData;
/// Nobody takes any more: what comes next is the last that is read.
- (void)stop;
@end
