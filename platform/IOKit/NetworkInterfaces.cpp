#include "NetworkInterfaces.h"

#include <net/if_arp.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace network {

namespace {

std::string firstLine(const std::filesystem::path &path)
{
    std::ifstream file(path);
    std::string line;
    std::getline(file, line);
    return line;
}

/// /proc/net/route: Iface Destination Gateway Flags RefCnt Use Metric Mask ..., addresses and flags in
/// hexadecimal.
std::string defaultRoute4()
{
    std::ifstream file("/proc/net/route");
    std::string line, best;
    unsigned long bestMetric = 0;
    std::getline(file, line);
    while (std::getline(file, line)) {
        std::istringstream words(line);
        std::string name, destination, gateway, flags, references, use, mask;
        unsigned long metric = 0;
        words >> name >> destination >> gateway >> flags >> references >> use >> metric >> mask;
        const bool isUp = strtoul(flags.c_str(), nullptr, 16) & 1;
        if (words && isUp && destination == "00000000" && mask == "00000000" &&
            (best.empty() || metric < bestMetric)) {
            best = name;
            bestMetric = metric;
        }
    }
    return best;
}

/// /proc/net/ipv6_route: destination, its prefix length, source, its length, next hop, metric, references,
/// use, flags, name.
std::string defaultRoute6()
{
    std::ifstream file("/proc/net/ipv6_route");
    std::string best;
    unsigned long bestMetric = 0;
    for (std::string line; std::getline(file, line);) {
        char destination[33], name[33];
        unsigned length = 0, metric = 0, flags = 0;
        if (sscanf(line.c_str(), "%32s %x %*s %*s %*s %x %*s %*s %x %32s", destination, &length, &metric,
                   &flags, name) != 5)
            continue;
        const bool isUp = (flags & 1) && !(flags & 0x200);  // RTF_UP, not RTF_REJECT
        if (isUp && length == 0 && std::string(name) != "lo" && (best.empty() || metric < bestMetric)) {
            best = name;
            bestMetric = metric;
        }
    }
    return best;
}

}  // namespace

std::string primaryInterface()
{
    std::string name = defaultRoute4();
    return name.empty() ? defaultRoute6() : name;
}

std::vector<Interface> ethernetInterfaces()
{
    std::vector<Interface> found;
    const std::string primary = primaryInterface();
    std::error_code ignored;
    for (const auto &entry : std::filesystem::directory_iterator("/sys/class/net", ignored)) {
        if (firstLine(entry.path() / "type") != std::to_string(ARPHRD_ETHER))
            continue;
        Interface interface {
            .name = entry.path().filename()
        };
        interface.isPrimary = interface.name == primary;
        unsigned byte[6] = {};
        if (sscanf(firstLine(entry.path() / "address").c_str(), "%x:%x:%x:%x:%x:%x", &byte[0], &byte[1],
                   &byte[2], &byte[3], &byte[4], &byte[5]) == 6)
            std::copy(std::begin(byte), std::end(byte), interface.address.begin());
        found.push_back(interface);
    }
    std::sort(found.begin(), found.end(),
              [](const Interface &a, const Interface &b) { return a.name < b.name; });
    return found;
}

}  // namespace network
