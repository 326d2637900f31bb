#include "platform/AppleEvents/private/Addresses.h"
#include "platform/AppleEvents/private/Dispatch.h"
#include "platform/AppleEvents/private/Station.h"
#include "platform/AppleEvents/private/SystemProcess.h"

#include <Carbon/AEMach.h>

#include <atomic>
#include <cerrno>
#include <poll.h>
#include <unistd.h>

using namespace tarvik;
using namespace tarvik::ae;

namespace {

constexpr AESendMode kReplyModes = 3;
constexpr SInt32 kDefaultTicks = 60 * 60, kTicksPerSecond = 60;

std::chrono::milliseconds ticks(SInt64 count)
{
    return std::chrono::milliseconds(count * 1000 / kTicksPerSecond);
}

/// How an event is to be sent.
struct Order {
    AESendMode mode;
    std::chrono::milliseconds timeOut;
    bool isLimited;
    AEIdleUPP idle;
    AEFilterUPP filter;

    AESendMode replyMode() const { return mode & kReplyModes; }
    Deadline deadline() const { return isLimited ? Deadline(Clock::now() + timeOut) : Deadline(); }
};

/// The handler is called here and now.
OSStatus sendToSelf(const AppleEvent *event, AppleEvent *reply, AESendMode replyMode)
{
    Event &held = *eventOf(event);
    held.source = kAEDirectCall;
    held.replyRequested = replyMode != kAENoReply;
    held.ticket = 0;
    OwnedDesc answer;
    if (replyMode != kAENoReply)
        newReply(event, answer.out());
    const OSErr error = dispatch(event, answer.get());
    if (replyMode == kAEQueueReply && hasHandler(kCoreEventClass, kAEAnswer))
        Station::get().post(copyOf(*answer.get()));
    if (replyMode != kAENoReply)
        *reply = answer.release();
    return error == errAEEventNotHandled ? error : OSErr(noErr);
}

/// Calls a host's idle function as often as it asks for.
class Idling {
public:
    explicit Idling(AEIdleUPP function) : function_(function) {}
    /// True when the host has enough of waiting.
    bool isEnough()
    {
        if (!function_ || Clock::now() < next_)
            return false;
        EventRecord nothing{};
        SInt32 sleep = 1;
        RgnHandle region = nullptr;
        const bool enough = function_(&nothing, &sleep, &region);
        next_ = Clock::now() + ticks(std::max<SInt32>(1, sleep));
        return enough;
    }
    Deadline until(const Deadline &deadline) const
    {
        return function_ && (!deadline || next_ < *deadline) ? Deadline(next_) : deadline;
    }

private:
    AEIdleUPP function_;
    Clock::time_point next_ = Clock::time_point::min();
};

/// Serves the main thread's events while it waits, when it is to.
class Serving {
public:
    explicit Serving(const Order &order)
        : serves_((order.mode & kAEProcessNonReplyEvents) && gettid() == getpid())
    {
        if (order.filter)
            filter_ = [filter = order.filter](const Event &event) {
                EventRecord record{.what = kHighLevelEvent,
                                   .message = event.eventClass,
                                   .when = 0,
                                   .where = {},
                                   .modifiers = 0};
                const Item *sender = find(event.attributes, keyAddressAttr);
                return filter(&record, event.returnID, event.transactionID,
                              sender ? sender->desc.get() : nullptr) != 0;
            };
    }
    ~Serving()
    {
        if (serves_)
            Station::get().remind();  // of what the filter has left
    }
    int descriptor() const { return serves_ ? Station::get().descriptor() : -1; }
    void serve() { Station::get().serve(filter_); }

private:
    bool serves_;
    Station::Filter filter_;
};

OSErr awaitAnswer(Link &link, uint64_t serial, AEReturnID returnID, const Order &order, Deadline deadline,
                  OwnedDesc &answer)
{
    Idling idling(order.idle);
    Serving serving(order);
    for (;;) {
        if (idling.isEnough())
            return errAEWaitCanceled;
        pollfd waiting[] = {{link.socket(), POLLIN, 0},
                            {serving.descriptor(), POLLIN, 0}};  // poll passes over -1
        const int ready = poll(waiting, 2, pollTime(idling.until(deadline)));
        if (ready > 0 && waiting[0].revents) {
            bool working;
            const OSErr error = link.receive(serial, returnID, answer, working);
            if (error != errAEReplyNotArrived)
                return error;
            if (working)
                deadline = order.deadline();
        }
        if (deadline && Clock::now() >= *deadline)
            return errAETimeout;
        if (ready > 0 && waiting[1].revents)
            serving.serve();
    }
}

OSErr takeLinkToOneOf(const std::vector<int32_t> &pids, const Deadline &deadline, std::unique_ptr<Link> &link)
{
    OSErr error = procNotFound;
    for (const int32_t pid : pids)
        if ((error = takeLink(pid, deadline, link)) != procNotFound)
            return error;
    return error;
}

OSStatus sendToProcess(const AppleEvent *event, AppleEvent *reply, const Order &order,
                       const std::vector<int32_t> &pids)
{
    static std::atomic<uint64_t> lastSerial{0};
    const uint64_t serial = ++lastSerial;
    const Event &held = *eventOf(event);
    const Deadline deadline = order.deadline();
    std::unique_ptr<Link> link;
    OutgoingMessage message;
    OwnedDesc answer;
    OSErr error = compose(order.replyMode() == kAENoReply ? MessageKind::event : MessageKind::question,
                          serial, event, message);
    if (!error)
        error = takeLinkToOneOf(pids, deadline, link);
    if (!error)
        error = link->send(message, deadline);
    if (!error && order.replyMode() == kAEQueueReply)
        return Station::get().expect(std::move(link), serial, held, order.timeOut, order.isLimited);
    if (!error && order.replyMode() == kAEWaitReply)
        error = awaitAnswer(*link, serial, held.returnID, order, deadline, answer);
    if (error)
        return error;
    const int32_t pid = link->pid();
    keepLink(std::move(link));
    if (order.replyMode() == kAENoReply)
        return noErr;
    markAnswer(*eventOf(answer.get()), pid);
    *reply = answer.release();
    SInt32 number = 0;
    AEGetParamPtr(reply, keyErrorNumber, typeSInt32, nullptr, &number, sizeof number, nullptr);
    return number == errAEEventNotHandled ? number : SInt32(noErr);
}

/// It takes requests and gives no results.
OSStatus sendToSystem(const AppleEvent *event, AppleEvent *reply, AESendMode replyMode)
{
    const OSErr error = sendToSystemProcess(*eventOf(event));
    return error || replyMode == kAENoReply ? error : newReply(event, reply);
}

}  // namespace

OSStatus AESend(const AppleEvent *theAppleEvent, AppleEvent *reply, AESendMode sendMode, AESendPriority,
                SInt32 timeOutInTicks, AEIdleUPP idleProc, AEFilterUPP filterProc)
{
    AEInitializeDesc(reply);
    const SInt32 limit =
        timeOutInTicks == kAEDefaultTimeout ? kDefaultTicks : std::max<SInt32>(0, timeOutInTicks);
    const Order order = {sendMode, ticks(limit), timeOutInTicks != kNoTimeOut, idleProc, filterProc};
    if (!theAppleEvent || (!reply && order.replyMode() != kAENoReply))
        return paramErr;
    if (!eventOf(theAppleEvent))
        return errAENotAppleEvent;
    if (order.replyMode() == 0)
        return errAEUnknownSendMode;
    try {
        Address address;
        if (const OSErr error = resolve(*eventOf(theAppleEvent), address))
            return error;
        if (address.isSystem)
            return sendToSystem(theAppleEvent, reply, order.replyMode());
        return address.isSelf ? sendToSelf(theAppleEvent, reply, order.replyMode())
                              : sendToProcess(theAppleEvent, reply, order, address.pids);
    } catch (const std::bad_alloc &) {
        return memFullErr;
    }
}

OSStatus AESendMessage(const AppleEvent *event, AppleEvent *reply, AESendMode sendMode, long timeOutInTicks)
{
    return AESend(event, reply, sendMode, kAENormalPriority, SInt32(timeOutInTicks), nullptr, nullptr);
}

OSErr AEProcessAppleEvent(const EventRecord *theEventRecord)
{
    if (theEventRecord && theEventRecord->what != kHighLevelEvent)
        return paramErr;
    return withMemory([] { return Station::get().serveOne(); });
}

OSErr AEResetTimer(const AppleEvent *reply)
{
    const Event *event = eventOf(reply);
    return event ? Station::get().resetTimer(event->ticket) : OSErr(errAENotAppleEvent);
}

OSErr AESuspendTheCurrentEvent(const AppleEvent *theAppleEvent)
{
    const Event *event = eventOf(theAppleEvent);
    return event ? Station::get().suspend(event->ticket) : OSErr(errAENotAppleEvent);
}

OSErr AEResumeTheCurrentEvent(const AppleEvent *theAppleEvent, const AppleEvent *reply,
                              AEEventHandlerUPP dispatcher, SRefCon handlerRefcon)
{
    const Event *event = eventOf(theAppleEvent);
    if (!event || !Station::get().isSuspended(event->ticket))
        return errAENotAppleEvent;
    AppleEvent answer = reply ? *reply : AppleEvent{typeNull, nullptr};
    OSErr error = noErr;
    if (dispatcher == kAEUseStandardDispatch)
        error = dispatch(theAppleEvent, &answer);
    else if (dispatcher != kAENoDispatch)
        error = dispatchTo(dispatcher, handlerRefcon, theAppleEvent, &answer);
    Station::get().answer(event->ticket, &answer);
    return error;
}
