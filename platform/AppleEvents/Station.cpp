#include "platform/AppleEvents/private/Station.h"

#include "platform/AppleEvents/private/Dispatch.h"
#include "platform/AppleEvents/private/Flattening.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <pthread.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/timerfd.h>
#include <unistd.h>

namespace tarvik::ae {

namespace {

// Names of what is watched; connections and awaited answers have the numbers behind these.
constexpr uint64_t kWake = 1, kTimer = 2, kListening = 3;
constexpr size_t kMostConnections = 512;
constexpr size_t kMostUnsent = 2 * kLargestMessage;

template <class Number>
OwnedDesc numberDesc(DescType type, Number number)
{
    return newValue(type, {reinterpret_cast<const char *>(&number), sizeof number});
}

/// What this process knows of an event that came from another one.
void mark(Event &event, const Sender &sender)
{
    event.source = kAELocalProcess;
    event.sender = sender;
    put(event.attributes, keyAddressAttr, numberDesc(typeKernelProcessID, sender.pid));
}

OwnedDesc answerWithError(AEReturnID returnID, AETransactionID transactionID, OSErr error)
{
    OwnedDesc made = newEvent();
    Event &event = *eventOf(made.get());
    event.eventClass = kCoreEventClass;
    event.eventID = kAEAnswer;
    event.returnID = returnID;
    event.transactionID = transactionID;
    put(event.items, keyErrorNumber, numberDesc(typeSInt32, SInt32(error)));
    return made;
}

void removeOwnSocket()
{
    if (const StationFolder folder; folder)
        folder.removeOwn();
}

/// A new descriptor under the number of an old one.
void replace(const FileDescriptor &old, int made)
{
    dup3(made, old.get(), O_CLOEXEC);
    ::close(made);
}

}  // namespace

void markAnswer(Event &answer, int32_t pid) { mark(answer, {pid, int32_t(geteuid()), int32_t(getegid())}); }

Station &Station::get()
{
    static auto *station = new Station;  // the run loop may ask for it until the very end
    return *station;
}

// --- what is watched

bool Station::watch(int descriptor, uint64_t name, uint32_t events)
{
    epoll_event event{};
    event.events = events;
    event.data.u64 = name;
    return epoll_ctl(epoll_.get(), EPOLL_CTL_ADD, descriptor, &event) == 0 ||
           (errno == EEXIST && epoll_ctl(epoll_.get(), EPOLL_CTL_MOD, descriptor, &event) == 0);
}

OSErr Station::start()
{
    if (epoll_)
        return noErr;
    FileDescriptor epoll(epoll_create1(EPOLL_CLOEXEC));
    wake_.reset(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    timer_.reset(timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK));
    if (!epoll || !wake_ || !timer_)
        return memFullErr;
    epoll_ = std::move(epoll);
    watch(wake_.get(), kWake, EPOLLIN);
    watch(timer_.get(), kTimer, EPOLLIN);
    followForks();
    watchInMainRunLoop(epoll_.get());
    return noErr;
}

OSErr Station::open()
{
    const std::lock_guard lock(mutex_);
    if (listeningPid_ == getpid())
        return noErr;
    if (const OSErr error = start())
        return error;
    const StationFolder folder;
    listening_ = folder ? folder.openOwn() : FileDescriptor();
    if (!listening_ || !watch(listening_.get(), kListening, EPOLLIN))
        return connectionInvalid;
    static bool isRemovedAtExit = std::atexit([] {
                                      if (Station::get().listeningPid_ == getpid())
                                          removeOwnSocket();
                                  }) == 0;
    (void)isRemovedAtExit;
    listeningPid_ = getpid();
    return noErr;
}

void Station::collect()
{
    epoll_event events[64];
    const int count = epoll_ ? epoll_wait(epoll_.get(), events, std::size(events), 0) : 0;
    for (int i = 0; i < count; ++i) {
        const uint64_t name = events[i].data.u64;
        uint64_t ignored;
        switch (name) {
        case kWake: (void)!read(wake_.get(), &ignored, sizeof ignored); break;
        case kTimer: expire(); break;
        case kListening: accept(); break;
        default:
            if (awaited_.count(name))
                receiveAnswer(name);
            else
                receive(name, events[i].events);
        }
    }
}

// --- connections of other processes

void Station::accept()
{
    for (;;) {
        if (connections_.size() == kMostConnections) {  // the others wait in the socket's queue
            isCrowded_ = epoll_ctl(epoll_.get(), EPOLL_CTL_DEL, listening_.get(), nullptr) == 0;
            return;
        }
        FileDescriptor socket(accept4(listening_.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
        if (!socket)
            return;
        ucred peer{};
        socklen_t size = sizeof peer;
        if (getsockopt(socket.get(), SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0 || peer.uid != geteuid())
            continue;
        const uint64_t name = ++lastName_;
        if (watch(socket.get(), name, EPOLLIN))
            connections_[name] = {
                std::move(socket), {}, {peer.pid, int32_t(peer.uid), int32_t(peer.gid)}, {}};
    }
}

void Station::close(uint64_t name)
{
    connections_.erase(name);
    if (isCrowded_)
        isCrowded_ = !watch(listening_.get(), kListening, EPOLLIN);
}

void Station::receive(uint64_t name, uint32_t events)
{
    const auto known = connections_.find(name);
    if (known == connections_.end())
        return;
    bool isGood = true;
    try {
        if (events & EPOLLOUT)
            isGood = flush(name, known->second);
        if (isGood && (events & (EPOLLIN | EPOLLHUP | EPOLLERR)))
            isGood = take(name, known->second);
    } catch (const std::bad_alloc &) {
        isGood = false;
    }
    if (!isGood)
        close(name);
}

/// False when the connection is at its end, or brings rubbish.
bool Station::take(uint64_t name, Connection &connection)
{
    const Inbox::Fill fill = connection.inbox.fill(connection.socket.get());
    IncomingMessage message;
    for (Inbox::Next next; (next = connection.inbox.next(message)) != Inbox::Next::incomplete;) {
        OwnedDesc desc;
        if (next == Inbox::Next::rubbish || message.kind > MessageKind::question ||
            unflatten(message.body, desc) != noErr)
            return false;
        Event *event = eventOf(desc.get());
        if (!event)
            return false;
        mark(*event, connection.sender);
        event->replyRequested = message.kind == MessageKind::question;
        event->ticket = ++lastTicket_;
        routes_[event->ticket] = {name, message.serial, event->replyRequested, false};
        waiting_.push_back(std::move(desc));
    }
    return fill != Inbox::Fill::end;
}

bool Station::transmit(uint64_t name, Connection &connection, const OutgoingMessage &message)
{
    if (connection.unsent.size() + message.size > kMostUnsent)
        return false;
    size_t sent = 0;
    if (connection.unsent.empty()) {
        const ssize_t done =
            send(connection.socket.get(), message.bytes.get(), message.size, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (done < 0 && errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR)
            return false;
        sent = done > 0 ? size_t(done) : 0;
    }
    if (sent == message.size)
        return true;
    connection.unsent.append(message.bytes.get() + sent, message.size - sent);
    return watch(connection.socket.get(), name, EPOLLIN | EPOLLOUT);
}

bool Station::flush(uint64_t name, Connection &connection)
{
    const ssize_t done = send(connection.socket.get(), connection.unsent.data(), connection.unsent.size(),
                              MSG_NOSIGNAL | MSG_DONTWAIT);
    if (done < 0)
        return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR;
    connection.unsent.erase(0, size_t(done));
    return !connection.unsent.empty() || watch(connection.socket.get(), name, EPOLLIN);
}

// --- answers that are awaited

OSErr Station::expect(std::unique_ptr<Link> link, uint64_t serial, const Event &asked,
                      std::chrono::milliseconds timeOut, bool isLimited)
{
    const std::lock_guard lock(mutex_);
    if (const OSErr error = start())
        return error;
    const uint64_t name = ++lastName_;
    const int socket = link->socket();
    awaited_[name] = {std::move(link), serial,
                      asked.returnID,  asked.transactionID,
                      timeOut,         isLimited ? Deadline(Clock::now() + timeOut) : Deadline()};
    watch(socket, name, EPOLLIN);
    armTimer();
    return noErr;
}

void Station::receiveAnswer(uint64_t name)
{
    const auto awaited = awaited_.find(name);
    Awaited &one = awaited->second;
    OwnedDesc answer;
    bool working = false;
    const OSErr error =
        withMemory([&] { return one.link->receive(one.serial, one.returnID, answer, working); });
    if (error != errAEReplyNotArrived)
        return settle(awaited, error, std::move(answer));
    if (working && one.deadline) {
        one.deadline = Clock::now() + one.timeOut;
        armTimer();
    }
}

void Station::settle(std::map<uint64_t, Awaited>::iterator awaited, OSErr error, OwnedDesc answer)
{
    Awaited one = std::move(awaited->second);
    awaited_.erase(awaited);
    withMemory([&]() -> OSErr {
        if (error)
            answer = answerWithError(one.returnID, one.transactionID, error);
        markAnswer(*eventOf(answer.get()), one.link->pid());
        waiting_.push_back(std::move(answer));
        return noErr;
    });
    epoll_ctl(epoll_.get(), EPOLL_CTL_DEL, one.link->socket(), nullptr);
    if (!error)
        keepLink(std::move(one.link));
    armTimer();
}

void Station::armTimer()
{
    Deadline first;
    for (const auto &[name, one] : awaited_)
        if (one.deadline && (!first || *one.deadline < *first))
            first = one.deadline;
    itimerspec when{};
    if (first) {
        const auto left = std::max<int64_t>(1, std::chrono::nanoseconds(*first - Clock::now()).count());
        when.it_value = {left / 1000000000, left % 1000000000};
    }
    timerfd_settime(timer_.get(), 0, &when, nullptr);
}

void Station::expire()
{
    uint64_t ignored;
    (void)!read(timer_.get(), &ignored, sizeof ignored);
    const auto now = Clock::now();
    for (auto next = awaited_.begin(); next != awaited_.end();) {
        const auto one = next++;
        if (one->second.deadline && *one->second.deadline <= now)
            settle(one, errAETimeout, {});
    }
    armTimer();
}

// --- dispatching

OSErr Station::post(OwnedDesc event)
{
    const std::lock_guard lock(mutex_);
    if (const OSErr error = start())
        return error;
    waiting_.push_back(std::move(event));
    const uint64_t one = 1;
    (void)!write(wake_.get(), &one, sizeof one);
    return noErr;
}

void Station::remind()
{
    const std::lock_guard lock(mutex_);
    const uint64_t one = 1;
    if (!waiting_.empty())
        (void)!write(wake_.get(), &one, sizeof one);
}

void Station::serve(const Filter &filter)
{
    std::unique_lock lock(mutex_);
    collect();
    // What comes meanwhile has its turn later; a handler that runs the run loop may have taken some of these.
    for (size_t count = waiting_.size(); count > 0 && !waiting_.empty(); --count) {
        OwnedDesc event = std::move(waiting_.front());
        waiting_.pop_front();
        if (filter && !filter(*eventOf(event.get()))) {
            waiting_.push_back(std::move(event));
            continue;
        }
        lock.unlock();
        dispatchEvent(std::move(event));
        lock.lock();
    }
}

OSErr Station::serveOne()
{
    OwnedDesc event;
    {
        const std::lock_guard lock(mutex_);
        if (waiting_.empty())
            collect();
        if (waiting_.empty())
            return noOutstandingHLE;
        event = std::move(waiting_.front());
        waiting_.pop_front();
    }
    const OSErr error = dispatchEvent(std::move(event));
    remind();
    return error;
}

OSErr Station::dispatchEvent(OwnedDesc event)
{
    const Event &held = *eventOf(event.get());
    OwnedDesc reply;
    if (held.replyRequested)
        withMemory([&] { return newReply(event.get(), reply.out()); });
    const OSErr error = dispatch(event.get(), reply.get());
    if (held.ticket != 0 && !isSuspended(held.ticket))
        answer(held.ticket, reply.get());
    return error;
}

// --- exchanges

OSErr Station::tell(uint64_t ticket, MessageKind kind, const AppleEvent *event, bool isLast)
{
    std::unique_lock lock(mutex_);
    const auto known = routes_.find(ticket);
    if (known == routes_.end())
        return errAENotAppleEvent;
    const Route route = known->second;
    if (isLast)
        routes_.erase(known);
    const Event *held = eventOf(event);
    if (!route.isWanted || (isLast && !held))
        return noErr;
    lock.unlock();
    OutgoingMessage message;
    OSErr error = withMemory([&] { return compose(kind, route.serial, event, message); });
    if (error && held)  // a result that can't be sent is a failure of its own
        error = withMemory([&] {
            return compose(kind, route.serial,
                           answerWithError(held->returnID, held->transactionID, error).get(), message);
        });
    if (error)
        return error;
    lock.lock();
    const auto connection = connections_.find(route.connection);
    if (connection == connections_.end())
        return connectionInvalid;
    error = withMemory([&]() -> OSErr {
        return transmit(route.connection, connection->second, message) ? OSErr(noErr)
                                                                       : OSErr(connectionInvalid);
    });
    if (error)
        close(route.connection);
    return error;
}

OSErr Station::resetTimer(uint64_t ticket) { return tell(ticket, MessageKind::working, nullptr, false); }
OSErr Station::answer(uint64_t ticket, const AppleEvent *reply)
{
    return tell(ticket, MessageKind::answer, reply, true);
}

OSErr Station::suspend(uint64_t ticket)
{
    const std::lock_guard lock(mutex_);
    const auto known = routes_.find(ticket);
    if (known == routes_.end())
        return errAENotAppleEvent;
    known->second.isSuspended = true;
    return noErr;
}

bool Station::isSuspended(uint64_t ticket)
{
    const std::lock_guard lock(mutex_);
    const auto known = routes_.find(ticket);
    return known != routes_.end() && known->second.isSuspended;
}

// --- fork

// The child must not answer for its parent, nor read from its parent's connections.
void Station::forget()
{
    connections_.clear();
    awaited_.clear();
    routes_.clear();
    waiting_.clear();
    listening_.reset();
    listeningPid_ = 0;
    isCrowded_ = false;
    replace(epoll_, epoll_create1(EPOLL_CLOEXEC));
    replace(wake_, eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    replace(timer_, timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK));
    watch(wake_.get(), kWake, EPOLLIN);
    watch(timer_.get(), kTimer, EPOLLIN);
}

void Station::followForks()
{
    pthread_atfork([] { get().mutex_.lock(); }, [] { get().mutex_.unlock(); },
                   [] {
                       get().forget();
                       get().mutex_.unlock();
                   });
}

}  // namespace tarvik::ae
