#include "host/remote/server/PhoneSession.h"

#include "host/base/Pairing.h"

namespace host {
namespace {

using Kind = PhoneMessage::Kind;
using namespace std::chrono_literals;

// A finger gives a sign eight times a second.
constexpr auto kFingerGone = 1500ms;
// The state is told at least so often, as a question whether anybody is there.
constexpr auto kStateAgain = 5s;
constexpr auto kSilence = 20s;
constexpr double kBurst = 200;    // messages; a text pasted into the field comes at once
constexpr double kPerSecond = 60;

}    // namespace

PhoneSession::PhoneSession(RemotePlayer& player, SoupWebsocketConnection* socket, std::string token, Events events)
    : m_Player(player)
    , m_pSocket(static_cast<SoupWebsocketConnection*>(g_object_ref(socket)))
    , m_Token(std::move(token))
    , m_Events(std::move(events))
    , m_Rate(kBurst, kPerSecond)
    , m_StateSent(Clock::now())
{
}

PhoneSession::~PhoneSession()
{
    g_signal_handlers_disconnect_by_data(m_pSocket, this);
    ReleaseKeys(true);
    g_object_unref(m_pSocket);
}

void PhoneSession::Begin()
{
    soup_websocket_connection_set_max_incoming_payload_size(m_pSocket, PhoneMessage::kLongest);
    using OnMessageCall = void (*)(SoupWebsocketConnection*, SoupWebsocketDataType, GBytes*, PhoneSession*);
    const OnMessageCall onMessage = [](SoupWebsocketConnection*, SoupWebsocketDataType type, GBytes* message, PhoneSession* self) {
        gsize size = 0;
        const auto* const bytes = static_cast<const char*>(g_bytes_get_data(message, &size));
        const std::shared_ptr<PhoneSession> alive = self->shared_from_this();
        if (type == SOUP_WEBSOCKET_DATA_TEXT) {
            self->OnText({bytes, size});
        } else {
            self->End();
        }
    };
    using OnClosedCall = void (*)(SoupWebsocketConnection*, PhoneSession*);
    const OnClosedCall onClosed = [](SoupWebsocketConnection*, PhoneSession* self) {
        const std::shared_ptr<PhoneSession> alive = self->shared_from_this();
        self->m_bOver = true;
        self->ReleaseKeys(true);
        self->m_Events.onOver(self);
    };
    g_signal_connect(m_pSocket, "message", G_CALLBACK(onMessage), this);
    g_signal_connect(m_pSocket, "closed", G_CALLBACK(onClosed), this);
}

// The phone may have begun to close it.
bool PhoneSession::IsOpen() const
{
    return !m_bOver && soup_websocket_connection_get_state(m_pSocket) == SOUP_WEBSOCKET_STATE_OPEN;
}

void PhoneSession::End()
{
    if (IsOpen()) {
        m_bOver = true;
        ReleaseKeys(true);
        soup_websocket_connection_close(m_pSocket, SOUP_WEBSOCKET_CLOSE_POLICY_VIOLATION, nullptr);
    }
}

void PhoneSession::OnText(std::string_view line)
{
    const std::optional<PhoneMessage> message = ParsePhoneMessage(line);
    if (m_bOver) {
        return;
    }
    if (!message || !m_Rate.Take(Clock::now())) {
        End();
    } else {
        OnMessage(*message);
    }
}

void PhoneSession::OnMessage(const PhoneMessage& message)
{
    switch (message.kind) {
    case Kind::kDown:
    case Kind::kHold:
    case Kind::kUp:
    case Kind::kKeep:
        OnKey(message);
        break;
    case Kind::kType:
        m_Player.Type(message.text.empty() ? "\b" : std::string(message.text), Answer(message.number));
        break;
    case Kind::kViewOn:
        m_bLooks = true;
        m_nPicture = 0;
        m_Events.onLook();
        break;
    case Kind::kViewOff:
        m_bLooks = false;
        break;
    case Kind::kGotState:
        m_bStateUnderway = false;
        break;
    case Kind::kGotPicture:
        m_bPictureUnderway = false;
        m_Events.onLook();
        break;
    case Kind::kDevices:
        m_Player.GetPairing().ShowDevices();
        break;
    }
}

void PhoneSession::OnKey(const PhoneMessage& message)
{
    const bool held = m_Held.contains(message.key);
    RemotePlayer::Done answer = Answer(message.number);
    if (message.kind == Kind::kDown && !held) {
        m_Held[message.key] = Clock::now();
        m_Player.KeyDown(message.key, std::move(answer));
    } else if (message.kind == Kind::kHold && held) {
        m_Held[message.key] = Clock::now();
        m_Player.KeyHeld(message.key, std::move(answer));
    } else if (message.kind == Kind::kUp && held) {
        m_Held.erase(message.key);
        m_Player.KeyUp(message.key, std::move(answer));
    } else {
        if (held) {
            m_Held[message.key] = Clock::now();
        }
        answer();    // else it was let go for the phone already
    }
}

void PhoneSession::ReleaseKeys(bool all)
{
    const Clock::time_point now = Clock::now();
    for (auto key = m_Held.begin(); key != m_Held.end();) {
        if (all || now - key->second > kFingerGone) {
            m_Player.KeyUp(key->first, [] {});
            key = m_Held.erase(key);
        } else {
            ++key;
        }
    }
}

RemotePlayer::Done PhoneSession::Answer(uint32_t number)
{
    return [self = weak_from_this(), number] {
        const std::shared_ptr<PhoneSession> session = self.lock();
        if (session != nullptr && session->IsOpen()) {
            soup_websocket_connection_send_text(session->m_pSocket, ("{\"ok\":" + std::to_string(number) + "}").c_str());
        }
    };
}

void PhoneSession::Tick()
{
    ReleaseKeys(false);
    const bool silent = m_bStateUnderway && Clock::now() - m_StateSent > kSilence;
    if (silent || (!m_Token.empty() && !m_Player.GetPairing().Knows(m_Token))) {
        End();
    }
}

void PhoneSession::ShowState(const std::string& json)
{
    const Clock::time_point now = Clock::now();
    if (!IsOpen() || m_bStateUnderway || (json == m_State && now - m_StateSent < kStateAgain)) {
        return;
    }
    m_State = json;
    m_StateSent = now;
    m_bStateUnderway = true;
    soup_websocket_connection_send_text(m_pSocket, json.c_str());
}

void PhoneSession::ShowPicture(uint64_t number, GBytes* jpeg)
{
    if (!IsOpen() || !WantsPicture() || number == m_nPicture) {
        return;
    }
    m_nPicture = number;
    m_bPictureUnderway = true;
    soup_websocket_connection_send_message(m_pSocket, SOUP_WEBSOCKET_DATA_BINARY, jpeg);
}

}    // namespace host
