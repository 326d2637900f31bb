// An event of 1 KiB and its reply between two processes, beside a bare socket and D-Bus; the flattened form, beside memcpy.
#include "../tests/support/AppleEvents.h"
#include "../tests/support/LocalServer.h"

#include <Carbon/AEMach.h>
#include <benchmark/benchmark.h>
#include <gio/gio.h>

#include <cstring>
#include <memory>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using tarvik::OwnedDesc;

namespace {

constexpr size_t kPayload = 1024;

/// The other process, for as long as this one lives.
const Companion &peer(const char *mode, std::string &said)
{
    auto *companion = new Companion({TARVIK_BENCH_EVENTPEER, mode});
    said = companion->firstLine();
    return *companion;
}

void events(benchmark::State &state)
{
    static std::string said;
    static const Companion &other = peer("event", said);
    const std::string payload(kPayload, 'x');
    const OwnedDesc target = descOfNumber(typeKernelProcessID, SInt32(other.process()));
    for (auto _ : state) {
        OwnedDesc event, reply;
        AECreateAppleEvent("test"_code, "echo"_code, target.get(), kAutoGenerateReturnID, kAnyTransactionID,
                           event.out());
        AEPutParamPtr(event.get(), keyDirectObject, typeText, payload.data(), kPayload);
        Size size = 0;
        if (AESendMessage(event.get(), reply.out(), kAEWaitReply, kAEDefaultTimeout) != noErr ||
            AESizeOfParam(reply.get(), keyDirectObject, nullptr, &size) != noErr || size != kPayload)
            return state.SkipWithError("no answer");
    }
}
BENCHMARK(events)->Name("event/1KiB and its reply:tarvik")->UseRealTime();

void bareSocket(benchmark::State &state)
{
    static std::string said;
    static const Companion &other = peer("socket", said);
    (void)other;
    static const int socket = [] {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path + 1, said.data(),
                    std::min(said.size(), sizeof address.sun_path - 1));  // an abstract name
        const int made = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        return connect(made, reinterpret_cast<sockaddr *>(&address),
                       socklen_t(offsetof(sockaddr_un, sun_path) + 1 + said.size())) == 0
                   ? made
                   : -1;
    }();
    char payload[kPayload] = {};
    for (auto _ : state)
        if (write(socket, payload, sizeof payload) != kPayload ||
            recv(socket, payload, sizeof payload, MSG_WAITALL) != kPayload)
            return state.SkipWithError("no answer");
}
BENCHMARK(bareSocket)->Name("event/1KiB and its reply:bare socket")->UseRealTime();

void dbus(benchmark::State &state)
{
    static std::string said;  // "ADDRESS NAME"
    static const Companion &other = peer("dbus", said);
    (void)other;
    static GDBusConnection *bus = g_dbus_connection_new_for_address_sync(
        said.substr(0, said.find(' ')).c_str(),
        GDBusConnectionFlags(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                             G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, nullptr, nullptr);
    if (!bus)
        return state.SkipWithError("no bus");
    const std::string payload(kPayload, 'x'), name = said.substr(said.find(' ') + 1);
    for (auto _ : state) {
        GVariant *argument =
            g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, payload.data(), payload.size(), 1);
        GVariant *answer = g_dbus_connection_call_sync(bus, name.c_str(), "/", "org.example.Echo", "Echo",
                                                       g_variant_new("(@ay)", argument), nullptr,
                                                       G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr);
        if (!answer)
            return state.SkipWithError("no answer");
        g_variant_unref(answer);
    }
}
BENCHMARK(dbus)->Name("event/1KiB and its reply:D-Bus")->UseRealTime();

// --- the flattened form

constexpr size_t kMegabyte = 1 << 20;

OwnedDesc oneValue()
{
    OwnedDesc event;
    const std::string bytes(kMegabyte, 'x');
    AECreateAppleEvent(1, 2, nullptr, 3, 0, event.out());
    AEPutParamPtr(event.get(), keyDirectObject, typeText, bytes.data(), Size(bytes.size()));
    return event;
}
/// As many items of 48 bytes as give a form of about a megabyte.
OwnedDesc manyValues()
{
    OwnedDesc list;
    const std::string bytes(48, 'x');
    AECreateList(nullptr, 0, false, list.out());
    for (size_t i = 0; i < kMegabyte / 64; ++i)
        AEPutPtr(list.get(), 0, typeText, bytes.data(), Size(bytes.size()));
    return list;
}

void flatten(benchmark::State &state, OwnedDesc (*make)())
{
    const OwnedDesc desc = make();
    std::vector<char> form(size_t(AESizeOfFlattenedDesc(desc.get())));
    for (auto _ : state) {
        AEFlattenDesc(desc.get(), form.data(), Size(form.size()), nullptr);
        benchmark::DoNotOptimize(form.data());
    }
    state.SetBytesProcessed(int64_t(form.size()) * state.iterations());
}
void unflatten(benchmark::State &state, OwnedDesc (*make)())
{
    const OwnedDesc desc = make();
    std::vector<char> form(size_t(AESizeOfFlattenedDesc(desc.get())));
    AEFlattenDesc(desc.get(), form.data(), Size(form.size()), nullptr);
    for (auto _ : state) {
        OwnedDesc made;
        if (AEUnflattenDescFromBytes(form.data(), form.size(), made.out()) != noErr)
            return state.SkipWithError("no form");
    }
    state.SetBytesProcessed(int64_t(form.size()) * state.iterations());
}
void copy(benchmark::State &state, bool allocates)
{
    std::vector<char> from(kMegabyte, 'x'), to(kMegabyte);
    for (auto _ : state) {
        std::unique_ptr<char[]> made(allocates ? new char[kMegabyte] : nullptr);
        std::memcpy(made ? made.get() : to.data(), from.data(), kMegabyte);
        benchmark::DoNotOptimize(made ? made.get() : to.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(kMegabyte) * state.iterations());
}
BENCHMARK_CAPTURE(flatten, a, oneValue)->Name("event/flatten 1MiB:tarvik");
BENCHMARK_CAPTURE(copy, b, false)->Name("event/flatten 1MiB:memcpy");
BENCHMARK_CAPTURE(unflatten, c, oneValue)->Name("event/unflatten 1MiB:tarvik");
BENCHMARK_CAPTURE(copy, d, true)->Name("event/unflatten 1MiB:new and memcpy");
BENCHMARK_CAPTURE(flatten, e, manyValues)->Name("event/flatten 1MiB of 16384 items:tarvik");
BENCHMARK_CAPTURE(copy, f, false)->Name("event/flatten 1MiB of 16384 items:memcpy");
BENCHMARK_CAPTURE(unflatten, g, manyValues)->Name("event/unflatten 1MiB of 16384 items:tarvik");
BENCHMARK_CAPTURE(copy, h, true)->Name("event/unflatten 1MiB of 16384 items:new and memcpy");

}  // namespace
