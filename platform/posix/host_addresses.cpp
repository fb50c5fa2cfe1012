#include "platform/posix/host_addresses.h"

#include <ifaddrs.h>
#include <net/if.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <memory>

namespace platform {
namespace {

bool IsLinkLocal(const sockaddr& address) {
    return address.sa_family == AF_INET6 &&
           IN6_IS_ADDR_LINKLOCAL(&reinterpret_cast<const sockaddr_in6&>(address).sin6_addr);
}

void Collect(const ifaddrs* interfaces, int family, std::vector<std::string>& found) {
    for (const ifaddrs* one = interfaces; one != nullptr; one = one->ifa_next) {
        const sockaddr* address = one->ifa_addr;
        if (address == nullptr || address->sa_family != family) continue;
        if ((one->ifa_flags & IFF_UP) == 0 || (one->ifa_flags & IFF_LOOPBACK) != 0) continue;
        if (IsLinkLocal(*address)) continue;  // means nothing without the reader's interface
        char text[NI_MAXHOST];
        const socklen_t size = family == AF_INET ? sizeof(sockaddr_in) : sizeof(sockaddr_in6);
        if (getnameinfo(address, size, text, sizeof(text), nullptr, 0, NI_NUMERICHOST) == 0)
            found.emplace_back(text);
    }
}

}  // namespace

std::vector<std::string> HostAddresses() {
    std::vector<std::string> found;
    ifaddrs* interfaces = nullptr;
    if (getifaddrs(&interfaces) == 0) {
        const std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> owner(interfaces, freeifaddrs);
        Collect(interfaces, AF_INET, found);
        Collect(interfaces, AF_INET6, found);
    }
    if (found.empty()) found.emplace_back("127.0.0.1");
    return found;
}

}  // namespace platform
