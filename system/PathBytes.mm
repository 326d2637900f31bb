#include <Tarvik/support/Guard.h>
#import <system/private/PathBytes.h>

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
    return [[NSFileManager defaultManager] stringWithFileSystemRepresentation:bytes length:std::strlen(bytes)];
}

NSString *tarvik::pathText(const FSRef *ref)
{
    UInt8 path[4097] = {};  // the platform's longest path
    if (!ref || FSRefMakePath(ref, path, sizeof path) != noErr || !path[0])
        return nil;
    return pathText(reinterpret_cast<const char *>(path));
}
