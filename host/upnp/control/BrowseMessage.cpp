#include "host/upnp/control/BrowseMessage.h"

#include <memory>

#include <glib.h>

namespace host {
namespace {

std::string Escaped(const std::string& text)
{
    const std::unique_ptr<char, decltype(&g_free)> escaped(g_markup_escape_text(text.data(), static_cast<gssize>(text.size())), g_free);
    return escaped.get();
}

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

}    // namespace host
