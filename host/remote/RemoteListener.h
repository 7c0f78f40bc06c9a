// Waits for phones: accepts connections, and has the server module loaded for the first one.
//
// Errors:    Start answers a text. Out of file descriptors: goes on a second later.
// Threads:   Start and Stop on the user-interface thread; the rest on the remote thread.
// Ownership: owns its socket; the loop outlives it.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include <gio/gio.h>

#include "host/base/ListenAddress.h"
#include "host/network/NetworkLoop.h"

namespace host {

class RemoteListener {
public:
    RemoteListener(NetworkLoop& loop, std::function<void(GSocketConnection*)> onConnection);
    ~RemoteListener();
    RemoteListener(const RemoteListener&) = delete;
    RemoteListener& operator=(const RemoteListener&) = delete;

    std::string Start(const ListenAddress& address);    // empty: it listens
    uint16_t Port() const { return m_nPort; }
    void Finish();    // the remote thread: takes no more

private:
    void Watch();
    gboolean OnReady();
    void Pause();

    NetworkLoop& m_Loop;
    const std::function<void(GSocketConnection*)> m_OnConnection;
    uint16_t m_nPort = 0;
    GSocket* m_pSocket = nullptr;
    GSource* m_pSource = nullptr;    // the remote thread's
};

}    // namespace host
