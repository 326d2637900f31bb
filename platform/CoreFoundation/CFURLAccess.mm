#include "platform/CoreFoundation/private/Bridging.h"
#include "platform/CoreFoundation/private/URLPath.h"
#include "platform/CoreFoundation/private/WholeFile.h"

#import <Tarvik/support/ArrayRange.h>
#include <Tarvik/support/Handle.h>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <vector>

using namespace tarvik::cf;

const CFStringRef kCFURLFileExists = CFSTR("kCFURLFileExists");
const CFStringRef kCFURLFileDirectoryContents = CFSTR("kCFURLFileDirectoryContents");
const CFStringRef kCFURLFileLength = CFSTR("kCFURLFileLength");
const CFStringRef kCFURLFileLastModificationTime = CFSTR("kCFURLFileLastModificationTime");
const CFStringRef kCFURLFilePOSIXMode = CFSTR("kCFURLFilePOSIXMode");
const CFStringRef kCFURLFileOwnerID = CFSTR("kCFURLFileOwnerID");
const CFStringRef kCFURLHTTPStatusCode = CFSTR("kCFURLHTTPStatusCode");
const CFStringRef kCFURLHTTPStatusLine = CFSTR("kCFURLHTTPStatusLine");

namespace {

SInt32 errorOf(int why)
{
    switch (why) {
    case 0: return 0;
    case ENOENT:
    case ENOTDIR: return kCFURLResourceNotFoundError;
    case EACCES:
    case EPERM:
    case EROFS: return kCFURLResourceAccessViolationError;
    default: return kCFURLUnknownError;
    }
}

/// A URL without a scheme is none of a file.
bool isFile(CFURLRef url)
{
    NSString *scheme = [[ns(url) absoluteURL] scheme];
    return scheme && [scheme caseInsensitiveCompare:@"file"] == NSOrderedSame;
}

// --- files ---------------------------------------------------------------------------------------------

/// The URLs of what a folder holds, in the order of their names; nil with errno when it can't be read.
NSArray *folderContents(const std::string &path)
{
    DIR *folder = opendir(path.c_str());
    if (!folder)
        return nil;
    NSMutableArray *urls = [NSMutableArray array];
    std::vector<std::pair<std::string, bool>> names;
    while (const dirent *entry = readdir(folder)) {
        const std::string name = entry->d_name;
        struct stat about;
        if (name != "." && name != "..")
            names.emplace_back(name, fstatat(dirfd(folder), entry->d_name, &about, 0) == 0 &&
                                         S_ISDIR(about.st_mode));
    }
    closedir(folder);
    std::sort(names.begin(), names.end());
    for (const auto &[name, isFolder] : names) {
        const std::string whole = path + "/" + name;
        CFURLRef url = CFURLCreateFromFileSystemRepresentation(
            nullptr, reinterpret_cast<const UInt8 *>(whole.data()), CFIndex(whole.size()), isFolder);
        [urls addObject:ns(CFTypeRef(url))];
        CFRelease(url);
    }
    return urls;
}

/// A property of a file, autoreleased; nil when it has none of that name.
id fileProperty(const std::string &path, NSString *property)
{
    struct stat about;
    const bool exists = stat(path.c_str(), &about) == 0;
    if ([property isEqual:ns(kCFURLFileExists)])
        return [NSNumber numberWithBool:exists];
    if (!exists)
        return nil;
    if ([property isEqual:ns(kCFURLFileLength)])
        return [NSNumber numberWithLongLong:about.st_size];
    if ([property isEqual:ns(kCFURLFilePOSIXMode)])
        return [NSNumber numberWithUnsignedInt:about.st_mode];
    if ([property isEqual:ns(kCFURLFileOwnerID)])
        return [NSNumber numberWithLong:long(about.st_uid)];
    if ([property isEqual:ns(kCFURLFileLastModificationTime)])
        return [NSDate
            dateWithTimeIntervalSince1970:double(about.st_mtim.tv_sec) + double(about.st_mtim.tv_nsec) / 1e9];
    if ([property isEqual:ns(kCFURLFileDirectoryContents)])
        return S_ISDIR(about.st_mode) ? folderContents(path) : nil;
    return nil;
}

bool isFileProperty(NSString *property)
{
    for (CFStringRef known : {kCFURLFileExists, kCFURLFileDirectoryContents, kCFURLFileLength,
                              kCFURLFileLastModificationTime, kCFURLFilePOSIXMode, kCFURLFileOwnerID})
        if ([property isEqual:ns(known)])
            return true;
    return false;
}

/// Writes one property; answers an error code.
SInt32 setFileProperty(const std::string &path, NSString *property, id value)
{
    int result = -1;
    if ([property isEqual:ns(kCFURLFilePOSIXMode)]) {
        result = [value respondsToSelector:@selector(intValue)]
                     ? chmod(path.c_str(), mode_t([value intValue]) & 07777)
                     : (errno = EINVAL, -1);
    } else if ([property isEqual:ns(kCFURLFileOwnerID)]) {
        result = [value respondsToSelector:@selector(longLongValue)]
                     ? chown(path.c_str(), uid_t([value longLongValue]), gid_t(-1))
                     : (errno = EINVAL, -1);
    } else if ([property isEqual:ns(kCFURLFileLastModificationTime)]) {
        if (![value isKindOfClass:[NSDate class]])
            return kCFURLImproperArgumentsError;
        const double when = [value timeIntervalSince1970], whole = std::floor(when);
        const timespec times[] = {{0, UTIME_OMIT}, {time_t(whole), long((when - whole) * 1e9)}};
        result = utimensat(AT_FDCWD, path.c_str(), times, 0);
    } else {
        return isFileProperty(property) ? kCFURLPropertyKeyUnavailableError : kCFURLUnknownPropertyKeyError;
    }
    return result == 0 ? 0 : errno == EINVAL ? SInt32{kCFURLImproperArgumentsError} : errorOf(errno);
}

// --- other schemes -------------------------------------------------------------------------------------

struct Loaded {
    NSData *data;
    NSDictionary *properties;
    SInt32 error;
};

Loaded load(CFURLRef url)
{
    NSURL *absolute = [ns(url) absoluteURL];
    NSURLRequest *request = [NSURLRequest requestWithURL:absolute];
    if (![absolute scheme] || ![NSURLConnection canHandleRequest:request])
        return {nil, nil, kCFURLUnknownSchemeError};
    NSURLResponse *response = nil;
    NSError *error = nil;
    NSData *data = [NSURLConnection sendSynchronousRequest:request returningResponse:&response error:&error];
    if (!data) {
        const NSInteger code = [error code];
        return {nil, nil,
                code == NSURLErrorTimedOut         ? SInt32{kCFURLTimeoutError}
                : code == NSURLErrorUnsupportedURL ? SInt32{kCFURLUnknownSchemeError}
                                                   : SInt32{kCFURLRemoteHostUnavailableError}};
    }
    NSMutableDictionary *properties = [NSMutableDictionary dictionary];
    if ([response isKindOfClass:[NSHTTPURLResponse class]]) {
        const NSInteger status = [(NSHTTPURLResponse *)response statusCode];
        [properties setObject:[NSNumber numberWithInteger:status] forKey:ns(kCFURLHTTPStatusCode)];
        [properties setObject:[NSHTTPURLResponse localizedStringForStatusCode:status]
                       forKey:ns(kCFURLHTTPStatusLine)];
    }
    return {data, properties, 0};
}

}  // namespace

Boolean CFURLCreateDataAndPropertiesFromResource(CFAllocatorRef, CFURLRef url, CFDataRef *resourceData,
                                                 CFDictionaryRef *properties, CFArrayRef desiredProperties,
                                                 SInt32 *errorCode)
{
    SInt32 error = url ? SInt32{kCFURLUnknownError} : SInt32{kCFURLImproperArgumentsError};
    CFDataRef data = nullptr;
    CFDictionaryRef found = nullptr;
    if (url)
        perform([&] {
            if (!isFile(url)) {
                const Loaded loaded = load(url);
                error = loaded.error;
                data = cf<CFDataRef>([loaded.data retain]);
                found = cf<CFDictionaryRef>([loaded.properties retain]);
                return;
            }
            const auto path = urlPath(url);
            if (!path) {
                error = kCFURLImproperArgumentsError;
                return;
            }
            error = 0;
            if (resourceData) {
                data = cf<CFDataRef>(tarvik::readWholeFile(*path));
                error = data ? 0 : errorOf(errno);
            }
            NSMutableDictionary *all = [NSMutableDictionary dictionary];
            NSArray *wanted = desiredProperties
                                  ? ns(desiredProperties)
                                  : [NSArray arrayWithObjects:ns(kCFURLFileExists), ns(kCFURLFileLength),
                                                              ns(kCFURLFilePOSIXMode), ns(kCFURLFileOwnerID),
                                                              ns(kCFURLFileLastModificationTime),
                                                              ns(kCFURLFileDirectoryContents), nil];
            if (properties && !error)
                for (NSString *property : tarvik::each<NSString>(wanted)) {
                    id value = fileProperty(*path, property);
                    if (value)
                        [all setObject:value forKey:property];
                }
            found = cf<CFDictionaryRef>([all copy]);
        });
    if (errorCode)
        *errorCode = error;
    if (resourceData)
        *resourceData = error ? nullptr : cf<CFDataRef>([ns(data) retain]);
    if (properties)
        *properties = error ? nullptr : cf<CFDictionaryRef>([ns(found) retain]);
    CFRelease(data);
    CFRelease(found);
    return error == 0;
}

Boolean CFURLWriteDataAndPropertiesToResource(CFURLRef url, CFDataRef dataToWrite,
                                              CFDictionaryRef propertiesToWrite, SInt32 *errorCode)
{
    SInt32 error = url ? SInt32{kCFURLUnknownError} : SInt32{kCFURLImproperArgumentsError};
    if (url)
        perform([&] {
            const auto path = urlPath(url);
            if (!isFile(url) || !path) {
                error = isFile(url) ? SInt32{kCFURLImproperArgumentsError} : SInt32{kCFURLUnknownSchemeError};
                return;
            }
            error = 0;
            if (dataToWrite && CFURLHasDirectoryPath(url))
                error = CFDataGetLength(dataToWrite) > 0  ? SInt32{kCFURLImproperArgumentsError}
                        : mkdir(path->c_str(), 0777) == 0 ? 0
                                                          : errorOf(errno);
            else if (dataToWrite)
                error = tarvik::writeWholeFile(*path, ns(dataToWrite)) ? 0 : errorOf(errno);
            for (NSString *property : tarvik::each<NSString>([ns(propertiesToWrite) allKeys]))
                if (error == 0)
                    error = setFileProperty(*path, property, [ns(propertiesToWrite) objectForKey:property]);
        });
    if (errorCode)
        *errorCode = error;
    return error == 0;
}

Boolean CFURLDestroyResource(CFURLRef url, SInt32 *errorCode)
{
    SInt32 error = kCFURLImproperArgumentsError;
    if (url)
        perform([&] {
            const auto path = urlPath(url);
            if (!isFile(url))
                error = kCFURLUnknownSchemeError;
            else if (path)
                error = unlink(path->c_str()) == 0 || (errno == EISDIR && rmdir(path->c_str()) == 0)
                            ? 0
                            : errorOf(errno);
        });
    if (errorCode)
        *errorCode = error;
    return error == 0;
}

CFTypeRef CFURLCreatePropertyFromResource(CFAllocatorRef, CFURLRef url, CFStringRef property,
                                          SInt32 *errorCode)
{
    SInt32 error = kCFURLImproperArgumentsError;
    CFTypeRef result = nullptr;
    if (url && property)
        perform([&] {
            id value = nil;
            if (!isFile(url)) {
                const Loaded loaded = load(url);
                error = loaded.error;
                value = [loaded.properties objectForKey:ns(property)];
            } else if (const auto path = urlPath(url)) {
                errno = 0;
                value = fileProperty(*path, ns(property));
                error = value || !isFileProperty(ns(property)) ? 0 : errorOf(errno);
            }
            if (!value && !error)
                error = isFileProperty(ns(property)) ? kCFURLPropertyKeyUnavailableError
                                                     : kCFURLUnknownPropertyKeyError;
            result = [value retain];
        });
    if (errorCode)
        *errorCode = error;
    return result;
}
