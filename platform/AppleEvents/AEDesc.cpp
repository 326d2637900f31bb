#include <Carbon/AEDataModel.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

// The handle leads to a pointer that leads to the bytes, as a host sees it; both are ours.
struct OpaqueAEDataStorageType {
    std::vector<char> bytes;
};

namespace {

const std::vector<char> *bytesOf(const AEDesc *desc) { return desc && desc->dataHandle ? &(*desc->dataHandle)->bytes : nullptr; }

}  // namespace

void AEInitializeDesc(AEDesc *desc)
{
    if (desc)
        *desc = {typeNull, nullptr};
}

OSErr AECreateDesc(DescType typeCode, const void *dataPtr, Size dataSize, AEDesc *result)
{
    if (!result || dataSize < 0 || (!dataPtr && dataSize > 0))
        return paramErr;
    AEInitializeDesc(result);
    try {
        const char *first = static_cast<const char *>(dataPtr);
        std::unique_ptr<OpaqueAEDataStorageType> storage(new OpaqueAEDataStorageType{{first, first + dataSize}});
        result->dataHandle = new AEDataStorageType(storage.get());
        storage.release();
    } catch (const std::bad_alloc &) {
        return memFullErr;
    }
    result->descriptorType = typeCode;
    return noErr;
}

OSErr AEDisposeDesc(AEDesc *desc)
{
    if (desc && desc->dataHandle) {
        delete *desc->dataHandle;
        delete desc->dataHandle;
    }
    AEInitializeDesc(desc);
    return noErr;
}

OSErr AEDuplicateDesc(const AEDesc *desc, AEDesc *result)
{
    if (!desc || !result)
        return paramErr;
    const auto *bytes = bytesOf(desc);
    if (!bytes) {
        *result = {desc->descriptorType, nullptr};
        return noErr;
    }
    return AECreateDesc(desc->descriptorType, bytes->data(), Size(bytes->size()), result);
}

Size AEGetDescDataSize(const AEDesc *desc)
{
    const auto *bytes = bytesOf(desc);
    return bytes ? Size(bytes->size()) : 0;
}

OSErr AEGetDescData(const AEDesc *desc, void *dataPtr, Size maximumSize)
{
    if (!desc || maximumSize < 0 || (!dataPtr && maximumSize > 0))
        return paramErr;
    if (const auto *bytes = bytesOf(desc); bytes && maximumSize > 0 && !bytes->empty())
        std::memcpy(dataPtr, bytes->data(), std::min(size_t(maximumSize), bytes->size()));
    return noErr;
}
