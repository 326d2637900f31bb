/// \file
/// The Folder Manager: well-known folders by four-character type and domain.
///
///     char path[512];
///     FSFindFolderPath(kUserDomain, kTemporaryFolderType, true, path, sizeof path);   // "/tmp"
///
/// | type | user domain | local domain |
/// |---|---|---|
/// | 'temp' temporary items | TMPDIR, else /tmp | /tmp |
/// | 'docs' documents | the DOCUMENTS folder of user-dirs.dirs, else Documents in the home | none |
/// | 'asup' application support | XDG_DATA_HOME, else .local/share in the home | /usr/local/share |
/// | 'cusr' current user | the home | none |
/// | 'pref' preferences | XDG_CONFIG_HOME, else .config in the home | /etc/xdg |
/// | 'utmp' the user's own temporary items | tmp in XDG_CACHE_HOME, else in .cache in the home | none |
/// | 'desk' desktop | the DESKTOP folder of user-dirs.dirs, else Desktop in the home | none |
/// | 'down' downloads | likewise DOWNLOAD, else Downloads | none |
/// | 'pdoc' pictures | likewise PICTURES, else Pictures | none |
/// | 'µdoc' music | likewise MUSIC, else Music | none |
/// | 'mdoc' movies | likewise VIDEOS, else Videos | none |
/// | 'trsh' trash | Trash/files in XDG_DATA_HOME, else in .local/share in the home | none |
/// | 'dlib' library | as application support | /usr/local/share |
/// | 'apps' applications | applications in the same place | /usr/local/share/applications |
/// | 'usrs' users | /home | /home |
/// | 'boot' startup disk | / | / |
///
/// Folders are those of the XDG Base Directory Specification and of xdg-user-dirs; the home is HOME, else the account's.
/// Variables that are not absolute paths count as unset. Thread: any.
#pragma once
#include <Carbon/Files.h>
#include <Carbon/MacErrors.h>
#include <Carbon/MacTypes.h>

#ifdef __cplusplus
extern "C" {
#endif

enum {
    kOnSystemDisk = -32768,  ///< the domains below, in this order of preference: user, local
    kLocalDomain = -32765,
    kUserDomain = -32763,
};

enum {
    kTemporaryFolderType = 0x74656D70,           ///< 'temp'
    kDocumentsFolderType = 0x646F6373,           ///< 'docs'
    kApplicationSupportFolderType = 0x61737570,  ///< 'asup'
    kCurrentUserFolderType = 0x63757372,         ///< 'cusr'
    kPreferencesFolderType = 0x70726566,         ///< 'pref'
    kDesktopFolderType = 0x6465736B,             ///< 'desk'
    kUserTemporaryFolderType = 0x75746D70,       ///< 'utmp'
    kDownloadsFolderType = 0x646F776E,           ///< 'down'
    kPictureDocumentsFolderType = 0x70646F63,    ///< 'pdoc'
    kMusicDocumentsFolderType = 0xB5646F63,      ///< 'µdoc', in MacRoman
    kMovieDocumentsFolderType = 0x6D646F63,      ///< 'mdoc'
    kTrashFolderType = 0x74727368,               ///< 'trsh'
    kDomainLibraryFolderType = 0x646C6962,       ///< 'dlib'
    kApplicationsFolderType = 0x61707073,        ///< 'apps'
    kUsersFolderType = 0x75737273,               ///< 'usrs'
    kBootDiskFolderType = 0x626F6F74,            ///< 'boot'
};

/// The POSIX path of a folder, zero-terminated, without a slash at its end. With `createFolder` a missing folder is made,
/// parents included (for its owner only in the user domain).
/// fnfErr: no such type in this domain, or the folder is missing and not to be made; bdNamErr: the path does not fit;
/// paramErr: a null or empty buffer; permErr, ioErr: it can't be made. The buffer holds an empty text after a failure.
OSErr FSFindFolderPath(SInt16 domain, OSType folderType, Boolean createFolder, char *path, UInt32 size);
/// The same as a reference.
OSErr FSFindFolder(SInt16 domain, OSType folderType, Boolean createFolder, FSRef *foundRef);

#ifdef __cplusplus
}
#endif
