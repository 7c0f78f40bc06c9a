#include "host/network/ControlServer.h"

#include <chrono>

namespace host {
namespace {

struct Unref {
    void operator()(gpointer object) const { g_object_unref(object); }
};
template <typename T> using Ref = std::unique_ptr<T, Unref>;

constexpr guint kAcceptPauseSeconds = 1;

std::string Taken(GError*& error)
{
    std::string text = error != nullptr ? error->message : "unknown error";
    g_clear_error(&error);
    return text;
}

}    // namespace

ControlServer::ControlServer(NetworkLoop& loop, OnCommand onCommand)
    : m_Loop(loop)
    , m_OnCommand(std::move(onCommand))
{
}

ControlServer::~ControlServer()
{
    if (m_pListener != nullptr) {
        g_object_unref(m_pListener);
    }
}

std::string ControlServer::Start(const ListenAddress& address)
{
    const Ref<GInetAddress> inet(g_inet_address_new_from_string(address.host.c_str()));
    if (inet == nullptr) {
        return "no numeric address";
    }
    const Ref<GSocketAddress> where(g_inet_socket_address_new(inet.get(), address.port));
    GError* error = nullptr;
    Ref<GSocket> socket(g_socket_new(g_inet_address_get_family(inet.get()), G_SOCKET_TYPE_STREAM, G_SOCKET_PROTOCOL_TCP, &error));
    if (socket == nullptr || !g_socket_bind(socket.get(), where.get(), TRUE, &error)) {
        return Taken(error);
    }
    g_socket_set_listen_backlog(socket.get(), 64);
    if (!g_socket_listen(socket.get(), &error)) {
        return Taken(error);
    }
    const Ref<GSocketAddress> got(g_socket_get_local_address(socket.get(), &error));
    if (got == nullptr) {
        return Taken(error);
    }
    m_nPort = g_inet_socket_address_get_port(G_INET_SOCKET_ADDRESS(got.get()));
    g_socket_set_blocking(socket.get(), FALSE);
    m_pListener = socket.release();
    m_Loop.Post([this] { WatchListener(); });
    return {};
}

void ControlServer::WatchListener()
{
    if (m_bFinishing) {
        return;
    }
    m_pListening = g_socket_create_source(m_pListener, G_IO_IN, nullptr);
    const GSocketSourceFunc onReady = [](GSocket*, GIOCondition, gpointer self) { return static_cast<ControlServer*>(self)->OnConnection(); };
    g_source_set_callback(m_pListening, reinterpret_cast<GSourceFunc>(reinterpret_cast<void (*)()>(onReady)), this, nullptr);
    g_source_attach(m_pListening, m_Loop.Context());
}

gboolean ControlServer::OnConnection()
{
    GError* error = nullptr;
    if (GSocket* const socket = g_socket_accept(m_pListener, nullptr, &error)) {
        Welcome(socket);
        return G_SOURCE_CONTINUE;
    }
    const bool later = g_error_matches(error, G_IO_ERROR, G_IO_ERROR_WOULD_BLOCK) || g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CONNECTION_CLOSED);
    g_clear_error(&error);
    if (later) {
        return G_SOURCE_CONTINUE;
    }
    // Out of file descriptors: the connection stays in the queue and would be reported without end.
    g_source_unref(m_pListening);
    m_pListening = g_timeout_source_new_seconds(kAcceptPauseSeconds);
    const GSourceFunc onPause = [](gpointer self) -> gboolean {
        auto* const server = static_cast<ControlServer*>(self);
        g_source_unref(server->m_pListening);
        server->WatchListener();
        return G_SOURCE_REMOVE;
    };
    g_source_set_callback(m_pListening, onPause, this, nullptr);
    g_source_attach(m_pListening, m_Loop.Context());
    return G_SOURCE_REMOVE;
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
    if (m_pListener == nullptr) {
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
    if (m_pListening != nullptr) {
        g_source_destroy(m_pListening);
        g_source_unref(m_pListening);
        m_pListening = nullptr;
    }
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
