/// \file
/// What the platform's smaller classes lack: an object's hash as a number, the two shared booleans, a walk below a folder.
///
/// `+[NSThread sleepForTimeInterval:]` belongs to these too; the platform has it: it blocks the calling thread for the seconds given.
#pragma once
#ifdef __OBJC__
#import <Foundation/NSFileManager.h>
#import <Foundation/NSObject.h>
#import <Foundation/NSThread.h>
#import <Foundation/NSValue.h>

@interface NSObject (FoundationXAdditions)
/// The hash as an unsigned number.
- (NSNumber *)hashNumber;
@end

@interface NSNumber (FoundationXAdditions)
/// The shared booleans: the same object each time, kept in the exit pool. Called first from the main thread.
+ (NSNumber *)yesNumber;
+ (NSNumber *)noNumber;
@end

/// Called for each item below a folder; 0 ends the walk.
typedef int (*SubpathFunction)(NSString *path, NSString *subpath, void *userdata);

@interface NSFileManager (FoundationXAdditions)
/// Calls the function for each subpath below the path (relative to it, in the order of `subpathsAtPath:`). Answers its last result; 0
/// when it ended the walk, when there is nothing below, and for a nil path or null function.
- (int)enumerateSubpathsAtPath:(NSString *)path
                  withFunction:(SubpathFunction)function
                      userdata:(void *)userdata;
@end
#endif
