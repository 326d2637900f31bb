#include "platform/AppleEvents/private/SystemProcess.h"

#include <Carbon/AERegistry.h>
#include <Tarvik/support/Owned.h>
#include <gio/gio.h>

#include <cstdlib>
#include <string>
#include <string_view>
#include <unistd.h>

namespace tarvik::ae {

namespace {

using Connection = Owned<GDBusConnection, g_object_unref>;
using Value = Owned<GVariant, g_variant_unref>;

constexpr int kAnswerTime = 5000;  // milliseconds

struct Service {
    GBusType bus;
    const char *name, *path, *interface;
};
constexpr Service kLogin = {G_BUS_TYPE_SYSTEM, "org.freedesktop.login1", "/org/freedesktop/login1",
                            "org.freedesktop.login1.Manager"};
constexpr Service kSession = {G_BUS_TYPE_SESSION, "org.gnome.SessionManager", "/org/gnome/SessionManager",
                              "org.gnome.SessionManager"};

/// What serves an event. `can` is asked first; where there is none, somebody has to own the name.
struct Request {
    AEEventID event;
    const Service &service;
    const char *can, *method;
    GVariant *(*arguments)();
};
GVariant *interactive() { return g_variant_new("(b)", TRUE); }
GVariant *withQuestion() { return g_variant_new("(u)", 0u); }
GVariant *withoutQuestion() { return g_variant_new("(u)", 1u); }
constexpr Request kRequests[] = {{kAERestart, kLogin, "CanReboot", "Reboot", interactive},
                                 {kAEShutDown, kLogin, "CanPowerOff", "PowerOff", interactive},
                                 {kAESleep, kLogin, "CanSuspend", "Suspend", interactive},
                                 {kAELogOut, kSession, nullptr, "Logout", withQuestion},
                                 {kAEReallyLogOut, kSession, nullptr, "Logout", withoutQuestion}};

/// GIO would start a session bus where there is none.
bool hasSessionBus()
{
    const char *runtime = std::getenv("XDG_RUNTIME_DIR");
    return std::getenv("DBUS_SESSION_BUS_ADDRESS") ||
           (runtime && access((std::string(runtime) + "/bus").c_str(), R_OK | W_OK) == 0);
}

/// A connection of its own: the shared one would end the host with the bus.
Connection connect(GBusType bus)
{
    if (bus == G_BUS_TYPE_SESSION && !hasSessionBus())
        return nullptr;
    const Owned<char, g_free> address(g_dbus_address_get_for_bus_sync(bus, nullptr, nullptr));
    const auto flags = GDBusConnectionFlags(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                            G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    return Connection(
        address ? g_dbus_connection_new_for_address_sync(address.get(), flags, nullptr, nullptr, nullptr)
                : nullptr);
}

Value call(GDBusConnection *connection, const Service &service, const char *method, GVariant *arguments,
           const char *answer)
{
    return Value(g_dbus_connection_call_sync(connection, service.name, service.path, service.interface,
                                             method, arguments, G_VARIANT_TYPE(answer),
                                             G_DBUS_CALL_FLAGS_NONE, kAnswerTime, nullptr, nullptr));
}

OSErr canBeServed(GDBusConnection *connection, const Request &request)
{
    if (!request.can) {
        constexpr Service kBus = {G_BUS_TYPE_NONE, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                  "org.freedesktop.DBus"};
        const Value owned =
            call(connection, kBus, "NameHasOwner", g_variant_new("(s)", request.service.name), "(b)");
        gboolean isOwned = FALSE;
        if (owned)
            g_variant_get(owned.get(), "(b)", &isOwned);
        return isOwned ? OSErr(noErr) : OSErr(procNotFound);
    }
    const Value answer = call(connection, request.service, request.can, nullptr, "(s)");
    if (!answer)
        return procNotFound;
    const char *text = nullptr;
    g_variant_get(answer.get(), "(&s)", &text);
    const std::string_view can = text;
    return can == "yes" || can == "challenge" ? OSErr(noErr)
           : can == "no"                      ? OSErr(permErr)
                                              : OSErr(errAEEventNotHandled);
}

}  // namespace

OSErr sendToSystemProcess(const Event &event)
{
    for (const Request &request : kRequests) {
        if (event.eventClass != kCoreEventClass || event.eventID != request.event)
            continue;
        Connection connection = connect(request.service.bus);
        if (!connection)
            return procNotFound;
        if (const OSErr error = canBeServed(connection.get(), request))
            return error;
        g_dbus_connection_call(connection.get(), request.service.name, request.service.path,
                               request.service.interface, request.method, request.arguments(), nullptr,
                               G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr, nullptr);
        if (!g_dbus_connection_flush_sync(connection.get(), nullptr, nullptr))
            return procNotFound;
        // The user may be asked for a password meanwhile, on behalf of this very connection.
        static auto *kept = new Connection;
        *kept = std::move(connection);
        return noErr;
    }
    return errAEEventNotHandled;
}

}  // namespace tarvik::ae
