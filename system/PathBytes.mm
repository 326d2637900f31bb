#include <Tarvik/support/Guard.h>
#import <system/private/PathBytes.h>

#include <algorithm>
#include <cstring>

bool tarvik::getPathBytes(NSString *path, std::string &bytes)
{
    bytes.clear();
    attempt([&] {
        if ([path length] > 0)
            if (const char *text = [[NSFileManager defaultManager] fileSystemRepresentationWithPath:path])
                bytes = text;
    });
    return !bytes.empty();
}

NSString *tarvik::pathText(const char *bytes)
{
    return [[NSFileManager defaultManager] stringWithFileSystemRepresentation:bytes
                                                                       length:std::strlen(bytes)];
}

NSString *tarvik::pathText(const FSRef *ref, size_t size)
{
    UInt8 path[kLongestPath] = {};
    if (!ref || FSRefMakePath(ref, path, UInt32(std::min(size, sizeof path))) != noErr || !path[0])
        return nil;
    return pathText(reinterpret_cast<const char *>(path));
}
