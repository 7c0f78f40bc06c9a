#include "host/remote/server/Connections.h"

#include <algorithm>
#include <memory>

namespace host {
namespace {

constexpr unsigned kTickMs = 1000;

void ShutDown(GSocketConnection* connection)
{
    // Whoever serves it finds its end and lets go of it.
    g_socket_shutdown(g_socket_connection_get_socket(connection), TRUE, TRUE, nullptr);
}

}    // namespace

std::string NumericAddress(GSocketAddress* socketAddress)
{
    if (!G_IS_INET_SOCKET_ADDRESS(socketAddress)) {
        return {};
    }
    const std::unique_ptr<char, decltype(&g_free)> text(
        g_inet_address_to_string(g_inet_socket_address_get_address(G_INET_SOCKET_ADDRESS(socketAddress))), &g_free);
    // A socket for both families calls the older one's addresses so (RFC 4291 2.5.5.2).
    constexpr std::string_view kMapped = "::ffff:";
    const std::string_view address = text.get();
    return std::string(address.starts_with(kMapped) && address.find('.') != std::string_view::npos ? address.substr(kMapped.size()) : address);
}

Connections::Connections(GMainContext* context)
    : m_Timer(context, kTickMs, [this] { CutOverdue(); })
{
}

Connections::~Connections()
{
    for (Entry& entry : m_Entries) {
        g_object_weak_unref(G_OBJECT(entry.connection), OnGone, &entry);
        ShutDown(entry.connection);
    }
}

bool Connections::Admit(GSocketConnection* connection, GSocketAddress* peer)
{
    const std::string device = NumericAddress(peer);
    const auto ofOne = std::count_if(m_Entries.begin(), m_Entries.end(), [&device](const Entry& entry) { return entry.device == device; });
    if (m_Rates.size() > kMost) {
        m_Rates.clear();    // devices beyond counting are held by the number of connections
    }
    if (!m_Rates.try_emplace(device, kBurst, kPerSecond).first->second.Take(Clock::now())) {
        return false;
    }
    if (m_Entries.size() >= kMost || static_cast<size_t>(ofOne) >= kMostOfOne) {
        return false;
    }
    Entry& entry = m_Entries.emplace_back();
    entry = {this, connection, peer, device, Clock::now() + kPatience};
    g_object_weak_ref(G_OBJECT(connection), OnGone, &entry);
    m_Timer.Start();
    return true;
}

void Connections::OnGone(gpointer gone, GObject*)
{
    auto* const entry = static_cast<Entry*>(gone);
    Connections* const owner = entry->owner;
    owner->m_Entries.remove_if([entry](const Entry& other) { return &other == entry; });
    if (owner->m_Entries.empty()) {
        owner->m_Timer.Stop();
    }
}

void Connections::Keep(GSocketAddress* peer)
{
    for (Entry& entry : m_Entries) {
        if (entry.peer == peer) {
            entry.until = Clock::time_point::max();
        }
    }
}

void Connections::Cut(GSocketAddress* peer)
{
    for (const Entry& entry : m_Entries) {
        if (entry.peer == peer) {
            ShutDown(entry.connection);
        }
    }
}

void Connections::CutOverdue()
{
    const Clock::time_point now = Clock::now();
    for (const Entry& entry : m_Entries) {
        if (now >= entry.until) {
            ShutDown(entry.connection);
        }
    }
}

}    // namespace host
