/// \file
/// Runs a command-line tool: feeds it a block of data, gathers what it writes, tells when it has ended.
///
///     CommandTool *tool = [CommandTool commandToolWithPath:@"/usr/bin/sort"];
///     [tool setArguments:[NSArray arrayWithObject:@"-r"]];
///     [tool setInputData:lines];
///     [tool setReadStandardOutput:YES];
///     if ([tool run:NO]) use([tool standardOutputData]);
///
/// A run succeeds when the tool was launched and has ended, **whatever its exit status**, also when it was killed or the
/// delegate stopped the reading. It fails when it could not be launched (a path that is empty, missing or no program) or
/// ended without taking its input; the exception is logged as "-[CommandTool runCore:]", line 220.
/// An object runs any number of times; each run clears what the last one gathered.
///
/// In the foreground the call returns when the tool has ended; the caller's run loop turns while it waits for that.
/// In the background the tool runs on a thread of its own, and the run loop of the caller of `run:` posts
/// `CommandToolDidRunNotification`, within 0.2 seconds of the end. Settings are made before `run:`; results are read after
/// the notification. `kill` may come from any thread.
///
/// Good to know:
/// - All input is written before any output is read: a tool that writes more than a pipe holds (64 KiB) before it has read
///   its input waits for ever, and so does the run.
/// - With both streams read, a pass takes a piece of standard output, then waits for one of standard error: a delegate
///   that wants output as it comes reads one stream. Neither stream holds up the tool meanwhile, however much it writes.
/// - A delegate that answers NO stops the reading, not the tool: `kill` it too if it would go on writing.
#pragma once
#ifdef __OBJC__
#import <Foundation/Foundation.h>

/// Posted with the CommandTool as object, without user information.
FOUNDATION_EXPORT NSString *const CommandToolDidRunNotification;

@interface CommandTool : NSObject {
    NSTask *mTask;                       // while a run is under way
    id mDelegate;                        // not retained
    NSMutableData *mOutData, *mErrData;  // each there only while its stream is to be read
    NSData *mInData;
    NSString *mToolPath;
    NSArray *mArgs;
    BOOL mSucceeded;
    BOOL mRunning;
    NSTimer *mRunCheckTimer;
}

+ (id)commandToolWithPath:(NSString *)path;
/// Nil for a nil path.
- (id)initWithPath:(NSString *)path;
/// With the empty path: `setExecutePath:` before `run:`.
- (id)init;

- (id)delegate;
/// Not retained.
- (void)setDelegate:(id)delegate;
- (NSString *)executePath;
/// The tool's full path; nil clears it.
- (void)setExecutePath:(NSString *)path;
/// Strings, the tool itself not among them; they reach it as they are, whatever is in them. Nil is ignored.
- (void)setArguments:(NSArray *)arguments;
/// What the tool reads on standard input, which is the caller's own otherwise. Nil is ignored: input, once set, stays.
- (void)setInputData:(NSData *)data;
/// YES gathers what the tool writes to the stream; NO forgets it and leaves the stream the caller's own (as it is at first).
- (void)setReadStandardOutput:(BOOL)flag;
- (void)setReadStandardError:(BOOL)flag;

/// Runs the tool. NO when a run is under way, which it doesn't disturb. In the foreground: whether the run succeeded.
- (BOOL)run:(BOOL)inBackground;
/// Whether the last run succeeded.
- (BOOL)succeeded;
/// Asks the tool and its own children to end (SIGTERM); nothing when none runs.
- (void)kill;

/// What was gathered: the object's own mutable data, nil for a stream that is not read.
- (NSMutableData *)standardOutputData;
- (NSMutableData *)standardErrorData;

// The run itself, and the watch of a background run.
- (void)runCore:(id)unused;
- (void)commandToolDidRunCheckTimer:(NSTimer *)timer;

@end

/// What a delegate may implement; called on the thread of the run, after the piece was added to the gathered data.
@interface NSObject (CommandToolDelegate)
/// NO stops all further reading.
- (BOOL)commandTool:(CommandTool *)tool readStandardOutputData:(NSData *)piece;
- (BOOL)commandTool:(CommandTool *)tool readStandardErrorData:(NSData *)piece;
@end
#endif
