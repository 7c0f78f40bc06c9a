#include "host/upnp/control/BrowseMessage.h"

#include <charconv>
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
            m_Answer.didl = std::move(m_Text);
            m_Answer.read = true;
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

BrowseAnswer ReadBrowseAnswer(std::string_view document)
{
    BrowseAnswer answer;
    Visitor visitor(answer);
    if (!WalkXml(document, visitor) && answer.didl.empty()) {
        answer.read = false;
    }
    return answer;
}

}    // namespace host
