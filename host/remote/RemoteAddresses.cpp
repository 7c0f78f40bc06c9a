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
    ifaddrs* all = nullptr;
    if (getifaddrs(&all) == 0) {
        const std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> owner(all, &freeifaddrs);
        for (const ifaddrs* at = all; at != nullptr; at = at->ifa_next) {
            const bool usable = (at->ifa_flags & IFF_UP) != 0 && (at->ifa_flags & IFF_LOOPBACK) == 0;
            // IPv4 alone: nobody types the other kind, and every home network has this one.
            if (usable && at->ifa_addr != nullptr && at->ifa_addr->sa_family == AF_INET) {
                char text[INET_ADDRSTRLEN];
                if (inet_ntop(AF_INET, &reinterpret_cast<const sockaddr_in*>(at->ifa_addr)->sin_addr, text, sizeof text) != nullptr) {
                    found.push_back(Url(text, port));
                }
            }
        }
    }
    return found.empty() ? std::vector<std::string> {Url("127.0.0.1", port)} : found;
}

}    // namespace host
