/// Resources.h: the Resource Manager: small typed, numbered pieces of data kept together in one file.
///
///     ResFileRefNum file = -1;
///     FSOpenResourceFile(&ref, 0, NULL, fsRdPerm, &file);       // a file whose data is in resource format
///     Handle version = Get1Resource('vers', 1);                 // the file's own: valid until it is closed
///     CloseResFile(file);
///
/// The format is the documented resource-fork format ("Inside Macintosh: More Macintosh Toolbox", chapter 1): big-endian
/// offsets to data and map, data pieces with a length before them, a map of types, references and names. Offsets read from a file
/// are trusted for nothing: a map that lies refuses the file with mapReadErr.
///
/// Opened files form a chain, the latest first. The current file is where look-ups begin; those with "1" in their name end there
/// too. A 'vers' resource is handed out in this processor's order and written back in the file's.
/// Files are replaced whole. ResError tells each thread its latest error. Thread: one at a time.
#pragma once

#include <Carbon/Files.h>
#include <Carbon/MacErrors.h>
#include <Carbon/MacMemory.h>
#include <Carbon/MacTypes.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef SInt16 ResFileRefNum; ///< an open resource file; -1 is none
typedef SInt16 ResID;
typedef SInt16 ResAttributes;
typedef SInt16 ResourceCount;
typedef SInt16 ResourceIndex;

enum {
    resChanged = 2,    ///< to be written
    resPreload = 4,
    resProtected = 8,  ///< may not be changed or removed
    resLocked = 16,
    resPurgeable = 32,
    resSysHeap = 64,
};

/// Opens a fork that is in resource format: the data fork (the empty name) or the resource fork; errFSBadForkName for another.
/// An empty data fork opens as a file without resources, an empty resource fork does not (eofErr). The file becomes the current one.
/// \param permission fsRdPerm (1) to read; anything else to change as well
/// \return noErr; fnfErr; mapReadErr when the content is no resource format; permErr
OSErr FSOpenResourceFile(const FSRef *ref, UniCharCount forkNameLength, const UniChar *forkName, SInt8 permission, ResFileRefNum *refNum);
/// The same with the resource fork; -1 with ResError on failure.
ResFileRefNum FSOpenResFile(const FSRef *ref, SInt8 permission);
/// Gives a file whose resource fork is empty one without resources. errFSForkExists; `flags` is 0.
OSErr FSCreateResourceFork(const FSRef *ref, UniCharCount forkNameLength, const UniChar *forkName, UInt32 flags);
/// Writes what has changed and closes; the file's handles go with it. The file opened before becomes current.
void CloseResFile(ResFileRefNum refNum);
/// Writes what has changed. ResError: addResFailed when it is more than the format holds (16 MiB).
void UpdateResFile(ResFileRefNum refNum);
ResFileRefNum CurResFile(void);            ///< -1 without one
void          UseResFile(ResFileRefNum refNum);
OSErr         ResError(void);              ///< of this thread's latest call

/// The resource of a type and number in the current file, or (without 1) in it and those opened before; null with resNotFound.
/// The handle is the file's: not to be disposed of, valid until ReleaseResource or CloseResFile.
Handle Get1Resource(ResType type, ResID number);
Handle GetResource(ResType type, ResID number);
Handle Get1NamedResource(ResType type, ConstStr255Param name);
ResourceCount Count1Types(void);
void          Get1IndType(ResType *type, ResourceIndex index);   ///< from 1 on; 0 when beyond the last
ResourceCount Count1Resources(ResType type);
Handle        Get1IndResource(ResType type, ResourceIndex index); ///< from 1 on

void          GetResInfo(Handle resource, ResID *number, ResType *type, Str255 name);
ResAttributes GetResAttrs(Handle resource);
ResFileRefNum HomeResFile(Handle resource);
void          ReleaseResource(Handle resource); ///< forgets the memory; the resource stays in the file
void          DetachResource(Handle resource);  ///< the handle becomes the caller's

/// Makes a handle of the caller's a resource of the current file, which then owns it. addResFailed when it is one already,
/// or stands under that type and number.
void AddResource(Handle data, ResType type, ResID number, ConstStr255Param name);
void ChangedResource(Handle resource); ///< to be written with the file
void WriteResource(Handle resource);   ///< written now when it has changed
void RemoveResource(Handle resource);  ///< out of the file; the handle becomes the caller's

#ifdef __cplusplus
}
#endif
