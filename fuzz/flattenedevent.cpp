// Flattened descriptors and messages from another process: what is read can be written, and reads back as the same; coercing what
// was found does no harm; messages that come in pieces are those that came whole.
#include "platform/AppleEvents/private/Flattening.h"
#include "platform/AppleEvents/private/Wire.h"

#include <cstdlib>
#include <cstring>
#include <sys/socket.h>

using namespace tarvik;
using namespace tarvik::ae;

namespace {

constexpr DescType kTypes[] = {typeUTF8Text, typeUnicodeText, typeSInt32,  typeIEEE64BitFloatingPoint,
                               typeBoolean,  typeType,        typeFileURL, typeAERecord,
                               typeAEList};

void coerceAll(const AEDesc *list, int depth = 0)
{
    long count = 0;
    if (depth > 3 || AECountItems(list, &count) != noErr)
        return;
    for (long i = 1; i <= std::min(count, 8L); ++i) {
        AEKeyword key;
        OwnedDesc item;
        for (const DescType type : kTypes)
            AEGetNthDesc(list, i, type, &key, item.out());
        if (AEGetNthDesc(list, i, typeWildCard, &key, item.out()) == noErr)
            coerceAll(item.get(), depth + 1);
    }
}

void readForm(std::string_view form)
{
    OwnedDesc desc;
    if (unflatten(form, desc) != noErr)
        return;
    std::vector<char> once, twice;
    OwnedDesc again;
    if (!flatten(*desc.get(), once) || unflatten({once.data(), once.size()}, again) != noErr ||
        !flatten(*again.get(), twice) || once != twice)
        abort();
    coerceAll(desc.get());
}

void readMessages(const char *bytes, size_t size)
{
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
        abort();
    const FileDescriptor in(ends[0]), out(ends[1]);
    Inbox inbox;
    IncomingMessage message;
    size_t messages = 0;
    for (size_t sent = 0, piece = 1; sent < size; piece = piece * 3 % 1021 + 1) {
        const size_t length = std::min(piece, size - sent);
        if (send(out.get(), bytes + sent, length, MSG_DONTWAIT) != ssize_t(length) ||
            inbox.fill(in.get()) != Inbox::Fill::some)
            abort();
        sent += length;
        for (Inbox::Next next; (next = inbox.next(message)) != Inbox::Next::incomplete; ++messages) {
            if (next == Inbox::Next::rubbish)
                return;
            readForm(message.body);
        }
    }
    if (messages > size / 24)
        abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size)
{
    std::string form(reinterpret_cast<const char *>(bytes), size);
    if (form.starts_with("AEms"))
        return readMessages(form.data(), form.size()), 0;
    if (size >= 16) {  // a length that is right, or nothing behind it would be read
        const uint64_t length = size;
        std::memcpy(&form[8], &length, sizeof length);
    }
    readForm(form);
    return 0;
}
