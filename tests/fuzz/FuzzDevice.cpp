// The description that a media server gives of itself.
#include <cstdint>
#include <string>

#include "host/upnp/control/AddressRule.h"
#include "host/upnp/control/DeviceDescription.h"
#include "tests/fuzz/Require.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    const host::AddressRule rule("192.168.1.20", 24);
    if (const auto found = host::ReadDeviceDescription(text, "in", "http://192.168.1.5:80/a/desc.xml")) {
        // What is trusted stays in the network however the address is written.
        const bool trusted = rule.AllowsUrl(found->controlUrl);
        Require(!found->name.empty() && found->name.size() <= 256 && !found->controlUrl.empty());
        Require(!trusted || found->controlUrl.rfind("http://192.168.1.", 0) == 0);
    }
    rule.AllowsUrl(text);
    return 0;
}
