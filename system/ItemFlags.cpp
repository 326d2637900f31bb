#include <Tarvik/system/ItemFlags.h>

namespace {

const FSRef *gLatestFSRef = nullptr;
LSItemInfoRecord gLatestLSI = {};

}  // namespace

Boolean FSIsLSItemInfoRecordFlagOn(const FSRef *ref, LSItemInfoFlags mask, Boolean defaultResult)
{
    if (!ref)
        return defaultResult;
    if (ref != gLatestFSRef) {
        gLatestFSRef = nullptr;
        gLatestLSI = {};
        if (LSCopyItemInfoForRef(ref, kLSRequestAllFlags, &gLatestLSI) != noErr)
            return defaultResult;
        gLatestFSRef = ref;
    }
    return (gLatestLSI.flags & mask) == mask;
}

Boolean FSIsInvisible(const FSRef *ref)
{
    return FSIsLSItemInfoRecordFlagOn(ref, kLSItemInfoIsInvisible, false);
}
Boolean FSIsContainer(const FSRef *ref)
{
    return FSIsLSItemInfoRecordFlagOn(ref, kLSItemInfoIsContainer, false);
}
Boolean FSIsPackage(const FSRef *ref) { return FSIsLSItemInfoRecordFlagOn(ref, kLSItemInfoIsPackage, false); }
Boolean FSIsVolume(const FSRef *ref) { return FSIsLSItemInfoRecordFlagOn(ref, kLSItemInfoIsVolume, false); }
Boolean FSIsDirectory(const FSRef *ref) { return FSIsContainer(ref) && !FSIsVolume(ref); }
Boolean FSIsFolder(const FSRef *ref) { return FSIsContainer(ref) && !FSIsPackage(ref) && !FSIsVolume(ref); }
