// The connections that are open, and how long each may be: one request a connection, and whoever dawdles over it, sending
// or reading, is cut off.
//
// Units:     times are host::Clock.
// Threads:   the remote thread.
// Ownership: holds no reference: a connection is forgotten when whoever serves it has let go of it.
#pragma once

#include <list>
#include <map>
#include <string>

#include <gio/gio.h>

#include "host/base/UiQueue.h"
#include "host/remote/server/RateLimit.h"
#include "host/remote/server/Timer.h"

namespace host {

class Connections {
public:
    static constexpr size_t kMost = 64;
    static constexpr size_t kMostOfOne = 24;    // of one device: a page needs six or seven
    static constexpr double kBurst = 100;    // connections of one device in a row, then so many a second
    static constexpr double kPerSecond = 25;
    static constexpr auto kPatience = std::chrono::seconds(10);

    explicit Connections(GMainContext* context);
    ~Connections();
    Connections(const Connections&) = delete;
    Connections& operator=(const Connections&) = delete;

    bool Admit(GSocketConnection* connection, GSocketAddress* peer);    // false: too many
    void Keep(GSocketAddress* peer);    // it has become a WebSocket, whose own rules hold from here
    void Cut(GSocketAddress* peer);

private:
    struct Entry {
        Connections* owner = nullptr;
        GSocketConnection* connection = nullptr;
        GSocketAddress* peer = nullptr;    // the very object that its requests carry
        std::string device;    // numeric address
        Clock::time_point until;
    };
    void CutOverdue();
    static void OnGone(gpointer entry, GObject*);

    std::list<Entry> m_Entries;
    std::map<std::string, RateLimit> m_Rates;    // by device
    Timer m_Timer;
};

// "192.168.1.7"
std::string NumericAddress(GSocketAddress* address);

}    // namespace host
