/// \file
/// The sender's side: connections to other processes' sockets, kept open between events.
#pragma once
#include "platform/AppleEvents/private/Wire.h"

#include <Carbon/AEInteraction.h>
#include <Tarvik/support/Handle.h>

namespace tarvik::ae {

/// A connection that one exchange at a time goes over.
class Link {
public:
    Link(int32_t pid, FileDescriptor socket) : pid_(pid), socket_(std::move(socket)) {}

    int32_t pid() const { return pid_; }
    int socket() const { return socket_.get(); }
    /// Whether the other end is there and has nothing to say: fit for the next exchange.
    bool isIdle() const;

    /// noErr, errAETimeout, connectionInvalid. A message that is sent in part spoils the link.
    OSErr send(const OutgoingMessage &message, const Deadline &deadline);

    /// Takes what has come: noErr with the answer to the event of the serial and the return identifier; errAEReplyNotArrived
    /// while there is none; connectionInvalid, errAECorruptData. `working` is set when the other end asks for more time.
    /// Throws std::bad_alloc.
    OSErr receive(uint64_t serial, AEReturnID returnID, OwnedDesc &answer, bool &working);

private:
    int32_t pid_;
    FileDescriptor socket_;
    Inbox inbox_;
};

/// An idle link to a process, or a new one. procNotFound: it does not receive; errAETimeout: it accepts nobody.
OSErr takeLink(int32_t pid, const Deadline &deadline, std::unique_ptr<Link> &link);
/// Keeps a link for the next event.
void keepLink(std::unique_ptr<Link> link);

}  // namespace tarvik::ae
