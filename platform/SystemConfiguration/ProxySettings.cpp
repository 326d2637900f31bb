#include "ProxySettings.h"

#include <Tarvik/support/Owned.h>
#include <arpa/inet.h>
#include <gio/gio.h>
#include <strings.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>

namespace proxies {

namespace {

std::string lowered(std::string_view text)
{
    std::string result(text);
    for (char &c : result)
        if (c >= 'A' && c <= 'Z')
            c = char(c + 32);
    return result;
}

bool endsWithDomain(std::string_view name, std::string_view domain)
{
    return name.ends_with(domain) &&
           (name.size() == domain.size() || name[name.size() - domain.size() - 1] == '.');
}

std::optional<uint16_t> parsePort(std::string_view text)
{
    unsigned value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || value == 0 || value > 65535)
        return std::nullopt;
    return uint16_t(value);
}

std::string unescaped(std::string_view text)
{
    std::string result;
    for (size_t i = 0; i < text.size(); ++i) {
        unsigned value = 0;
        if (text[i] == '%' && i + 2 < text.size() &&
            std::from_chars(text.data() + i + 1, text.data() + i + 3, value, 16).ptr == text.data() + i + 3) {
            result += char(value);
            i += 2;
        } else {
            result += text[i];
        }
    }
    return result;
}

/// A host ends up in command lines and dictionaries of others: letters, digits and these marks, nothing else.
bool isHostText(std::string_view host)
{
    constexpr std::string_view marks = "-._:%";
    return !host.empty() && std::all_of(host.begin(), host.end(), [&](unsigned char c) {
        return (c >= '0' && c <= '9') || ((c | 0x20) >= 'a' && (c | 0x20) <= 'z') || c >= 0x80 ||
               marks.find(char(c)) != marks.npos;
    });
}

/// "10.0.0.0/8" as "10.*". A range that does not end on a byte becomes one prefix for each value of the cut
/// byte.
bool appendRange(std::string_view text, std::vector<std::string> &entries)
{
    const size_t slash = text.find('/');
    if (slash == text.npos)
        return false;
    in_addr address;
    unsigned bits = 0;
    const std::string_view count = text.substr(slash + 1);
    const auto [end, error] = std::from_chars(count.data(), count.data() + count.size(), bits);
    if (error != std::errc() || end != count.data() + count.size() || bits > 32 ||
        inet_pton(AF_INET, std::string(text.substr(0, slash)).c_str(), &address) != 1)
        return false;
    uint32_t number = ntohl(address.s_addr);
    number &= bits ? ~uint32_t(0) << (32 - bits) : 0;
    const unsigned bytes = (bits + 7) / 8;
    const uint32_t step = bytes ? uint32_t(1) << (32 - 8 * bytes) : 0;
    for (uint32_t i = 0; i < 1u << (8 * bytes - bits); ++i, number += step) {
        std::string prefix;
        for (unsigned byte = 0; byte < bytes; ++byte)
            prefix += std::to_string(number >> (24 - 8 * byte) & 255) + ".";
        if (bytes == 4)
            prefix.pop_back();
        else
            prefix += "*";
        entries.push_back(prefix);
    }
    return true;
}

void appendException(std::string_view entry, std::vector<std::string> &entries)
{
    if (entry.empty() || appendRange(entry, entries))
        return;
    if (entry.starts_with('[')) {
        entry = entry.substr(1, entry.find(']') - 1);
    } else if (std::count(entry.begin(), entry.end(), ':') == 1) {
        entry = entry.substr(0, entry.find(':'));
    }
    if (entry.starts_with("*."))
        entry.remove_prefix(1);
    const bool isPrefix = entry.find_first_not_of("0123456789.") == entry.npos;  // "10.0.0." keeps its dot
    if (entry.size() > 1 && entry.ends_with('.') && !isPrefix)
        entry.remove_suffix(1);
    if (!entry.empty())
        entries.emplace_back(entry);
}

const char *variable(const char *lower, const char *upper)
{
    if (const char *value = getenv(lower))
        return value;
    return getenv(upper);
}

std::string stringSetting(GSettings *settings, const char *key)
{
    const tarvik::Owned<gchar, g_free> text(g_settings_get_string(settings, key));
    return text.get();
}

/// Whether there is a session whose settings could be asked. Without one GSettings would start a message bus.
bool inSession()
{
    if (getenv("DBUS_SESSION_BUS_ADDRESS") || getenv("GSETTINGS_BACKEND"))
        return true;
    const char *runtime = getenv("XDG_RUNTIME_DIR");
    return runtime && access((std::string(runtime) + "/bus").c_str(), F_OK) == 0;
}

/// The desktop's settings under their schemas' names. An object of GSettings is dear to make and cheap to
/// ask, and answers what holds now.
struct Desktop {
    GSettings *general = open("org.gnome.system.proxy");
    GSettings *http = open("org.gnome.system.proxy.http");
    GSettings *https = open("org.gnome.system.proxy.https");

    /// Null where the schemas are not installed.
    static Desktop *shared()
    {
        static Desktop desktop;
        return desktop.general && desktop.http && desktop.https ? &desktop : nullptr;
    }

private:
    static GSettings *open(const char *name)
    {
        // g_settings_new ends the process when the schema is missing, so it is looked up first.
        GSettingsSchemaSource *source = g_settings_schema_source_get_default();
        GSettingsSchema *schema = source ? g_settings_schema_source_lookup(source, name, TRUE) : nullptr;
        if (!schema)
            return nullptr;
        GSettings *settings = g_settings_new_full(schema, nullptr, nullptr);
        g_settings_schema_unref(schema);
        return settings;
    }
};

std::optional<Server> desktopServer(GSettings *settings)
{
    const int port = g_settings_get_int(settings, "port");
    std::optional<Server> server = parseServer(stringSetting(settings, "host"));
    if (!server || port <= 0 || port > 65535)
        return std::nullopt;
    server->port = uint16_t(port);
    return server;
}

}  // namespace

std::optional<Server> parseServer(std::string_view text)
{
    while (!text.empty() && text.front() == ' ')
        text.remove_prefix(1);
    while (!text.empty() && text.back() == ' ')
        text.remove_suffix(1);
    if (const size_t scheme = text.find("://"); scheme != text.npos) {
        if (lowered(text.substr(0, scheme)) != "http")
            return std::nullopt;
        text.remove_prefix(scheme + 3);
    }
    text = text.substr(0, text.find_first_of("/?#"));
    Server server;
    if (const size_t at = text.rfind('@'); at != text.npos) {
        const std::string_view credentials = text.substr(0, at);
        const size_t colon = credentials.find(':');
        server.user = unescaped(credentials.substr(0, colon));
        if (colon != credentials.npos)
            server.password = unescaped(credentials.substr(colon + 1));
        text.remove_prefix(at + 1);
    }
    std::string_view rest;
    if (text.starts_with('[')) {
        const size_t end = text.find(']');
        if (end == text.npos)
            return std::nullopt;
        server.host = text.substr(1, end - 1);
        rest = text.substr(end + 1);
        in6_addr address;
        if (inet_pton(AF_INET6, server.host.substr(0, server.host.find('%')).c_str(), &address) != 1)
            return std::nullopt;
    } else {
        // More than one colon is a bare IPv6 address.
        const size_t colon = std::count(text.begin(), text.end(), ':') == 1 ? text.find(':') : text.size();
        server.host = text.substr(0, colon);
        rest = text.substr(colon);
    }
    if (!isHostText(server.host))
        return std::nullopt;
    if (rest.empty() || rest == ":") {
        server.port = 80;
        return server;
    }
    const std::optional<uint16_t> port = rest.front() == ':' ? parsePort(rest.substr(1)) : std::nullopt;
    if (!port)
        return std::nullopt;
    server.port = *port;
    return server;
}

std::vector<std::string> parseExceptions(std::string_view text)
{
    std::vector<std::string> entries;
    while (!text.empty()) {
        const size_t end = std::min(text.find_first_of(", \t\r\n"), text.size());
        appendException(text.substr(0, end), entries);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return entries;
}

std::optional<Settings> fromDesktop()
{
    Desktop *const desktop = inSession() ? Desktop::shared() : nullptr;
    if (!desktop)
        return std::nullopt;
    const std::string mode = stringSetting(desktop->general, "mode");
    Settings settings;
    if (mode == "auto") {
        settings.autoConfigURL = stringSetting(desktop->general, "autoconfig-url");
        return settings;
    }
    if (mode != "manual")
        return std::nullopt;
    settings.http = desktopServer(desktop->http);
    settings.https = desktopServer(desktop->https);
    if (settings.http && g_settings_get_boolean(desktop->http, "use-authentication")) {
        settings.http->user = stringSetting(desktop->http, "authentication-user");
        settings.http->password = stringSetting(desktop->http, "authentication-password");
    }
    const tarvik::Owned<gchar *, g_strfreev> hosts(g_settings_get_strv(desktop->general, "ignore-hosts"));
    std::vector<std::string> entries;
    for (gchar **host = hosts.get(); *host; ++host)
        appendException(*host, entries);
    if (!entries.empty())
        settings.exceptions = std::move(entries);
    return settings;
}

Settings fromEnvironment()
{
    Settings settings;
    const auto server = [](const char *lower, const char *upper) -> std::optional<Server> {
        const char *text = variable(lower, upper);
        return text ? parseServer(text) : std::nullopt;
    };
    // In a CGI program HTTP_PROXY is the client's "Proxy:" header, not a setting.
    settings.http = server("http_proxy", getenv("REQUEST_METHOD") ? "http_proxy" : "HTTP_PROXY");
    settings.https = server("https_proxy", "HTTPS_PROXY");
    if (!settings.http)
        settings.http = server("all_proxy", "ALL_PROXY");
    if (!settings.https)
        settings.https = server("all_proxy", "ALL_PROXY");
    if (const char *text = variable("no_proxy", "NO_PROXY")) {
        std::vector<std::string> entries = parseExceptions(text);
        if (std::find(entries.begin(), entries.end(), "*") != entries.end())
            return {};
        if (!entries.empty())
            settings.exceptions = std::move(entries);
    }
    return settings;
}

Settings current()
{
    if (std::optional<Settings> desktop = fromDesktop())
        return *desktop;
    return fromEnvironment();
}

std::optional<Server> forHost(const Settings &settings, std::string_view scheme, std::string_view host)
{
    const std::optional<Server> &server =
        strncasecmp(scheme.data(), "https", scheme.size()) == 0 && scheme.size() == 5 ? settings.https
                                                                                      : settings.http;
    if (!server || !settings.exceptions)
        return server;
    std::string name = lowered(host);
    if (name.size() > 1 && name.ends_with('.'))
        name.pop_back();
    for (const std::string &stored : *settings.exceptions) {
        std::string entry = lowered(stored);
        if (entry == "*")
            return std::nullopt;
        if (entry.ends_with('*') || entry.ends_with('.')) {
            if (entry.ends_with('*'))
                entry.pop_back();
            if (name.starts_with(entry))
                return std::nullopt;
        } else if (endsWithDomain(name, entry.starts_with('.') ? std::string_view(entry).substr(1)
                                                               : std::string_view(entry))) {
            return std::nullopt;
        }
    }
    return server;
}

}  // namespace proxies
