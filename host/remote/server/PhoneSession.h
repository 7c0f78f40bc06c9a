// One phone that is connected: carries its keys to the player and tells it what is playing.
//
// A phone that falls silent is let go, and so are the keys that it holds: a key ends a moment after the last sign that
// the finger is on it. The next state or picture is sent only when the last one has arrived.
//
// Threads:   the remote thread.
// Ownership: holds a reference to its connection. The owner keeps it until OnOver has been called.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>

#include <libsoup/soup.h>

#include "host/remote/RemoteServer.h"
#include "host/remote/server/PhoneMessage.h"
#include "host/remote/server/RateLimit.h"

namespace host {

class PhoneSession : public std::enable_shared_from_this<PhoneSession> {
public:
    struct Events {
        std::function<void(PhoneSession*)> onOver;
        std::function<void()> onLook;    // it has begun to look at the picture, or wants the next one
    };
    PhoneSession(RemotePlayer& player, SoupWebsocketConnection* socket, std::string token, Events events);
    ~PhoneSession();
    PhoneSession(const PhoneSession&) = delete;
    PhoneSession& operator=(const PhoneSession&) = delete;

    void Begin();    // when the owner has it
    void Tick();    // some times a second

    void ShowState(const std::string& json);
    bool Looks() const { return m_bLooks; }
    bool WantsPicture() const { return m_bLooks && !m_bPictureUnderway; }
    void ShowPicture(uint64_t number, GBytes* jpeg);    // does nothing when it has that one

private:
    void OnText(std::string_view line);
    void OnMessage(const PhoneMessage& message);
    void OnKey(const PhoneMessage& message);
    void ReleaseKeys(bool all);
    bool IsOpen() const;
    void End();
    RemotePlayer::Done Answer(uint32_t number);

    RemotePlayer& m_Player;
    SoupWebsocketConnection* m_pSocket;
    const std::string m_Token;    // empty: none is needed
    const Events m_Events;
    RateLimit m_Rate;
    std::map<uint32_t, Clock::time_point> m_Held;    // and the last sign of the finger
    std::string m_State;    // as sent last
    Clock::time_point m_StateSent;
    bool m_bStateUnderway = false;
    bool m_bLooks = false;
    bool m_bPictureUnderway = false;
    uint64_t m_nPicture = 0;    // sent last
    bool m_bOver = false;
};

}    // namespace host
