// The composed screen: the source's picture, the windows above it, and the output's resolutions.
//
// Units:     pixels of the output; times are host::Clock.
// Threads:   the user-interface thread.
// Ownership: owns the display. Keeps the last picture's planes alive until another one takes its place.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "host/screen/Display.h"
#include "host/screen/ScreenFeed.h"

namespace screen {

class Screen {
public:
    Screen(std::unique_ptr<Display> display, bool stretch);
    ~Screen();
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    Display& GetDisplay() { return *m_pDisplay; }

    // Paints, moves the video on and presents what changed. Answers when the next picture is due; max(): not known.
    host::Clock::time_point Turn();
    void Expose();    // everything is to be drawn again; the output may have another size

    unsigned ResolutionCount() const { return unsigned(m_Resolutions.size()); }
    CascadeDims Resolution(unsigned index) const { return m_Resolutions[index]; }
    unsigned CurrentResolution() const { return m_nResolution; }
    bool SetResolution(unsigned index);

    std::function<std::string()> TakeScreenshot();    // as HostHooks.h says
    SurfacePtr Capture();
    std::shared_ptr<const host::FeedPicture> Feed(uint64_t seen);    // as HostHooks.h says
    std::string Stats() const;    // members of a JSON object
    void CountTurn() { ++m_nTurns; }

private:
    void FollowOutput();
    bool TakePicture(host::Clock::time_point& next);
    bool IsPictureNear(host::Clock::time_point now, host::Clock::time_point next) const;
    bool LayOut();
    VideoGeometry LayOutOn(CascadeDims output) const;
    Scene MakeScene() const;
    void OnPicturePresented(host::Clock::time_point asked);

    std::unique_ptr<Display> m_pDisplay;
    std::vector<CascadeDims> m_Resolutions;
    unsigned m_nResolution = 0;
    bool m_bStretch = false;
    CascadeDims m_Output;
    host::VideoFrame m_Frame;
    host::VideoPlacement m_Placement;
    VideoGeometry m_Geometry;
    Changes m_Pending;
    host::Clock::time_point m_PresentedAt {};    // the last picture
    host::Clock::time_point m_SourceGone;    // max(): there is one, or nothing is shown
    host::Clock::duration m_Lead {};    // from asking for a picture to its being seen
    unsigned long m_nTurns = 0;
    unsigned long m_nPresented = 0;
    long m_nFirstFrameMs = -1;
    std::unique_ptr<ScreenFeed> m_pFeed;    // null until somebody looks
    uint64_t m_nChange = 1;    // of what is on the screen
};

}    // namespace screen
