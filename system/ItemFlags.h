/// \file
/// What kind of item a reference leads to, by Launch Services.
///
///     FSIsFolder(&ref)      a container that is neither package nor volume
///     FSIsLSItemInfoRecordFlagOn(&ref, kLSItemInfoIsAliasFile, false)
///
/// The flags of the latest reference are kept, under the reference's address: a caller that puts another item into the same FSRef must
/// not expect fresh answers. Callers rely on it. Thread: one for all of them.
#pragma once
#include <Carbon/Files.h>
#include <Carbon/LSInfo.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Whether all flags of the mask are set; the default when the item can't be looked up, and for null.
Boolean FSIsLSItemInfoRecordFlagOn(const FSRef *ref, LSItemInfoFlags mask, Boolean defaultResult);

Boolean FSIsInvisible(const FSRef *ref);
Boolean FSIsContainer(const FSRef *ref);
Boolean FSIsPackage(const FSRef *ref);
Boolean FSIsVolume(const FSRef *ref);
Boolean FSIsDirectory(const FSRef *ref);  ///< container and not volume
Boolean FSIsFolder(const FSRef *ref);     ///< container, not package, not volume

#ifdef __cplusplus
}
#endif
