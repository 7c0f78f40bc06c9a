#include "host/upnp/control/XmlReader.h"

#include <algorithm>
#include <iterator>

#include <libxml/parser.h>

#include "host/upnp/control/XmlMender.h"

namespace host {
namespace {

constexpr int kMostAttributes = 64;
constexpr size_t kPiece = 32 * 1024;    // of what is parsed at once; the parser holds a copy

std::string_view View(const xmlChar* text)
{
    return reinterpret_cast<const char*>(text);
}

}    // namespace

struct XmlReader::State {
    XmlVisitor& visitor;
    XmlMender mender;
    xmlParserCtxtPtr parser = nullptr;
    XmlVisitor::Attributes attributes;
    int depth = 0;
    size_t sinceMarkup = 0;
    bool enough = false;
    bool stopped = false;

    explicit State(XmlVisitor& visiting)
        : visitor(visiting)
    {
        xmlSAXHandler handler {};
        handler.initialized = XML_SAX2_MAGIC;
        handler.startElementNs = OnBegin;
        handler.endElementNs = OnEnd;
        handler.characters = OnText;
        handler.ignorableWhitespace = OnText;
        handler.internalSubset = OnDocumentType;
        handler.serror = [](void*, xmlErrorPtr) {};    // nothing is printed
        parser = xmlCreatePushParserCtxt(&handler, this, nullptr, 0, nullptr);
        if (parser != nullptr) {
            // UTF-8, whatever the document says of itself: the text has been in another one's.
            xmlCtxtUseOptions(parser, XML_PARSE_NONET | XML_PARSE_IGNORE_ENC);
        }
    }
    ~State() { xmlFreeParserCtxt(parser); }

    void Stop()
    {
        stopped = true;
        xmlStopParser(parser);
    }
    void Parse(std::string_view text)
    {
        while (!text.empty() && parser != nullptr && !stopped) {
            const std::string_view piece = text.substr(0, kPiece);
            text.remove_prefix(piece.size());
            const size_t markup = piece.rfind('<');
            sinceMarkup = markup == std::string_view::npos ? sinceMarkup + piece.size() : piece.size() - markup;
            if (sinceMarkup > kLongestMarkup) {
                Stop();
            } else if (xmlParseChunk(parser, piece.data(), static_cast<int>(piece.size()), 0) != XML_ERR_OK && parser->wellFormed == 0) {
                Stop();
            }
        }
    }

    static void OnBegin(void* self, const xmlChar* name, const xmlChar*, const xmlChar*, int, const xmlChar**, int attributeCount, int, const xmlChar** values)
    {
        State& state = *static_cast<State*>(self);
        if (++state.depth > kDeepestXml) {
            state.Stop();
            return;
        }
        // For each: name, prefix, namespace, begin and end of the value.
        state.attributes.clear();
        for (int at = 0; at < std::min(attributeCount, kMostAttributes); ++at, values += 5) {
            state.attributes.emplace_back(View(values[0]), std::string_view(reinterpret_cast<const char*>(values[3]), static_cast<size_t>(values[4] - values[3])));
        }
        state.visitor.OnBegin(View(name), state.depth, state.attributes);
    }
    static void OnEnd(void* self, const xmlChar* name, const xmlChar*, const xmlChar*)
    {
        State& state = *static_cast<State*>(self);
        if (!state.visitor.OnEnd(View(name), state.depth--)) {
            state.enough = true;
            state.Stop();
        }
    }
    static void OnText(void* self, const xmlChar* text, int length)
    {
        static_cast<State*>(self)->visitor.OnText({reinterpret_cast<const char*>(text), static_cast<size_t>(length)});
    }
    static void OnDocumentType(void* self, const xmlChar*, const xmlChar*, const xmlChar*) { static_cast<State*>(self)->Stop(); }
};

XmlReader::XmlReader(XmlVisitor& visitor)
    : m_pState(std::make_unique<State>(visitor))
{
}

XmlReader::~XmlReader() = default;

void XmlReader::Take(std::string_view piece)
{
    m_pState->Parse(m_pState->mender.Mend(piece, false));
}

bool XmlReader::Finish()
{
    State& state = *m_pState;
    state.Parse(state.mender.Mend({}, true));
    if (state.parser == nullptr || state.stopped) {
        return state.enough;
    }
    xmlParseChunk(state.parser, nullptr, 0, 1);
    return state.enough || (state.parser->wellFormed != 0 && !state.stopped);
}

bool ReadXml(std::string_view document, XmlVisitor& visitor)
{
    XmlReader reader(visitor);
    reader.Take(document);
    return reader.Finish();
}

std::string TidyText(std::string_view text, size_t most)
{
    if (text.size() > most) {
        while (most > 0 && (static_cast<unsigned char>(text[most]) & 0xC0) == 0x80) {
            --most;
        }
        text = text.substr(0, most);
    }
    const auto isBlank = [](unsigned char c) { return c <= ' ' || c == 0x7F; };
    if (std::find_if(text.begin(), text.end(), isBlank) == text.end()) {
        return std::string(text);
    }
    const auto first = std::find_if_not(text.begin(), text.end(), isBlank);
    const auto last = std::find_if_not(text.rbegin(), std::make_reverse_iterator(first), isBlank).base();
    std::string tidy(first, last);
    std::replace_if(tidy.begin(), tidy.end(), isBlank, ' ');
    return tidy;
}

}    // namespace host
