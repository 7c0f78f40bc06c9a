#include "host/remote/RemoteListener.h"

#include <netinet/in.h>
#include <netinet/tcp.h>

namespace host {
namespace {

struct Unref {
    void operator()(gpointer object) const { g_object_unref(object); }
};
template <typename T> using Ref = std::unique_ptr<T, Unref>;

constexpr guint kPauseSeconds = 1;
constexpr int kBacklog = 64;

std::string Taken(GError* error)
{
    std::string text = error != nullptr ? error->message : "unknown error";
    g_clear_error(&error);
    return text;
}

}    // namespace

RemoteListener::RemoteListener(NetworkLoop& loop, std::function<void(GSocketConnection*)> onConnection)
    : m_Loop(loop)
    , m_OnConnection(std::move(onConnection))
{
}

RemoteListener::~RemoteListener()
{
    Finish();
    if (m_pSocket != nullptr) {
        g_object_unref(m_pSocket);
    }
}

std::string RemoteListener::Start(const ListenAddress& address)
{
    const Ref<GSocketAddress> where(g_inet_socket_address_new_from_string(address.host.c_str(), address.port));
    if (where == nullptr) {
        return "no numeric address";
    }
    GError* error = nullptr;
    Ref<GSocket> socket(g_socket_new(g_socket_address_get_family(where.get()), G_SOCKET_TYPE_STREAM, G_SOCKET_PROTOCOL_TCP, &error));
    if (socket == nullptr || !g_socket_bind(socket.get(), where.get(), TRUE, &error)) {
        return Taken(error);
    }
    g_socket_set_listen_backlog(socket.get(), kBacklog);
    if (!g_socket_listen(socket.get(), &error)) {
        return Taken(error);
    }
    const Ref<GSocketAddress> got(g_socket_get_local_address(socket.get(), &error));
    if (got == nullptr) {
        return Taken(error);
    }
    m_nPort = g_inet_socket_address_get_port(G_INET_SOCKET_ADDRESS(got.get()));
    g_socket_set_blocking(socket.get(), FALSE);
    m_pSocket = socket.release();
    m_Loop.Post([this] { Watch(); });
    return {};
}

void RemoteListener::Watch()
{
    m_pSource = g_socket_create_source(m_pSocket, G_IO_IN, nullptr);
    const GSocketSourceFunc onReady = [](GSocket*, GIOCondition, gpointer self) { return static_cast<RemoteListener*>(self)->OnReady(); };
    g_source_set_callback(m_pSource, reinterpret_cast<GSourceFunc>(reinterpret_cast<void (*)()>(onReady)), this, nullptr);
    g_source_attach(m_pSource, m_Loop.Context());
}

gboolean RemoteListener::OnReady()
{
    GError* error = nullptr;
    if (GSocket* const socket = g_socket_accept(m_pSocket, nullptr, &error)) {
        // An answer to a key is not held back until there is more to send.
        g_socket_set_option(socket, IPPROTO_TCP, TCP_NODELAY, 1, nullptr);
        const Ref<GSocketConnection> connection(g_socket_connection_factory_create_connection(socket));
        g_object_unref(socket);
        m_OnConnection(connection.get());
        return G_SOURCE_CONTINUE;
    }
    const bool later = g_error_matches(error, G_IO_ERROR, G_IO_ERROR_WOULD_BLOCK) || g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CONNECTION_CLOSED);
    g_clear_error(&error);
    if (later) {
        return G_SOURCE_CONTINUE;
    }
    Pause();
    return G_SOURCE_REMOVE;
}

// Out of file descriptors: the connection stays in the queue and would be reported without end.
void RemoteListener::Pause()
{
    g_source_unref(m_pSource);
    m_pSource = g_timeout_source_new_seconds(kPauseSeconds);
    const GSourceFunc onPause = [](gpointer self) -> gboolean {
        auto* const listener = static_cast<RemoteListener*>(self);
        g_source_unref(listener->m_pSource);
        listener->Watch();
        return G_SOURCE_REMOVE;
    };
    g_source_set_callback(m_pSource, onPause, this, nullptr);
    g_source_attach(m_pSource, m_Loop.Context());
}

void RemoteListener::Finish()
{
    if (m_pSource != nullptr) {
        g_source_destroy(m_pSource);
        g_source_unref(m_pSource);
        m_pSource = nullptr;
    }
}

}    // namespace host
