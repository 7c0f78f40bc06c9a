// The player on the session bus: MPRIS's root and player interfaces (MPRIS 2.2).
//
// Errors:    without a bus, or when it goes away, nothing happens. A method that means nothing now does nothing.
// Threads:   the desktop thread.
// Ownership: owns its connection. What it asked for and is answered later finds it gone.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include <gio/gio.h>

#include "host/desktop/MprisState.h"

namespace host {

// What the desktop may ask for; each is carried out on the user-interface thread, later.
struct MprisPlayer {
    std::function<void(uint32_t)> pressKey;
    std::function<void(int)> skip;    // seconds
    std::function<void(std::string)> open;
    std::function<void()> quit;
    std::function<void(std::function<void(const CascadeNowPlaying&)>)> ask;    // answered on the desktop thread
};

class MprisBus {
public:
    MprisBus(GMainContext* context, MprisPlayer player);
    ~MprisBus();
    MprisBus(const MprisBus&) = delete;
    MprisBus& operator=(const MprisBus&) = delete;

private:
    void After(unsigned milliseconds, void (MprisBus::*call)());
    void Connect();
    void OnConnected(GDBusConnection* connection);
    bool Register();
    void Ask();
    void Announce(const CascadeNowPlaying& now);
    void Call(const char* method, GVariant* parameters, GDBusMethodInvocation* invocation);
    void Seek(int64_t byUs);
    static GVariant* RootProperty(const char* name);

    static void OnCall(GDBusConnection*, const char*, const char*, const char*, const char* method, GVariant* parameters, GDBusMethodInvocation* invocation,
        gpointer self);
    static GVariant* OnGet(GDBusConnection*, const char*, const char*, const char* interface, const char* property, GError** error, gpointer self);
    static gboolean OnSet(GDBusConnection*, const char*, const char*, const char*, const char*, GVariant*, GError**, gpointer);

    GMainContext* const m_pContext;
    const MprisPlayer m_Player;
    MprisState m_State;
    GSource* m_pTimer = nullptr;
    GCancellable* const m_pCancel;
    GDBusNodeInfo* m_pNode = nullptr;
    GDBusConnection* m_pConnection = nullptr;
    unsigned m_nName = 0;
    const std::shared_ptr<MprisBus*> m_Self;    // the target is null once this is gone
};

}    // namespace host
