#include "host/upnp/control/BrowseReader.h"

#include <algorithm>
#include <charconv>

#include <glib.h>

#include "host/upnp/control/XmlReader.h"
#include "host/upnp/control/XmlReference.h"

namespace host {
namespace {

constexpr std::string_view kResult = "Result";
constexpr size_t kLongestHead = 16 * 1024;    // of the envelope, before the objects

template <typename Number> Number ReadNumber(std::string_view text)
{
    Number number = 0;
    const std::string tidy = TidyText(text, 20);
    std::from_chars(tidy.data(), tidy.data() + tidy.size(), number);
    return number;
}

// Appends the text with its references replaced; what is none stays. Answers how much of it was taken: not a
// reference at its end that may go on.
size_t AppendUnescaped(std::string_view text, std::string& out)
{
    size_t at = 0;
    while (at < text.size()) {
        const size_t next = std::min(text.find('&', at), text.size());
        out.append(text, at, next - at);
        at = next;
        if (at == text.size()) {
            break;
        }
        const std::string_view rest = text.substr(at);
        if (IsBegunXmlReference(rest)) {
            break;
        }
        const XmlReference reference = ReadXmlReference(rest);
        if (reference.length == 0) {
            out += '&';
            ++at;
        } else {
            char encoded[6];
            out.append(encoded, static_cast<size_t>(g_unichar_to_utf8(reference.character, encoded)));
            at += reference.length;
        }
    }
    return at;
}

}    // namespace

struct BrowseReader::State final : XmlVisitor {
    State(const AddressRule& rule, size_t most)
        : didl(rule, most)
    {
    }

    DidlReader didl;
    BrowseEnvelope envelope;
    XmlReader reader {*this};
    std::string text;
    std::string head;    // of the envelope, until the objects begin
    std::string waiting;    // of an escaped text: a reference that is not whole yet
    std::string joined;
    std::string unescaped;
    bool wanted = false;    // the text of the element that is open
    bool inResult = false;
    enum class Phase { kHead, kEscaped, kRest } phase = Phase::kHead;

    void OnBegin(std::string_view name, int /*depth*/, const Attributes&) override
    {
        text.clear();
        inResult = name == kResult && !envelope.read;
        wanted = name == "NumberReturned" || name == "TotalMatches" || name == "errorCode";
    }
    void OnText(std::string_view piece) override
    {
        if (inResult) {
            didl.Take(piece);
        } else if (wanted) {
            text += piece;
        }
    }
    bool OnEnd(std::string_view name, int /*depth*/) override
    {
        if (inResult) {
            envelope.read = true;
            inResult = false;
        } else if (!wanted) {
            return true;
        } else if (name == "NumberReturned") {
            envelope.numberReturned = ReadNumber<unsigned long>(text);
        } else if (name == "TotalMatches") {
            envelope.totalMatches = ReadNumber<unsigned long>(text);
        } else {
            envelope.errorCode = ReadNumber<int>(text);
        }
        wanted = false;
        return true;
    }

    // The parser would take apart a text of references piece by piece, at six times the cost: it is given all
    // but that. What is left to it when the text is not written in the usual way, it reads.
    void TakeHead(std::string_view piece)
    {
        head += piece;
        size_t end = std::string::npos;
        for (size_t at = head.find(kResult); at != std::string::npos && end == std::string::npos; at = head.find(kResult, at + 1)) {
            const size_t after = at + kResult.size();
            const bool opens = at > 0 && (head[at - 1] == '<' || head[at - 1] == ':') && after < head.size() && (head[after] == '>' || g_ascii_isspace(head[after]));
            end = opens ? head.find('>', after) : std::string::npos;
        }
        if (end < kLongestHead) {
            reader.Take(std::string_view(head).substr(0, end + 1));
            phase = inResult ? Phase::kEscaped : Phase::kRest;
            Take(std::string_view(head).substr(end + 1));
        } else if (head.size() > kLongestHead) {
            phase = Phase::kRest;
            reader.Take(head);
        }
    }
    void TakeEscaped(std::string_view piece)
    {
        const size_t end = std::min(piece.find('<'), piece.size());
        std::string_view escaped = piece.substr(0, end);
        if (!waiting.empty()) {
            joined = waiting.append(escaped);
            escaped = joined;
        }
        unescaped.clear();
        const size_t taken = AppendUnescaped(escaped, unescaped);
        didl.Take(unescaped);
        waiting = escaped.substr(taken);
        if (end < piece.size()) {
            didl.Take(waiting);
            phase = Phase::kRest;
            reader.Take(piece.substr(end));
        }
    }
    void Take(std::string_view piece)
    {
        switch (phase) {
        case Phase::kHead:
            TakeHead(piece);
            break;
        case Phase::kEscaped:
            TakeEscaped(piece);
            break;
        case Phase::kRest:
            reader.Take(piece);
            break;
        }
    }
};

BrowseReader::BrowseReader(const AddressRule& rule, size_t most)
    : m_pState(std::make_unique<State>(rule, most))
{
}

BrowseReader::~BrowseReader() = default;

void BrowseReader::Take(std::string_view piece)
{
    m_pState->Take(piece);
}

BrowseEnvelope BrowseReader::FinishEnvelope()
{
    if (m_pState->phase == State::Phase::kHead) {
        m_pState->reader.Take(m_pState->head);
    }
    m_pState->reader.Finish();
    return m_pState->envelope;
}

DidlObjects BrowseReader::FinishObjects()
{
    return m_pState->didl.Finish();
}

}    // namespace host
