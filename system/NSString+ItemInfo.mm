#include <Tarvik/support/Guard.h>
#import <Tarvik/support/Retained.h>
#import <Tarvik/system/NSString+ItemInfo.h>
#import <Tarvik/text/NSString+Parsing.h>
#import <system/private/PathBytes.h>

#include <CoreFoundation/CFURL.h>

namespace {

// Held, so that no other string can come to lie at its address.
tarvik::Retained<NSString *> &latestSelf()
{
    static auto &gLSLatestLSSelf = *new tarvik::Retained<NSString *>;
    return gLSLatestLSSelf;
}
LSItemInfoRecord gLSLatestLSI = {};

LSItemInfoRecord typeAndCreator(NSString *path)
{
    LSItemInfoRecord record;
    [path getLSItemInfoRecord:&record whichInfo:kLSRequestTypeCreator];
    return record;
}

}  // namespace

@implementation NSString (FoundationXItemInfo)

- (BOOL)getLSItemInfoRecord:(LSItemInfoRecord *)record whichInfo:(LSRequestedInfo)whichInfo
{
    if (!record)
        return NO;
    *record = {};
    std::string path;
    if (!tarvik::getPathBytes([self stringByExpandingTildeInPath], path))
        return NO;
    CFURLRef url = CFURLCreateFromFileSystemRepresentation(
        nullptr, reinterpret_cast<const UInt8 *>(path.data()), CFIndex(path.size()), false);
    const bool found = url && LSCopyItemInfoForURL(url, whichInfo, record) == noErr;
    CFRelease(url);
    if (!found) {
        CFRelease(record->extension);
        CFRelease(record->iconFileName);
        *record = {};
    }
    return found;
}

- (OSType)HFSFileType
{
    return typeAndCreator(self).filetype;
}
- (OSType)HFSCreator
{
    return typeAndCreator(self).creator;
}
- (NSString *)HFSFileTypeString
{
    return [NSString stringWithOSType:[self HFSFileType]];
}
- (NSString *)HFSCreatorString
{
    return [NSString stringWithOSType:[self HFSCreator]];
}

- (BOOL)isLSItemInfoRecordFlagOn:(LSItemInfoFlags)mask defaultResult:(BOOL)defaultResult
{
    if (latestSelf().get() != self) {
        latestSelf() = {};
        if (![self getLSItemInfoRecord:&gLSLatestLSI whichInfo:kLSRequestAllFlags])
            return defaultResult;
        latestSelf() = tarvik::retain(self);
    }
    return (gLSLatestLSI.flags & mask) == mask;
}

- (BOOL)isAlias
{
    return [self isLSItemInfoRecordFlagOn:kLSItemInfoIsAliasFile defaultResult:NO];
}
- (BOOL)isApplication
{
    return [self isLSItemInfoRecordFlagOn:kLSItemInfoIsApplication defaultResult:NO];
}
- (BOOL)isContainer
{
    return [self isLSItemInfoRecordFlagOn:kLSItemInfoIsContainer defaultResult:NO];
}
- (BOOL)isInvisible
{
    return [self isLSItemInfoRecordFlagOn:kLSItemInfoIsInvisible defaultResult:NO];
}
- (BOOL)isPackage
{
    return [self isLSItemInfoRecordFlagOn:kLSItemInfoIsPackage defaultResult:NO];
}
- (BOOL)isVolume
{
    return [self isLSItemInfoRecordFlagOn:kLSItemInfoIsVolume defaultResult:NO];
}
- (BOOL)isPlainFile
{
    return [self isLSItemInfoRecordFlagOn:kLSItemInfoIsPlainFile defaultResult:YES];
}
- (BOOL)isDirectory
{
    return [self isContainer] && ![self isVolume];
}
- (BOOL)isFolder
{
    return [self isContainer] && ![self isPackage] && ![self isVolume];
}

@end
