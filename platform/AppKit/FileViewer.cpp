#include "platform/AppKit/private/FileViewer.h"

#include <Tarvik/support/Owned.h>
#include <gio/gio.h>

#include <cstdlib>

bool tarvik::revealInFileViewer(const std::string &path)
{
    // Without a session GIO would start a bus of its own.
    if (!std::getenv("DBUS_SESSION_BUS_ADDRESS"))
        return false;
    const Owned<GDBusConnection, g_object_unref> bus(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
    const Owned<gchar, g_free> url(g_filename_to_uri(path.c_str(), nullptr, nullptr));
    if (!bus || !url)
        return false;
    const gchar *const urls[] = {url.get(), nullptr};
    constexpr int milliseconds = 3000;
    const Owned<GVariant, g_variant_unref> answer(g_dbus_connection_call_sync(
        bus.get(), "org.freedesktop.FileManager1", "/org/freedesktop/FileManager1",
        "org.freedesktop.FileManager1", "ShowItems", g_variant_new("(^ass)", urls, ""), nullptr,
        G_DBUS_CALL_FLAGS_NONE, milliseconds, nullptr, nullptr));
    return answer != nullptr;
}
