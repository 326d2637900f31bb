#include "platform/CoreFoundation/private/Bridging.h"
#include "platform/CoreFoundation/private/URLPath.h"

#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/support/Bridge.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>

using namespace tarvik::cf;

const CFStringRef kCFBundleInfoDictionaryVersionKey = CFSTR("CFBundleInfoDictionaryVersion");
const CFStringRef kCFBundleExecutableKey = CFSTR("CFBundleExecutable");
const CFStringRef kCFBundleIdentifierKey = CFSTR("CFBundleIdentifier");
const CFStringRef kCFBundleVersionKey = CFSTR("CFBundleVersion");
const CFStringRef kCFBundleDevelopmentRegionKey = CFSTR("CFBundleDevelopmentRegion");
const CFStringRef kCFBundleNameKey = CFSTR("CFBundleName");
const CFStringRef kCFBundleLocalizationsKey = CFSTR("CFBundleLocalizations");

namespace {

bool exists(NSString *path, bool mustBeFolder = false)
{
    struct stat about;
    const auto bytes = tarvik::utf8(path);
    return bytes && !bytes->empty() && stat(bytes->c_str(), &about) == 0 &&
           (!mustBeFolder || S_ISDIR(about.st_mode));
}

/// An owned URL; null for nil.
CFURLRef copyURL(NSString *path, bool isDirectory)
{
    return path ? CFURLCreateWithFileSystemPath(nullptr, CFStringRef(path), kCFURLPOSIXPathStyle, isDirectory)
                : nullptr;
}

NSArray *urls(NSArray *paths)
{
    NSMutableArray *urls = [NSMutableArray array];
    for (NSString *path : tarvik::each<NSString>(paths)) {
        CFURLRef url = copyURL(path, exists(path, true));
        if (url)
            [urls addObject:ns(CFTypeRef(url))];
        CFRelease(url);
    }
    return urls;
}

NSString *processPath()
{
    char path[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    return length > 0 ? tarvik::nsstring(std::string_view(path, size_t(length))) : nil;
}

NSString *executablePath(CFBundleRef bundle)
{
    if (ns(bundle) == [NSBundle mainBundle])
        return processPath();
    NSString *path = [ns(bundle) executablePath];
    return exists(path) && !exists(path, true) ? path : nil;
}

/// The bundle's folder. A plain program has none of its own: it is taken to be the folder that the program
/// stands in.
NSString *bundlePath(CFBundleRef bundle)
{
    NSString *path = [ns(bundle) bundlePath];
    return !exists(path, true) && ns(bundle) == [NSBundle mainBundle]
               ? [processPath() stringByDeletingLastPathComponent]
               : path;
}

/// Where resources stand: the folder itself in the flat layout.
NSString *resourcesPath(CFBundleRef bundle)
{
    NSString *path = [ns(bundle) resourcePath];
    return exists(path, true) ? path : bundlePath(bundle);
}

/// The other name of a language's folder, if it has two.
NSString *otherName(NSString *language)
{
    static NSString *const names[][2] = {
        {@"English", @"en"},    {@"French", @"fr"},    {@"German", @"de"},    {@"Italian", @"it"},
        {@"Dutch", @"nl"},      {@"Swedish", @"sv"},   {@"Spanish", @"es"},   {@"Danish", @"da"},
        {@"Portuguese", @"pt"}, {@"Norwegian", @"no"}, {@"Japanese", @"ja"},  {@"Korean", @"ko"},
        {@"Chinese", @"zh"},    {@"Finnish", @"fi"},   {@"Greek", @"el"},     {@"Polish", @"pl"},
        {@"Russian", @"ru"},    {@"Turkish", @"tr"},   {@"Hungarian", @"hu"}, {@"Czech", @"cs"},
    };
    for (const auto &pair : names)
        for (const int i : {0, 1})
            if ([language isEqualToString:pair[i]])
                return pair[1 - i];
    return nil;
}

/// The folders in which a localization's resources stand, the most particular one first.
NSArray *localizedFolders(CFBundleRef bundle, NSString *subDirectory, NSString *localization)
{
    NSString *resources = resourcesPath(bundle);
    NSString *below =
        [subDirectory length] > 0 ? [resources stringByAppendingPathComponent:subDirectory] : resources;
    NSMutableArray *folders = [NSMutableArray array];
    for (NSString *name : {localization, otherName(localization)})
        if ([name length] > 0) {
            NSString *folder = [name stringByAppendingPathExtension:@"lproj"];
            [folders addObject:[below stringByAppendingPathComponent:folder]];
            if (below != resources)
                [folders addObject:[[resources stringByAppendingPathComponent:folder]
                                       stringByAppendingPathComponent:subDirectory]];
        }
    [folders addObject:below];
    return folders;
}

NSString *fileName(CFStringRef name, CFStringRef type)
{
    NSString *plain = ns(name), *ending = [ns(type) length] > 0 ? ns(type) : nil;
    if ([ending hasPrefix:@"."])
        ending = [ending substringFromIndex:1];
    return ending ? [plain stringByAppendingFormat:@".%@", ending] : plain;
}

/// "1.2.3b4" in the form of a 'vers' resource: 0x01236004; 0 for anything else.
UInt32 versionNumber(const std::string &text)
{
    unsigned major = 0, parts[2] = {0, 0}, revision = 0;
    UInt32 stage = finalStage;
    const char *at = text.c_str();
    const auto number = [&](unsigned &value, unsigned most) {
        if (*at < '0' || *at > '9')
            return false;
        for (value = 0; *at >= '0' && *at <= '9' && value <= most; ++at)
            value = value * 10 + unsigned(*at - '0');
        return value <= most;
    };
    if (!number(major, 99))
        return 0;
    for (unsigned &part : parts)
        if (*at == '.' && (++at, !number(part, 9)))
            return 0;
    if (*at == 'd' || *at == 'a' || *at == 'b' || *at == 'f') {
        stage = *at == 'd' ? developStage : *at == 'a' ? alphaStage : *at == 'b' ? betaStage : finalStage;
        ++at;
        if (!number(revision, 255))
            return 0;
    }
    return *at ? 0
               : (major / 10 << 4 | major % 10) << 24 | parts[0] << 20 | parts[1] << 16 | stage << 8 |
                     revision;
}

}  // namespace

CFBundleRef CFBundleGetMainBundle(void)
{
    return answer<CFBundleRef>(nullptr, [] { return cf<CFBundleRef>([NSBundle mainBundle]); });
}

CFBundleRef CFBundleGetBundleWithIdentifier(CFStringRef identifier)
{
    if (!identifier)
        return nullptr;
    return answer<CFBundleRef>(
        nullptr, [&] { return cf<CFBundleRef>([NSBundle bundleWithIdentifier:ns(identifier)]); });
}

CFArrayRef CFBundleGetAllBundles(void)
{
    // Borrowed by the caller, so the list lives until the next call.
    static CFArrayRef last;
    CFArrayRef all = owned<CFArrayRef>([] { return [NSBundle allBundles]; });
    CFRelease(std::exchange(last, all));
    return all;
}

CFBundleRef CFBundleCreate(CFAllocatorRef, CFURLRef bundleURL)
{
    return made<CFBundleRef>([&]() -> NSBundle * {
        const auto bytes = urlPath(bundleURL);
        NSString *path = bytes ? tarvik::nsstring(*bytes) : nil;
        return exists(path, true) ? [[NSBundle alloc] initWithPath:path] : nil;
    });
}

CFArrayRef CFBundleCreateBundlesFromDirectory(CFAllocatorRef, CFURLRef directoryURL, CFStringRef bundleType)
{
    SInt32 error = 0;
    CFTypeRef contents =
        CFURLCreatePropertyFromResource(nullptr, directoryURL, kCFURLFileDirectoryContents, &error);
    if (!contents)
        return nullptr;
    auto bundles = owned<CFArrayRef>([&] {
        NSMutableArray *found = [NSMutableArray array];
        for (NSURL *url : tarvik::each<NSURL>(ns(CFArrayRef(contents)))) {
            CFStringRef extension = CFURLCopyPathExtension(CFURLRef(url));
            const bool isWanted = !bundleType || (extension && CFEqual(extension, bundleType));
            CFRelease(extension);
            CFBundleRef bundle = isWanted && CFURLHasDirectoryPath(CFURLRef(url))
                                     ? CFBundleCreate(nullptr, CFURLRef(url))
                                     : nullptr;
            if (bundle)
                [found addObject:ns(bundle)];
            CFRelease(bundle);
        }
        return found;
    });
    CFRelease(contents);
    return bundles;
}

// --- places --------------------------------------------------------------------------------------------

CFURLRef CFBundleCopyBundleURL(CFBundleRef bundle)
{
    return answer<CFURLRef>(nullptr, [&] { return copyURL(bundlePath(bundle), true); });
}

CFURLRef CFBundleCopyExecutableURL(CFBundleRef bundle)
{
    return answer<CFURLRef>(nullptr,
                            [&] { return bundle ? copyURL(executablePath(bundle), false) : nullptr; });
}

CFURLRef CFBundleCopyAuxiliaryExecutableURL(CFBundleRef bundle, CFStringRef executableName)
{
    return answer<CFURLRef>(nullptr, [&]() -> CFURLRef {
        NSString *executable = bundle ? executablePath(bundle) : nil;
        NSString *folder = executable ? [executable stringByDeletingLastPathComponent] : bundlePath(bundle);
        NSString *path = executableName ? [folder stringByAppendingPathComponent:ns(executableName)] : nil;
        return exists(path) ? copyURL(path, exists(path, true)) : nullptr;
    });
}

CFURLRef CFBundleCopyResourcesDirectoryURL(CFBundleRef bundle)
{
    return answer<CFURLRef>(nullptr, [&] { return bundle ? copyURL(resourcesPath(bundle), true) : nullptr; });
}

CFURLRef CFBundleCopySupportFilesDirectoryURL(CFBundleRef bundle)
{
    return answer<CFURLRef>(nullptr, [&]() -> CFURLRef {
        NSString *contents = [bundlePath(bundle) stringByAppendingPathComponent:@"Contents"];
        return bundle ? copyURL(exists(contents, true) ? contents : resourcesPath(bundle), true) : nullptr;
    });
}

// --- what it says of itself ----------------------------------------------------------------------------

CFStringRef CFBundleGetIdentifier(CFBundleRef bundle)
{
    CFTypeRef identifier = CFBundleGetValueForInfoDictionaryKey(bundle, kCFBundleIdentifierKey);
    return CFGetTypeID(identifier) == CFStringGetTypeID() ? CFStringRef(identifier) : nullptr;
}

UInt32 CFBundleGetVersionNumber(CFBundleRef bundle)
{
    CFTypeRef version = CFBundleGetValueForInfoDictionaryKey(bundle, kCFBundleVersionKey);
    return answer<UInt32>(0, [&]() -> UInt32 {
        if (CFGetTypeID(version) == CFNumberGetTypeID())
            return [ns(version) unsignedIntValue];
        if (CFGetTypeID(version) == CFStringGetTypeID())
            return versionNumber(tarvik::utf8(ns(version)).value_or(""));
        return 0;
    });
}

CFStringRef CFBundleGetDevelopmentRegion(CFBundleRef bundle)
{
    return CFStringRef(CFBundleGetValueForInfoDictionaryKey(bundle, kCFBundleDevelopmentRegionKey));
}

CFDictionaryRef CFBundleGetInfoDictionary(CFBundleRef bundle)
{
    if (!bundle)
        return nullptr;
    return answer<CFDictionaryRef>(nullptr, [&] {
        static NSDictionary *none = [NSDictionary new];
        NSDictionary *info = [ns(bundle) infoDictionary];
        return cf<CFDictionaryRef>(info ? info : none);
    });
}

CFTypeRef CFBundleGetValueForInfoDictionaryKey(CFBundleRef bundle, CFStringRef key)
{
    return key ? CFDictionaryGetValue(CFBundleGetInfoDictionary(bundle), key) : nullptr;
}

// --- resources -----------------------------------------------------------------------------------------

CFURLRef CFBundleCopyResourceURL(CFBundleRef bundle, CFStringRef name, CFStringRef type,
                                 CFStringRef subDirName)
{
    if (!bundle || !name)
        return nullptr;
    return answer<CFURLRef>(nullptr, [&] {
        NSString *path = [ns(bundle) pathForResource:fileName(name, type)
                                              ofType:nil
                                         inDirectory:ns(subDirName)];
        return copyURL(path, exists(path, true));
    });
}

CFArrayRef CFBundleCopyResourceURLsOfType(CFBundleRef bundle, CFStringRef type, CFStringRef subDirName)
{
    if (!bundle)
        return nullptr;
    return owned<CFArrayRef>(
        [&] { return urls([ns(bundle) pathsForResourcesOfType:ns(type) inDirectory:ns(subDirName)]); });
}

CFURLRef CFBundleCopyResourceURLForLocalization(CFBundleRef bundle, CFStringRef name, CFStringRef type,
                                                CFStringRef subDirName, CFStringRef localization)
{
    if (!bundle || !name || CFStringGetLength(name) == 0)
        return nullptr;
    return answer<CFURLRef>(nullptr, [&]() -> CFURLRef {
        for (NSString *folder :
             tarvik::each<NSString>(localizedFolders(bundle, ns(subDirName), ns(localization)))) {
            NSString *path = [folder stringByAppendingPathComponent:fileName(name, type)];
            if (exists(path))
                return copyURL(path, exists(path, true));
        }
        return nullptr;
    });
}

CFArrayRef CFBundleCopyResourceURLsOfTypeForLocalization(CFBundleRef bundle, CFStringRef type,
                                                         CFStringRef subDirName, CFStringRef localization)
{
    if (!bundle)
        return nullptr;
    return owned<CFArrayRef>([&] {
        NSMutableArray *paths = [NSMutableArray array];
        for (NSString *folder :
             tarvik::each<NSString>(localizedFolders(bundle, ns(subDirName), ns(localization)))) {
            NSArray *names = [[NSFileManager defaultManager] directoryContentsAtPath:folder];
            for (NSString *name :
                 tarvik::each<NSString>([names sortedArrayUsingSelector:@selector(compare:)]))
                if (!type || [[name pathExtension] isEqualToString:ns(type)])
                    [paths addObject:[folder stringByAppendingPathComponent:name]];
        }
        return urls(paths);
    });
}

// --- languages -----------------------------------------------------------------------------------------

CFArrayRef CFBundleCopyBundleLocalizations(CFBundleRef bundle)
{
    if (!bundle)
        return nullptr;
    return owned<CFArrayRef>([&] { return [ns(bundle) localizations]; });
}

CFArrayRef CFBundleCopyPreferredLocalizationsFromArray(CFArrayRef localizations)
{
    if (!localizations)
        return nullptr;
    return owned<CFArrayRef>([&] {
        NSArray *preferred = [NSBundle preferredLocalizationsFromArray:ns(localizations)];
        const bool isEmpty = [preferred count] == 0 && [ns(localizations) count] > 0;
        return isEmpty ? [NSArray arrayWithObject:[ns(localizations) objectAtIndex:0]] : preferred;
    });
}

CFStringRef CFBundleCopyLocalizedString(CFBundleRef bundle, CFStringRef key, CFStringRef value,
                                        CFStringRef tableName)
{
    if (!bundle || !key)
        return CFStringRef(CFRetain(value));
    return owned<CFStringRef>(
        [&] { return [ns(bundle) localizedStringForKey:ns(key) value:ns(value) table:ns(tableName)]; });
}
