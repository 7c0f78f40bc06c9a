#include "host/service/ListenSocket.h"

#include <memory>
#include <utility>

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

ListenSocket::ListenSocket(NetworkLoop& loop, OnAccepted onAccepted)
    : m_Loop(loop)
    , m_OnAccepted(std::move(onAccepted))
{
}

ListenSocket::~ListenSocket()
{
    Finish();
    if (m_pSocket != nullptr) {
        g_object_unref(m_pSocket);
    }
}

std::string ListenSocket::Start(const ListenAddress& address)
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

void ListenSocket::Watch()
{
    m_pSource = g_socket_create_source(m_pSocket, G_IO_IN, nullptr);
    const GSocketSourceFunc onReady = [](GSocket*, GIOCondition, gpointer self) { return static_cast<ListenSocket*>(self)->OnReady(); };
    g_source_set_callback(m_pSource, reinterpret_cast<GSourceFunc>(reinterpret_cast<void (*)()>(onReady)), this, nullptr);
    g_source_attach(m_pSource, m_Loop.Context());
}

gboolean ListenSocket::OnReady()
{
    GError* error = nullptr;
    if (GSocket* const socket = g_socket_accept(m_pSocket, nullptr, &error)) {
        m_OnAccepted(socket);
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
void ListenSocket::Pause()
{
    g_source_unref(m_pSource);
    m_pSource = g_timeout_source_new_seconds(kPauseSeconds);
    const GSourceFunc onPause = [](gpointer self) -> gboolean {
        auto* const listener = static_cast<ListenSocket*>(self);
        g_source_unref(listener->m_pSource);
        listener->Watch();
        return G_SOURCE_REMOVE;
    };
    g_source_set_callback(m_pSource, onPause, this, nullptr);
    g_source_attach(m_pSource, m_Loop.Context());
}

void ListenSocket::Finish()
{
    if (m_pSource != nullptr) {
        g_source_destroy(m_pSource);
        g_source_unref(m_pSource);
        m_pSource = nullptr;
    }
}

}    // namespace host
