#include "host/remote/server/Phones.h"

#include <algorithm>

#include "host/base/ScreenFeed.h"

namespace host {
namespace {

constexpr unsigned kStateMs = 500;
constexpr unsigned kPictureMs = 200;

}    // namespace

Phones::Phones(RemotePlayer& player)
    : m_Player(player)
    , m_StateTimer(player.Context(), kStateMs, [this] { OnStateTick(); })
    , m_PictureTimer(player.Context(), kPictureMs, [this] { OnPictureTick(); })
    , m_Self(std::make_shared<Phones*>(this))
{
}

Phones::~Phones()
{
    *m_Self = nullptr;
    m_Sessions.clear();
    if (m_pJpeg != nullptr) {
        g_bytes_unref(m_pJpeg);
    }
}

void Phones::Add(SoupWebsocketConnection* socket, const std::string& token)
{
    PhoneSession::Events events {
        [this](PhoneSession* session) { Remove(session); },
        [this] { m_PictureTimer.Start(); },
    };
    const auto session = std::make_shared<PhoneSession>(m_Player, socket, token, std::move(events));
    m_Sessions.push_back(session);
    session->Begin();
    m_StateTimer.Start();
    OnStateTick();
}

void Phones::Remove(PhoneSession* session)
{
    std::erase_if(m_Sessions, [session](const auto& other) { return other.get() == session; });
    if (m_Sessions.empty()) {
        m_StateTimer.Stop();
    }
}

void Phones::OnStateTick()
{
    const auto sessions = m_Sessions;    // one may end
    for (const auto& session : sessions) {
        session->Tick();
    }
    if (m_bStateAsked || m_Sessions.empty()) {
        return;
    }
    m_bStateAsked = true;
    m_Player.AskState([self = m_Self](const std::string& json) {
        if (*self != nullptr) {
            (*self)->OnState(json);
        }
    });
}

void Phones::OnState(const std::string& json)
{
    m_bStateAsked = false;
    const auto sessions = m_Sessions;
    for (const auto& session : sessions) {
        session->ShowState(json);
    }
}

void Phones::OnPictureTick()
{
    const bool looked = std::any_of(m_Sessions.begin(), m_Sessions.end(), [](const auto& session) { return session->Looks(); });
    if (!looked) {
        m_PictureTimer.Stop();
        g_clear_pointer(&m_pJpeg, g_bytes_unref);
        m_nPicture = 0;
        return;
    }
    const bool wanted = std::any_of(m_Sessions.begin(), m_Sessions.end(), [](const auto& session) { return session->WantsPicture(); });
    if (!wanted || m_bPictureAsked) {
        return;
    }
    m_bPictureAsked = true;
    m_Player.AskPicture(m_nPicture, [self = m_Self](const std::shared_ptr<const FeedPicture>& picture) {
        if (*self != nullptr) {
            (*self)->OnPicture(picture);
        }
    });
}

void Phones::OnPicture(const std::shared_ptr<const FeedPicture>& picture)
{
    m_bPictureAsked = false;
    if (picture != nullptr) {
        const std::string jpeg = m_Encoder.Encode(*picture);
        if (!jpeg.empty()) {
            g_clear_pointer(&m_pJpeg, g_bytes_unref);
            m_pJpeg = g_bytes_new(jpeg.data(), jpeg.size());
            m_nPicture = picture->number;
        }
    }
    const auto sessions = m_Sessions;
    for (const auto& session : sessions) {
        if (m_pJpeg != nullptr) {
            session->ShowPicture(m_nPicture, m_pJpeg);
        }
    }
}

}    // namespace host
