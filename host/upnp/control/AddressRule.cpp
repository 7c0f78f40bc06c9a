#include "host/upnp/control/AddressRule.h"

#include <algorithm>
#include <charconv>

#include <arpa/inet.h>

namespace host {
namespace {

struct Range {
    uint32_t network;
    uint32_t mask;
};
constexpr Range kLoopback {0x7F000000, 0xFF000000};
constexpr Range kPrivate[] = {
    {0x0A000000, 0xFF000000},
    {0xAC100000, 0xFFF00000},
    {0xC0A80000, 0xFFFF0000},
    {0xA9FE0000, 0xFFFF0000},
};

bool IsIn(uint32_t address, const Range& range)
{
    return (address & range.mask) == range.network;
}

// Four decimal numbers and nothing else; false: not an address.
bool ReadAddress(const std::string& text, uint32_t& address)
{
    in_addr parsed {};
    if (inet_pton(AF_INET, text.c_str(), &parsed) != 1) {
        return false;
    }
    address = ntohl(parsed.s_addr);
    return true;
}

bool IsPort(std::string_view text)
{
    unsigned port = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    return error == std::errc() && end == text.data() + text.size() && port > 0 && port <= 65535;
}

}    // namespace

AddressRule::AddressRule(const std::string& network, unsigned prefix)
{
    uint32_t address = 0;
    if (prefix > 0 && prefix <= 32 && ReadAddress(network, address)) {
        m_nMask = ~uint32_t {0} << (32 - prefix);
        m_nNetwork = address & m_nMask;
    }
}

bool AddressRule::AllowsAddress(uint32_t address) const
{
    if (m_nMask == 0 || (address & m_nMask) != m_nNetwork) {
        return false;
    }
    if (IsIn(address, kLoopback)) {
        return IsIn(m_nNetwork, kLoopback);
    }
    return std::any_of(std::begin(kPrivate), std::end(kPrivate), [address](const Range& range) { return IsIn(address, range); });
}

bool AddressRule::AllowsUrl(std::string_view url) const
{
    constexpr std::string_view kScheme = "http://";
    if (url.substr(0, kScheme.size()) != kScheme || std::any_of(url.begin(), url.end(), [](unsigned char c) { return c <= ' ' || c == 0x7F || c == '\\'; })) {
        return false;
    }
    url.remove_prefix(kScheme.size());
    const std::string_view authority = url.substr(0, url.find_first_of("/?#"));
    const std::string_view host = authority.substr(0, authority.find(':'));
    uint32_t address = 0;
    if (!ReadAddress(std::string(host), address) || (host.size() != authority.size() && !IsPort(authority.substr(host.size() + 1)))) {
        return false;
    }
    return AllowsAddress(address);
}

}    // namespace host
