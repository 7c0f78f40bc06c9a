#include "host/upnp/control/ServerDirectory.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>

#include "host/upnp/control/DeviceDescription.h"

namespace host {
namespace {

constexpr const char* kMediaServer = "urn:schemas-upnp-org:device:MediaServer:1";    // or a later version
constexpr size_t kMostDescription = 256 * 1024;
constexpr unsigned kDescriptionSeconds = 5;
constexpr unsigned kWatchSeconds = 5;
constexpr unsigned short kAnswerWithin = 1;    // seconds over which the servers spread their answers (MX)

bool HasOtherNetworks()
{
    ifaddrs* list = nullptr;
    if (getifaddrs(&list) != 0) {
        return false;
    }
    bool found = false;
    for (const ifaddrs* at = list; at != nullptr; at = at->ifa_next) {
        found = found || (at->ifa_addr != nullptr && at->ifa_addr->sa_family == AF_INET && (at->ifa_flags & IFF_UP) != 0 && (at->ifa_flags & IFF_LOOPBACK) == 0);
    }
    freeifaddrs(list);
    return found;
}

AddressRule RuleOf(GUPnPContext* context)
{
    GInetAddressMask* const mask = gssdp_client_get_address_mask(GSSDP_CLIENT(context));
    if (mask == nullptr || g_inet_address_mask_get_family(mask) != G_SOCKET_FAMILY_IPV4) {
        return {};
    }
    const std::unique_ptr<char, decltype(&g_free)> text(g_inet_address_to_string(g_inet_address_mask_get_address(mask)), g_free);
    return {text.get(), g_inet_address_mask_get_length(mask)};
}

bool IsLoopback(GUPnPContext* context)
{
    GInetAddress* address = gssdp_client_get_address(GSSDP_CLIENT(context));
    const bool is = address != nullptr && g_inet_address_get_is_loopback(address) != FALSE;
    g_clear_object(&address);
    return is;
}

bool IsWanted(GUPnPContext* context)
{
    const char* const only = std::getenv("NUVID_UPNP_INTERFACE");
    if (only != nullptr) {
        return g_strcmp0(gssdp_client_get_interface(GSSDP_CLIENT(context)), only) == 0;
    }
    return !IsLoopback(context) || !HasOtherNetworks();
}

// "uuid:UUID::urn:..."
std::string UuidOf(const char* usn)
{
    std::string uuid(usn);
    uuid.erase(std::min(uuid.find("::"), uuid.size()));
    return g_ascii_strncasecmp(uuid.c_str(), "uuid:", 5) == 0 ? uuid.substr(5) : uuid;
}

}    // namespace

ServerDirectory::ServerDirectory(SoupSession* session, std::function<void(ServerReport)> onChange)
    : m_pSession(session)
    , m_OnChange(std::move(onChange))
    , m_pManager(gupnp_context_manager_create_full(GSSDP_UDA_VERSION_1_0, G_SOCKET_FAMILY_IPV4, 0))
{
    using Callback = void (*)(GUPnPContextManager*, GUPnPContext*, gpointer);
    const Callback onNetwork = [](GUPnPContextManager*, GUPnPContext* context, gpointer self) { static_cast<ServerDirectory*>(self)->OnNetwork(context); };
    const Callback onGone = [](GUPnPContextManager*, GUPnPContext* context, gpointer self) { static_cast<ServerDirectory*>(self)->OnNetworkGone(context); };
    g_signal_connect(m_pManager.get(), "context-available", G_CALLBACK(onNetwork), this);
    g_signal_connect(m_pManager.get(), "context-unavailable", G_CALLBACK(onGone), this);
}

ServerDirectory::~ServerDirectory()
{
    SetWatched(false);
    g_signal_handlers_disconnect_by_data(m_pManager.get(), this);
    for (const Network& network : m_Networks) {
        g_signal_handlers_disconnect_by_data(network.browser.get(), this);
    }
}

std::string ServerDirectory::PlainUuid(const std::string& uuid)
{
    const std::unique_ptr<char, decltype(&g_free)> lower(g_ascii_strdown(uuid.c_str(), -1), g_free);
    const std::string plain(lower.get());
    return plain.substr(0, 5) == "uuid:" ? plain.substr(5) : plain;
}

void ServerDirectory::OnNetwork(GUPnPContext* context)
{
    if (!IsWanted(context)) {
        return;
    }
    Network network {context, RuleOf(context), Owned<GSSDPResourceBrowser>(gssdp_resource_browser_new(GSSDP_CLIENT(context), kMediaServer))};
    using Available = void (*)(GSSDPResourceBrowser*, const char*, GList*, gpointer);
    using Unavailable = void (*)(GSSDPResourceBrowser*, const char*, gpointer);
    const Available onServer = [](GSSDPResourceBrowser* browser, const char* usn, GList* locations, gpointer self) {
        static_cast<ServerDirectory*>(self)->OnServer(browser, usn, locations);
    };
    const Unavailable onGone = [](GSSDPResourceBrowser* browser, const char* usn, gpointer self) { static_cast<ServerDirectory*>(self)->OnServerGone(browser, usn); };
    GSSDPResourceBrowser* const browser = network.browser.get();
    g_signal_connect(browser, "resource-available", G_CALLBACK(onServer), this);
    g_signal_connect(browser, "resource-unavailable", G_CALLBACK(onGone), this);
    gssdp_resource_browser_set_mx(browser, kAnswerWithin);
    m_Networks.push_back(std::move(network));
    gssdp_resource_browser_set_active(browser, TRUE);
}

void ServerDirectory::OnNetworkGone(GUPnPContext* context)
{
    for (auto at = m_Servers.begin(); at != m_Servers.end();) {
        if (at->second.network == context) {
            SetPresent(at->second, false);
            at = m_Servers.erase(at);
        } else {
            ++at;
        }
    }
    for (const Network& network : m_Networks) {
        if (network.context == context) {
            g_signal_handlers_disconnect_by_data(network.browser.get(), this);
        }
    }
    std::erase_if(m_Networks, [context](const Network& network) { return network.context == context; });
}

const ServerDirectory::Network* ServerDirectory::NetworkOf(GSSDPResourceBrowser* browser) const
{
    const auto found = std::find_if(m_Networks.begin(), m_Networks.end(), [browser](const Network& network) { return network.browser.get() == browser; });
    return found == m_Networks.end() ? nullptr : &*found;
}

void ServerDirectory::OnServer(GSSDPResourceBrowser* browser, const char* usn, GList* locations)
{
    const Network* const network = NetworkOf(browser);
    const std::string uuid = UuidOf(usn);
    const std::string key = PlainUuid(uuid);
    if (network == nullptr || key.empty() || m_Servers.size() >= kMostServers || m_Servers.count(key) != 0) {
        return;
    }
    for (const GList* at = locations; at != nullptr; at = at->next) {
        const char* const location = static_cast<const char*>(at->data);
        if (network->rule.AllowsUrl(location)) {
            Server& server = m_Servers[key];
            server.network = network->context;
            server.uuid = uuid;
            server.location = location;
            server.rule = network->rule;
            Fetch(server);
            return;
        }
    }
}

void ServerDirectory::OnServerGone(GSSDPResourceBrowser* browser, const char* usn)
{
    const Network* const network = NetworkOf(browser);
    const auto found = m_Servers.find(PlainUuid(UuidOf(usn)));
    if (network != nullptr && found != m_Servers.end() && found->second.network == network->context) {
        SetPresent(found->second, false);
        m_Servers.erase(found);
    }
}

void ServerDirectory::Fetch(Server& server)
{
    const std::string key = PlainUuid(server.uuid);
    server.fetching = std::make_unique<Exchange>(m_pSession, Exchange::Question {server.location, {}, {}, kMostDescription, kDescriptionSeconds, {}},
        [this, key](const Exchange::Answer& answer) { TakeDescription(key, answer); });
}

void ServerDirectory::TakeDescription(const std::string& key, const Exchange::Answer& answer)
{
    const auto found = m_Servers.find(key);
    if (found == m_Servers.end()) {
        return;
    }
    Server& server = found->second;
    const std::unique_ptr<Exchange> over = std::move(server.fetching);    // on the stack now
    std::optional<DeviceDescription> description;
    if (answer.outcome == Exchange::Outcome::kAnswered && answer.status == SOUP_STATUS_OK) {
        description = ReadDeviceDescription(answer.body, server.uuid, server.location);
    }
    if (!description || !server.rule.AllowsUrl(description->controlUrl)) {
        SetPresent(server, false);
        return;
    }
    server.target = {description->serviceType, description->controlUrl, server.rule};
    server.name = description->name;
    SetPresent(server, true);
}

void ServerDirectory::SetPresent(Server& server, bool present)
{
    if (server.present != present) {
        server.present = present;
        m_OnChange({server.name, server.uuid, present});
    }
}

// A server that died says nothing, and one that is back says nothing new.
void ServerDirectory::Verify()
{
    for (auto& [key, server] : m_Servers) {
        if (server.fetching == nullptr) {
            Fetch(server);
        }
    }
}

void ServerDirectory::SetWatched(bool watched)
{
    if (watched == (m_pWatching != nullptr)) {
        return;
    }
    if (!watched) {
        g_source_destroy(m_pWatching);
        g_source_unref(std::exchange(m_pWatching, nullptr));
        return;
    }
    m_pWatching = g_timeout_source_new_seconds(kWatchSeconds);
    g_source_set_callback(
        m_pWatching,
        [](gpointer self) {
            static_cast<ServerDirectory*>(self)->Verify();
            return static_cast<gboolean>(G_SOURCE_CONTINUE);
        },
        this, nullptr);
    g_source_attach(m_pWatching, g_main_context_get_thread_default());
}

void ServerDirectory::Search()
{
    Verify();
    for (const Network& network : m_Networks) {
        gssdp_resource_browser_rescan(network.browser.get());
    }
}

const BrowseTarget* ServerDirectory::Find(const std::string& uuid) const
{
    const auto found = m_Servers.find(PlainUuid(uuid));
    return found != m_Servers.end() && found->second.present ? &found->second.target : nullptr;
}

}    // namespace host
