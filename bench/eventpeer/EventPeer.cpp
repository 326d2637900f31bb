// The other process of the event benchmarks: gives back what it is sent, until standard input ends. Says where it is to be found.
//   tarvik-bench-eventpeer event|socket|dbus
#include "tests/support/AppleEvents.h"
#include "tests/support/PrivateBus.h"

#include <Carbon/AEInteraction.h>
#include <CoreFoundation/CFRunLoop.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

void say(const std::string &text)
{
    std::printf("%s\n", text.c_str());
    std::fflush(stdout);
}

OSErr echo(const AppleEvent *event, AppleEvent *reply, SRefCon)
{
    tarvik::OwnedDesc object;
    AEGetParamDesc(event, keyDirectObject, typeWildCard, object.out());
    return AEPutParamDesc(reply, keyDirectObject, object.get());
}

int serveEvents()
{
    AEInstallEventHandler("test"_code, "echo"_code, echo, 0, false);
    say("ready");
    for (;;)
        CFRunLoopRun();
}

int serveSocket()
{
    const std::string name = "tarvik-bench-" + std::to_string(getpid());
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path + 1, name.data(), name.size());  // an abstract name
    const int listening = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (bind(listening, reinterpret_cast<sockaddr *>(&address),
             socklen_t(offsetof(sockaddr_un, sun_path) + 1 + name.size())) != 0 ||
        listen(listening, 1) != 0)
        return 1;
    say(name);
    const int one = accept(listening, nullptr, nullptr);
    char bytes[65536];
    for (ssize_t length; (length = read(one, bytes, sizeof bytes)) > 0;)
        if (write(one, bytes, size_t(length)) != length)
            return 1;
    return 0;
}

void answer(GDBusConnection *, const char *, const char *, const char *, const char *, GVariant *arguments,
            GDBusMethodInvocation *call, void *)
{
    g_dbus_method_invocation_return_value(call, arguments);
}

/// A bus of its own, and a service on it.
int serveBus()
{
    std::string address;
    GDBusConnection *bus = startPrivateBus(address);
    static const char *const kInterface =
        "<node><interface name='org.example.Echo'><method name='Echo'><arg type='ay' direction='in'/><arg "
        "type='ay' direction='out'/></method></interface></node>";
    if (!bus || !exportObject(bus, "/", kInterface, answer))
        return 1;
    say(address + " " + g_dbus_connection_get_unique_name(bus));
    g_main_loop_run(g_main_loop_new(nullptr, false));
    return 0;
}

}  // namespace

int main(int, char **argv)
{
    const std::string mode = argv[1] ? argv[1] : "";
    return mode == "event"    ? serveEvents()
           : mode == "socket" ? serveSocket()
           : mode == "dbus"   ? serveBus()
                              : 2;
}
