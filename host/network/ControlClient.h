// One connection of external control: its lines, the one command under way, and the replies not yet sent.
//
// Units:     bytes.
// Errors:    a connection that fails, or whose owner does not read, is over: IsOver.
// Threads:   the network thread.
// Ownership: owns its socket and its place in the main context.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include <gio/gio.h>

#include "host/network/ControlLine.h"

namespace host {

class ControlClient {
public:
    // Replies that wait for a client that does not read; beyond it the connection is closed.
    static constexpr size_t kMostUnsent = 64 * 1024;

    struct Events {
        std::function<void(std::string command)> onCommand;    // answered by Reply, before the next one comes
        std::function<void()> onOver;    // the last call; the client may be destroyed afterwards, not within
    };

    ControlClient(GSocket* socket, GMainContext* context, Events events);    // takes the reference
    ~ControlClient();
    ControlClient(const ControlClient&) = delete;
    ControlClient& operator=(const ControlClient&) = delete;

    void Reply(const std::string& reply);    // to the command under way
    void Dismiss();    // a command under way stays unanswered; over as soon as everything is sent
    bool IsOver() const { return m_bOver; }

private:
    gboolean OnSocket(GIOCondition condition);
    void Receive();
    void TakeLines();
    void EndInput();
    void Say(const std::string& line);
    void Send();
    void Watch();
    void End();

    GSocket* m_pSocket;
    GMainContext* m_pContext;
    GSource* m_pSource = nullptr;
    GIOCondition m_Watched {};
    const Events m_Events;
    ControlLineCutter m_Cutter;
    std::string m_Unsent;
    bool m_bFirstLine = true;
    bool m_bBusy = false;    // a command is under way
    bool m_bInputOver = false;
    bool m_bOver = false;
};

}    // namespace host
