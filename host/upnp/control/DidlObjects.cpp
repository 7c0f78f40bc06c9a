#include "host/upnp/control/DidlObjects.h"

#include <algorithm>
#include <charconv>

#include "host/upnp/control/XmlReader.h"

namespace host {
namespace {

constexpr size_t kLongestWord = 1024;

constexpr std::string_view kMpeg = "video/mpeg";
// What servers call MPEG streams otherwise.
constexpr std::string_view kMpegTypes[] = {"video/mp2t", "video/mp2p", "video/mpeg2", "video/x-mpeg", "video/x-mpegts", "video/x-mpeg2", "video/vnd.dlna.mpeg-tts", "video/x-ms-vob", "video/dvd"};
constexpr std::string_view kUnknownType = "application/octet-stream";
constexpr std::string_view kMpegEndings[] = {".ts", ".m2ts", ".mts", ".m2t", ".tp", ".trp", ".mpg", ".mpeg", ".m2p", ".vob"};

std::string Lower(std::string_view text)
{
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : static_cast<char>(c); });
    return lower;
}

bool EndsLikeMpeg(std::string_view name)
{
    const std::string lower = Lower(name);
    return std::any_of(std::begin(kMpegEndings), std::end(kMpegEndings), [&](std::string_view ending) { return std::string_view(lower).ends_with(ending); });
}

// "http-get:*:TYPE:more": the third word, by its place and length; npos: there is none.
std::pair<size_t, size_t> TypeOf(const std::string& protocolInfo)
{
    const size_t first = protocolInfo.find(':');
    const size_t second = first == std::string::npos ? first : protocolInfo.find(':', first + 1);
    if (second == std::string::npos) {
        return {std::string::npos, 0};
    }
    return {second + 1, std::min(protocolInfo.find(':', second + 1), protocolInfo.size()) - second - 1};
}

void CorrectType(CascadeUPnP::AVResource& resource, std::string_view title)
{
    const std::string& protocolInfo = resource.protocolInfo.Str();
    const auto [at, length] = TypeOf(protocolInfo);
    if (at == std::string::npos || std::string_view(protocolInfo).substr(at, length) == kMpeg) {
        return;
    }
    const std::string_view url = resource.url.Str();
    std::string type = Lower(std::string_view(protocolInfo).substr(at, length));
    type = type.substr(0, type.find(';'));
    const bool isMpeg = std::find(std::begin(kMpegTypes), std::end(kMpegTypes), type) != std::end(kMpegTypes);
    if (isMpeg || (type == kUnknownType && (EndsLikeMpeg(title) || EndsLikeMpeg(url.substr(0, url.find_first_of("?#")))))) {
        resource.protocolInfo = std::string(protocolInfo).replace(at, length, kMpeg);
    }
}

class Visitor final : public XmlVisitor {
public:
    Visitor(const AddressRule& rule, size_t most, DidlObjects& out)
        : m_Rule(rule)
        , m_nMost(most)
        , m_Out(out)
    {
    }

    void OnBegin(std::string_view name, int depth, const Attributes& attributes) override
    {
        m_Text.clear();
        if (depth == 2 && (name == "item" || name == "container")) {
            m_pObject = std::make_unique<CascadeUPnP::AVObject>();
            m_pObject->isItem = name == "item";
            for (const auto& [key, value] : attributes) {
                // A cut identifier would name another object.
                if (key == "id" && value.size() <= kLongestObjectId) {
                    m_pObject->id = value;
                } else if (key == "parentID" && value.size() <= kLongestObjectId) {
                    m_pObject->parentId = value;
                }
            }
        } else if (depth == 3 && name == "res" && m_pObject) {
            m_Resource = CascadeUPnP::AVResource();
            for (const auto& [key, value] : attributes) {
                if (key == "protocolInfo") {
                    m_Resource.protocolInfo = TidyText(value, kLongestWord);
                } else if (key == "duration") {
                    m_Resource.duration = TidyText(value, kLongestWord);
                } else if (key == "size") {
                    std::from_chars(value.data(), value.data() + value.size(), m_Resource.size);
                }
            }
        }
        m_bWanted = m_pObject && depth == 3 && (name == "title" || name == "class" || name == "res");
    }
    void OnText(std::string_view text) override
    {
        if (m_bWanted && m_Text.size() + text.size() <= kLongestResourceUrl) {
            m_Text += text;
        }
    }
    bool OnEnd(std::string_view name, int depth) override
    {
        m_bWanted = m_bWanted && depth != 3;
        if (!m_pObject) {
            return true;
        }
        if (depth == 3) {
            TakeProperty(name);
        } else if (depth == 2) {
            TakeObject();
            return m_Out.count < m_nMost;
        }
        return true;
    }

private:
    void TakeProperty(std::string_view name)
    {
        if (name == "title") {
            m_pObject->title = TidyText(m_Text, kLongestTitle);
        } else if (name == "class") {
            m_pObject->upnpClass = TidyText(m_Text, kLongestWord);
        } else if (name == "res" && m_pObject->resources.GetSize() < kMostResources) {
            std::string url = TidyText(m_Text, kLongestResourceUrl);
            m_Resource.url = m_Rule.AllowsUrl(url) ? std::move(url) : std::string();
            m_pObject->resources.Append(std::move(m_Resource));
        }
        m_Text.clear();
    }
    void TakeObject()
    {
        ++m_Out.count;
        // The title may follow the resources.
        for (CascadeUPnP::AVResource& resource : m_pObject->resources) {
            CorrectType(resource, m_pObject->title.Str());
        }
        if (!m_pObject->id.IsEmpty()) {
            if (m_pObject->title.IsEmpty()) {
                m_pObject->title = TidyText(m_pObject->id.Str(), kLongestTitle);
            }
            m_Out.objects.push_back(std::move(m_pObject));
        }
        m_pObject.reset();
    }

    const AddressRule m_Rule;
    const size_t m_nMost;
    DidlObjects& m_Out;
    std::unique_ptr<CascadeUPnP::AVObject> m_pObject;    // open
    CascadeUPnP::AVResource m_Resource;
    std::string m_Text;
    bool m_bWanted = false;    // the text of the element that is open
};

}    // namespace

struct DidlReader::State {
    State(const AddressRule& rule, size_t most)
        : visitor(rule, most, out)
    {
    }
    DidlObjects out;
    Visitor visitor;
    XmlReader reader {visitor};
};

DidlReader::DidlReader(const AddressRule& rule, size_t most)
    : m_pState(std::make_unique<State>(rule, most))
{
}

DidlReader::~DidlReader() = default;

void DidlReader::Take(std::string_view piece)
{
    m_pState->reader.Take(piece);
}

DidlObjects DidlReader::Finish()
{
    m_pState->out.whole = m_pState->reader.Finish();
    return std::move(m_pState->out);
}

}    // namespace host
