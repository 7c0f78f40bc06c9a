#include "host/network/ControlClient.h"

#include <array>
#include <utility>

#include <sys/socket.h>

namespace host {
namespace {

constexpr int kSocketBuffer = 64 * 1024;    // also bounds what the system keeps for a client that does not read

}    // namespace

ControlClient::ControlClient(GSocket* socket, GMainContext* context, Events events)
    : m_pSocket(socket)
    , m_pContext(context)
    , m_Events(std::move(events))
{
    g_socket_set_blocking(m_pSocket, FALSE);
    g_socket_set_option(m_pSocket, SOL_SOCKET, SO_SNDBUF, kSocketBuffer, nullptr);
    Watch();
}

ControlClient::~ControlClient()
{
    if (m_pSource != nullptr) {
        g_source_destroy(m_pSource);
        g_source_unref(m_pSource);
    }
    g_socket_close(m_pSocket, nullptr);
    g_object_unref(m_pSocket);
}

// Listens for what is needed now: input while no command is under way, room while something is unsent.
void ControlClient::Watch()
{
    unsigned wanted = 0;
    if (!m_bOver && !m_bBusy && !m_bInputOver) {
        wanted |= G_IO_IN;
    }
    if (!m_bOver && !m_Unsent.empty()) {
        wanted |= G_IO_OUT;
    }
    if (wanted == m_Watched) {
        return;
    }
    if (m_pSource != nullptr) {
        g_source_destroy(m_pSource);
        g_source_unref(m_pSource);
        m_pSource = nullptr;
    }
    m_Watched = static_cast<GIOCondition>(wanted);
    if (wanted == 0) {
        return;
    }
    m_pSource = g_socket_create_source(m_pSocket, m_Watched, nullptr);
    const GSocketSourceFunc onSocket
        = [](GSocket*, GIOCondition condition, gpointer self) { return static_cast<ControlClient*>(self)->OnSocket(condition); };
    g_source_set_callback(m_pSource, reinterpret_cast<GSourceFunc>(reinterpret_cast<void (*)()>(onSocket)), this, nullptr);
    g_source_attach(m_pSource, m_pContext);
}

gboolean ControlClient::OnSocket(GIOCondition condition)
{
    if ((condition & G_IO_OUT) != 0) {
        Send();
    }
    if (!m_bOver && (m_Watched & G_IO_IN) != 0) {
        Receive();
    } else if (!m_bOver && (condition & (G_IO_ERR | G_IO_HUP)) != 0) {
        End();
    }
    Watch();
    return G_SOURCE_CONTINUE;    // of no account when Watch has replaced the source
}

void ControlClient::Receive()
{
    std::array<char, 16 * 1024> bytes;
    GError* error = nullptr;
    const gssize count = g_socket_receive(m_pSocket, bytes.data(), bytes.size(), nullptr, &error);
    if (count > 0) {
        m_Cutter.Feed({bytes.data(), static_cast<size_t>(count)});
        TakeLines();
    } else if (count == 0) {
        EndInput();    // half a line without its end is no command
    } else {
        if (!g_error_matches(error, G_IO_ERROR, G_IO_ERROR_WOULD_BLOCK)) {
            End();
        }
        g_error_free(error);
    }
}

// Commands go out one by one, so that replies keep their order.
void ControlClient::TakeLines()
{
    std::string line;
    while (!m_bBusy && !m_bOver && !m_bInputOver) {
        const ControlLineCutter::Next next = m_Cutter.Take(line);
        if (next == ControlLineCutter::Next::kNone) {
            break;
        }
        const bool first = std::exchange(m_bFirstLine, false);
        if (next == ControlLineCutter::Next::kTooLong) {
            Say("Command too long");
        } else if (!IsCleanCommand(line)) {
            Say("Invalid command");
        } else if (first && IsWebRequest(line)) {
            Say("Invalid command");
            EndInput();
        } else {
            m_bBusy = true;
            m_Events.onCommand(line);
        }
    }
}

void ControlClient::Reply(const std::string& reply)
{
    m_bBusy = false;
    if (m_bOver) {
        return;
    }
    Say(CleanReply(reply));
    TakeLines();
    Watch();
}

void ControlClient::Dismiss()
{
    m_bBusy = false;
    EndInput();
}

void ControlClient::EndInput()
{
    m_bInputOver = true;
    if (!m_bOver && !m_bBusy && m_Unsent.empty()) {
        End();
    }
    Watch();
}

void ControlClient::Say(const std::string& line)
{
    if (m_bOver) {
        return;
    }
    if (m_Unsent.size() > kMostUnsent) {
        End();
        return;
    }
    m_Unsent += line;
    m_Unsent += '\n';
    Send();
}

void ControlClient::Send()
{
    while (!m_Unsent.empty()) {
        GError* error = nullptr;
        const gssize count = g_socket_send(m_pSocket, m_Unsent.data(), m_Unsent.size(), nullptr, &error);
        if (count <= 0) {
            const bool full = g_error_matches(error, G_IO_ERROR, G_IO_ERROR_WOULD_BLOCK);
            g_clear_error(&error);
            if (!full) {
                End();
            }
            return;
        }
        m_Unsent.erase(0, static_cast<size_t>(count));
    }
    if (m_bInputOver && !m_bBusy) {
        End();
    }
}

void ControlClient::End()
{
    if (m_bOver) {
        return;
    }
    m_bOver = true;
    m_Unsent.clear();
    // What the client still sends must not make the system throw away what it has not read yet.
    g_socket_shutdown(m_pSocket, FALSE, TRUE, nullptr);
    m_Events.onOver();
}

}    // namespace host
