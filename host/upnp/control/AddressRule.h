// Which addresses a media server may send the player to: private ones of the network that the server was
// found on. Whoever can send a datagram into that network could otherwise make the player ask any host.
//
// Rule:    "http://" and a numeric IPv4 address (no name, no user, no IPv6), a port when stated, a path. The
//          address lies in the network's own range, and in 10/8, 172.16/12, 192.168/16 (RFC 1918) or
//          169.254/16 (RFC 3927). 127/8 only when the network is the loopback one.
// Threads: a value; pure.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace host {

class AddressRule {
public:
    AddressRule() = default;    // allows nothing
    AddressRule(const std::string& network, unsigned prefix);    // numeric IPv4; anything else allows nothing

    // Written so strictly that no two readers of URLs can take it for different hosts.
    bool AllowsUrl(std::string_view url) const;

private:
    bool AllowsAddress(uint32_t address) const;

    uint32_t m_nNetwork = 0;    // host byte order
    uint32_t m_nMask = 0;    // 0: no network
};

}    // namespace host
