#include "platform/AppleEvents/private/Storage.h"

#include <Carbon/MacMemory.h>

#include <cstring>

using namespace tarvik;
using namespace tarvik::ae;

namespace {

constexpr Size even(Size size) { return (size + 1) & ~Size(1); }

/// From one item to the next; 0 for an array that there is not.
Size strideOf(AEArrayType type, Size itemSize)
{
    switch (type) {
    case kAEDataArray: return even(itemSize);
    case kAEPackedArray: return itemSize;
    case kAEHandleArray: return sizeof(Handle);
    case kAEDescArray: return sizeof(AEDesc);
    case kAEKeyDescArray: return sizeof(AEKeyDesc);
    default: return 0;
    }
}

OSErr putItem(AEDescList *list, AEArrayType type, const AEArrayData *array, const char *at, long i,
              DescType itemType, Size itemSize)
{
    switch (type) {
    case kAEHandleArray: {
        const Handle handle = array->kAEHandleArray[i];
        return handle ? AEPutPtr(list, 0, itemType, *handle, GetHandleSize(handle)) : OSErr(nilHandleErr);
    }
    case kAEDescArray: return AEPutDesc(list, 0, &array->kAEDescArray[i]);
    case kAEKeyDescArray:
        return AEPutParamDesc(list, array->kAEKeyDescArray[i].descKey,
                              &array->kAEKeyDescArray[i].descContent);
    default: return AEPutPtr(list, 0, itemType, at, itemSize);
    }
}

OSErr getItem(const Item &item, AEArrayType type, AEArrayDataPointer array, char *at, size_t i)
{
    switch (type) {
    case kAEHandleArray: {
        const std::string_view bytes = bytesOf(item.desc.get());
        return PtrToHand(bytes.data(), &array->kAEHandleArray[i], Size(bytes.size()));
    }
    case kAEDescArray: return AEDuplicateDesc(item.desc.get(), &array->kAEDescArray[i]);
    case kAEKeyDescArray:
        array->kAEKeyDescArray[i].descKey = item.key;
        return AEDuplicateDesc(item.desc.get(), &array->kAEKeyDescArray[i].descContent);
    default: {
        const std::string_view bytes = bytesOf(item.desc.get());
        if (!bytes.empty())
            std::memcpy(at, bytes.data(), bytes.size());
        return noErr;
    }
    }
}

void dispose(AEArrayType type, AEArrayDataPointer array, size_t count)
{
    for (size_t i = 0; i < count; ++i)
        switch (type) {
        case kAEHandleArray: DisposeHandle(array->kAEHandleArray[i]); break;
        case kAEDescArray: AEDisposeDesc(&array->kAEDescArray[i]); break;
        case kAEKeyDescArray: AEDisposeDesc(&array->kAEKeyDescArray[i].descContent); break;
        default: return;
        }
}

}  // namespace

OSErr AEPutArray(AEDescList *list, AEArrayType arrayType, const AEArrayData *array, DescType itemType,
                 Size itemSize, long itemCount)
{
    const Size stride = strideOf(arrayType, itemSize);
    if (!list || itemCount < 0 || itemSize < 0 || (!array && itemCount > 0) || (stride == 0 && itemSize > 0))
        return paramErr;
    if (!itemsOf(list) || (arrayType == kAEKeyDescArray) != bool(recordOf(list)))
        return errAEWrongDataType;
    const char *at = reinterpret_cast<const char *>(array);
    for (long i = 0; i < itemCount; ++i, at += stride)
        if (const OSErr error = putItem(list, arrayType, array, at, i, itemType, itemSize))
            return error;
    return noErr;
}

OSErr AEGetArray(const AEDescList *list, AEArrayType arrayType, AEArrayDataPointer array, Size maximumSize,
                 DescType *itemType, Size *itemSize, long *itemCount)
{
    if (!list || !array || !itemType || !itemSize || !itemCount)
        return paramErr;
    const Items *held = itemsOf(list);
    if (!held)
        return errAEWrongDataType;
    const auto &items = held->items;
    const bool descs = arrayType == kAEDescArray || arrayType == kAEKeyDescArray;
    const Size first = items.empty() ? 0 : Size(bytesOf(items[0].desc.get()).size());
    for (const Item &item : items) {
        const bool alike = item.desc->descriptorType == items[0].desc->descriptorType &&
                           !itemsOf(item.desc.get()) &&
                           (arrayType == kAEHandleArray || Size(bytesOf(item.desc.get()).size()) == first);
        if (!descs && !alike)
            return errAEWrongDataType;
    }
    const Size stride = strideOf(arrayType, first);
    if (stride == 0 && first > 0)
        return paramErr;
    if (maximumSize < 0 || Size(items.size()) > (stride ? maximumSize / stride : Size(items.size())))
        return errAEBufferTooSmall;
    for (size_t i = 0; i < items.size(); ++i) {
        items[i].asked = true;
        if (const OSErr error =
                getItem(items[i], arrayType, array, reinterpret_cast<char *>(array) + Size(i) * stride, i)) {
            dispose(arrayType, array, i);
            return error;
        }
    }
    *itemType = descs || items.empty() ? DescType(typeWildCard) : items[0].desc->descriptorType;
    *itemSize = descs || arrayType == kAEHandleArray ? 0 : first;
    *itemCount = long(items.size());
    return noErr;
}
