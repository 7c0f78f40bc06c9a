#include "host/remote/RemoteAddresses.h"

#include <memory>

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>

namespace host {
namespace {

std::string Url(const std::string& numeric, uint16_t port)
{
    ListenAddress address;
    address.host = numeric;
    return "http://" + address.Text(port) + "/";
}

}    // namespace

std::vector<std::string> RemoteAddresses(const ListenAddress& address, uint16_t port)
{
    if (address.host != "0.0.0.0" && address.host != "::") {
        return {Url(address.host, port)};
    }
    std::vector<std::string> found;
    std::vector<std::string> foundSix;
    ifaddrs* all = nullptr;
    if (getifaddrs(&all) == 0) {
        const std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> owner(all, &freeifaddrs);
        for (const ifaddrs* at = all; at != nullptr; at = at->ifa_next) {
            const bool usable = (at->ifa_flags & IFF_UP) != 0 && (at->ifa_flags & IFF_LOOPBACK) == 0;
            if (!usable || at->ifa_addr == nullptr) {
                continue;
            }
            char text[INET6_ADDRSTRLEN];
            if (at->ifa_addr->sa_family == AF_INET && inet_ntop(AF_INET, &reinterpret_cast<const sockaddr_in*>(at->ifa_addr)->sin_addr, text, sizeof text) != nullptr) {
                found.push_back(Url(text, port));
            } else if (at->ifa_addr->sa_family == AF_INET6 && address.host == "::") {
                // One that is good on its own link alone needs a zone, which no browser takes.
                const in6_addr& six = reinterpret_cast<const sockaddr_in6*>(at->ifa_addr)->sin6_addr;
                if (!IN6_IS_ADDR_LINKLOCAL(&six) && inet_ntop(AF_INET6, &six, text, sizeof text) != nullptr) {
                    foundSix.push_back(Url(text, port));
                }
            }
        }
    }
    // Nobody types the long kind where there is the other.
    found = found.empty() ? foundSix : found;
    return found.empty() ? std::vector<std::string> {Url("127.0.0.1", port)} : found;
}

}    // namespace host
