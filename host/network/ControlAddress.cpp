#include "host/network/ControlAddress.h"

#include <charconv>
#include <memory>

#include <gio/gio.h>

namespace host {

ControlAddress ParseControlAddress(const std::string& text)
{
    ControlAddress address;
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
    const std::unique_ptr<GInetAddress, decltype(&g_object_unref)> inet(g_inet_address_new_from_string(address.host.c_str()), &g_object_unref);
    if (inet == nullptr) {
        address.error = "\"" + address.host + "\" is not a numeric address";
    } else if (!g_inet_address_get_is_loopback(inet.get())) {
        address.error = address.host
            + " can be reached from other devices. As long as devices cannot be paired only this one's own address (127.0.0.1, ::1) is served";
    }
    return address;
}

}    // namespace host
