#include "host/remote/server/RequestRules.h"

#include <algorithm>
#include <charconv>

namespace host {
namespace {

constexpr size_t kCodeDigits = 6;
constexpr size_t kLongestBody = 64;
constexpr uint16_t kHttpPort = 80;

// Cuts "HOST:PORT" and "[HOST]:PORT"; without a port it is that of HTTP.
bool Cut(std::string_view text, std::string_view& name, unsigned& port)
{
    port = kHttpPort;
    const size_t bracket = text.starts_with('[') ? text.find(']') : 0;
    if (bracket == std::string_view::npos) {
        return false;
    }
    const size_t colon = text.find(':', bracket);
    name = text.starts_with('[') ? text.substr(1, bracket - 1) : text.substr(0, colon);
    if (bracket != 0 && colon != bracket + 1 && bracket + 1 != text.size()) {
        return false;
    }
    if (colon == std::string_view::npos) {
        return true;
    }
    const std::string_view digits = text.substr(colon + 1);
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), port);
    return error == std::errc() && end == digits.data() + digits.size() && port <= 65535;
}

}    // namespace

bool IsOurHost(std::string_view host, std::string_view arrivedAt, uint16_t port)
{
    std::string_view name;
    unsigned number = 0;
    if (!Cut(host, name, number) || number != port || name.empty()) {
        return false;
    }
    const bool local = arrivedAt == "127.0.0.1" || arrivedAt == "::1";
    return name == arrivedAt || (local && name == "localhost");
}

bool IsOurOrigin(std::string_view origin, std::string_view host)
{
    constexpr std::string_view kScheme = "http://";
    return origin.starts_with(kScheme) && origin.substr(kScheme.size()) == host;
}

std::string_view CookieNamed(std::string_view name, std::string_view field)
{
    while (!field.empty()) {
        const size_t end = std::min(field.find(';'), field.size());
        std::string_view pair = field.substr(0, end);
        field.remove_prefix(std::min(end + 1, field.size()));
        pair.remove_prefix(std::min(pair.find_first_not_of(' '), pair.size()));
        if (pair.size() > name.size() && pair.starts_with(name) && pair[name.size()] == '=') {
            return pair.substr(name.size() + 1);
        }
    }
    return {};
}

std::string CodeIn(std::string_view body)
{
    std::string digits;
    for (const char c : body.substr(0, kLongestBody)) {
        if (c >= '0' && c <= '9') {
            digits += c;
        } else if (c != ' ') {
            return {};
        }
    }
    return digits.size() == kCodeDigits ? digits : std::string();
}

}    // namespace host
