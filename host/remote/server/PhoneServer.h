// The phone remote's web server: the page's files, pairing, and the WebSocket.
//
// Errors:    requests of other pages, of names that are not ours, or of devices that are not paired are refused.
// Threads:   the remote thread.
// Ownership: owns the server and all connections. The player outlives it.
#pragma once

#include <string>

#include <libsoup/soup.h>

#include "host/remote/RemoteServer.h"
#include "host/remote/server/Connections.h"
#include "host/remote/server/Phones.h"
#include "host/remote/server/RateLimit.h"

namespace host {

class PhoneServer : public RemoteServer {
public:
    explicit PhoneServer(RemotePlayer& player);
    ~PhoneServer() override;
    PhoneServer(const PhoneServer&) = delete;
    PhoneServer& operator=(const PhoneServer&) = delete;

    void Serve(GSocket* socket) override;

private:
    using Handler = void (PhoneServer::*)(SoupServerMessage* message);
    struct Route {
        const char* method;
        const char* path;
        Handler handler;
    };
    static const Route kRoutes[];

    void OnHeaders(SoupServerMessage* message, const char* path);
    void OnRequest(SoupServerMessage* message, const char* path);
    void OnSocket(SoupServerMessage* message, SoupWebsocketConnection* socket);
    void CountBody(SoupServerMessage* message);
    bool MayDrive(SoupServerMessage* message);

    void Session(SoupServerMessage* message);
    void ShowCode(SoupServerMessage* message);
    void Pair(SoupServerMessage* message);
    void Leave(SoupServerMessage* message);

    RemotePlayer& m_Player;
    SoupServer* m_pSoup;
    Connections m_Connections;
    Phones m_Phones;
    RateLimit m_PairRate;
};

}    // namespace host
