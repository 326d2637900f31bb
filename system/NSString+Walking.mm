#import <Tarvik/support/Retained.h>
#import <Tarvik/system/NSString+Walking.h>
#import <system/private/PathBytes.h>

#include <Carbon/FileTrees.h>
#include <Carbon/LSInfo.h>
#include <CoreFoundation/CFURL.h>
#import <Foundation/NSFileManager.h>

#include <set>
#include <string_view>

namespace {

/// The packages that were kept, by subpath. None is the beginning of another one.
class Packages {
public:
    /// Whether the subpath begins with one of them.
    bool cover(std::string_view subpath) const
    {
        auto next = kept_.upper_bound(subpath);
        return next != kept_.begin() && subpath.starts_with(*--next);
    }
    void add(std::string_view subpath)
    {
        auto longer = kept_.lower_bound(subpath);
        while (longer != kept_.end() && std::string_view(*longer).starts_with(subpath))
            longer = kept_.erase(longer);
        kept_.emplace(subpath);
    }

private:
    std::set<std::string, std::less<>> kept_;
};

struct Listing {
    NSMutableArray *paths;
    Packages packages;
};

Boolean list(const char *subpath, size_t length, LSItemInfoFlags flags, void *context)
{
    Listing &listing = *static_cast<Listing *>(context);
    const bool isPackage = flags & kLSItemInfoIsPackage;
    const bool isFolder = flags & kLSItemInfoIsContainer && !isPackage && !(flags & kLSItemInfoIsVolume);
    if (listing.packages.cover({subpath, length}))
        return false;
    if (flags & (kLSItemInfoIsInvisible | kLSItemInfoIsVolume) || isFolder)
        return true;
    NSString *text = [[NSFileManager defaultManager] stringWithFileSystemRepresentation:subpath
                                                                                 length:length];
    if (text)
        [listing.paths addObject:text];
    if (isPackage)
        listing.packages.add({subpath, length});
    return !isPackage;
}

}  // namespace

@implementation NSString (FoundationXWalking)

- (NSMutableArray *)subfilepaths
{
    NSMutableArray *paths = [NSMutableArray array];
    std::string path;
    if (!paths || !tarvik::getPathBytes(self, path))
        return paths;
    CFURLRef url = CFURLCreateFromFileSystemRepresentation(
        nullptr, reinterpret_cast<const UInt8 *>(path.data()), CFIndex(path.size()), true);
    Listing listing = {paths, {}};
    LSVisitItemsBelow(url, list, &listing);
    CFRelease(url);
    return paths;
}

- (uint64_t)logicalSize
{
    std::string path;
    UInt64 data = 0, resources = 0;
    const bool found =
        tarvik::getPathBytes(self, path) &&
        FSGetForkSizes(reinterpret_cast<const UInt8 *>(path.c_str()), &data, &resources) == noErr;
    return found ? data + resources : 0;
}

- (NSNumber *)logicalSizeNumber
{
    return [NSNumber numberWithUnsignedLongLong:[self logicalSize]];
}

@end
