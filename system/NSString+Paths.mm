#import <Tarvik/core/Types.h>
#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/system/NSString+Paths.h>

#include <CoreFoundation/CFURL.h>
#import <Foundation/Foundation.h>

@implementation NSString (FoundationXPaths)

- (NSComparisonResult)compareAsPath:(NSString *)other
{
    if (!other)
        return NSComparisonResult(kTarvikNotFound);
    const uint32_t own = [self pathComponentsCount], others = [other pathComponentsCount];
    if (own != others)
        return own < others ? NSOrderedAscending : NSOrderedDescending;
    return [self compare:other];
}

- (uint32_t)pathComponentsCount
{
    uint32_t count = 0;
    for (NSString *part : tarvik::each<NSString>([self pathComponents]))
        count += ![part isEqualToString:@"/"];
    return count;
}

- (NSString *)displayName
{
    return [[NSFileManager defaultManager] displayNameAtPath:self];
}

- (NSString *)HFSPath
{
    CFURLRef url = CFURLCreateWithFileSystemPath(nullptr, (CFStringRef)self, kCFURLPOSIXPathStyle, false);
    if (!url)
        return nil;
    CFStringRef path = CFURLCopyFileSystemPath(url, kCFURLHFSPathStyle);
    CFRelease(url);
    return [(NSString *)path autorelease];
}

@end
