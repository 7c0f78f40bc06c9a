// What a media server answers: a SOAP envelope with DIDL-Lite in it, or DIDL-Lite alone.
#include <cstdint>
#include <string>

#include "host/upnp/control/BrowseMessage.h"
#include "host/upnp/control/DidlObjects.h"
#include "tests/fuzz/Require.h"

namespace {

constexpr size_t kMost = 50;

void RequireTidy(const CascadeString& text, size_t most)
{
    Require(text.GetLength() <= most);
    for (const unsigned char c : text.Str()) {
        Require(c >= ' ' && c != 0x7F);
    }
}

void Read(const std::string& didl)
{
    static const host::AddressRule rule("192.168.1.20", 24);
    const host::DidlObjects read = host::ReadDidl(didl, rule, kMost);
    Require(read.objects.size() <= read.count && read.count <= kMost);
    for (const auto& object : read.objects) {
        Require(!object->id.IsEmpty() && object->id.GetLength() <= host::kLongestObjectId);
        RequireTidy(object->title, host::kLongestTitle);
        Require(object->resources.GetSize() <= host::kMostResources);
        for (const auto& resource : object->resources) {
            RequireTidy(resource.url, host::kLongestResourceUrl);
            RequireTidy(resource.protocolInfo, 2 * host::kLongestTitle);
            Require(resource.url.IsEmpty() || rule.AllowsUrl(resource.url.Str()));
        }
    }
}

}    // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    const host::BrowseAnswer answer = host::ReadBrowseAnswer(text);
    Require(answer.didl.size() <= 5 * size);    // a broken byte becomes a character of three, a lone ampersand a reference of five
    Read(answer.didl);
    Read(text);
    return 0;
}
