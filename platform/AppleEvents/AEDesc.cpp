#include "platform/AppleEvents/private/Flattening.h"
#include "platform/AppleEvents/private/Storage.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace tarvik::ae {

OwnedDesc newBytes(DescType type, size_t size, char **data)
{
    *data = nullptr;
    if (size == 0)
        return OwnedDesc({type, nullptr});
    if (size > size_t(PTRDIFF_MAX) - sizeof(Bytes))
        throw std::bad_alloc();
    void *block = std::malloc(sizeof(Bytes) + size);
    if (!block)
        throw std::bad_alloc();
    auto *bytes = new (block) Bytes;
    bytes->self = bytes;
    bytes->kind = Kind::bytes;
    bytes->size = size;
    *data = bytes->data();
    return OwnedDesc({type, &bytes->self});
}

OwnedDesc newValue(DescType type, std::string_view bytes)
{
    char *data;
    OwnedDesc desc = newBytes(type, bytes.size(), &data);
    if (data)
        std::memcpy(data, bytes.data(), bytes.size());
    return desc;
}

OwnedDesc newItems(DescType type, Kind kind) { return OwnedDesc({type, &(new Items(kind))->self}); }

OwnedDesc newEvent() { return OwnedDesc({typeAppleEvent, &(new Event)->self}); }

namespace {

void copyItems(const std::vector<Item> &from, std::vector<Item> &to)
{
    to.reserve(from.size());
    for (const Item &item : from)
        to.push_back({item.key, copyOf(*item.desc.get()), item.asked});
}

OwnedDesc copyOfEvent(const Event &from)
{
    OwnedDesc desc = newEvent();
    Event &to = *eventOf(desc.get());
    to.eventClass = from.eventClass;
    to.eventID = from.eventID;
    to.returnID = from.returnID;
    to.transactionID = from.transactionID;
    to.source = from.source;
    to.replyRequested = from.replyRequested;
    to.sender = from.sender;
    to.ticket = from.ticket;
    copyItems(from.attributes, to.attributes);
    copyItems(from.items, to.items);
    return desc;
}

}  // namespace

OwnedDesc copyOf(const AEDesc &desc)
{
    const Items *items = itemsOf(&desc);
    if (!items)
        return newValue(desc.descriptorType, bytesOf(&desc));
    OwnedDesc copy = items->kind == Kind::event ? copyOfEvent(static_cast<const Event &>(*items))
                                                : newItems(typeNull, items->kind);
    copy.get()->descriptorType = desc.descriptorType;
    if (items->kind != Kind::event)
        copyItems(items->items, itemsOf(copy.get())->items);
    return copy;
}

OSErr handBytes(const AEDesc *desc, DescType *type, void *data, Size room, Size *actualSize)
{
    if (type)
        *type = desc->descriptorType;
    if (actualSize)
        *actualSize = AEGetDescDataSize(desc);
    return AEGetDescData(desc, data, room);
}

}  // namespace tarvik::ae

using namespace tarvik::ae;

void AEInitializeDesc(AEDesc *desc)
{
    if (desc)
        *desc = {typeNull, nullptr};
}

OSErr AECreateDesc(DescType typeCode, const void *dataPtr, Size dataSize, AEDesc *result)
{
    AEInitializeDesc(result);
    if (!result || dataSize < 0 || (!dataPtr && dataSize > 0))
        return paramErr;
    return withMemory([&]() -> OSErr {
        const std::string_view bytes(static_cast<const char *>(dataPtr), size_t(dataSize));
        if (!isContainer(typeCode))
            return hand(newValue(typeCode, bytes), result);
        if (bytes.empty())
            return typeCode == typeAppleEvent
                       ? OSErr(paramErr)
                       : hand(newItems(typeCode, typeCode == typeAEList ? Kind::list : Kind::record), result);
        tarvik::OwnedDesc desc;
        if (unflatten(bytes, desc) != noErr || desc->descriptorType != typeCode)
            return paramErr;
        return hand(std::move(desc), result);
    });
}

OSErr AEDisposeDesc(AEDesc *desc)
{
    if (desc && desc->dataHandle) {
        OpaqueAEDataStorageType *storage = *desc->dataHandle;
        switch (storage->kind) {
        case Kind::bytes: std::free(static_cast<Bytes *>(storage)); break;
        case Kind::event: delete static_cast<Event *>(storage); break;
        default: delete static_cast<Items *>(storage);
        }
    }
    AEInitializeDesc(desc);
    return noErr;
}

OSErr AEDuplicateDesc(const AEDesc *desc, AEDesc *result)
{
    if (!desc || !result)
        return paramErr;
    const AEDesc source = *desc;  // they may be one
    AEInitializeDesc(result);
    return withMemory([&] { return hand(copyOf(source), result); });
}

OSErr AEReplaceDescData(DescType typeCode, const void *dataPtr, Size dataSize, AEDesc *desc)
{
    if (!desc)
        return paramErr;
    tarvik::OwnedDesc made;
    if (const OSErr error = AECreateDesc(typeCode, dataPtr, dataSize, made.out()))
        return error;
    AEDisposeDesc(desc);
    return hand(std::move(made), desc);
}

Size AEGetDescDataSize(const AEDesc *desc)
{
    return itemsOf(desc) ? AESizeOfFlattenedDesc(desc) : Size(bytesOf(desc).size());
}

OSErr AEGetDescData(const AEDesc *desc, void *dataPtr, Size maximumSize)
{
    if (!desc || maximumSize < 0 || (!dataPtr && maximumSize > 0))
        return paramErr;
    return withMemory([&]() -> OSErr {
        std::vector<char> form;
        std::string_view bytes = bytesOf(desc);
        if (itemsOf(desc)) {
            if (!flatten(*desc, form))
                return errAECorruptData;
            bytes = {form.data(), form.size()};
        }
        if (!bytes.empty() && maximumSize > 0)
            std::memcpy(dataPtr, bytes.data(), std::min(size_t(maximumSize), bytes.size()));
        return noErr;
    });
}

OSStatus AEGetDescDataRange(const AEDesc *desc, void *buffer, Size offset, Size length)
{
    if (!desc || !buffer || offset < 0 || length < 0)
        return paramErr;
    const std::string_view bytes = bytesOf(desc);
    if (size_t(offset) > bytes.size() || size_t(length) > bytes.size() - size_t(offset))
        return errAECorruptData;
    if (length > 0)
        std::memcpy(buffer, bytes.data() + offset, size_t(length));
    return noErr;
}
