/// CFBundle.h: folders with resources, localised texts and code. A CFBundleRef is an NSBundle.
///
/// Layouts: X/Contents/Resources with X/Contents/Info.plist, X/Resources with Resources/Info-gnustep.plist or Info.plist, and
/// flat (resources and Info.plist in X itself). Two folders are two bundles, whatever their identifiers.
#pragma once

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFString.h>
#include <CoreFoundation/CFURL.h>

CF_EXTERN_C_BEGIN

// Keys of the information dictionary.
CF_EXPORT const CFStringRef kCFBundleInfoDictionaryVersionKey;
CF_EXPORT const CFStringRef kCFBundleExecutableKey;
CF_EXPORT const CFStringRef kCFBundleIdentifierKey;
CF_EXPORT const CFStringRef kCFBundleVersionKey; ///< a number as 'vers' writes it, or text
CF_EXPORT const CFStringRef kCFBundleDevelopmentRegionKey;
CF_EXPORT const CFStringRef kCFBundleNameKey;
CF_EXPORT const CFStringRef kCFBundleLocalizationsKey;

CF_EXPORT CFTypeID    CFBundleGetTypeID(void);
CF_EXPORT CFBundleRef CFBundleGetMainBundle(void);
CF_EXPORT CFBundleRef CFBundleGetBundleWithIdentifier(CFStringRef identifier); ///< among the bundles that exist in this process
CF_EXPORT CFArrayRef  CFBundleGetAllBundles(void);
CF_EXPORT CFBundleRef CFBundleCreate(CFAllocatorRef allocator, CFURLRef bundleURL); ///< null where there is no folder
CF_EXPORT CFArrayRef  CFBundleCreateBundlesFromDirectory(CFAllocatorRef allocator, CFURLRef directoryURL, CFStringRef bundleType); ///< the type is the extension; null: all folders

// Places.
CF_EXPORT CFURLRef CFBundleCopyBundleURL(CFBundleRef bundle);
CF_EXPORT CFURLRef CFBundleCopyExecutableURL(CFBundleRef bundle);                                     ///< null without one
CF_EXPORT CFURLRef CFBundleCopyAuxiliaryExecutableURL(CFBundleRef bundle, CFStringRef executableName); ///< beside the executable
CF_EXPORT CFURLRef CFBundleCopyResourcesDirectoryURL(CFBundleRef bundle);
CF_EXPORT CFURLRef CFBundleCopySupportFilesDirectoryURL(CFBundleRef bundle); ///< where Info.plist stands

// What it says of itself.
CF_EXPORT CFStringRef     CFBundleGetIdentifier(CFBundleRef bundle); ///< null without one
CF_EXPORT UInt32          CFBundleGetVersionNumber(CFBundleRef bundle); ///< "1.2.3b4" is 0x01236004; 0 without one
CF_EXPORT CFStringRef     CFBundleGetDevelopmentRegion(CFBundleRef bundle);
CF_EXPORT CFDictionaryRef CFBundleGetInfoDictionary(CFBundleRef bundle); ///< empty without one
CF_EXPORT CFTypeRef       CFBundleGetValueForInfoDictionaryKey(CFBundleRef bundle, CFStringRef key);

// Resources. The name may hold its extension when the type is null or empty; a sub-folder is one of the resources folder.
CF_EXPORT CFURLRef   CFBundleCopyResourceURL(CFBundleRef bundle, CFStringRef name, CFStringRef type, CFStringRef subDirName);
CF_EXPORT CFArrayRef CFBundleCopyResourceURLsOfType(CFBundleRef bundle, CFStringRef type, CFStringRef subDirName);
CF_EXPORT CFURLRef   CFBundleCopyResourceURLForLocalization(CFBundleRef bundle, CFStringRef name, CFStringRef type, CFStringRef subDirName, CFStringRef localization);
CF_EXPORT CFArrayRef CFBundleCopyResourceURLsOfTypeForLocalization(CFBundleRef bundle, CFStringRef type, CFStringRef subDirName, CFStringRef localization);

// Languages and localised texts.
CF_EXPORT CFArrayRef  CFBundleCopyBundleLocalizations(CFBundleRef bundle); ///< "English", "fr": the folders X.lproj without their extension
CF_EXPORT CFArrayRef  CFBundleCopyPreferredLocalizationsFromArray(CFArrayRef localizations); ///< of these, the ones to use for the user
CF_EXPORT CFStringRef CFBundleCopyLocalizedString(CFBundleRef bundle, CFStringRef key, CFStringRef value, CFStringRef tableName);

#define CFCopyLocalizedString(key, comment) CFBundleCopyLocalizedString(CFBundleGetMainBundle(), (key), (key), NULL)
#define CFCopyLocalizedStringFromTable(key, table, comment) CFBundleCopyLocalizedString(CFBundleGetMainBundle(), (key), (key), (table))
#define CFCopyLocalizedStringFromTableInBundle(key, table, bundle, comment) CFBundleCopyLocalizedString((bundle), (key), (key), (table))

CF_EXTERN_C_END
