/// \file
/// Goes round folder trees level by level and asks a delegate about every entry.
///
///     - (uint32_t)treeRoundEvaluatePath:(NSString *)path
///     {
///         if ([path hasSuffix:@".git"]) return TreeRoundSkip;        // not what is in it
///         return [path hasSuffix:@"needle"] ? TreeRoundStop : TreeRoundDescend;
///     }
///     ...
///     [[[[TreeRound alloc] init] autorelease] start:[NSArray arrayWithObject:@"/home/anna"] withDelegate:self];
///
/// Links to folders are followed, to one that the round is inside of already they are not, so that it always ends. Once links have led
/// to the same folder 64 times, it isn't listed again: the round stays linear in what there is, however the links are tied.
/// Thread: any; the delegate is called on the caller's.
#pragma once
#ifdef __OBJC__
#import <Foundation/NSArray.h>
#import <Foundation/NSObject.h>
#import <Foundation/NSString.h>

#include <stdint.h>

/// What a delegate answers. Of several bits the stop counts first, then the leaving of the folder; any other bit skips the entry.
enum {
    TreeRoundDescend =
        0,  ///< list the entry in its turn, with the next level; what is no folder lists nothing
    TreeRoundSkip = 0x1,  ///< don't descend into this entry
    TreeRoundLeaveFolder =
        0x2,  ///< go on with the level's next folder: this entry and the folder's remaining ones are left out
    TreeRoundStop = 0x100  ///< end the round
};

@protocol TreeRoundDelegate
- (uint32_t)treeRoundEvaluatePath:(NSString *)path;
@end

@interface TreeRound : NSObject

/// The folders' paths; what is no folder lists nothing. A folder's entries are asked about in the file manager's order, all of a level
/// before those of the next. YES when the round came to its end or was stopped; NO for nil or no folders, for a delegate that is nil
/// or doesn't answer, and when it raised, which is logged.
- (BOOL)start:(NSArray *)roots withDelegate:(id)delegate;

@end
#endif
