#include <SystemConfiguration/SystemConfiguration.h>
#include <Tarvik/support/Handle.h>
#include <arpa/inet.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <netdb.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <cstring>
#include <memory>
#include <string>

namespace {

using AddressList = std::unique_ptr<addrinfo, decltype(&freeaddrinfo)>;

/// The kernel's answer to "how would a packet go there": the route's type, its device, and whether over a
/// gateway.
struct Route {
    uint8_t type = RTN_UNREACHABLE;
    int device = 0;
    bool hasGateway = false;
};

Route routeTo(const sockaddr *address)
{
    const tarvik::FileDescriptor kernel(socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE));
    if (!kernel)
        return {};
    const bool is6 = address->sa_family == AF_INET6;
    const void *bytes =
        is6 ? static_cast<const void *>(&reinterpret_cast<const sockaddr_in6 *>(address)->sin6_addr)
            : &reinterpret_cast<const sockaddr_in *>(address)->sin_addr;
    const size_t size = is6 ? 16 : 4;

    struct {
        nlmsghdr header;
        rtmsg message;
        char attributes[64];
    } request{};
    request.header.nlmsg_len = NLMSG_LENGTH(sizeof request.message);
    request.header.nlmsg_type = RTM_GETROUTE;
    request.header.nlmsg_flags = NLM_F_REQUEST;
    request.message.rtm_family = address->sa_family;
    request.message.rtm_dst_len = uint8_t(size * 8);
    const auto add = [&](unsigned short type, const void *value, size_t length) {
        auto *attribute = reinterpret_cast<rtattr *>(reinterpret_cast<char *>(&request) +
                                                     NLMSG_ALIGN(request.header.nlmsg_len));
        attribute->rta_type = type;
        attribute->rta_len = static_cast<unsigned short>(RTA_LENGTH(length));
        memcpy(RTA_DATA(attribute), value, length);
        request.header.nlmsg_len = NLMSG_ALIGN(request.header.nlmsg_len) + RTA_ALIGN(attribute->rta_len);
    };
    add(RTA_DST, bytes, size);
    if (is6) {
        if (const uint32_t scope = reinterpret_cast<const sockaddr_in6 *>(address)->sin6_scope_id)
            add(RTA_OIF, &scope, sizeof scope);
    }
    if (send(kernel.get(), &request, request.header.nlmsg_len, 0) < 0)
        return {};

    alignas(nlmsghdr) char answer[8192];
    const ssize_t length = recv(kernel.get(), answer, sizeof answer, 0);
    const auto *header = reinterpret_cast<const nlmsghdr *>(answer);
    if (length < 0 || !NLMSG_OK(header, size_t(length)) || header->nlmsg_type != RTM_NEWROUTE)
        return {};
    const auto *message = static_cast<const rtmsg *>(NLMSG_DATA(header));
    Route route{.type = message->rtm_type};
    auto left = int(RTM_PAYLOAD(header));
    for (const rtattr *a = RTM_RTA(message); RTA_OK(a, left); a = RTA_NEXT(a, left)) {
        if (a->rta_type == RTA_OIF)
            memcpy(&route.device, RTA_DATA(a), sizeof route.device);
        if (a->rta_type == RTA_GATEWAY || a->rta_type == RTA_VIA)
            route.hasGateway = true;
    }
    return route;
}

unsigned interfaceFlags(int device)
{
    ifreq request{};
    const tarvik::FileDescriptor any(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    if (!any || !if_indextoname(unsigned(device), request.ifr_name) ||
        ioctl(any.get(), SIOCGIFFLAGS, &request) != 0)
        return 0;
    return static_cast<unsigned short>(request.ifr_flags);
}

SCNetworkConnectionFlags flagsFor(const sockaddr *address)
{
    const Route route = routeTo(address);
    if (route.type == RTN_LOCAL)
        return kSCNetworkFlagsReachable | kSCNetworkFlagsIsLocalAddress;
    if (route.type != RTN_UNICAST && route.type != RTN_BROADCAST && route.type != RTN_MULTICAST)
        return 0;
    SCNetworkConnectionFlags flags = kSCNetworkFlagsReachable;
    const unsigned interface = interfaceFlags(route.device);
    if (interface & IFF_POINTOPOINT)
        flags |= kSCNetworkFlagsTransientConnection;
    if (!(interface & IFF_RUNNING))  // no carrier, or a dial-up link that waits to be raised
        flags |= kSCNetworkFlagsConnectionRequired;
    if (!route.hasGateway)
        flags |= kSCNetworkFlagsIsDirect;
    return flags;
}

/// Reachable at once before reachable by a connection before not at all.
int rank(SCNetworkConnectionFlags flags)
{
    return flags & kSCNetworkFlagsReachable ? (flags & kSCNetworkFlagsConnectionRequired ? 1 : 2) : 0;
}

}  // namespace

Boolean SCNetworkCheckReachabilityByName(const char *nodename, SCNetworkConnectionFlags *flags)
{
    if (flags)
        *flags = 0;
    if (!nodename || !*nodename || !flags)
        return false;
    std::string name = nodename;
    if (name.size() > 2 && name.front() == '[' && name.back() == ']')
        name = name.substr(1, name.size() - 2);
    if (name.size() > 1 && name.back() == '.')  // an absolute name; the hosts file knows it without the dot
        name.pop_back();
    addrinfo wanted{};
    wanted.ai_socktype = SOCK_STREAM;
    addrinfo *found = nullptr;
    if (getaddrinfo(name.c_str(), nullptr, &wanted, &found) != 0)
        return true;
    const AddressList addresses(found, freeaddrinfo);
    for (const addrinfo *address = found; address; address = address->ai_next) {
        if (address->ai_family != AF_INET && address->ai_family != AF_INET6)
            continue;
        const SCNetworkConnectionFlags here = flagsFor(address->ai_addr);
        if (rank(here) > rank(*flags) || *flags == 0)
            *flags = here;
    }
    return true;
}
