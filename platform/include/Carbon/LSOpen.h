/// LSOpen.h: Launch Services: which application opens an item, and opening it.
///
/// Applications are the desktop's own (desktop entries, by MIME type, as the user has chosen) and GNUstep's: folders X.app in the Apps and
/// Applications folders of the system, the local domain and the user. Nothing here waits for an application to end, and none is left behind as a
/// zombie. Thread: any.
#pragma once

#include <Carbon/Files.h>
#include <Carbon/LSInfo.h>
#include <CoreFoundation/CFArray.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef OptionBits LSRolesMask;
enum {
    kLSRolesNone = 0x1,
    kLSRolesViewer = 0x2,
    kLSRolesEditor = 0x4,
    kLSRolesShell = 0x8,
    kLSRolesAll = (LSRolesMask)0xFFFFFFFF
};

typedef OptionBits LSLaunchFlags;
enum {
    kLSLaunchDefaults              = 0x00000001,
    kLSLaunchAndPrint              = 0x00000002, ///< GNUstep applications print; others open
    kLSLaunchAndDisplayErrors      = 0x00000040,
    kLSLaunchDontAddToRecents      = 0x00000100,
    kLSLaunchDontSwitch            = 0x00000200, ///< leave a running application where it is
    kLSLaunchAsync                 = 0x00010000,
    kLSLaunchNewInstance           = 0x00080000, ///< start an application also when it runs already
    kLSLaunchAndHide               = 0x00100000
};

/// What to open, and with which application (null: each item's own).
struct LSLaunchURLSpec {
    CFURLRef      appURL;
    CFArrayRef    itemURLs;
    const void   *passThruParams; ///< not used here
    LSLaunchFlags launchFlags;
    void         *asyncRefCon;    ///< not used here
};
typedef struct LSLaunchURLSpec LSLaunchURLSpec;

struct LSLaunchFSRefSpec {
    const FSRef  *appRef;
    ItemCount     numDocs;
    const FSRef  *itemRefs;
    const void   *passThruParams;
    LSLaunchFlags launchFlags;
    void         *asyncRefCon;
};
typedef struct LSLaunchFSRefSpec LSLaunchFSRefSpec;

/// Opens the items; an application among them, and appURL without items, is launched: a folder X.app that runs already is brought to the front
/// instead. Flags that are not explained above change nothing here. outLaunchedURL: the application of the last one.
/// kLSApplicationNotFoundErr: nothing opens it; kLSNotAnApplicationErr: appURL is none; fnfErr: a file is missing; kLSUnknownErr: it could not be
/// started.
OSStatus LSOpenFromURLSpec(const LSLaunchURLSpec *inLaunchSpec, CFURLRef *outLaunchedURL);
OSStatus LSOpenFromRefSpec(const LSLaunchFSRefSpec *inLaunchSpec, FSRef *outLaunchedRef);
OSStatus LSOpenCFURLRef(CFURLRef inURL, CFURLRef *outLaunchedURL);
OSStatus LSOpenFSRef(const FSRef *inRef, FSRef *outLaunchedRef);

/// The application that opens an item in one of the roles: a folder X.app, or a desktop entry. Folders say theirs (NSRole, CFBundleTypeRole); an
/// editor views too; of the desktop's, those of the category Viewer only view. Receivers may be null. kLSApplicationNotFoundErr without one.
OSStatus LSGetApplicationForURL(CFURLRef inURL, LSRolesMask inRoleMask, FSRef *outAppRef, CFURLRef *outAppURL);
OSStatus LSGetApplicationForItem(const FSRef *inItemRef, LSRolesMask inRoleMask, FSRef *outAppRef, CFURLRef *outAppURL);

enum { kLSUnknownCreator = 0 };
/// The application of a bundle identifier, else of a creator code, else of a name ("Ink.app", "gedit.desktop"). Identifiers are those of Info.plist
/// (folders X.app) and the names of desktop entries; creator codes are folders' (CFBundleSignature, PkgInfo). Receivers may be null.
OSStatus LSFindApplicationForInfo(OSType inCreator, CFStringRef inBundleID, CFStringRef inName, FSRef *outAppRef, CFURLRef *outAppURL);

#ifdef __cplusplus
}
#endif
