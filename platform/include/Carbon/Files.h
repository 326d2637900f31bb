/// Files.h: the File Manager.
///
/// An FSRef stands for one item of the file system, found once and passed around by value. Functions answer noErr or an
/// error of MacErrors.h.
#pragma once

#include <Carbon/MacErrors.h>
#include <Carbon/MacTypes.h>

#ifdef __cplusplus
extern "C" {
#endif

/// A reference to an existing file or folder. Opaque: compare with FSCompareFSRefs, never byte by byte.
struct FSRef {
    UInt8 hidden[80];
};
typedef struct FSRef FSRef;
typedef FSRef *FSRefPtr;
typedef const FSRef *ConstFSRefPtr;

/// A name as a volume's catalogue holds it, in UTF-16 units: 512 bytes.
struct HFSUniStr255 {
    UInt16 length;
    UniChar unicode[255];
};
typedef struct HFSUniStr255 HFSUniStr255;

/// The item at a path (bytes, ended by a zero); links are followed, a relative path starts at the working directory.
/// \param isDirectory receives whether it is a folder; may be null
/// \return fnfErr when nothing is there, dirNFErr when a folder on the way is missing or is none, errFSNameTooLong for a name that
///         is too long, afpAccessDenied for a folder that may not be searched, paramErr for null
OSStatus FSPathMakeRef(const UInt8 *path, FSRef *ref, Boolean *isDirectory);
enum { kFSPathMakeRefDefaultOptions = 0, kFSPathMakeRefDoNotFollowLeafSymlink = 1 };
OSStatus FSPathMakeRefWithOptions(const UInt8 *path, OptionBits options, FSRef *ref, Boolean *isDirectory);
/// The item's path, absolute and without links, ended by a zero.
/// \return errFSBadFSRef for what is no reference, fnfErr when the item is gone, pathTooLongErr when it does not fit
OSStatus FSRefMakePath(const FSRef *ref, UInt8 *path, UInt32 maxPathSize);
/// noErr for the same item, diffVolErr for items of two volumes, errFSRefsDifferent for two of one volume.
OSErr FSCompareFSRefs(const FSRef *ref1, const FSRef *ref2);

#ifdef __cplusplus
}
#endif
