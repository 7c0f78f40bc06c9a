// What a media server answers: a SOAP envelope with DIDL-Lite in it, or DIDL-Lite alone.
#include <cstdint>
#include <string_view>

#include "host/upnp/control/BrowseReader.h"
#include "tests/fuzz/Require.h"

namespace {

constexpr size_t kMost = 50;
const host::AddressRule kRule("192.168.1.20", 24);

void RequireTidy(const CascadeString& text, size_t most)
{
    Require(text.GetLength() <= most);
    for (const unsigned char c : text.Str()) {
        Require(c >= ' ' && c != 0x7F);
    }
}

void RequireSound(const host::DidlObjects& read)
{
    Require(read.objects.size() <= read.count && read.count <= kMost);
    for (const auto& object : read.objects) {
        Require(!object->id.IsEmpty() && object->id.GetLength() <= host::kLongestObjectId);
        RequireTidy(object->title, host::kLongestTitle);
        Require(object->resources.GetSize() <= host::kMostResources);
        for (const auto& resource : object->resources) {
            RequireTidy(resource.url, host::kLongestResourceUrl);
            RequireTidy(resource.protocolInfo, 2 * host::kLongestTitle);
            Require(resource.url.IsEmpty() || kRule.AllowsUrl(resource.url.Str()));
        }
    }
}

template <typename Reader> void TakeInPieces(Reader& reader, std::string_view text, size_t piece)
{
    for (size_t at = 0; at < text.size(); at += piece) {
        reader.Take(text.substr(at, piece));
    }
}

struct Read {
    host::BrowseEnvelope envelope;
    host::DidlObjects didl;
};

Read ReadAnswer(std::string_view text, size_t piece)
{
    host::BrowseReader reader(kRule, kMost);
    TakeInPieces(reader, text, piece);
    const host::BrowseEnvelope envelope = reader.FinishEnvelope();
    return {envelope, reader.FinishObjects()};
}

}    // namespace

// The first byte says how long the pieces are.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0) {
        return 0;
    }
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const size_t piece = 1 + data[0];
    host::DidlReader alone(kRule, kMost);
    TakeInPieces(alone, text, piece);
    RequireSound(alone.Finish());

    const Read broken = ReadAnswer(text, piece);
    const Read whole = ReadAnswer(text, size);
    RequireSound(broken.didl);
    RequireSound(whole.didl);
    // Where the network breaks a good answer does not matter.
    Require(broken.envelope.read == whole.envelope.read);
    Require(!whole.envelope.read || broken.didl.whole == whole.didl.whole);
    Require(!whole.envelope.read || !whole.didl.whole || broken.didl.count == whole.didl.count);
    return 0;
}
