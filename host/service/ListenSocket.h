// A TCP socket that accepts connections on the thread of a service.
//
// Errors:    Start answers a text. Out of file descriptors: goes on a second later.
// Threads:   Start, Port and destruction on the user-interface thread; Finish and the connections on the loop's.
// Ownership: owns its socket; the loop outlives it. A connection's reference goes to who is told of it.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include <gio/gio.h>

#include "host/base/ListenAddress.h"
#include "host/service/NetworkLoop.h"

namespace host {

class ListenSocket {
public:
    using OnAccepted = std::function<void(GSocket* connection)>;

    ListenSocket(NetworkLoop& loop, OnAccepted onAccepted);
    ~ListenSocket();
    ListenSocket(const ListenSocket&) = delete;
    ListenSocket& operator=(const ListenSocket&) = delete;

    std::string Start(const ListenAddress& address);    // empty: it listens
    bool IsOpen() const { return m_pSocket != nullptr; }
    uint16_t Port() const { return m_nPort; }
    void Finish();    // takes no more

private:
    void Watch();
    gboolean OnReady();
    void Pause();

    NetworkLoop& m_Loop;
    const OnAccepted m_OnAccepted;
    uint16_t m_nPort = 0;
    GSocket* m_pSocket = nullptr;
    GSource* m_pSource = nullptr;    // the loop's own: what waits for connections, or for the end of a pause
};

}    // namespace host
