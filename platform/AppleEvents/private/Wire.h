/// \file
/// How events travel between processes: messages over a stream socket.
///
/// A message is a head of 24 bytes, all numbers little-endian, and an event in its flattened form (Flattening.h):
///
///     "AEms"  version (8 bits: 1)  kind (8 bits)  zero (16 bits)  serial (64 bits)  length of what follows (64 bits)
///
/// The serial is the sender's number for an exchange; what answers the event carries it back.
#pragma once
#include "platform/AppleEvents/private/Storage.h"

#include <Tarvik/support/Handle.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>

namespace tarvik::ae {

enum class MessageKind : uint8_t {
    event = 1,     ///< nobody waits for an answer
    question = 2,  ///< somebody does
    answer = 3,
    working = 4  ///< without an event: the answer takes longer than the time-out
};

constexpr size_t kLargestMessage = size_t(64) << 20;

using Clock = std::chrono::steady_clock;
using Deadline = std::optional<Clock::time_point>;  ///< nothing: none
/// What poll waits at most; -1 for ever.
int pollTime(const Deadline &deadline);

struct OutgoingMessage {
    std::unique_ptr<char[]> bytes;
    size_t size = 0;
};
/// memFullErr for an event that is too large, errAECorruptData for one that is nested too deep. Throws std::bad_alloc.
OSErr compose(MessageKind kind, uint64_t serial, const AEDesc *event, OutgoingMessage &message);

struct IncomingMessage {
    MessageKind kind;
    uint64_t serial;
    std::string_view body;  ///< until the inbox is filled again
};

/// Puts messages together from what a socket brings. The memory grows with what has come, not with what is announced.
class Inbox {
public:
    enum class Fill { some, nothing, end };
    /// Reads once, without waiting. Throws std::bad_alloc.
    Fill fill(int socket);

    enum class Next { message, incomplete, rubbish };
    Next next(IncomingMessage &message);

    bool empty() const { return begin_ == end_; }

private:
    void makeRoom();

    std::unique_ptr<char[]> bytes_;
    size_t room_ = 0, begin_ = 0, end_ = 0;
    size_t wanted_ = 0;  // the length of the message that comes, once its head is there
};

}  // namespace tarvik::ae
