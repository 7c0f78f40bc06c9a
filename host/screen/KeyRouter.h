// Which window gets a key, and what becomes of its release.
//
// A release goes where its press went: a window that took the press gets it, if it is still there; a press
// that was taken as typed text, or came while a call was waiting, has no release. So a key that closes a
// window never ends as a release in the application.
//
// Threads: the user-interface thread.
#pragma once

#include <map>

#include "host/screen/EventQueue.h"
#include "host/screen/HostKeys.h"

class CascadeWindow;

namespace screen {

class KeyRouter {
public:
    void Deliver(const Event& event);

    // While a call waits: presses go to the application's OnKeyWhileWaiting. False: a release whose press came
    // before the wait; it is to be delivered when the wait is over.
    bool DeliverWhileWaiting(const Event& event);

private:
    enum class Taker { kApplication, kWindow, kText, kWait };
    struct Press {
        Taker taker = Taker::kApplication;
        CascadeWindow* focus = nullptr;    // at the press, or where the press itself moved it
    };
    using KeyId = std::pair<int, uint32_t>;    // keyboard's number, remote code
    void Down(const Event& event);
    void Up(const Event& event);
    bool TakeHostKey(const Event& event);
    static bool OfferText(const Event& event);
    static Press OfferKey(uint32_t key);

    std::map<KeyId, Press> m_Pressed;
    HostKeys m_HostKeys;
};

}    // namespace screen
