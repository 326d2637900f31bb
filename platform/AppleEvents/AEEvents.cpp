#include "platform/AppleEvents/private/Storage.h"

#include <atomic>

using namespace tarvik;
using namespace tarvik::ae;

namespace {

/// Positive numbers, so that none is kAutoGenerateReturnID.
AEReturnID nextReturnID()
{
    static std::atomic<uint16_t> last{0};
    return AEReturnID(++last & 0x7FFF);
}

template <class Number>
OwnedDesc numberDesc(DescType type, Number number)
{
    return newValue(type, {reinterpret_cast<const char *>(&number), sizeof number});
}

/// The first parameter that is not optional and that nobody has asked for.
const Item *missed(const Event &event)
{
    const Item *optional = find(event.attributes, keyOptionalKeywordAttr);
    const Items *list = optional ? itemsOf(optional->desc.get()) : nullptr;
    const auto isOptional = [&](AEKeyword key) {
        for (size_t i = 0; list && i < list->items.size(); ++i) {
            const std::string_view bytes = bytesOf(list->items[i].desc.get());
            if (bytes == std::string_view(reinterpret_cast<const char *>(&key), sizeof key))
                return true;
        }
        return false;
    };
    for (const Item &item : event.items)
        if (!item.asked && !isOptional(item.key))
            return &item;
    return nullptr;
}

/// An attribute in its own type; a null descriptor for one that is not there.
OwnedDesc attribute(const Event &event, AEKeyword keyword)
{
    switch (keyword) {
    case keyEventClassAttr: return numberDesc(typeType, event.eventClass);
    case keyEventIDAttr: return numberDesc(typeType, event.eventID);
    case keyReturnIDAttr: return numberDesc(typeSInt32, SInt32(event.returnID));
    case keyTransactionIDAttr: return numberDesc(typeSInt32, event.transactionID);
    case keyEventSourceAttr: return numberDesc(typeSInt16, event.source);
    case keyReplyRequestedAttr: return numberDesc(typeBoolean, Boolean(event.replyRequested));
    case keySenderPIDAttr:
        return event.sender.pid < 0 ? OwnedDesc() : numberDesc(typeSInt32, event.sender.pid);
    case keySenderEUIDAttr:
    case keySenderUIDAttr:
        return event.sender.pid < 0 ? OwnedDesc() : numberDesc(typeSInt32, event.sender.uid);
    case keySenderEGIDAttr:
    case keySenderGIDAttr:
        return event.sender.pid < 0 ? OwnedDesc() : numberDesc(typeSInt32, event.sender.gid);
    case keyMissedKeywordAttr: {
        const Item *item = missed(event);
        return item ? numberDesc(typeKeyword, item->key) : OwnedDesc();
    }
    case keyOriginalAddressAttr: keyword = keyAddressAttr; [[fallthrough]];
    default: {
        const Item *item = find(event.attributes, keyword);
        return item ? copyOf(*item->desc.get()) : OwnedDesc();
    }
    }
}

OSErr setAttribute(Event &event, AEKeyword keyword, const AEDesc *desc)
{
    const auto set = [&](DescType type, auto &field) -> OSErr {
        OwnedDesc coerced;
        const OSErr error = AECoerceDesc(desc, type, coerced.out());
        return error ? error : AEGetDescData(coerced.get(), &field, sizeof field);
    };
    switch (keyword) {
    case keyEventClassAttr: return set(typeType, event.eventClass);
    case keyEventIDAttr: return set(typeType, event.eventID);
    case keyTransactionIDAttr: return set(typeSInt32, event.transactionID);
    case keyReturnIDAttr: return set(typeSInt16, event.returnID);
    case keyEventSourceAttr:
    case keyMissedKeywordAttr:
    case keyOriginalAddressAttr:
    case keyReplyRequestedAttr:
    case keySenderEUIDAttr:
    case keySenderEGIDAttr:
    case keySenderUIDAttr:
    case keySenderGIDAttr:
    case keySenderPIDAttr: return errAENotAppleEvent;
    default: put(event.attributes, keyword, copyOf(*desc)); return noErr;
    }
}

OSErr getAttribute(const AppleEvent *event, AEKeyword keyword, OwnedDesc &found)
{
    if (!event)
        return paramErr;
    const Event *held = eventOf(event);
    if (!held)
        return errAENotAppleEvent;
    return withMemory([&]() -> OSErr {
        found = attribute(*held, keyword);
        return found->descriptorType == typeNull ? OSErr(errAEDescNotFound) : OSErr(noErr);
    });
}

}  // namespace

OSErr AECreateAppleEvent(AEEventClass eventClass, AEEventID eventID, const AEAddressDesc *target,
                         AEReturnID returnID, AETransactionID transactionID, AppleEvent *result)
{
    if (!result)
        return paramErr;
    AEInitializeDesc(result);
    return withMemory([&] {
        OwnedDesc desc = newEvent();
        Event &event = *eventOf(desc.get());
        event.eventClass = eventClass;
        event.eventID = eventID;
        event.returnID = returnID == kAutoGenerateReturnID ? nextReturnID() : returnID;
        event.transactionID = transactionID;
        if (target)
            put(event.attributes, keyAddressAttr, copyOf(*target));
        return hand(std::move(desc), result);
    });
}

OSErr AEPutAttributePtr(AppleEvent *event, AEKeyword keyword, DescType typeCode, const void *dataPtr,
                        Size dataSize)
{
    OwnedDesc made;
    const OSErr error = event ? AECreateDesc(typeCode, dataPtr, dataSize, made.out()) : OSErr(paramErr);
    return error ? error : AEPutAttributeDesc(event, keyword, made.get());
}

OSErr AEPutAttributeDesc(AppleEvent *event, AEKeyword keyword, const AEDesc *desc)
{
    if (!event || !desc)
        return paramErr;
    Event *held = eventOf(event);
    return held ? withMemory([&] { return setAttribute(*held, keyword, desc); }) : OSErr(errAENotAppleEvent);
}

OSErr AEGetAttributeDesc(const AppleEvent *event, AEKeyword keyword, DescType desiredType, AEDesc *result)
{
    OwnedDesc found;
    AEInitializeDesc(result);
    const OSErr error = result ? getAttribute(event, keyword, found) : OSErr(paramErr);
    return error ? error : AECoerceDesc(found.get(), desiredType, result);
}

OSErr AEGetAttributePtr(const AppleEvent *event, AEKeyword keyword, DescType desiredType, DescType *typeCode,
                        void *dataPtr, Size maximumSize, Size *actualSize)
{
    OwnedDesc found;
    const OSErr error = AEGetAttributeDesc(event, keyword, desiredType, found.out());
    return error ? error : handBytes(found.get(), typeCode, dataPtr, maximumSize, actualSize);
}

OSErr AESizeOfAttribute(const AppleEvent *event, AEKeyword keyword, DescType *typeCode, Size *dataSize)
{
    OwnedDesc found;
    const OSErr error = getAttribute(event, keyword, found);
    return error ? error : handBytes(found.get(), typeCode, nullptr, 0, dataSize);
}
