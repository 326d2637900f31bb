/// \file
/// The receiver's side: this process's socket, the connections to it, and the events that wait to be dispatched.
///
/// All sockets are watched by one epoll descriptor, and the main thread's run loop watches that: so they may come and go on any
/// thread. Events are read when the descriptor is readable, and dispatched one after the other.
#pragma once
#include "platform/AppleEvents/private/Links.h"
#include "platform/AppleEvents/private/StationFolder.h"

#include <deque>
#include <functional>
#include <map>
#include <mutex>

namespace tarvik::ae {

class Station {
public:
    static Station &get();

    /// From now on this process receives events.
    OSErr open();

    /// Waits for the answer to an event that was sent over the link; it comes as an event, whatever happens.
    OSErr expect(std::unique_ptr<Link> link, uint64_t serial, const Event &asked,
                 std::chrono::milliseconds timeOut, bool isLimited);
    /// An event from this process, to be dispatched by the run loop.
    OSErr post(OwnedDesc event);

    /// What poll can wait for; -1 while nothing can come.
    int descriptor() const { return epoll_.get(); }
    using Filter = std::function<bool(const Event &)>;
    /// Reads what has come and dispatches it, but for what the filter leaves.
    void serve(const Filter &filter = {});
    /// Dispatches one event; noOutstandingHLE when there is none.
    OSErr serveOne();
    /// Makes the run loop serve when events were left.
    void remind();

    // Of the exchange that a ticket names; errAENotAppleEvent when it is over, or isn't one.
    OSErr resetTimer(uint64_t ticket);
    OSErr suspend(uint64_t ticket);
    bool isSuspended(uint64_t ticket);
    OSErr answer(uint64_t ticket, const AppleEvent *reply);

private:
    Station() = default;

    /// A process that sends events here.
    struct Connection {
        FileDescriptor socket;
        Inbox inbox;
        Sender sender;
        std::string unsent;  // of answers that the other end hasn't taken yet
    };
    /// An answer that is awaited.
    struct Awaited {
        std::unique_ptr<Link> link;
        uint64_t serial;
        AEReturnID returnID;
        AETransactionID transactionID;
        std::chrono::milliseconds timeOut;
        Deadline deadline;
    };
    /// Where the answer to an event goes.
    struct Route {
        uint64_t connection, serial;
        bool isWanted, isSuspended;
    };

    OSErr start();
    bool watch(int descriptor, uint64_t name, uint32_t events);
    void collect();
    void accept();
    void receive(uint64_t name, uint32_t events);
    bool take(uint64_t name, Connection &connection);
    bool transmit(uint64_t name, Connection &connection, const OutgoingMessage &message);
    bool flush(uint64_t name, Connection &connection);
    void close(uint64_t name);
    void receiveAnswer(uint64_t name);
    void settle(std::map<uint64_t, Awaited>::iterator awaited, OSErr error, OwnedDesc answer);
    void armTimer();
    void expire();
    OSErr dispatchEvent(OwnedDesc event);
    OSErr tell(uint64_t ticket, MessageKind kind, const AppleEvent *event, bool isLast);
    void followForks();
    void forget();

    std::mutex mutex_;
    FileDescriptor epoll_, listening_, wake_, timer_;
    int32_t listeningPid_ = 0;
    uint64_t lastName_ = 16, lastTicket_ = 0;
    std::map<uint64_t, Connection> connections_;
    std::map<uint64_t, Awaited> awaited_;
    std::map<uint64_t, Route> routes_;
    std::deque<OwnedDesc> waiting_;
    bool isCrowded_ = false;
};

/// Says in an answer which process it came from.
void markAnswer(Event &answer, int32_t pid);

/// Has the main thread's run loop call Station::serve when the descriptor is readable. Any thread.
void watchInMainRunLoop(int descriptor);

}  // namespace tarvik::ae
