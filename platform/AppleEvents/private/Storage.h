/// \file
/// What a descriptor's handle leads to: bytes in one block with their head, items, or an event.
#pragma once
#include <Carbon/AEDataModel.h>
#include <Tarvik/support/OwnedDesc.h>

#include <cstdint>
#include <new>
#include <string_view>
#include <vector>

namespace tarvik::ae {
enum class Kind : uint32_t { bytes, list, record, event };  // these numbers stand in the flattened form
}

/// A host sees a handle as a pointer to a pointer: it leads to `self`, which leads here.
struct OpaqueAEDataStorageType {
    OpaqueAEDataStorageType *self;
    tarvik::ae::Kind kind;
};

namespace tarvik::ae {

/// The bytes follow in the same block: one allocation for a value.
struct Bytes : OpaqueAEDataStorageType {
    size_t size;
    char *data() { return reinterpret_cast<char *>(this + 1); }
};

struct Item {
    AEKeyword key;  ///< of a list's item: typeWildCard
    OwnedDesc desc;
    mutable bool asked;  ///< whether somebody has read this parameter
};

/// A list or a record.
struct Items : OpaqueAEDataStorageType {
    explicit Items(Kind kind) : OpaqueAEDataStorageType{this, kind} {}
    std::vector<Item> items;
};

struct Sender {
    int32_t pid, uid, gid;
};

struct Event : Items {
    Event() : Items(Kind::event) {}
    AEEventClass eventClass = 0;
    AEEventID eventID = 0;
    AEReturnID returnID = 0;
    AETransactionID transactionID = 0;
    std::vector<Item> attributes;  ///< the others: target, time-out ...

    // What this process knows of an event that it received; it is never read from outside.
    int16_t source = 0;  ///< kAEUnknownSource
    bool replyRequested = false;
    Sender sender = {-1, -1, -1};
    uint64_t ticket = 0;  ///< names the exchange that an answer belongs to; 0: none
};

inline bool isContainer(DescType type)
{
    return type == typeAEList || type == typeAERecord || type == typeAppleEvent;
}

/// The items of a list, a record or an event; null for anything else.
inline Items *itemsOf(const AEDesc *desc)
{
    return desc && desc->dataHandle && (*desc->dataHandle)->kind != Kind::bytes
               ? static_cast<Items *>(*desc->dataHandle)
               : nullptr;
}
inline Items *recordOf(const AEDesc *desc)
{
    Items *items = itemsOf(desc);
    return items && items->kind != Kind::list ? items : nullptr;
}
inline Event *eventOf(const AEDesc *desc)
{
    Items *items = itemsOf(desc);
    return items && items->kind == Kind::event ? static_cast<Event *>(items) : nullptr;
}
/// The bytes of a value; empty for anything else.
inline std::string_view bytesOf(const AEDesc *desc)
{
    if (!desc || !desc->dataHandle || (*desc->dataHandle)->kind != Kind::bytes)
        return {};
    auto *bytes = static_cast<Bytes *>(*desc->dataHandle);
    return {bytes->data(), bytes->size};
}

inline const Item *find(const std::vector<Item> &items, AEKeyword key)
{
    for (const Item &item : items)
        if (item.key == key)
            return &item;
    return nullptr;
}
/// Sets the item of a keyword.
void put(std::vector<Item> &items, AEKeyword key, OwnedDesc desc);

// These throw std::bad_alloc.

/// A value whose bytes are not set yet; `data` is where they go (null for none).
OwnedDesc newBytes(DescType type, size_t size, char **data);
OwnedDesc newValue(DescType type, std::string_view bytes);
OwnedDesc newItems(DescType type, Kind kind);
OwnedDesc newEvent();
/// A copy with all that it holds.
OwnedDesc copyOf(const AEDesc &desc);

/// Runs what may find no memory.
template <class Body>
OSErr withMemory(Body &&body)
{
    try {
        return OSErr(body());
    } catch (const std::bad_alloc &) {
        return memFullErr;
    }
}

/// Hands a descriptor to a caller whose own one is null until then.
inline OSErr hand(OwnedDesc desc, AEDesc *result)
{
    *result = desc.release();
    return noErr;
}

/// A value as a caller's buffer takes it: type, full size, and the bytes that fit.
OSErr handBytes(const AEDesc *desc, DescType *type, void *data, Size room, Size *actualSize);

}  // namespace tarvik::ae
