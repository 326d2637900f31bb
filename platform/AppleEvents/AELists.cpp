#include "platform/AppleEvents/private/Storage.h"

namespace tarvik::ae {

void put(std::vector<Item> &items, AEKeyword key, OwnedDesc desc)
{
    if (const Item *known = find(items, key))
        const_cast<Item *>(known)->desc = std::move(desc);
    else
        items.push_back({key, std::move(desc), false});
}

namespace {

Items *listOf(const AEDesc *desc)
{
    Items *items = itemsOf(desc);
    return items && items->kind == Kind::list ? items : nullptr;
}

/// The item of an index that is counted from 1.
OSErr nth(const AEDescList *list, long index, const Item *&item)
{
    if (!list)
        return paramErr;
    const Items *items = itemsOf(list);
    if (!items)
        return errAEWrongDataType;
    if (index < 1 || size_t(index) > items->items.size())
        return errAEDescNotFound;
    item = &items->items[size_t(index) - 1];
    item->asked = true;
    return noErr;
}

OSErr putNth(AEDescList *list, long index, OwnedDesc desc)
{
    Items *items = listOf(list);
    if (!items)
        return errAEWrongDataType;
    const size_t count = items->items.size();
    if (index < 0 || size_t(index) > count + 1)
        return errAEIllegalIndex;
    if (index == 0 || size_t(index) == count + 1)
        items->items.push_back({typeWildCard, std::move(desc), false});
    else
        items->items[size_t(index) - 1].desc = std::move(desc);
    return noErr;
}

OSErr field(const AERecord *record, AEKeyword keyword, const Item *&item)
{
    if (!record)
        return paramErr;
    const Items *items = recordOf(record);
    if (!items)
        return errAEWrongDataType;
    item = find(items->items, keyword);
    return item ? OSErr(noErr) : OSErr(errAEDescNotFound);
}

}  // namespace

}  // namespace tarvik::ae

using namespace tarvik;
using namespace tarvik::ae;

OSErr AECreateList(const void *, Size, Boolean isRecord, AEDescList *resultList)
{
    if (!resultList)
        return paramErr;
    AEInitializeDesc(resultList);
    return withMemory([&] {
        return hand(isRecord ? newItems(typeAERecord, Kind::record) : newItems(typeAEList, Kind::list),
                    resultList);
    });
}

Boolean AECheckIsRecord(const AEDesc *desc) { return recordOf(desc) != nullptr; }

OSErr AECountItems(const AEDescList *list, long *count)
{
    if (!list || !count)
        return paramErr;
    const Items *items = itemsOf(list);
    *count = items ? long(items->items.size()) : 0;
    return items ? OSErr(noErr) : OSErr(errAEWrongDataType);
}

OSErr AEPutPtr(AEDescList *list, long index, DescType typeCode, const void *dataPtr, Size dataSize)
{
    OwnedDesc made;
    const OSErr error = list ? AECreateDesc(typeCode, dataPtr, dataSize, made.out()) : OSErr(paramErr);
    return error ? error : withMemory([&] { return putNth(list, index, std::move(made)); });
}

OSErr AEPutDesc(AEDescList *list, long index, const AEDesc *desc)
{
    if (!list || !desc)
        return paramErr;
    return withMemory([&] { return putNth(list, index, copyOf(*desc)); });
}

OSErr AEGetNthPtr(const AEDescList *list, long index, DescType desiredType, AEKeyword *keyword,
                  DescType *typeCode, void *dataPtr, Size maximumSize, Size *actualSize)
{
    const Item *item;
    if (const OSErr error = nth(list, index, item))
        return error;
    if (keyword)
        *keyword = item->key;
    OwnedDesc coerced;
    const bool asItIs = desiredType == typeWildCard || desiredType == item->desc->descriptorType;
    const OSErr error = asItIs ? OSErr(noErr) : AECoerceDesc(item->desc.get(), desiredType, coerced.out());
    return error ? error
                 : handBytes(asItIs ? item->desc.get() : coerced.get(), typeCode, dataPtr, maximumSize,
                             actualSize);
}

OSErr AEGetNthDesc(const AEDescList *list, long index, DescType desiredType, AEKeyword *keyword,
                   AEDesc *result)
{
    const Item *item;
    AEInitializeDesc(result);
    const OSErr error = result ? nth(list, index, item) : OSErr(paramErr);
    if (error)
        return error;
    if (keyword)
        *keyword = item->key;
    return AECoerceDesc(item->desc.get(), desiredType, result);
}

OSErr AESizeOfNthItem(const AEDescList *list, long index, DescType *typeCode, Size *dataSize)
{
    const Item *item;
    const OSErr error = nth(list, index, item);
    return error ? error : handBytes(item->desc.get(), typeCode, nullptr, 0, dataSize);
}

OSErr AEDeleteItem(AEDescList *list, long index)
{
    const Item *item;
    if (const OSErr error = nth(list, index, item))
        return error;
    auto &items = itemsOf(list)->items;
    items.erase(items.begin() + (index - 1));
    return noErr;
}

OSErr AEPutParamPtr(AppleEvent *event, AEKeyword keyword, DescType typeCode, const void *dataPtr,
                    Size dataSize)
{
    Items *items = recordOf(event);
    if (!items)
        return event ? OSErr(errAEWrongDataType) : OSErr(paramErr);
    OwnedDesc made;
    const OSErr error = AECreateDesc(typeCode, dataPtr, dataSize, made.out());
    return error ? error
                 : withMemory([&]() -> OSErr { return put(items->items, keyword, std::move(made)), noErr; });
}

OSErr AEPutParamDesc(AppleEvent *event, AEKeyword keyword, const AEDesc *desc)
{
    Items *items = recordOf(event);
    if (!items || !desc)
        return event && desc ? OSErr(errAEWrongDataType) : OSErr(paramErr);
    return withMemory([&]() -> OSErr { return put(items->items, keyword, copyOf(*desc)), noErr; });
}

OSErr AEGetParamPtr(const AppleEvent *event, AEKeyword keyword, DescType desiredType, DescType *actualType,
                    void *dataPtr, Size maximumSize, Size *actualSize)
{
    const Item *item;
    if (const OSErr error = field(event, keyword, item))
        return error;
    item->asked = true;
    OwnedDesc coerced;
    const bool asItIs = desiredType == typeWildCard || desiredType == item->desc->descriptorType;
    const OSErr error = asItIs ? OSErr(noErr) : AECoerceDesc(item->desc.get(), desiredType, coerced.out());
    return error ? error
                 : handBytes(asItIs ? item->desc.get() : coerced.get(), actualType, dataPtr, maximumSize,
                             actualSize);
}

OSErr AEGetParamDesc(const AppleEvent *event, AEKeyword keyword, DescType desiredType, AEDesc *result)
{
    const Item *item;
    AEInitializeDesc(result);
    const OSErr error = result ? field(event, keyword, item) : OSErr(paramErr);
    if (error)
        return error;
    item->asked = true;
    return AECoerceDesc(item->desc.get(), desiredType, result);
}

OSErr AESizeOfParam(const AppleEvent *event, AEKeyword keyword, DescType *typeCode, Size *dataSize)
{
    const Item *item;
    const OSErr error = field(event, keyword, item);
    return error ? error : handBytes(item->desc.get(), typeCode, nullptr, 0, dataSize);
}

OSErr AEDeleteParam(AppleEvent *event, AEKeyword keyword)
{
    const Item *item;
    if (const OSErr error = field(event, keyword, item))
        return error;
    auto &items = itemsOf(event)->items;
    items.erase(items.begin() + (item - items.data()));
    return noErr;
}
