#include "platform/AppleEvents/private/Dispatch.h"
#include "platform/AppleEvents/private/GuardedCall.h"
#include "platform/AppleEvents/private/HandlerTable.h"
#include "platform/AppleEvents/private/Station.h"

using namespace tarvik;
using namespace tarvik::ae;

namespace {

struct EventHandler {
    AEEventHandlerUPP function;
    SRefCon refcon;
};

/// What one side, the application or the system, has installed.
struct Handlers {
    HandlerTable<EventHandler> events, special;
};
Handlers gHandlers[2];
Handlers &handlersOf(Boolean isSystem) { return gHandlers[isSystem != 0]; }

/// What a thread handles: for the time of its scope.
class Current {
public:
    explicit Current(const AppleEvent *event) : event_(event), outer_(innermost) { innermost = this; }
    ~Current() { innermost = outer_; }
    Current(const Current &) = delete;
    Current &operator=(const Current &) = delete;

    const AppleEvent *event() const { return chosen_->descriptorType == typeNull ? event_ : chosen_.get(); }
    void choose(OwnedDesc event) { chosen_ = std::move(event); }

    static thread_local Current *innermost;

private:
    const AppleEvent *event_;
    OwnedDesc chosen_;  // by AESetTheCurrentEvent
    Current *outer_;
};
thread_local Current *Current::innermost = nullptr;

OSErr call(const EventHandler &handler, const AppleEvent *event, AppleEvent *reply)
{
    std::string reason;
    const OSErr error = guardedCall(handler.function, handler.refcon, event, reply, reason);
    if (!reason.empty() && recordOf(reply))
        AEPutParamPtr(reply, keyErrorString, typeUTF8Text, reason.data(), Size(reason.size()));
    return error;
}

OSErr callFirst(const AppleEvent *event, AppleEvent *reply)
{
    const Event &held = *eventOf(event);
    for (const Handlers &side : gHandlers)
        if (const auto handler = side.special.get(keyPreDispatch, keyPreDispatch))
            if (const OSErr error = call(*handler, event, reply); error != errAEEventNotHandled)
                return error;
    for (const Handlers &side : gHandlers)
        for (const EventHandler &handler : side.events.matching(held.eventClass, held.eventID))
            if (const OSErr error = call(handler, event, reply); error != errAEEventNotHandled)
                return error;
    return errAEEventNotHandled;
}

OSErr settle(OSErr error, AppleEvent *reply)
{
    if (Items *items = recordOf(reply); error && items && !find(items->items, keyErrorNumber)) {
        const SInt32 number = error;
        AEPutParamPtr(reply, keyErrorNumber, typeSInt32, &number, sizeof number);
    }
    return error;
}

}  // namespace

namespace tarvik::ae {

OSErr dispatch(const AppleEvent *event, AppleEvent *reply)
{
    const Current current(event);
    return settle(withMemory([&] { return callFirst(event, reply); }), reply);
}

OSErr dispatchTo(AEEventHandlerUPP handler, SRefCon refcon, const AppleEvent *event, AppleEvent *reply)
{
    const Current current(event);
    return settle(withMemory([&] { return call({handler, refcon}, event, reply); }), reply);
}

bool hasHandler(AEEventClass eventClass, AEEventID eventID)
{
    return !handlersOf(false).events.matching(eventClass, eventID).empty();
}

OSErr newReply(const AppleEvent *event, AppleEvent *reply)
{
    const Event &asked = *eventOf(event);
    OwnedDesc made = newEvent();
    Event &answer = *eventOf(made.get());
    answer.eventClass = kCoreEventClass;
    answer.eventID = kAEAnswer;
    answer.returnID = asked.returnID;
    answer.transactionID = asked.transactionID;
    answer.ticket = asked.ticket;
    return hand(std::move(made), reply);
}

}  // namespace tarvik::ae

OSErr AEInstallEventHandler(AEEventClass eventClass, AEEventID eventID, AEEventHandlerUPP handler,
                            SRefCon handlerRefcon, Boolean isSysHandler)
{
    if (!handler)
        return paramErr;
    return withMemory([&]() -> OSErr {
        handlersOf(isSysHandler).events.set(eventClass, eventID, {handler, handlerRefcon});
        if (!isSysHandler)
            Station::get().open();  // where it can't, the handler still serves this process's own events
        return noErr;
    });
}

OSErr AERemoveEventHandler(AEEventClass eventClass, AEEventID eventID, AEEventHandlerUPP handler,
                           Boolean isSysHandler)
{
    const auto isIt = [&](const EventHandler &known) { return !handler || known.function == handler; };
    return handlersOf(isSysHandler).events.remove(eventClass, eventID, isIt) ? OSErr(noErr)
                                                                             : OSErr(errAEHandlerNotFound);
}

OSErr AEGetEventHandler(AEEventClass eventClass, AEEventID eventID, AEEventHandlerUPP *handler,
                        SRefCon *handlerRefcon, Boolean isSysHandler)
{
    const auto known = handlersOf(isSysHandler).events.get(eventClass, eventID);
    if (!known)
        return errAEHandlerNotFound;
    if (handler)
        *handler = known->function;
    if (handlerRefcon)
        *handlerRefcon = known->refcon;
    return noErr;
}

OSErr AEInstallSpecialHandler(AEKeyword functionClass, AEEventHandlerUPP handler, Boolean isSysHandler)
{
    if (functionClass != keyPreDispatch)
        return errAENotASpecialFunction;
    if (!handler)
        return paramErr;
    return withMemory([&]() -> OSErr {
        handlersOf(isSysHandler).special.set(functionClass, functionClass, {handler, 0});
        return noErr;
    });
}

OSErr AERemoveSpecialHandler(AEKeyword functionClass, AEEventHandlerUPP handler, Boolean isSysHandler)
{
    if (functionClass != keyPreDispatch)
        return errAENotASpecialFunction;
    const auto isIt = [&](const EventHandler &known) { return !handler || known.function == handler; };
    return handlersOf(isSysHandler).special.remove(functionClass, functionClass, isIt)
               ? OSErr(noErr)
               : OSErr(errAEHandlerNotFound);
}

OSErr AEGetSpecialHandler(AEKeyword functionClass, AEEventHandlerUPP *handler, Boolean isSysHandler)
{
    if (functionClass != keyPreDispatch)
        return errAENotASpecialFunction;
    const auto known = handlersOf(isSysHandler).special.get(functionClass, functionClass);
    if (!known)
        return errAEHandlerNotFound;
    if (handler)
        *handler = known->function;
    return noErr;
}

OSErr AEGetTheCurrentEvent(AppleEvent *theAppleEvent)
{
    if (!theAppleEvent)
        return paramErr;
    AEInitializeDesc(theAppleEvent);
    return Current::innermost ? AEDuplicateDesc(Current::innermost->event(), theAppleEvent) : OSErr(noErr);
}

OSErr AESetTheCurrentEvent(const AppleEvent *theAppleEvent)
{
    if (!theAppleEvent)
        return paramErr;
    if (!eventOf(theAppleEvent) || !Current::innermost)
        return errAENotAppleEvent;
    return withMemory([&]() -> OSErr {
        Current::innermost->choose(copyOf(*theAppleEvent));
        return noErr;
    });
}
