/// \file
/// Things found relative to a bundle: its folder, its executable's, its resources, its neighbours, its texts.
///
///     CFURLRef folder = CFBundleCopyDirectoryURL(NULL);          // where the host itself stands
///     CFStringRef title = CFBundleCopyStringForLocalization(bundle, CFSTR("Title"), NULL, NULL, CFSTR("French"));
///
/// A null bundle is the main one, unless a line says otherwise. Results of Copy and Create are the caller's to release; null when
/// any step fails. A component that is given is appended to the folder, as a folder itself when the flag says so. Thread: any.
#pragma once
#include <Carbon/Files.h>
#include <CoreFoundation/CFBundle.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFURL.h>

#ifdef __OBJC__
#import <Foundation/NSBundle.h>
#import <Foundation/NSData.h>
#import <Foundation/NSString.h>
#endif

#ifdef __cplusplus
extern "C" {
#endif

/// The folder that holds the bundle.
CFURLRef CFBundleCopyDirectoryURL(CFBundleRef bundle);
CFURLRef CFBundleCopyDirectoryURLAppendingPathComponent(CFBundleRef bundle, CFStringRef component,
                                                        Boolean isDirectory);
/// The folder that holds the bundle's executable.
CFURLRef CFBundleCopyExecutableDirectoryURLAppendingPathComponent(CFBundleRef bundle, CFStringRef component,
                                                                  Boolean isDirectory);
/// The bundle's resources folder.
CFURLRef CFBundleCopyResourcesDirectoryURLAppendingPathComponent(CFBundleRef bundle, CFStringRef component,
                                                                 Boolean isDirectory);

CFBundleRef CFBundleCreateFromFSRef(const FSRef *ref);
CFBundleRef CFBundleCreateFromPOSIXPath(CFStringRef path);
/// The bundle of a name beside the bundle's executable; null for a void name.
CFBundleRef CFBundleCreateFromBundleExecutableDirectory(CFBundleRef bundle, CFStringRef name);

Boolean CFBundleGetExecutableFSRef(CFBundleRef bundle, FSRef *ref);
/// A null bundle answers false here.
Boolean CFBundleGetResourceFSRef(CFBundleRef bundle, CFStringRef name, CFStringRef type,
                                 CFStringRef subDirName, FSRef *ref);

/// The strings table of a localization ("French", "fr"), from NAME.lproj/TABLE.strings: in the plain form ("key" = "value";) or
/// as an XML property list, in UTF-8 or UTF-16. A null table is "Localizable". Null when it is missing or does not parse.
CFDictionaryRef CFBundleCopyStringsDictionaryForLocalization(CFBundleRef bundle, CFStringRef table,
                                                             CFStringRef localization);
/// The key's text there; else the default, or "" without one. Without a key: the default, null without one.
CFStringRef CFBundleCopyStringForLocalization(CFBundleRef bundle, CFStringRef key, CFStringRef defaultString,
                                              CFStringRef table, CFStringRef localization);

#ifdef __cplusplus
}
#endif

#ifdef __OBJC__
@interface NSBundle (FoundationX)
/// The path of a name beside the bundle's executable; nil for nil and without an executable.
- (NSString *)executablePath:(NSString *)name;
/// The path of the folder that holds the bundle.
- (NSString *)directoryPath;
/// The path of a name beside the bundle; nil for nil.
- (NSString *)neighborPath:(NSString *)name;
/// The identifier; without one, the bundle folder's name without its extension.
- (NSString *)identifiedName;
@end

@interface NSString (FoundationXBundles)
/// The data at the URL that the receiver spells (file, http, https, data), read at once; nil when it spells none, or nothing can
/// be read. Blocks; the thread's run loop runs meanwhile.
- (NSData *)URLContents;
/// The identifier of the bundle at the receiver's path (its tilde expanded); nil without one.
- (NSString *)bundleIdentifier;
@end
#endif
