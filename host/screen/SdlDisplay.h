// The display by SDL: a window or the full screen on X11 or Wayland, or a bare screen.
//
// Threads:   the user-interface thread; Wake from any.
// Ownership: owns SDL's video part from construction to destruction, its window and its presenter.
#pragma once

#include <atomic>

#define SDL_MAIN_HANDLED
#include <SDL.h>

#include "host/screen/Display.h"
#include "host/screen/WakeEvent.h"

namespace screen {

class SdlDisplay : public Display {
public:
    SdlDisplay() = default;
    ~SdlDisplay() override;

    // False: `error` says why, and nothing is left open.
    bool Open(const host::HostOptions& options, std::string& error);

    Presenter& Output() override { return *m_pPresenter; }
    void Wait(host::Clock::time_point until) override;
    void Wake() override;
    void TakeEvents(DisplayEvents& events) override;
    std::vector<CascadeDims> Resolutions() const override { return m_Resolutions; }
    bool SetResolution(unsigned index) override;
    void LetScreenSleep(bool allowed) override;

private:
    bool StartVideo(std::string& error);
    bool OpenWindow(const host::HostOptions& options, std::string& error);
    void CollectModes();
    bool ChoosePresenter();
    void TakeKey(const SDL_KeyboardEvent& key, DisplayEvents& events);
    bool SetScreenMode(unsigned index);

    bool m_bVideo = false;
    bool m_bX11 = false;
    bool m_bSleepsInSdl = false;    // SDL can sleep on this driver; otherwise it has to be asked now and then
    int m_nX11Connection = -1;    // slept on by ourselves
    bool m_bWindowed = false;
    SDL_Window* m_pWindow = nullptr;
    Uint32 m_nWakeType = 0;
    std::atomic<bool> m_bWakePending {false};
    WakeEvent m_Wake;
    std::vector<CascadeDims> m_Resolutions;
    std::unique_ptr<Presenter> m_pPresenter;
};

}    // namespace screen
