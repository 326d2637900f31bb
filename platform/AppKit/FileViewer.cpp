#include "platform/AppKit/private/FileViewer.h"

#include <gio/gio.h>

#include <cstdlib>
#include <memory>

namespace {

struct Unref {
    void operator()(gpointer object) const { g_object_unref(object); }
    void operator()(GVariant *value) const { g_variant_unref(value); }
    void operator()(gchar *text) const { g_free(text); }
};

}  // namespace

bool tarvik::revealInFileViewer(const std::string &path)
{
    // Without a session GIO would start a bus of its own.
    if (!std::getenv("DBUS_SESSION_BUS_ADDRESS"))
        return false;
    const std::unique_ptr<GDBusConnection, Unref> bus(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
    const std::unique_ptr<gchar, Unref> url(g_filename_to_uri(path.c_str(), nullptr, nullptr));
    if (!bus || !url)
        return false;
    const gchar *const urls[] = {url.get(), nullptr};
    constexpr int milliseconds = 3000;
    const std::unique_ptr<GVariant, Unref> answer(g_dbus_connection_call_sync(
        bus.get(), "org.freedesktop.FileManager1", "/org/freedesktop/FileManager1",
        "org.freedesktop.FileManager1", "ShowItems", g_variant_new("(^ass)", urls, ""), nullptr,
        G_DBUS_CALL_FLAGS_NONE, milliseconds, nullptr, nullptr));
    return answer != nullptr;
}
