// What the television shows of pairing: the code while it counts, and the list of paired devices.
//
// Units:     logical pixels; times are host::Clock.
// Threads:   the user-interface thread.
// Ownership: the desk owns both windows; they ask it through functions and outlive no call to it.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/base/UiQueue.h"
#include "platform/CascadeFont.h"
#include "platform/CascadeTimer.h"
#include "platform/CascadeWindow.h"

namespace host {

// In a corner, without the focus: nobody on the network can take the keys from the viewer.
class CodeWindow : public CascadeWindow, public CascadeTimer {
public:
    void Display(const std::string& digits, const std::string& who, Clock::time_point until);

    void OnPaint(CascadeBitmap& bitmap) override;
    void OnVanish() override;
    void OnTimer(unsigned long id) override;

private:
    std::string m_Digits;
    std::string m_Who;
    Clock::time_point m_Until;
    uint32_t m_nTimer = 0;
};

// In the middle, with the focus: the viewer asked for it. Select twice forgets a device, Exit leaves.
class DevicesWindow : public CascadeWindow {
public:
    struct Source {
        std::function<std::vector<std::string>()> labels;
        std::function<void(size_t)> forget;
    };
    explicit DevicesWindow(Source source);
    // `addresses`: lines that say where the phone remote is to be found.
    void Display(std::vector<std::string> addresses);

    void OnPaint(CascadeBitmap& bitmap) override;
    bool OnKeyDown(unsigned long key) override;
    bool OnKeyUp(unsigned long /*key*/) override { return true; }
    bool OnNavKey(unsigned long key, CascadeWindow*& next) override;

private:
    void Refresh();

    Source m_Source;
    std::vector<std::string> m_Addresses;
    std::vector<std::string> m_Labels;
    size_t m_nCursor = 0;
    bool m_bSure = false;    // Select was pressed once
};

}    // namespace host
