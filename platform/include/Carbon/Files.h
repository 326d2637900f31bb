/// Files.h: the File Manager: references, catalog information, forks, volumes.
///
/// An FSRef names one item of the file system, not a path: it leads to the item after a rename or a move within its volume, by
/// this process or another one, and to nothing (fnfErr) once the item is deleted. A new item under the old name is another one.
/// References are values of this process: they are copied and forgotten freely and mean nothing elsewhere.
///
/// Names are HFSUniStr255: UTF-16, a slash standing for the POSIX name's colon. A byte that is not UTF-8 stands as
/// U+DC00 + byte, so that every name can be read, shown and used again. A name is looked up as it is, then in the other
/// normal forms. Paths are POSIX ones, in bytes.
///
/// Functions answer noErr or an error of MacErrors.h. Where none is told: fnfErr when the item is gone, paramErr for null,
/// errFSBadFSRef for what is no reference, afpAccessDenied, permErr, wPrErr, dskFulErr, ioErr as the system has it.
/// Thread: any; one open fork from one thread at a time.
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

typedef SInt16 FSVolumeRefNum; ///< a mounted volume, in this process; 0: none
typedef SInt16 FSIORefNum;     ///< an open fork, above 0
enum { kFSInvalidVolumeRefNum = 0 };

/// A name of 1 to 255 UTF-16 units: 512 bytes.
struct HFSUniStr255 {
    UInt16  length;
    UniChar unicode[255];
};
typedef struct HFSUniStr255 HFSUniStr255;
typedef const HFSUniStr255 *ConstHFSUniStr255Param;

/// The older record: a folder by number and a name in the system's 8-bit encoding (Mac OS Roman). A name that it can't hold
/// is shortened to "begin#1A2B.ext", with the item's number in hexadecimal, and still leads to the item.
struct FSSpec {
    SInt16 vRefNum;
    SInt32 parID;
    StrFileName name;
};
typedef struct FSSpec FSSpec;
typedef FSSpec *FSSpecPtr;
typedef const FSSpec *ConstFSSpecPtr;
enum { fsRtParID = 1, fsRtDirID = 2 }; ///< the number of what holds a volume's root, and of the root

/// Seconds since 1904-01-01 00:00 UTC in 48 bits, then 65536ths; 0 is "never".
#pragma pack(push, 2)
struct UTCDateTime {
    UInt16 highSeconds;
    UInt32 lowSeconds;
    UInt16 fraction;
};
#pragma pack(pop)
typedef struct UTCDateTime UTCDateTime;

struct FSPermissionInfo {
    UInt32 userID;
    UInt32 groupID;
    UInt8  reserved1;
    UInt8  userAccess; ///< what this process may do: 4 read, 2 write, 1 execute
    UInt16 mode;       ///< the POSIX mode, the kind of item in its upper bits
    UInt32 reserved2;
};
typedef struct FSPermissionInfo FSPermissionInfo;

enum {
    kFSNodeLockedMask      = 0x0001, ///< the file system's "immutable" attribute
    kFSNodeIsDirectoryMask = 0x0010,
    kFSNodeHardLinkMask    = 0x0100  ///< a file with more than one name
};

/// What the catalog knows of an item: 144 bytes. Finder information is in the byte order of the disk: the file's type is
/// its bytes 0 to 3, the first character first, the creator 4 to 7; byte 9 holds the label's colour.
struct FSCatalogInfo {
    UInt16           nodeFlags;
    FSVolumeRefNum   volume;
    UInt32           parentDirID;
    UInt32           nodeID; ///< the inode number's lower 32 bits; fsRtDirID for a volume's root
    UInt8            sharingFlags;
    UInt8            userPrivileges;
    UInt8            reserved1;
    UInt8            reserved2;
    UTCDateTime      createDate; ///< of the companion, else of the file system, else contentModDate
    UTCDateTime      contentModDate;
    UTCDateTime      attributeModDate;
    UTCDateTime      accessDate;
    UTCDateTime      backupDate;
    FSPermissionInfo permissions;
    UInt8            finderInfo[16];
    UInt8            extFinderInfo[16];
    UInt64           dataLogicalSize; ///< sizes are 0 for folders
    UInt64           dataPhysicalSize;
    UInt64           rsrcLogicalSize;
    UInt64           rsrcPhysicalSize;
    UInt32           valence; ///< of a folder, how many items it holds, companions apart
    TextEncoding     textEncodingHint;
};
typedef struct FSCatalogInfo FSCatalogInfo;

typedef UInt32 FSCatalogInfoBitmap;
enum {
    kFSCatInfoNone         = 0,
    kFSCatInfoTextEncoding = 0x00000001,
    kFSCatInfoNodeFlags    = 0x00000002,
    kFSCatInfoVolume       = 0x00000004,
    kFSCatInfoParentDirID  = 0x00000008,
    kFSCatInfoNodeID       = 0x00000010,
    kFSCatInfoCreateDate   = 0x00000020,
    kFSCatInfoContentMod   = 0x00000040,
    kFSCatInfoAttrMod      = 0x00000080,
    kFSCatInfoAccessDate   = 0x00000100,
    kFSCatInfoBackupDate   = 0x00000200,
    kFSCatInfoPermissions  = 0x00000400,
    kFSCatInfoFinderInfo   = 0x00000800,
    kFSCatInfoFinderXInfo  = 0x00001000,
    kFSCatInfoValence      = 0x00002000,
    kFSCatInfoDataSizes    = 0x00004000,
    kFSCatInfoRsrcSizes    = 0x00008000,
    kFSCatInfoSharingFlags = 0x00010000,
    kFSCatInfoUserPrivs    = 0x00020000,
    kFSCatInfoUserAccess   = 0x00080000,
    kFSCatInfoSetOwnership = 0x00100000, ///< with the permissions: the owner and group too
    kFSCatInfoAllDates     = 0x000003E0,
    kFSCatInfoGettableInfo = 0x0003FFFF,
    kFSCatInfoSettableInfo = 0x00001FE3
};

// References.

/// The item at a path (bytes, ended by a zero); links are followed, a relative path starts at the working directory.
/// \param isDirectory receives whether it is a folder; may be null
/// \return fnfErr when nothing is there, dirNFErr when a folder on the way is missing or is none, errFSNameTooLong for a name that
///         is too long, afpAccessDenied for a folder that may not be searched, paramErr for null
OSStatus FSPathMakeRef(const UInt8 *path, FSRef *ref, Boolean *isDirectory);
enum { kFSPathMakeRefDefaultOptions = 0, kFSPathMakeRefDoNotFollowLeafSymlink = 1 };
OSStatus FSPathMakeRefWithOptions(const UInt8 *path, OptionBits options, FSRef *ref, Boolean *isDirectory);
/// The item's path, absolute and without links on the way, ended by a zero. Of a file with several names, the one through
/// which the reference was made.
/// \return errFSBadFSRef for what is no reference, fnfErr when the item is gone, pathTooLongErr when it does not fit
OSStatus FSRefMakePath(const FSRef *ref, UInt8 *path, UInt32 maxPathSize);
/// The item of this name in a folder; a link itself. errFSMissingName for an empty name, errFSNameTooLong above 255 units, bdNamErr
/// for one that no item can have, errFSNotAFolder.
OSErr FSMakeFSRefUnicode(const FSRef *parentRef, UniCharCount nameLength, const UniChar *name,
                         TextEncoding textEncodingHint, FSRef *newRef);
/// noErr for the same item, diffVolErr for items of two volumes, errFSRefsDifferent for two of one volume.
OSErr FSCompareFSRefs(const FSRef *ref1, const FSRef *ref2);
/// Whether it leads to an item.
Boolean FSIsFSRefValid(const FSRef *ref);

// The catalog.

/// Each receiver may be null. `outName` of a volume's root is the volume's name; `parentRef` of "/" is no reference.
/// A companion (see FSOpenFork) that is broken fails what is asked of it (ioErr); a foreign file in its place reads as none.
OSErr FSGetCatalogInfo(const FSRef *ref, FSCatalogInfoBitmap whichInfo, FSCatalogInfo *catalogInfo,
                       HFSUniStr255 *outName, FSSpec *fsSpec, FSRef *parentRef);
/// Sets what can be set: node flags, dates, permissions, Finder information. attributeModDate and the text encoding are the
/// system's and are left. A creation date is kept in the companion, where there is one; it makes none by itself.
/// \return errFSBadInfoBitmap for other bits; ioErr for a companion that is foreign or broken
OSErr FSSetCatalogInfo(const FSRef *ref, FSCatalogInfoBitmap whichInfo, const FSCatalogInfo *catalogInfo);

// Items. Companions go with them. A new item is there with its information, or not at all.

/// dupFNErr when the name is taken.
OSErr FSCreateFileUnicode(const FSRef *parentRef, UniCharCount nameLength, const UniChar *name,
                          FSCatalogInfoBitmap whichInfo, const FSCatalogInfo *catalogInfo, FSRef *newRef,
                          FSSpec *newSpec);
OSErr FSCreateDirectoryUnicode(const FSRef *parentRef, UniCharCount nameLength, const UniChar *name,
                               FSCatalogInfoBitmap whichInfo, const FSCatalogInfo *catalogInfo, FSRef *newRef,
                               FSSpec *newSpec, UInt32 *newDirID);
/// fBsyErr for a folder that is not empty.
OSErr FSDeleteObject(const FSRef *ref);
/// dupFNErr when the name is taken there, diffVolErr for another volume, badMovErr for a folder into itself.
OSErr FSMoveObject(const FSRef *ref, const FSRef *destDirectory, FSRef *newRef);
OSErr FSRenameUnicode(const FSRef *ref, UniCharCount nameLength, const UniChar *name,
                      TextEncoding textEncodingHint, FSRef *newRef);

// Forks. A file has a data fork, its contents, and a resource fork. The latter and the Finder information stand in the file's
// companion, `._name` beside it, in the AppleDouble format (RFC 1740). A companion is replaced whole or not at all, when the
// fork is flushed or closed; entries that this system does not use are kept; a file without resources and information has none.
// What stands in the companion's place and is none is left as it is, and writing a resource fork there fails (ioErr).
// A fork without bytes is as good as absent: it opens, with size 0, and can be created.

OSErr FSGetDataForkName(HFSUniStr255 *dataForkName);         ///< the empty name
OSErr FSGetResourceForkName(HFSUniStr255 *resourceForkName); ///< "RESOURCE_FORK"

enum { fsCurPerm = 0, fsRdPerm = 1, fsWrPerm = 2, fsRdWrPerm = 3, fsRdWrShPerm = 4 };
enum { fsAtMark = 0, fsFromStart = 1, fsFromLEOF = 2, fsFromMark = 3 };

/// errFSForkExists for a fork with bytes, errFSBadForkName, notAFileErr for what is no plain file.
OSErr FSCreateFork(const FSRef *ref, UniCharCount forkNameLength, const UniChar *forkName);
/// Leaves the fork without bytes.
OSErr FSDeleteFork(const FSRef *ref, UniCharCount forkNameLength, const UniChar *forkName);
/// \param permissions fsCurPerm: what the caller may do
/// \return opWrErr when this process has the resource fork open for writing already
OSErr FSOpenFork(const FSRef *ref, UniCharCount forkNameLength, const UniChar *forkName, SInt8 permissions,
                 FSIORefNum *forkRefNum);
/// eofErr when fewer bytes than asked are left; they are read all the same. `buffer` of null is errFSBadBuffer.
OSErr FSReadFork(FSIORefNum forkRefNum, UInt16 positionMode, SInt64 positionOffset, ByteCount requestCount,
                 void *buffer, ByteCount *actualCount);
OSErr FSWriteFork(FSIORefNum forkRefNum, UInt16 positionMode, SInt64 positionOffset, ByteCount requestCount,
                  const void *buffer, ByteCount *actualCount);
OSErr FSGetForkPosition(FSIORefNum forkRefNum, SInt64 *position);
OSErr FSSetForkPosition(FSIORefNum forkRefNum, UInt16 positionMode, SInt64 positionOffset);
OSErr FSGetForkSize(FSIORefNum forkRefNum, SInt64 *forkSize);
OSErr FSSetForkSize(FSIORefNum forkRefNum, UInt16 positionMode, SInt64 positionOffset);
OSErr FSFlushFork(FSIORefNum forkRefNum);
/// Closes in every case; the error is that of the last write.
OSErr FSCloseFork(FSIORefNum forkRefNum);
/// An addition of this platform: makes all of an open fork the contents of another one, by the file system itself where it can
/// (shared blocks, holes kept); on failure the other fork may hold a part.
OSErr FSCopyForkContents(FSIORefNum sourceRefNum, FSIORefNum destinationRefNum);

/// A place among a file's forks; begin with `initialize` 0.
struct CatPositionRec {
    SInt32 initialize;
    SInt16 priv[6];
};
typedef struct CatPositionRec CatPositionRec;
/// The data fork, then the resource fork if it has bytes, then errFSNoMoreItems. Receivers may be null.
OSErr FSIterateForks(const FSRef *ref, CatPositionRec *forkIterator, HFSUniStr255 *forkName, SInt64 *forkSize,
                     UInt64 *forkPhysicalSize);

// FSSpec.

/// The record of a name (Mac OS Roman) in a folder by number; 0 for the volume is that of "/". fnfErr when no such item exists:
/// the record is made all the same. dirNFErr for a folder that this process has not met.
OSErr FSMakeFSSpec(SInt16 vRefNum, SInt32 dirID, ConstStr255Param fileName, FSSpec *spec);
OSErr FSpMakeFSRef(const FSSpec *source, FSRef *newRef);

// Volumes.

struct FSVolumeInfo {
    UTCDateTime createDate;
    UTCDateTime modifyDate;
    UTCDateTime backupDate;
    UTCDateTime checkedDate;
    UInt32      fileCount;
    UInt32      folderCount;
    UInt64      totalBytes;
    UInt64      freeBytes; ///< for this user
    UInt32      blockSize;
    UInt32      totalBlocks; ///< at most 0xFFFFFFFF
    UInt32      freeBlocks;
    UInt32      nextAllocation;
    UInt32      rsrcClumpSize;
    UInt32      dataClumpSize;
    UInt32      nextCatalogID;
    UInt8       finderInfo[32];
    UInt16      flags;
    UInt16      filesystemID;
    UInt16      signature;
    UInt16      driveNumber;
    FSIORefNum  driverRefNum;
};
typedef struct FSVolumeInfo FSVolumeInfo;
typedef UInt32 FSVolumeInfoBitmap;
enum {
    kFSVolInfoNone         = 0,
    kFSVolInfoSizes        = 0x0040, ///< totalBytes, freeBytes
    kFSVolInfoBlocks       = 0x0080, ///< blockSize, totalBlocks, freeBlocks
    kFSVolInfoFlags        = 0x0800,
    kFSVolInfoGettableInfo = 0xFFFF
};
enum { kFSVolFlagHardwareLockedMask = 0x0080, kFSVolFlagSoftwareLockedMask = 0x8000 }; ///< the second: mounted read-only

/// A volume by number (0: that of "/"), or with `volumeIndex` above 0 the volumes in the order of the mount table; nsvErr when
/// there is none. Sizes and flags are filled in, the other fields are 0. Receivers may be null.
OSErr FSGetVolumeInfo(FSVolumeRefNum volume, ItemCount volumeIndex, FSVolumeRefNum *actualVolume,
                      FSVolumeInfoBitmap whichInfo, FSVolumeInfo *info, HFSUniStr255 *volumeName,
                      FSRef *rootDirectory);

#ifdef __cplusplus
}
#endif
