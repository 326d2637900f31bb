#include <Tarvik/system/AppleEvents.h>

#include <Carbon/Aliases.h>
#include <Carbon/Processes.h>
#include <CoreFoundation/CFString.h>
#include <Tarvik/support/CFOwned.h>
#include <Tarvik/support/OwnedDesc.h>

#include <memory>
#include <new>

using tarvik::CFOwned;
using tarvik::OwnedDesc;

namespace {

constexpr AESendMode kPlainQueueReply = kAEQueueReply,
                     kPlainNoReply = kAENoReply;  // without any flag of interaction

// The format with its bare "%l" is what readers of the log look for; what becomes of it is the formatter's.
void showFailure(OSStatus status)
{
    const CFOwned<CFStringRef> text(CFStringCreateWithFormat(
        kCFAllocatorDefault, nullptr, CFSTR("AESend failed (result=%l)"), long(status)));
    CFShow(text.get());
}

}  // namespace

Boolean AppleEventSendDataArray(DescType targetType, const void *targetData, Size targetSize,
                                AEEventClass eventClass, AEEventID eventID, AppleEvent *reply,
                                const AppleEventParam *params, CFIndex count)
{
    AEInitializeDesc(reply);
    if (!targetData || targetSize <= 0)
        return false;
    OwnedDesc target, event, answer;
    if (AECreateDesc(targetType, targetData, targetSize, target.out()) != noErr ||
        AECreateAppleEvent(eventClass, eventID, target.get(), kAutoGenerateReturnID, kAnyTransactionID,
                           event.out()) != noErr)
        return false;
    for (CFIndex i = 0; params && i < count; ++i)
        AppleEventPutAppleEventParam(event.get(), &params[i]);
    const AESendMode mode = reply ? kPlainQueueReply : kPlainNoReply;
    if (const OSStatus status =
            AESend(event.get(), answer.out(), mode, kAENormalPriority, kAEDefaultTimeout, nullptr, nullptr)) {
        showFailure(status);
        return false;
    }
    if (reply)
        *reply = answer.release();
    return true;
}

Boolean AppleEventSendData(DescType targetType, const void *targetData, Size targetSize,
                           AEEventClass eventClass, AEEventID eventID, AppleEvent *reply, DescType type,
                           const void *data, SInt32 size)
{
    const AppleEventParam param = {keyDirectObject, type, data, size};
    return AppleEventSendDataArray(targetType, targetData, targetSize, eventClass, eventID, reply, &param, 1);
}

Boolean AppleEventSend(DescType targetType, const void *targetData, Size targetSize, AEEventClass eventClass,
                       AEEventID eventID, AppleEvent *reply)
{
    return AppleEventSendData(targetType, targetData, targetSize, eventClass, eventID, reply, typeNull,
                              nullptr, 0);
}

Boolean AppleEventSendToSystemProcess(AEEventID eventID)
{
    const ProcessSerialNumber system = {0, kSystemProcess};
    return AppleEventSend(typeProcessSerialNumber, &system, sizeof system, kCoreEventClass, eventID, nullptr);
}

Boolean AppleEventPutAppleEventParam(AppleEvent *event, const AppleEventParam *param)
{
    if (!event || !param || !param->data || param->size <= 0)
        return false;
    OwnedDesc desc;
    return AECreateDesc(param->type, param->data, param->size, desc.out()) == noErr &&
           AEPutParamDesc(event, param->keyword, desc.get()) == noErr;
}

Boolean AppleEventInstallHandler(AEEventClass eventClass, AEEventID eventID, AEEventHandlerProcPtr handler,
                                 SRefCon refcon)
{
    return handler &&
           AEInstallEventHandler(eventClass, eventID, NewAEEventHandlerUPP(handler), refcon, false) == noErr;
}

Boolean AppleEventUninstallHandler(AEEventClass eventClass, AEEventID eventID, AEEventHandlerProcPtr handler)
{
    return handler &&
           AERemoveEventHandler(eventClass, eventID, NewAEEventHandlerUPP(handler), false) == noErr;
}

Boolean AppleEventGetParamDescData(const AppleEvent *event, AEKeyword keyword, DescType type, void *buffer,
                                   Size size)
{
    OwnedDesc desc;
    if (!buffer || size < 1 || AEGetParamDesc(event, keyword, type, desc.out()) != noErr)
        return false;
    return AEGetDescDataSize(desc.get()) <= size && AEGetDescData(desc.get(), buffer, size) == noErr;
}

static void appendData(const AEDescList *list, DescType type, CFMutableDataRef data)
{
    long count = 0;
    if (AECountItems(list, &count) != noErr)
        return;
    for (long i = 1; i <= count; ++i) {
        AEKeyword keyword;
        OwnedDesc item;
        if (AEGetNthDesc(list, i, typeWildCard, &keyword, item.out()) != noErr)
            continue;
        if (item->descriptorType != type) {
            appendData(item.get(), type, data);
            continue;
        }
        const Size size = AEGetDescDataSize(item.get());
        const std::unique_ptr<UInt8[]> bytes(new (std::nothrow) UInt8[size_t(size)]);
        if (bytes && AEGetDescData(item.get(), bytes.get(), size) == noErr)
            CFDataAppendBytes(data, bytes.get(), size);
    }
}

CFDataRef AppleEventCopyData(const AEDescList *list, DescType type)
{
    CFOwned<CFMutableDataRef> data(CFDataCreateMutable(kCFAllocatorDefault, 0));
    if (!data)
        return nullptr;
    appendData(list, type, data.get());
    return CFDataGetLength(data.get()) > 0 ? data.release() : nullptr;
}

Boolean AECreateAliasDescWithFSRef(AEDesc *desc, const FSRef *from, const FSRef *target)
{
    AEInitializeDesc(desc);
    AliasHandle alias = nullptr;
    if (!desc || !target || FSNewAlias(from, target, &alias) != noErr)
        return false;
    const OSErr error = AECreateDesc(typeAlias, *alias, GetAliasSize(alias), desc);
    DisposeHandle(reinterpret_cast<Handle>(alias));
    return error == noErr;
}

Boolean AECreateDescListWithFunction(AEDescList *list, AECreateDescListProc function, CFIndex count,
                                     void *context)
{
    AEInitializeDesc(list);
    if (!list || !function || AECreateList(nullptr, 0, false, list) != noErr)
        return false;
    OwnedDesc item;
    for (CFIndex i = 0; i < count; ++i) {
        if (!function(item.out(), i, context))
            return true;
        if (AEPutDesc(list, 0, item.get()) != noErr)
            return false;
    }
    return true;
}
