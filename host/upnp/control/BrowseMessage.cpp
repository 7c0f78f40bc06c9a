#include "host/upnp/control/BrowseMessage.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <memory>

#include <glib.h>

#include "host/upnp/control/XmlWalk.h"

namespace host {
namespace {

std::string Escaped(const std::string& text)
{
    const std::unique_ptr<char, decltype(&g_free)> escaped(g_markup_escape_text(text.data(), static_cast<gssize>(text.size())), g_free);
    return escaped.get();
}

template <typename Number> Number ReadNumber(std::string_view text)
{
    Number number = 0;
    const std::string tidy = TidyText(text, 20);
    std::from_chars(tidy.data(), tidy.data() + tidy.size(), number);
    return number;
}

// Replaces the references of XML (1.0, 4.1 and 4.6) where they stand: a character is never longer than its
// reference. What is none stays.
void Unescape(std::string& text)
{
    constexpr size_t kLongest = 12;
    struct Named {
        std::string_view name;
        char character;
    };
    static constexpr Named kNamed[] = {{"lt", '<'}, {"gt", '>'}, {"amp", '&'}, {"quot", '"'}, {"apos", '\''}};

    size_t out = text.find('&');
    for (size_t at = out; at != std::string::npos;) {
        const std::string_view rest = std::string_view(text).substr(at + 1, kLongest);
        const std::string_view name = rest.substr(0, std::min(rest.find(';'), rest.size()));
        const auto* const known = name.size() == rest.size() ? std::end(kNamed) : std::find_if(std::begin(kNamed), std::end(kNamed), [name](const Named& named) { return named.name == name; });
        uint32_t code = known == std::end(kNamed) ? 0 : static_cast<uint32_t>(known->character);
        if (known == std::end(kNamed) && name.size() > 1 && name.size() < rest.size() && name[0] == '#') {
            const bool hex = name[1] == 'x';
            const auto digits = name.substr(hex ? 2 : 1);
            const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), code, hex ? 16 : 10);
            code = error == std::errc() && end == digits.data() + digits.size() && g_unichar_validate(code) != FALSE ? code : 0;
        }
        if (code == 0) {
            text[out++] = text[at++];
        } else {
            at += name.size() + 2;
            out += static_cast<size_t>(g_unichar_to_utf8(code, text.data() + out));
        }
        const size_t next = std::min(text.find('&', at), text.size());
        std::memmove(text.data() + out, text.data() + at, next - at);
        out += next - at;
        if (next == text.size()) {
            text.resize(out);
            return;
        }
        at = next;
    }
}

// Leaves the text of the element Result in `document` and the rest in `envelope`. False, and nothing is changed:
// it is not written in the usual way, as one text without a prefix.
bool CutResult(std::string& document, std::string& envelope)
{
    const size_t begin = document.find("<Result");
    const size_t open = begin == std::string::npos ? begin : document.find('>', begin);
    if (open == std::string::npos || document[open - 1] == '/') {
        return false;
    }
    const size_t end = document.find('<', open);
    if (end == std::string::npos || document.compare(end, 8, "</Result") != 0) {
        return false;
    }
    envelope = document.substr(0, open + 1) + document.substr(end);
    document.resize(end);
    document.erase(0, open + 1);
    Unescape(document);
    return true;
}

class Visitor final : public XmlVisitor {
public:
    explicit Visitor(BrowseAnswer& answer)
        : m_Answer(answer)
    {
    }
    void OnBegin(std::string_view name, int /*depth*/, const Attributes&) override
    {
        m_Text.clear();
        m_bWanted = name == "Result" || name == "NumberReturned" || name == "TotalMatches" || name == "errorCode";
    }
    void OnText(std::string_view text) override
    {
        if (m_bWanted) {
            m_Text += text;
        }
    }
    bool OnEnd(std::string_view name, int /*depth*/) override
    {
        if (!m_bWanted) {
            return true;
        }
        m_bWanted = false;
        if (name == "Result") {
            if (!m_Answer.read) {
                m_Answer.didl = std::move(m_Text);
                m_Answer.read = true;
            }
        } else if (name == "NumberReturned") {
            m_Answer.numberReturned = ReadNumber<unsigned long>(m_Text);
        } else if (name == "TotalMatches") {
            m_Answer.totalMatches = ReadNumber<unsigned long>(m_Text);
        } else {
            m_Answer.errorCode = ReadNumber<int>(m_Text);
        }
        m_Text.clear();
        return true;
    }

private:
    BrowseAnswer& m_Answer;
    std::string m_Text;
    bool m_bWanted = false;
};

}    // namespace

std::string BrowseAction(const BrowseQuestion& question)
{
    return "\"" + question.serviceType + "#Browse\"";
}

std::string BrowseBody(const BrowseQuestion& question)
{
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>"
           "<s:Envelope xmlns:s=\"http://schemas.xmlsoap.org/soap/envelope/\" s:encodingStyle=\"http://schemas.xmlsoap.org/soap/encoding/\"><s:Body>"
           "<u:Browse xmlns:u=\"" +
           Escaped(question.serviceType) + "\"><ObjectID>" + Escaped(question.objectId) + "</ObjectID><BrowseFlag>BrowseDirectChildren</BrowseFlag><Filter>" + Escaped(question.filter) +
           "</Filter><StartingIndex>" + std::to_string(question.start) + "</StartingIndex><RequestedCount>" + std::to_string(question.count) + "</RequestedCount><SortCriteria>" +
           Escaped(question.sortCriteria) + "</SortCriteria></u:Browse></s:Body></s:Envelope>";
}

BrowseAnswer ReadBrowseAnswer(std::string document)
{
    BrowseAnswer answer;
    std::string envelope;
    if (CutResult(document, envelope)) {
        answer.read = true;
        answer.didl = std::move(document);
    } else {
        envelope = std::move(document);
    }
    Visitor visitor(answer);
    if (!WalkXml(envelope, visitor) && answer.didl.empty()) {
        answer.read = false;
    }
    return answer;
}

}    // namespace host
