#import <Tarvik/system/NSString+CatalogInfo.h>
#import <Tarvik/system/NSString+FileReferences.h>

@implementation NSString (FoundationXCatalogInfo)

- (BOOL)getFSCatalogInfo:(FSCatalogInfo *)info ofBitmap:(FSCatalogInfoBitmap)bitmap
{
    if (!info)
        return NO;
    *info = {};
    FSRef ref;
    return [self getFSRef:&ref] && FSGetCatalogInfo(&ref, bitmap, info, nullptr, nullptr, nullptr) == noErr;
}

- (BOOL)setFSCatalogInfo:(const FSCatalogInfo *)info ofBitmap:(FSCatalogInfoBitmap)bitmap
{
    FSRef ref;
    return info && [self getFSRef:&ref] && FSSetCatalogInfo(&ref, bitmap, info) == noErr;
}

- (id)initWithFSSpec:(const FSSpec *)spec
{
    FSRef ref;
    return spec && FSpMakeFSRef(spec, &ref) == noErr ? [self initWithFSRef:&ref] : self;
}

+ (id)stringWithFSSpec:(const FSSpec *)spec
{
    return [[[self alloc] initWithFSSpec:spec] autorelease];
}

- (BOOL)getFSSpec:(FSSpec *)spec
{
    FSRef ref;
    return spec && [self getFSRef:&ref] &&
           FSGetCatalogInfo(&ref, kFSCatInfoNone, nullptr, nullptr, spec, nullptr) == noErr;
}

@end
