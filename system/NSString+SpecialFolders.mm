#include <Carbon/Files.h>
#include <Tarvik/core/Guard.h>
#import <Tarvik/system/NSString+FileChanges.h>
#import <Tarvik/system/NSString+FileReferences.h>
#import <Tarvik/system/NSString+SpecialFolders.h>

#import <Foundation/NSBundle.h>
#import <Foundation/NSPathUtilities.h>

namespace {

// The line that the log names, wherever the code has moved.
constexpr unsigned long kApplicationTemporaryLine = 1223;

}  // namespace

@implementation NSString (FoundationXSpecialFolders)

- (id)initWithFindFolder:(SInt16)domain type:(OSType)folderType createFolder:(BOOL)createFolder
{
    FSRef folder;
    if (FSFindFolder(domain, folderType, createFolder, &folder) == noErr)
        return [self initWithFSRef:&folder];
    [self release];
    return nil;
}

+ (id)stringWithFindFolder:(SInt16)domain type:(OSType)folderType createFolder:(BOOL)createFolder
{
    return [[[self alloc] initWithFindFolder:domain type:folderType createFolder:createFolder] autorelease];
}

+ (NSString *)stringWithApplicationTemporary
{
    NSString *const none = nil;
    return tarvik::guarded("+[NSString(FoundationX) stringWithApplicationTemporary]",
                           kApplicationTemporaryLine, none, [&]() -> NSString * {
                               NSString *folder = [NSString stringWithFindFolder:kUserDomain
                                                                            type:kUserTemporaryFolderType
                                                                    createFolder:YES];
                               NSString *name = [[NSBundle mainBundle] bundleIdentifier];
                               if ([name length] == 0)
                                   name = [[[NSBundle mainBundle] executablePath] lastPathComponent];
                               if (!folder || [name length] == 0)
                                   return nil;
                               NSString *path = [folder stringByAppendingPathComponent:name];
                               return [path createDirectory] ? path : nil;
                           });
}

@end
