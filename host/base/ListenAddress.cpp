#include "host/base/ListenAddress.h"

#include <charconv>

#include <arpa/inet.h>

namespace host {
namespace {

// False: no numeric address.
bool IsNumber(const std::string& host, bool& isLoopback)
{
    in_addr four {};
    in6_addr six {};
    if (inet_pton(AF_INET, host.c_str(), &four) == 1) {
        isLoopback = ntohl(four.s_addr) >> 24 == 127;
        return true;
    }
    // ::ffff:127.0.0.1 is not taken for the device itself: a bind to it may mean more than it says.
    isLoopback = inet_pton(AF_INET6, host.c_str(), &six) == 1 && IN6_IS_ADDR_LOOPBACK(&six);
    return inet_pton(AF_INET6, host.c_str(), &six) == 1;
}

}    // namespace

std::string ListenAddress::Text(uint16_t listening) const
{
    const bool six = host.find(':') != std::string::npos;
    return (six ? "[" + host + "]" : host) + ":" + std::to_string(listening);
}

ListenAddress ParseListenAddress(const std::string& text)
{
    ListenAddress address;
    const size_t colon = text.rfind(':');
    if (colon == std::string::npos) {
        address.error = "\"" + text + "\" is no address: HOST:PORT is expected";
        return address;
    }
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data() + colon + 1, end, address.port);
    if (error != std::errc() || stop != end) {
        address.error = "\"" + text + "\" has no port from 0 to 65535";
        return address;
    }
    address.host = text.substr(0, colon);
    if (address.host.size() > 2 && address.host.front() == '[' && address.host.back() == ']') {
        address.host = address.host.substr(1, address.host.size() - 2);
    }
    if (address.host.empty() || address.host == "localhost") {
        address.host = "127.0.0.1";
    }
    if (!IsNumber(address.host, address.isLoopback)) {
        address.error = "\"" + address.host + "\" is not a numeric address";
    }
    return address;
}

}    // namespace host
