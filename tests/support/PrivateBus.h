// A D-Bus of a test's own, for as long as its process lives. For programs that link GIO.
#pragma once
#include <gio/gio.h>

#include <csignal>
#include <cstdio>
#include <cstring>
#include <string>
#include <sys/prctl.h>
#include <unistd.h>

/// Starts dbus-daemon and connects to it; null on failure. The address is for others to connect to.
inline GDBusConnection *startPrivateBus(std::string &address)
{
    int ends[2];
    char line[512] = "";
    if (pipe(ends) != 0)
        return nullptr;
    if (fork() == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        dup2(ends[1], 1);
        execlp("dbus-daemon", "dbus-daemon", "--session", "--nofork", "--nopidfile", "--print-address",
               nullptr);
        _exit(127);
    }
    close(ends[1]);
    FILE *said = fdopen(ends[0], "r");
    if (!said || !fgets(line, sizeof line, said))
        return nullptr;
    address.assign(line, strcspn(line, "\n"));
    const auto flags = GDBusConnectionFlags(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                            G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    return g_dbus_connection_new_for_address_sync(address.c_str(), flags, nullptr, nullptr, nullptr);
}

/// Answers the calls to an object's interface, which is given as introspection XML. False on failure.
inline bool exportObject(GDBusConnection *bus, const char *path, const char *xml,
                         GDBusInterfaceMethodCallFunc function)
{
    GDBusNodeInfo *node = g_dbus_node_info_new_for_xml(xml, nullptr);
    static GDBusInterfaceVTable tables[4];
    static int count = 0;
    GDBusInterfaceVTable &table = tables[count++];
    table.method_call = function;
    return node && g_dbus_connection_register_object(bus, path, node->interfaces[0], &table, nullptr, nullptr,
                                                     nullptr) != 0;
}
