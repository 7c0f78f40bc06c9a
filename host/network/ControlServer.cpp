#include "host/network/ControlServer.h"

#include <chrono>

namespace host {

ControlServer::ControlServer(NetworkLoop& loop, OnCommand onCommand)
    : m_Loop(loop)
    , m_OnCommand(std::move(onCommand))
    , m_Listen(loop, [this](GSocket* socket) { Welcome(socket); })
{
}

void ControlServer::Welcome(GSocket* socket)
{
    if (m_Clients.size() >= kMostClients) {
        constexpr std::string_view kFull = "Too many clients\n";
        g_socket_set_blocking(socket, FALSE);
        g_socket_send(socket, kFull.data(), kFull.size(), nullptr, nullptr);
        g_socket_close(socket, nullptr);
        g_object_unref(socket);
        return;
    }
    const uint64_t id = ++m_nLastClient;
    ControlClient::Events events {
        [this, id](std::string command) { m_OnCommand(id, m_Clients[id].admission, std::move(command)); },
        [this, id] { m_Loop.Post([this, id] { Forget(id); }); },
    };
    m_Clients[id].client = std::make_unique<ControlClient>(socket, m_Loop.Context(), std::move(events));
}

void ControlServer::Forget(uint64_t client)
{
    m_Clients.erase(client);
    ReportWhenEmpty();
}

void ControlServer::Reply(uint64_t client, std::string reply)
{
    m_Loop.Post([this, client, reply = std::move(reply)] {
        const auto found = m_Clients.find(client);
        if (found != m_Clients.end()) {
            found->second.client->Reply(reply);
        }
    });
}

void ControlServer::Admit(uint64_t client, unsigned admission)
{
    m_Loop.Post([this, client, admission] {
        const auto found = m_Clients.find(client);
        if (found != m_Clients.end()) {
            found->second.admission = admission;
        }
    });
}

void ControlServer::Stop(std::chrono::milliseconds patience)
{
    if (!m_Listen.IsOpen()) {
        return;
    }
    m_Loop.Post([this] { FinishAll(); });
    {
        std::unique_lock lock(m_Mutex);
        m_Empty.wait_for(lock, patience, [this] { return m_bEmpty; });
    }
    m_Loop.Post([this] { Clear(); });
}

void ControlServer::FinishAll()
{
    m_bFinishing = true;
    m_Listen.Finish();
    for (const auto& [id, guest] : m_Clients) {
        guest.client->Dismiss();    // every reply given so far was posted before this
    }
    ReportWhenEmpty();
}

void ControlServer::ReportWhenEmpty()
{
    if (m_bFinishing && m_Clients.empty()) {
        const std::lock_guard lock(m_Mutex);
        m_bEmpty = true;
        m_Empty.notify_all();
    }
}

void ControlServer::Clear()
{
    m_Clients.clear();
}

}    // namespace host
