#include "platform/AppleEvents/private/Links.h"

#include "platform/AppleEvents/private/Flattening.h"
#include "platform/AppleEvents/private/StationFolder.h"

#include <algorithm>
#include <cerrno>
#include <mutex>
#include <poll.h>
#include <pthread.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace tarvik::ae {

namespace {

constexpr size_t kMostIdle = 32;
constexpr auto kConnectPause = std::chrono::milliseconds(2);

std::mutex gMutex;
std::vector<std::unique_ptr<Link>> &idleLinks()
{
    static auto *links = [] {
        // Links are the process's that made them: a child that used one would take its parent's answers.
        pthread_atfork([] { gMutex.lock(); }, [] { gMutex.unlock(); },
                       [] {
                           idleLinks().clear();
                           gMutex.unlock();
                       });
        return new std::vector<std::unique_ptr<Link>>;  // sends may come from destructors of statics
    }();
    return *links;
}

bool isAnswer(const OwnedDesc &desc, AEReturnID returnID)
{
    const Event *event = eventOf(desc.get());
    return event && event->eventClass == kCoreEventClass && event->eventID == kAEAnswer &&
           event->returnID == returnID;
}

bool isPeer(int socket, int32_t pid)
{
    ucred peer{};
    socklen_t size = sizeof peer;
    return getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == geteuid() &&
           peer.pid == pid;
}

OSErr connect(int32_t pid, const Deadline &deadline, FileDescriptor &socket)
{
    const StationFolder folder;
    if (!folder)
        return procNotFound;
    socket.reset(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    const sockaddr_un address = folder.address(pid);
    while (::connect(socket.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
        if (errno == EAGAIN) {  // it has not accepted those who came before
            if (deadline && Clock::now() >= *deadline)
                return errAETimeout;
            std::this_thread::sleep_for(kConnectPause);
        } else if (errno != EINTR) {
            return procNotFound;
        }
    }
    return isPeer(socket.get(), pid) ? OSErr(noErr) : OSErr(procNotFound);
}

}  // namespace

bool Link::isIdle() const
{
    char byte;
    return inbox_.empty() && recv(socket_.get(), &byte, 1, MSG_PEEK | MSG_DONTWAIT) < 0 &&
           (errno == EAGAIN || errno == EWOULDBLOCK);
}

OSErr Link::send(const OutgoingMessage &message, const Deadline &deadline)
{
    size_t sent = 0;
    while (sent < message.size) {
        const ssize_t done = ::send(socket_.get(), message.bytes.get() + sent, message.size - sent,
                                    MSG_NOSIGNAL | MSG_DONTWAIT);
        if (done > 0) {
            sent += size_t(done);
        } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
            pollfd room = {socket_.get(), POLLOUT, 0};
            if (poll(&room, 1, pollTime(deadline)) == 0)
                return errAETimeout;
        } else if (errno != EINTR) {
            return connectionInvalid;
        }
    }
    return noErr;
}

OSErr Link::receive(uint64_t serial, AEReturnID returnID, OwnedDesc &answer, bool &working)
{
    working = false;
    const Inbox::Fill fill = inbox_.fill(socket_.get());
    IncomingMessage message;
    for (Inbox::Next next; (next = inbox_.next(message)) != Inbox::Next::incomplete;) {
        if (next == Inbox::Next::rubbish || message.kind < MessageKind::answer)
            return errAECorruptData;
        if (message.serial != serial)
            continue;  // of an exchange that is over
        working = message.kind == MessageKind::working;
        if (!working)
            return unflatten(message.body, answer) == noErr && isAnswer(answer, returnID)
                       ? OSErr(noErr)
                       : OSErr(errAECorruptData);
    }
    return fill == Inbox::Fill::end ? OSErr(connectionInvalid) : OSErr(errAEReplyNotArrived);
}

OSErr takeLink(int32_t pid, const Deadline &deadline, std::unique_ptr<Link> &link)
{
    {
        const std::lock_guard lock(gMutex);
        auto &links = idleLinks();
        while (!link) {
            const auto known = std::find_if(links.rbegin(), links.rend(),
                                            [&](const auto &one) { return one->pid() == pid; });
            if (known == links.rend())
                break;
            if ((*known)->isIdle())
                link = std::move(*known);
            links.erase(std::next(known).base());
        }
    }
    if (link)
        return noErr;
    FileDescriptor socket;
    const OSErr error = connect(pid, deadline, socket);
    if (!error)
        link = std::make_unique<Link>(pid, std::move(socket));
    return error;
}

void keepLink(std::unique_ptr<Link> link)
{
    const std::lock_guard lock(gMutex);
    auto &links = idleLinks();
    if (links.size() == kMostIdle)
        links.erase(links.begin());
    links.push_back(std::move(link));
}

}  // namespace tarvik::ae
