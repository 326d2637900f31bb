#include "platform/CarbonEvents/private/EventTarget.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <map>
#include <set>

struct OpaqueEventRef {
    UInt32 eventClass, eventKind;
    EventTime when;
    int owners = 1;
    struct Value {
        EventParamType type;
        std::vector<std::byte> bytes;
    };
    std::map<EventParamName, Value> parameters;
};

/// The handlers that are still to be asked; held, because a handler may remove itself or others.
struct OpaqueEventHandlerCallRef {
    std::vector<std::shared_ptr<OpaqueEventHandlerRef>> left;
};

namespace {

std::set<const OpaqueEventTargetRef *> &targets()
{
    static std::set<const OpaqueEventTargetRef *> all;
    return all;
}

bool takes(const OpaqueEventHandlerRef &handler, EventRef event)
{
    return std::any_of(handler.types.begin(), handler.types.end(), [&](const EventTypeSpec &type) {
        return type.eventClass == event->eventClass && type.eventKind == event->eventKind;
    });
}

}  // namespace

OpaqueEventTargetRef::OpaqueEventTargetRef(OpaqueEventTargetRef *aNext) : next(aNext)
{
    targets().insert(this);
}

OpaqueEventTargetRef::~OpaqueEventTargetRef()
{
    targets().erase(this);
    for (const auto &handler : handlers)
        handler->target = nullptr;
}

OSStatus CreateEvent(CFAllocatorRef, UInt32 eventClass, UInt32 eventKind, EventTime when, EventAttributes,
                     EventRef *outEvent)
{
    if (!outEvent)
        return paramErr;
    const std::chrono::duration<double> now = std::chrono::steady_clock::now().time_since_epoch();
    *outEvent = new OpaqueEventRef{eventClass, eventKind, when != 0 ? when : now.count(), 1, {}};
    return noErr;
}

EventRef RetainEvent(EventRef event)
{
    if (event)
        ++event->owners;
    return event;
}

void ReleaseEvent(EventRef event)
{
    if (event && --event->owners == 0)
        delete event;
}

UInt32 GetEventClass(EventRef event) { return event ? event->eventClass : 0; }
UInt32 GetEventKind(EventRef event) { return event ? event->eventKind : 0; }
EventTime GetEventTime(EventRef event) { return event ? event->when : 0; }

OSStatus SetEventParameter(EventRef event, EventParamName name, EventParamType type, ByteCount size,
                           const void *data)
{
    if (!event || (size && !data))
        return paramErr;
    const auto *bytes = static_cast<const std::byte *>(data);
    event->parameters[name] = {type, {bytes, bytes + size}};
    return noErr;
}

OSStatus GetEventParameter(EventRef event, EventParamName name, EventParamType type, EventParamType *outType,
                           ByteCount bufferSize, ByteCount *outSize, void *outData)
{
    if (!event)
        return paramErr;
    const auto found = event->parameters.find(name);
    if (found == event->parameters.end() || found->second.type != type)
        return eventParameterNotFoundErr;
    const auto &bytes = found->second.bytes;
    if (outType)
        *outType = type;
    if (outSize)
        *outSize = ByteCount(bytes.size());
    if (outData)
        std::copy_n(bytes.data(), std::min<size_t>(bytes.size(), bufferSize),
                    static_cast<std::byte *>(outData));
    return noErr;
}

EventTargetRef GetApplicationEventTarget()
{
    static OpaqueEventTargetRef application;
    return &application;
}

OSStatus InstallEventHandler(EventTargetRef target, EventHandlerUPP handler, UInt32 count,
                             const EventTypeSpec *types, void *userData, EventHandlerRef *outHandler)
{
    if (!targets().count(target) || !handler || (count && !types))
        return paramErr;
    target->handlers.push_back(std::make_shared<OpaqueEventHandlerRef>(
        OpaqueEventHandlerRef{target, handler, {types, types + count}, userData}));
    if (outHandler)
        *outHandler = target->handlers.back().get();
    return noErr;
}

OSStatus RemoveEventHandler(EventHandlerRef handler)
{
    for (const OpaqueEventTargetRef *each : targets()) {
        auto &handlers = const_cast<OpaqueEventTargetRef *>(each)->handlers;
        if (std::erase_if(handlers, [&](const auto &installed) { return installed.get() == handler; }))
            return noErr;
    }
    return paramErr;
}

OSStatus CallNextEventHandler(EventHandlerCallRef call, EventRef event)
{
    if (!call || !event)
        return paramErr;
    while (!call->left.empty()) {
        const auto handler = call->left.back();
        call->left.pop_back();
        if (!takes(*handler, event))
            continue;
        const OSStatus status = handler->handler(call, event, handler->userData);
        if (status != eventNotHandledErr)
            return status;
    }
    return eventNotHandledErr;
}

OSStatus SendEventToEventTarget(EventRef event, EventTargetRef target)
{
    if (!event || !targets().count(target))
        return paramErr;
    RetainEvent(event);
    OpaqueEventHandlerCallRef call;
    for (const OpaqueEventTargetRef *each = target; each;
         each = each->next)  // asked from the end: the last installed first
        call.left.insert(call.left.begin(), each->handlers.begin(), each->handlers.end());
    const OSStatus status = CallNextEventHandler(&call, event);
    ReleaseEvent(event);
    return status;
}
