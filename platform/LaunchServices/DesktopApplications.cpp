#include "platform/LaunchServices/private/Applications.h"

#include <Tarvik/support/Owned.h>
#include <gio/gdesktopappinfo.h>
#include <gio/gio.h>

namespace tarvik::launch {

namespace {

template <class T>
using Object = Owned<T, g_object_unref>;
using Text = Owned<char, g_free>;

std::optional<std::string> entryOf(GAppInfo *application)
{
    const char *path = application && G_IS_DESKTOP_APP_INFO(application)
                           ? g_desktop_app_info_get_filename(G_DESKTOP_APP_INFO(application))
                           : nullptr;
    return path ? std::optional<std::string>(path) : std::nullopt;
}

LSRolesMask rolesOf(GAppInfo *application)
{
    const char *categories = G_IS_DESKTOP_APP_INFO(application)
                                 ? g_desktop_app_info_get_categories(G_DESKTOP_APP_INFO(application))
                                 : nullptr;
    std::string list(";");
    list.append(categories ? categories : "").append(";");
    return list.find(";Viewer;") == list.npos ? LSRolesMask(kLSRolesViewer | kLSRolesEditor)
                                              : LSRolesMask(kLSRolesViewer);
}

std::optional<std::string> firstEntryOf(const char *type, LSRolesMask roles)
{
    const Object<GAppInfo> chosen(g_app_info_get_default_for_type(type, false));
    if (chosen && rolesOf(chosen.get()) & roles)
        return entryOf(chosen.get());
    std::optional<std::string> found;
    GList *const others = g_app_info_get_all_for_type(type);
    for (GList *at = others; at && !found; at = at->next)
        if (rolesOf(G_APP_INFO(at->data)) & roles)
            found = entryOf(G_APP_INFO(at->data));
    g_list_free_full(others, g_object_unref);
    return found;
}

}  // namespace

std::string fileURL(const std::string &path)
{
    const Text url(g_filename_to_uri(path.c_str(), nullptr, nullptr));
    return url ? url.get() : "";
}

std::optional<std::string> desktopApplicationFor(const std::string &url, bool isFile, LSRolesMask roles)
{
    if (!isFile) {
        const Text scheme(g_uri_parse_scheme(url.c_str()));
        return scheme ? firstEntryOf((std::string("x-scheme-handler/") + scheme.get()).c_str(), roles)
                      : std::nullopt;
    }
    const Object<GFile> file(g_file_new_for_uri(url.c_str()));
    const Object<GFileInfo> info(g_file_query_info(file.get(), G_FILE_ATTRIBUTE_STANDARD_CONTENT_TYPE,
                                                   G_FILE_QUERY_INFO_NONE, nullptr, nullptr));
    const char *type = info ? g_file_info_get_content_type(info.get()) : nullptr;
    return type ? firstEntryOf(type, roles) : std::nullopt;
}

std::optional<std::string> desktopApplicationNamed(const std::string &identifier)
{
    const std::string name = identifier.ends_with(".desktop") ? identifier : identifier + ".desktop";
    const Object<GDesktopAppInfo> application(g_desktop_app_info_new(name.c_str()));
    return application ? entryOf(G_APP_INFO(application.get())) : std::nullopt;
}

OSStatus launchDesktopApplication(const std::string &entry, const std::vector<std::string> &urls)
{
    const Object<GDesktopAppInfo> application(g_desktop_app_info_new_from_filename(entry.c_str()));
    if (!application)
        return kLSNotAnApplicationErr;
    GList *list = nullptr;
    for (auto url = urls.rbegin(); url != urls.rend(); ++url)
        list = g_list_prepend(list, const_cast<char *>(url->c_str()));
    // Without a request to keep the child, it is started by a process between, which ends at once: nobody has
    // to wait for it.
    const bool started = g_desktop_app_info_launch_uris_as_manager(
        application.get(), list, nullptr, G_SPAWN_SEARCH_PATH, nullptr, nullptr, nullptr, nullptr, nullptr);
    g_list_free(list);
    return started ? OSStatus(noErr) : OSStatus(kLSUnknownErr);
}

}  // namespace tarvik::launch
