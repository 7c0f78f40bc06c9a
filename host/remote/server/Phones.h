// All phones that are connected: the state is asked for once for all of them, and so is the picture, encoded once.
//
// Units:     five pictures a second at most, and none that nobody looks at or that shows nothing new.
// Threads:   the remote thread.
// Ownership: owns the sessions.
#pragma once

#include <memory>
#include <vector>

#include "host/remote/server/JpegEncoder.h"
#include "host/remote/server/PhoneSession.h"
#include "host/remote/server/Timer.h"

namespace host {

class Phones {
public:
    static constexpr size_t kMost = 8;

    explicit Phones(RemotePlayer& player);
    ~Phones();
    Phones(const Phones&) = delete;
    Phones& operator=(const Phones&) = delete;

    bool IsFull() const { return m_Sessions.size() >= kMost; }
    void Add(SoupWebsocketConnection* socket, const std::string& token);

private:
    void OnStateTick();
    void OnPictureTick();
    void OnState(const std::string& json);
    void OnPicture(const std::shared_ptr<const FeedPicture>& picture);
    void Remove(PhoneSession* session);

    RemotePlayer& m_Player;
    std::vector<std::shared_ptr<PhoneSession>> m_Sessions;
    Timer m_StateTimer;
    Timer m_PictureTimer;    // runs while somebody looks
    JpegEncoder m_Encoder;
    uint64_t m_nPicture = 0;
    GBytes* m_pJpeg = nullptr;    // of m_nPicture
    bool m_bStateAsked = false;
    bool m_bPictureAsked = false;
    // What is answered after this is gone finds it so.
    const std::shared_ptr<Phones*> m_Self;
};

}    // namespace host
