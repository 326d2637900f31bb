#include "platform/AppleEvents/private/Wire.h"

#include "platform/AppleEvents/private/Flattening.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <sys/socket.h>

namespace tarvik::ae {

namespace {

constexpr uint32_t kMagic = 0x736D4541;  // "AEms"
constexpr uint8_t kVersion = 1;
constexpr size_t kHeadSize = 24, kLeastRoom = 16 << 10, kMostKept = 256 << 10;

struct Head {
    uint32_t magic;
    uint8_t version;
    MessageKind kind;
    uint16_t zero;
    uint64_t serial, length;
};
static_assert(sizeof(Head) == kHeadSize);

bool isKind(MessageKind kind) { return kind >= MessageKind::event && kind <= MessageKind::working; }

}  // namespace

int pollTime(const Deadline &deadline)
{
    if (!deadline)
        return -1;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*deadline - Clock::now()).count();
    return int(std::clamp<int64_t>(left, 0, INT_MAX));
}

OSErr compose(MessageKind kind, uint64_t serial, const AEDesc *event, OutgoingMessage &message)
{
    const size_t length = event ? flattenedSize(*event) : 0;
    if (event && length == 0)
        return errAECorruptData;
    if (length > kLargestMessage)
        return memFullErr;
    message.size = kHeadSize + length;
    message.bytes = std::make_unique_for_overwrite<char[]>(message.size);
    const Head head = {kMagic, kVersion, kind, 0, serial, length};
    std::memcpy(message.bytes.get(), &head, sizeof head);
    if (event)
        flattenInto(*event, length, message.bytes.get() + kHeadSize);
    return noErr;
}

// Room for the message that comes, but for no more than twice what is there already.
void Inbox::makeRoom()
{
    const size_t held = end_ - begin_;
    if (held == 0) {
        begin_ = end_ = 0;
        if (room_ > kMostKept)
            room_ = 0;
    }
    const size_t room = std::max(std::clamp(wanted_, kLeastRoom, std::max(kLeastRoom, 2 * held)), held + 1);
    if (begin_ + room <= room_)
        return;
    if (room <= room_) {
        std::memmove(bytes_.get(), bytes_.get() + begin_, held);
    } else {
        auto bytes = std::make_unique_for_overwrite<char[]>(room);
        if (held > 0)
            std::memcpy(bytes.get(), bytes_.get() + begin_, held);
        bytes_ = std::move(bytes);
        room_ = room;
    }
    begin_ = 0;
    end_ = held;
}

Inbox::Fill Inbox::fill(int socket)
{
    makeRoom();
    ssize_t got;
    do
        got = recv(socket, bytes_.get() + end_, room_ - end_, MSG_DONTWAIT);
    while (got < 0 && errno == EINTR);
    if (got < 0)
        return errno == EAGAIN || errno == EWOULDBLOCK ? Fill::nothing : Fill::end;
    end_ += size_t(got);
    return got == 0 ? Fill::end : Fill::some;
}

Inbox::Next Inbox::next(IncomingMessage &message)
{
    Head head;
    const size_t held = end_ - begin_;
    wanted_ = kHeadSize;
    if (held < kHeadSize)
        return Next::incomplete;
    std::memcpy(&head, bytes_.get() + begin_, sizeof head);
    const bool hasBody = head.kind != MessageKind::working;
    if (head.magic != kMagic || head.version != kVersion || !isKind(head.kind) ||
        head.length > kLargestMessage || hasBody != (head.length > 0))
        return Next::rubbish;
    wanted_ = kHeadSize + size_t(head.length);
    if (held < wanted_)
        return Next::incomplete;
    message = {head.kind, head.serial, {bytes_.get() + begin_ + kHeadSize, size_t(head.length)}};
    begin_ += wanted_;
    wanted_ = 0;
    return Next::message;
}

}  // namespace tarvik::ae
