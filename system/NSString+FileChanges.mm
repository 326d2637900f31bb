#include <Tarvik/core/Guard.h>
#import <Tarvik/system/NSString+FileChanges.h>
#import <Tarvik/system/NSString+FileTests.h>

#import <Foundation/Foundation.h>

namespace {

// The line that the log names, wherever the code has moved.
constexpr unsigned long kCreateDirectoriesLine = 946;

bool createFolder(NSString *path)
{
    // (The younger method, withIntermediateDirectories:, makes no folder of a bare name.)
    return [[NSFileManager defaultManager] createDirectoryAtPath:path attributes:nil];
}

bool isFolder(NSString *path)
{
    BOOL folder = NO;
    return [[NSFileManager defaultManager] fileExistsAtPath:path isDirectory:&folder] && folder;
}

}  // namespace

@implementation NSString (FoundationXFileChanges)

- (BOOL)remove
{
    NSString *path = [self stringByExpandingTildeInPath];
    return [path length] > 0 && [[NSFileManager defaultManager] removeFileAtPath:path handler:nil];
}

- (BOOL)createDirectory
{
    BOOL folder = NO;
    return [[NSFileManager defaultManager] fileExistsAtPath:self isDirectory:&folder]
               ? folder
               : BOOL(createFolder(self));
}

- (BOOL)createDirectories
{
    return tarvik::guarded("-[NSString(FoundationX) createDirectories]", kCreateDirectoriesLine, NO,
                           [&]() -> BOOL {
                               if ([self length] == 0)
                                   return YES;
                               NSArray *parts = [self pathComponents];
                               NSString *path = nil;
                               for (NSUInteger i = 0; i < [parts count]; ++i) {
                                   NSString *part = [parts objectAtIndex:i];
                                   path = path ? [path stringByAppendingPathComponent:part] : part;
                                   if (!isFolder(path) && !createFolder(path))
                                       return NO;
                               }
                               return path != nil;
                           });
}

- (BOOL)createCopyOfPath:(NSString *)destination
{
    if (!destination || ![[destination stringByDeletingLastPathComponent] createDirectories])
        return NO;
    if ([destination exists] && ![destination remove])
        return NO;
    return [[NSFileManager defaultManager] copyPath:self toPath:destination handler:nil];
}

- (BOOL)createEmptyFile
{
    return [@"" writeToFile:[self stringByAbbreviatingWithTildeInPath] atomically:NO];
}

@end
