/// LSInfo.h: Launch Services: what kind of item something is.
///
/// | item | flags |
/// |---|---|
/// | regular file | plain file; with Type=Application in a desktop entry application too, with Type=Link and a file URL alias too |
/// | folder | container |
/// | package (Pages.rtfd, or the Finder's bundle bit) | package, container |
/// | application (Mail.app) | package, application, container, native |
/// | where a volume is mounted, "/" among them | volume, container |
/// | symbolic link | alias, symbolic link: of the link itself, never of its target |
/// | fifo, socket, device | none |
///
/// Invisible in addition: a name that starts with a dot, or the Finder's invisible bit. Thread: any.
#pragma once

#include <Carbon/Files.h>
#include <CoreFoundation/CFString.h>
#include <CoreFoundation/CFURL.h>

#ifdef __cplusplus
extern "C" {
#endif

enum {
    kLSAppInTrashErr                = -10660,
    kLSUnknownErr                   = -10810,
    kLSNotAnApplicationErr          = -10811,
    kLSDataUnavailableErr           = -10813,
    kLSApplicationNotFoundErr       = -10814, ///< no application opens such items
    kLSUnknownTypeErr               = -10815,
    kLSLaunchInProgressErr          = -10818,
    kLSCannotSetInfoErr             = -10823
};

typedef OptionBits LSRequestedInfo;
enum {
    kLSRequestExtension          = 0x00000001,
    kLSRequestTypeCreator        = 0x00000002,
    kLSRequestBasicFlagsOnly     = 0x00000004, ///< every flag that needs no look into the item
    kLSRequestAppTypeFlags       = 0x00000008,
    kLSRequestAllFlags           = 0x00000010,
    kLSRequestIconAndKind        = 0x00000020, ///< nothing is known of these: left empty
    kLSRequestExtensionFlagsOnly = 0x00000040,
    kLSRequestAllInfo            = (LSRequestedInfo)0xFFFFFFFF
};

typedef OptionBits LSItemInfoFlags;
enum {
    kLSItemInfoIsPlainFile      = 0x00000001,
    kLSItemInfoIsPackage        = 0x00000002,
    kLSItemInfoIsApplication    = 0x00000004,
    kLSItemInfoIsContainer      = 0x00000008,
    kLSItemInfoIsAliasFile      = 0x00000010,
    kLSItemInfoIsSymlink        = 0x00000020,
    kLSItemInfoIsInvisible      = 0x00000040,
    kLSItemInfoIsNativeApp      = 0x00000080,
    kLSItemInfoIsVolume         = 0x00001000,
    kLSItemInfoExtensionIsHidden = 0x00100000
};

typedef UInt32 LSKindID;

struct LSItemInfoRecord {
    LSItemInfoFlags flags;
    OSType      filetype;     ///< 0 when unknown
    OSType      creator;
    CFStringRef extension;    ///< null without one; the caller releases it
    CFStringRef iconFileName; ///< always null here
    LSKindID    kindID;
};
typedef struct LSItemInfoRecord LSItemInfoRecord;

/// What is asked for; the rest of the record is zero, all of it on failure. Types and creators are the Finder information's.
/// A missing item: fnfErr.
OSStatus LSCopyItemInfoForRef(const FSRef *inItemRef, LSRequestedInfo inWhichInfo,
                              LSItemInfoRecord *outItemInfo);
/// The same of a file URL's item; kLSDataUnavailableErr for other URLs.
OSStatus LSCopyItemInfoForURL(CFURLRef inURL, LSRequestedInfo inWhichInfo, LSItemInfoRecord *outItemInfo);

/// What a walk calls for each item: its path within the folder, ended by a zero, and all its flags. False: what lies below is left out.
typedef Boolean (*LSItemVisitorProc)(const char *subpath, size_t length, LSItemInfoFlags flags,
                                     void *context);
/// An addition of this platform: every item below a folder, each folder right before what it holds, in the order in which the file
/// system lists them; links aren't followed, folders that can't be read are empty, `._name` companions of a listed name are left out.
/// Much cheaper than asking for each item.
OSStatus LSVisitItemsBelow(CFURLRef folder, LSItemVisitorProc visit, void *context);

#ifdef __cplusplus
}
#endif
