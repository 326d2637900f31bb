#import <Tarvik/system/NSString+FileReferences.h>
#import <system/private/PathBytes.h>

namespace {

constexpr size_t kPathBuffer = 1025;  // callers rely on longer paths being refused

}  // namespace

@implementation NSString (FoundationXFileReferences)

- (id)initWithFSRef:(const FSRef *)ref
{
    if (NSString *path = tarvik::pathText(ref, kPathBuffer))
        return [self initWithString:path];
    [self release];
    return nil;
}

+ (id)stringWithFSRef:(const FSRef *)ref
{
    return [[[self alloc] initWithFSRef:ref] autorelease];
}

- (BOOL)getFSRef:(FSRef *)ref
{
    std::string path;
    return ref && tarvik::getPathBytes(self, path) &&
           FSPathMakeRef(reinterpret_cast<const UInt8 *>(path.c_str()), ref, nullptr) == noErr;
}

@end
