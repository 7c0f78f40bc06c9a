#include "host/upnp/control/DeviceDescription.h"

#include <memory>
#include <vector>

#include <glib.h>

#include "host/upnp/control/XmlReader.h"

namespace host {
namespace {

constexpr size_t kLongestName = 256;
constexpr size_t kLongestUrl = 4096;
constexpr std::string_view kService = "urn:schemas-upnp-org:service:ContentDirectory:";

struct Device {
    std::string uuid;
    std::string name;
    std::string serviceType;
    std::string controlUrl;
};

class Visitor final : public XmlVisitor {
public:
    explicit Visitor(const std::string& wanted)
        : m_Wanted(wanted)
    {
    }
    std::optional<Device> found;
    std::string base;    // URLBase

    void OnBegin(std::string_view name, int /*depth*/, const Attributes&) override
    {
        m_Text.clear();
        if (name == "device") {
            m_Open.emplace_back();
        } else if (name == "service") {
            m_Type.clear();
            m_Control.clear();
        }
    }
    void OnText(std::string_view text) override
    {
        if (m_Text.size() + text.size() <= kLongestUrl) {
            m_Text += text;
        }
    }
    bool OnEnd(std::string_view name, int depth) override
    {
        const std::string text = TidyText(m_Text, kLongestUrl);
        m_Text.clear();
        if (name == "URLBase" && depth == 2) {
            base = text;
        }
        if (m_Open.empty()) {
            return true;
        }
        Device& device = m_Open.back();
        if (name == "UDN") {
            device.uuid = text.substr(text.rfind("uuid:", 0) == 0 ? 5 : 0);
        } else if (name == "friendlyName") {
            device.name = text;
        } else if (name == "serviceType") {
            m_Type = text;
        } else if (name == "controlURL") {
            m_Control = text;
        } else if (name == "service" && std::string_view(m_Type).substr(0, kService.size()) == kService && device.controlUrl.empty()) {
            device.serviceType = m_Type;
            device.controlUrl = m_Control;
        } else if (name == "device") {
            if (device.uuid == m_Wanted && !device.controlUrl.empty()) {
                found = device;
            }
            m_Open.pop_back();
            return !found;
        }
        return true;
    }

private:
    const std::string& m_Wanted;
    std::string m_Text;
    std::string m_Type;
    std::string m_Control;
    std::vector<Device> m_Open;    // outermost first
};

std::string Resolve(const std::string& base, const std::string& reference)
{
    const std::unique_ptr<char, decltype(&g_free)> whole(g_uri_resolve_relative(base.c_str(), reference.c_str(), G_URI_FLAGS_ENCODED, nullptr), g_free);
    return whole == nullptr ? std::string() : whole.get();
}

}    // namespace

std::optional<DeviceDescription> ReadDeviceDescription(std::string_view document, const std::string& uuid, const std::string& location)
{
    Visitor visitor(uuid);
    ReadXml(document, visitor);
    if (!visitor.found) {
        return std::nullopt;
    }
    const Device& device = *visitor.found;
    const std::string url = Resolve(visitor.base.empty() ? location : visitor.base, device.controlUrl);
    if (url.empty()) {
        return std::nullopt;
    }
    const std::string name = TidyText(device.name, kLongestName);
    return DeviceDescription {name.empty() ? uuid : name, device.serviceType, url};
}

}    // namespace host
