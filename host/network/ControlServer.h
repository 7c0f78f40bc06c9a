// External control over TCP: accepts clients, hands their commands out one by one, sends the replies.
//
// Units:     at most kMostClients at once; further ones are told so and closed.
// Errors:    Start answers a text. What a client does wrong is answered to it or ends its connection.
// Threads:   Start, Stop and Reply on the user-interface thread; the rest on the network thread, which never
//            waits for the other.
// Ownership: the loop outlives it. Stop before destruction.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "host/base/ListenAddress.h"
#include "host/network/ControlClient.h"
#include "host/service/ListenSocket.h"
#include "host/service/NetworkLoop.h"

namespace host {

class ControlServer {
public:
    static constexpr size_t kMostClients = 256;
    // Called on the network thread; Reply is called for that client some time later. `admission` is what that client
    // was admitted with, 0 before.
    using OnCommand = std::function<void(uint64_t client, unsigned admission, std::string command)>;

    ControlServer(NetworkLoop& loop, OnCommand onCommand);
    ControlServer(const ControlServer&) = delete;
    ControlServer& operator=(const ControlServer&) = delete;

    // Empty: it listens. Otherwise why not.
    std::string Start(const ListenAddress& address) { return m_Listen.Start(address); }
    uint16_t Port() const { return m_Listen.Port(); }
    void Reply(uint64_t client, std::string reply);    // of no effect when the client has gone
    void Admit(uint64_t client, unsigned admission);    // before its Reply
    // Takes no more commands; returns when every reply given so far is sent, at the latest after `patience`.
    void Stop(std::chrono::milliseconds patience);

private:
    void Welcome(GSocket* socket);
    void Forget(uint64_t client);
    void FinishAll();
    void ReportWhenEmpty();
    void Clear();

    NetworkLoop& m_Loop;
    const OnCommand m_OnCommand;
    ListenSocket m_Listen;

    // The network thread's own.
    uint64_t m_nLastClient = 0;
    struct Guest {
        std::unique_ptr<ControlClient> client;
        unsigned admission = 0;
    };
    std::map<uint64_t, Guest> m_Clients;
    bool m_bFinishing = false;

    std::mutex m_Mutex;
    std::condition_variable m_Empty;
    bool m_bEmpty = false;    // guarded by m_Mutex: finishing, and no client is left
};

}    // namespace host
