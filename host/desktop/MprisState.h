// What the desktop is told of the player: the properties of MPRIS's player interface, and which of them changed.
//
// Units:     microseconds, as MPRIS 2.2 has them; times are host::Clock, given by the caller.
// Threads:   one at a time.
// Ownership: values are the caller's, floating.
#pragma once

#include <string>
#include <vector>

#include <gio/gio.h>

#include "host/base/UiQueue.h"
#include "platform/CascadeNowPlaying.h"

namespace host {

class MprisState {
public:
    // Position may run off by so much before it counts as a jump: it follows the bytes, which are read in pieces.
    static constexpr auto kJump = std::chrono::seconds(3);

    struct Change {
        std::vector<const char*> properties;    // of those that are announced; Position is not
        bool seeked = false;
    };
    Change Take(const CascadeNowPlaying& now, Clock::time_point at);

    GVariant* Property(const char* name, Clock::time_point at) const;    // null: there is no such property
    int64_t PositionUs(Clock::time_point at) const;
    int64_t LengthUs() const { return m_Now.durationMs < 0 ? -1 : m_Now.durationMs * 1000; }
    std::string TrackId() const;
    bool IsPlaying() const { return m_Now.state == CascadeNowPlaying::State::kPlaying; }

private:
    GVariant* Metadata() const;
    bool HasTrack() const { return !m_Now.title.IsEmpty(); }

    CascadeNowPlaying m_Now;
    Clock::time_point m_At;
    unsigned m_nTrack = 0;    // counts the items that were opened
};

// A path or an http address that a URI stands for; empty: neither.
std::string PathOfUri(const char* uri);

}    // namespace host
