#include <Carbon/Folders.h>
#import <Foundation/Foundation.h>
#include <Tarvik/support/Bridge.h>
#include <Tarvik/support/Guard.h>
#include <Tarvik/support/Pool.h>
#include <Tarvik/system/FileUtils.h>

namespace file_utils {

namespace {

/// What the file manager finds at a location.
struct Item {
    explicit Item(const TFileLocationInfo &location)
    {
        const std::string full = location.GetFullPath();
        path = full.empty() ? nil : tarvik::nsstring(full);
        exists = path && [manager fileExistsAtPath:path isDirectory:&isFolder];
    }

    /// Nothing that the file manager raises gets out.
    void remove()
    {
        tarvik::attempt([&] { [manager removeFileAtPath:path handler:nil]; });
    }

    tarvik::Pool pool;
    NSFileManager *manager = [NSFileManager defaultManager];
    NSString *path = nil;
    BOOL isFolder = NO;
    bool exists = false;
};

}  // namespace

std::string GetPathDelimiter() { return "/"; }

FILE *fopen(const TFileLocationInfo &location, const std::string &mode)
{
    const std::string path = location.GetFullPath();
    return path.empty() ? nullptr : ::fopen(path.c_str(), mode.c_str());
}

bool CreateFile(const TFileLocationInfo &location)
{
    Item item(location);
    if (!item.path)
        return false;
    return item.exists || [item.manager createFileAtPath:item.path contents:nil attributes:nil];
}

bool CreateDir(const TFileLocationInfo &location)
{
    Item item(location);
    if (!item.path)
        return false;
    return item.exists ? item.isFolder : [item.manager createDirectoryAtPath:item.path attributes:nil];
}

bool DeleteFile(const TFileLocationInfo &location)
{
    Item item(location);
    if (item.exists)
        item.remove();
    return item.exists;
}

bool DeleteDir(const TFileLocationInfo &location)
{
    Item item(location);
    if (!item.exists || !item.isFolder)
        return false;
    item.remove();
    return true;
}

bool SetPermissions(const TFileLocationInfo &location, bool allowExecute)
{
    Item item(location);
    if (!item.exists)
        return false;
    NSMutableDictionary *attributes = [[[item.manager fileAttributesAtPath:item.path
                                                              traverseLink:YES] mutableCopy] autorelease];
    [attributes setObject:[NSNumber numberWithInt:allowExecute ? 0777 : 0666] forKey:NSFilePosixPermissions];
    [item.manager changeFileAttributes:attributes atPath:item.path];
    return true;
}

bool GetAppSupportFolderPath(std::string &path)
{
    char found[1024];
    FSFindFolderPath(kLocalDomain, kApplicationSupportFolderType, false, found, sizeof found);
    path = found;
    return !path.empty();
}

bool GetAppSupportFolder(TFileLocationInfo &location)
{
    std::string path;
    if (!GetAppSupportFolderPath(path))
        return false;
    location.kind = TFileLocationInfo::kPath;
    location.path = path;
    return true;
}

}  // namespace file_utils
