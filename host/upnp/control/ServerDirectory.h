// The media servers that the networks of this box have: listens to their announcements, fetches their
// descriptions, keeps where they can be asked.
//
// Rules:     A network is an interface with an IPv4 address; loopback counts when there is no other. With
//            NUVID_UPNP_INTERFACE in the environment that interface alone counts. A server counts when its announcement, its description and its
//            control URL all keep to AddressRule. Announcements are not signed: whoever is in the network can
//            take a server's place, but not send the player anywhere else.
// Units:     limits below.
// Errors:    none: what is not trusted, or does not answer, is not there.
// Threads:   the control point's thread, whose main context is the thread's default.
// Ownership: destruction leaves the networks; nothing is reported then.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <libgupnp/gupnp.h>

#include "host/upnp/ControlPoint.h"
#include "host/upnp/control/BrowseJob.h"

namespace host {

class ServerDirectory {
public:
    static constexpr size_t kMostServers = 128;    // announced at one time; further ones are not heard

    ServerDirectory(SoupSession* session, std::function<void(ServerReport)> onChange);
    ~ServerDirectory();
    ServerDirectory(const ServerDirectory&) = delete;
    ServerDirectory& operator=(const ServerDirectory&) = delete;

    void Search();
    void SetWatched(bool watched);    // asks the known servers every few seconds whether they are there
    // Where the server is asked; null: it is not there (now). The UUID with or without "uuid:".
    const BrowseTarget* Find(const std::string& uuid) const;
    static std::string PlainUuid(const std::string& uuid);    // without "uuid:", in lower case

private:
    struct Network {
        GUPnPContext* context;    // also which one it is
        AddressRule rule;
        Owned<GSSDPResourceBrowser> browser;
    };
    struct Server {
        GUPnPContext* network;
        std::string uuid;    // as announced, without "uuid:"
        std::string location;
        AddressRule rule;
        bool present = false;
        std::string name;
        BrowseTarget target;
        std::unique_ptr<Exchange> fetching;
    };

    void OnNetwork(GUPnPContext* context);
    void OnNetworkGone(GUPnPContext* context);
    void OnServer(GSSDPResourceBrowser* browser, const char* usn, GList* locations);
    void OnServerGone(GSSDPResourceBrowser* browser, const char* usn);
    void Fetch(Server& server);
    void TakeDescription(const std::string& key, const Exchange::Answer& answer);
    void SetPresent(Server& server, bool present);
    void Verify();
    const Network* NetworkOf(GSSDPResourceBrowser* browser) const;

    SoupSession* const m_pSession;
    const std::function<void(ServerReport)> m_OnChange;
    std::map<std::string, Server> m_Servers;    // by plain UUID
    std::vector<Network> m_Networks;
    Owned<GUPnPContextManager> m_pManager;
    GSource* m_pWatching = nullptr;
};

}    // namespace host
