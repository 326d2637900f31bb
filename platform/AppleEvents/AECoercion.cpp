#include "platform/AppleEvents/private/Coercions.h"
#include "platform/AppleEvents/private/HandlerTable.h"

using namespace tarvik;
using namespace tarvik::ae;

namespace {

struct Coercion {
    AECoercionHandlerUPP function;
    SRefCon refcon;
    bool takesDesc;

    OSErr operator()(const AEDesc *desc, DescType to, AEDesc *result) const
    {
        if (takesDesc)
            return reinterpret_cast<AECoerceDescUPP>(reinterpret_cast<void (*)()>(function))(desc, to, refcon,
                                                                                             result);
        const std::string_view bytes = bytesOf(desc);
        return function(desc->descriptorType, bytes.data(), Size(bytes.size()), to, refcon, result);
    }
};

HandlerTable<Coercion> gHandlers[2];  // the application's, the system's

OSErr installed(const AEDesc *desc, DescType to, AEDesc *result)
{
    for (const auto &table : gHandlers)
        for (const Coercion &handler : table.matching(desc->descriptorType, to)) {
            const OSErr error = handler(desc, to, result);
            if (error != errAECoercionFail)
                return error;
            AEInitializeDesc(result);
        }
    return errAECoercionFail;
}

std::optional<OwnedDesc> listOf(const AEDesc &item)
{
    OwnedDesc list = newItems(typeAEList, Kind::list);
    itemsOf(list.get())->items.push_back({typeWildCard, copyOf(item), false});
    return list;
}

/// The same fields under another name, or without their keywords.
OwnedDesc copyOfItems(const Items &items, DescType type, Kind kind)
{
    OwnedDesc made = newItems(type, kind);
    auto &to = itemsOf(made.get())->items;
    for (const Item &item : items.items)
        to.push_back(
            {kind == Kind::list ? AEKeyword(typeWildCard) : item.key, copyOf(*item.desc.get()), false});
    return made;
}

std::optional<OwnedDesc> coerceItems(const Items &items, DescType to)
{
    if (items.kind == Kind::list) {
        OwnedDesc made;
        const bool one =
            items.items.size() == 1 && AECoerceDesc(items.items[0].desc.get(), to, made.out()) == noErr;
        return one ? std::optional(std::move(made)) : std::nullopt;
    }
    if (to == typeAEList)
        return copyOfItems(items, to, Kind::list);
    const bool isOther = isScalar(to) || isContainer(to) || (items.kind == Kind::event);
    if (to == typeAERecord || !isOther)
        return copyOfItems(items, to, Kind::record);
    return std::nullopt;
}

std::optional<OwnedDesc> coerceKnown(const AEDesc &desc, DescType to)
{
    if (const Items *items = itemsOf(&desc))
        return coerceItems(*items, to);
    if (to == typeAEList)
        return listOf(desc);
    auto made = coerceScalar(desc.descriptorType, bytesOf(&desc), to);
    return made ? std::move(made) : coerceFile(desc.descriptorType, bytesOf(&desc), to);
}

}  // namespace

OSErr AECoerceDesc(const AEDesc *desc, DescType toType, AEDesc *result)
{
    if (!desc || !result)
        return paramErr;
    const AEDesc source = *desc;
    AEInitializeDesc(result);
    return withMemory([&]() -> OSErr {
        if (toType == typeWildCard || toType == source.descriptorType)
            return hand(copyOf(source), result);
        const OSErr error = installed(&source, toType, result);
        if (error != errAECoercionFail)
            return error;
        auto made = coerceKnown(source, toType);
        return made ? hand(std::move(*made), result) : OSErr(errAECoercionFail);
    });
}

OSErr AECoercePtr(DescType typeCode, const void *dataPtr, Size dataSize, DescType toType, AEDesc *result)
{
    OwnedDesc desc;
    AEInitializeDesc(result);
    const OSErr error = AECreateDesc(typeCode, dataPtr, dataSize, desc.out());
    return error ? error : AECoerceDesc(desc.get(), toType, result);
}

OSErr AEInstallCoercionHandler(DescType fromType, DescType toType, AECoercionHandlerUPP handler,
                               SRefCon handlerRefcon, Boolean fromTypeIsDesc, Boolean isSysHandler)
{
    if (!handler)
        return paramErr;
    return withMemory([&]() -> OSErr {
        gHandlers[isSysHandler != 0].set(fromType, toType, {handler, handlerRefcon, fromTypeIsDesc != 0});
        return noErr;
    });
}

OSErr AERemoveCoercionHandler(DescType fromType, DescType toType, AECoercionHandlerUPP handler,
                              Boolean isSysHandler)
{
    const auto isIt = [&](const Coercion &known) { return !handler || known.function == handler; };
    return gHandlers[isSysHandler != 0].remove(fromType, toType, isIt) ? OSErr(noErr)
                                                                       : OSErr(errAEHandlerNotFound);
}

OSErr AEGetCoercionHandler(DescType fromType, DescType toType, AECoercionHandlerUPP *handler,
                           SRefCon *handlerRefcon, Boolean *fromTypeIsDesc, Boolean isSysHandler)
{
    const auto known = gHandlers[isSysHandler != 0].get(fromType, toType);
    if (!known)
        return errAEHandlerNotFound;
    if (handler)
        *handler = known->function;
    if (handlerRefcon)
        *handlerRefcon = known->refcon;
    if (fromTypeIsDesc)
        *fromTypeIsDesc = known->takesDesc;
    return noErr;
}
