#import <Foundation/Foundation.h>
#import <Tarvik/support/Pool.h>
#import <Tarvik/system/Bundles.h>
#include <Tarvik/text/Strings.h>

#include <CoreFoundation/CFPropertyList.h>
#include <CoreFoundation/CFURLAccess.h>
#include <Tarvik/support/CFOwned.h>

namespace {

using tarvik::CFOwned;
using OwnedURL = CFOwned<CFURLRef>;

CFBundleRef orMain(CFBundleRef bundle) { return bundle ? bundle : CFBundleGetMainBundle(); }

OwnedURL parentOf(const OwnedURL &url)
{
    return OwnedURL(url ? CFURLCreateCopyDeletingLastPathComponent(kCFAllocatorDefault, url.get()) : nullptr);
}

CFURLRef copyAppending(OwnedURL folder, CFStringRef component, Boolean isDirectory)
{
    if (!folder || !component)
        return folder.release();
    return CFURLCreateCopyAppendingPathComponent(kCFAllocatorDefault, folder.get(), component, isDirectory);
}

NSString *pathOf(const OwnedURL &url)
{
    return url ? [(NSString *)CFURLCopyFileSystemPath(url.get(), kCFURLPOSIXPathStyle) autorelease] : nil;
}

}  // namespace

CFURLRef CFBundleCopyDirectoryURLAppendingPathComponent(CFBundleRef bundle, CFStringRef component,
                                                        Boolean isDirectory)
{
    return copyAppending(parentOf(OwnedURL(CFBundleCopyBundleURL(orMain(bundle)))), component, isDirectory);
}

CFURLRef CFBundleCopyDirectoryURL(CFBundleRef bundle)
{
    return CFBundleCopyDirectoryURLAppendingPathComponent(bundle, nullptr, false);
}

CFURLRef CFBundleCopyExecutableDirectoryURLAppendingPathComponent(CFBundleRef bundle, CFStringRef component,
                                                                  Boolean isDirectory)
{
    return copyAppending(parentOf(OwnedURL(CFBundleCopyExecutableURL(orMain(bundle)))), component,
                         isDirectory);
}

CFURLRef CFBundleCopyResourcesDirectoryURLAppendingPathComponent(CFBundleRef bundle, CFStringRef component,
                                                                 Boolean isDirectory)
{
    return copyAppending(OwnedURL(CFBundleCopyResourcesDirectoryURL(orMain(bundle))), component, isDirectory);
}

CFBundleRef CFBundleCreateFromFSRef(const FSRef *ref)
{
    const OwnedURL url(CFURLCreateFromFSRef(kCFAllocatorDefault, ref));
    return url ? CFBundleCreate(kCFAllocatorDefault, url.get()) : nullptr;
}

CFBundleRef CFBundleCreateFromPOSIXPath(CFStringRef path)
{
    const OwnedURL url(
        path ? CFURLCreateWithFileSystemPath(kCFAllocatorDefault, path, kCFURLPOSIXPathStyle, true)
             : nullptr);
    return url ? CFBundleCreate(kCFAllocatorDefault, url.get()) : nullptr;
}

CFBundleRef CFBundleCreateFromBundleExecutableDirectory(CFBundleRef bundle, CFStringRef name)
{
    if (CFStringIsVoid(name))
        return nullptr;
    const OwnedURL url(CFBundleCopyExecutableDirectoryURLAppendingPathComponent(bundle, name, true));
    return url ? CFBundleCreate(kCFAllocatorDefault, url.get()) : nullptr;
}

Boolean CFBundleGetExecutableFSRef(CFBundleRef bundle, FSRef *ref)
{
    const OwnedURL url(CFBundleCopyExecutableURL(orMain(bundle)));
    return url && ref && CFURLGetFSRef(url.get(), ref);
}

Boolean CFBundleGetResourceFSRef(CFBundleRef bundle, CFStringRef name, CFStringRef type,
                                 CFStringRef subDirName, FSRef *ref)
{
    if (!bundle || !ref)
        return false;
    const OwnedURL url(CFBundleCopyResourceURL(bundle, name, type, subDirName));
    return url && CFURLGetFSRef(url.get(), ref);
}

CFDictionaryRef CFBundleCopyStringsDictionaryForLocalization(CFBundleRef bundle, CFStringRef table,
                                                             CFStringRef localization)
{
    const OwnedURL url(CFBundleCopyResourceURLForLocalization(
        orMain(bundle), table ? table : CFSTR("Localizable"), CFSTR("strings"), nullptr, localization));
    CFDataRef contents = nullptr;
    SInt32 error = 0;
    if (!url || !CFURLCreateDataAndPropertiesFromResource(kCFAllocatorDefault, url.get(), &contents, nullptr,
                                                          nullptr, &error))
        return nullptr;
    const CFOwned<CFDataRef> data(contents);
    CFOwned<CFPropertyListRef> list(
        CFPropertyListCreateFromXMLData(kCFAllocatorDefault, data.get(), kCFPropertyListImmutable, nullptr));
    if (!list || CFGetTypeID(list.get()) != CFDictionaryGetTypeID())
        return nullptr;
    return static_cast<CFDictionaryRef>(list.release());
}

CFStringRef CFBundleCopyStringForLocalization(CFBundleRef bundle, CFStringRef key, CFStringRef defaultString,
                                              CFStringRef table, CFStringRef localization)
{
    CFTypeRef found = nullptr;
    const CFOwned<CFDictionaryRef> strings(
        key ? CFBundleCopyStringsDictionaryForLocalization(bundle, table, localization) : nullptr);
    if (strings)
        found = CFDictionaryGetValue(strings.get(), key);
    if (!found)
        found = defaultString ? defaultString : key ? CFSTR("") : nullptr;
    return found ? static_cast<CFStringRef>(CFRetain(found)) : nullptr;
}

@implementation NSBundle (FoundationX)

- (NSString *)executablePath:(NSString *)name
{
    if (!name)
        return nil;
    return pathOf(OwnedURL(CFBundleCopyExecutableDirectoryURLAppendingPathComponent(
        (CFBundleRef)self, (CFStringRef)name, false)));
}

- (NSString *)directoryPath
{
    return pathOf(OwnedURL(CFBundleCopyDirectoryURL((CFBundleRef)self)));
}

- (NSString *)neighborPath:(NSString *)name
{
    return name ? [[self directoryPath] stringByAppendingPathComponent:name] : nil;
}

- (NSString *)identifiedName
{
    NSString *identifier = [self bundleIdentifier];
    return identifier ? identifier : [[[self bundlePath] lastPathComponent] stringByDeletingPathExtension];
}

@end

@implementation NSString (FoundationXBundles)

- (NSData *)URLContents
{
    NSURL *url = [NSURL URLWithString:self];
    if (![url scheme])
        return nil;
    return [NSURLConnection sendSynchronousRequest:[NSURLRequest requestWithURL:url]
                                 returningResponse:NULL
                                             error:NULL];
}

- (NSString *)bundleIdentifier
{
    const CFOwned<CFBundleRef> bundle(
        CFBundleCreateFromPOSIXPath((CFStringRef)[self stringByExpandingTildeInPath]));
    return bundle ? [[(NSString *)CFBundleGetIdentifier(bundle.get()) retain] autorelease] : nil;
}

@end
