/// The machine's Ethernet interfaces, and the default route.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace network {

struct Interface {
    std::string name;
    std::array<uint8_t, 6> address{};
    bool isPrimary = false;
};

/// By name. Other kinds (loopback, tunnels, ...) are left out.
std::vector<Interface> ethernetInterfaces();

/// The interface of the default route with the lowest metric, IPv4 before IPv6; empty when there is none.
std::string primaryInterface();

}  // namespace network
