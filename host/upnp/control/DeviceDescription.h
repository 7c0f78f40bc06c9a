// What a device description says of one media server (UPnP Device Architecture 1.1, 2.3).
//
// Errors:  none when the document cannot be read or has no such server.
// Threads: pure.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace host {

struct DeviceDescription {
    std::string name;    // friendlyName, tidy; never empty
    std::string serviceType;    // "urn:schemas-upnp-org:service:ContentDirectory:1"
    std::string controlUrl;    // absolute
};

// The device of `uuid` ("uuid:" left out), which may stand inside others. `location` is where the
// description came from.
std::optional<DeviceDescription> ReadDeviceDescription(std::string_view document, const std::string& uuid, const std::string& location);

}    // namespace host
