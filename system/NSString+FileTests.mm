#import <Tarvik/system/NSString+FileTests.h>

#import <Foundation/Foundation.h>

@implementation NSString (FoundationXFileTests)

- (BOOL)exists
{
    return [[NSFileManager defaultManager] fileExistsAtPath:[self stringByExpandingTildeInPath]];
}

- (BOOL)existsDirectory
{
    BOOL isFolder = NO;
    return [[NSFileManager defaultManager] fileExistsAtPath:[self stringByExpandingTildeInPath]
                                                isDirectory:&isFolder] &&
           isFolder;
}

- (BOOL)isReadableFile
{
    return [[NSFileManager defaultManager] isReadableFileAtPath:[self stringByExpandingTildeInPath]];
}
- (BOOL)isWritableFile
{
    return [[NSFileManager defaultManager] isWritableFileAtPath:[self stringByExpandingTildeInPath]];
}
- (BOOL)isExecutableFile
{
    return [[NSFileManager defaultManager] isExecutableFileAtPath:[self stringByExpandingTildeInPath]];
}
- (BOOL)isDeletableFile
{
    return [[NSFileManager defaultManager] isDeletableFileAtPath:[self stringByExpandingTildeInPath]];
}

@end
