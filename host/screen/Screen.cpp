#include "host/screen/Screen.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <unistd.h>

#include "host/base/VideoOutput.h"
#include "host/screen/ProcessClock.h"
#include "host/screen/ScreenshotFile.h"
#include "host/screen/WindowStack.h"

namespace screen {

using host::Clock;

namespace {

// A picture whose source is gone waits this long for that of the next one before the screen goes black.
constexpr auto kKeepPicture = std::chrono::milliseconds(500);
// Presenting may be slow on a large output; a picture is never asked for earlier than this.
constexpr Clock::duration kLongestLead = std::chrono::milliseconds(25);
// While pictures come, a layer that changes waits for the next one, so that what lies below it is not drawn twice.
constexpr Clock::duration kNextPictureSoon = std::chrono::milliseconds(50);
constexpr Clock::duration kPicturesCome = std::chrono::milliseconds(100);    // since the last one
// A source that names a time in the past while nothing is due is not asked in a circle.
constexpr Clock::duration kShortestRest = std::chrono::milliseconds(1);

}    // namespace

Screen::Screen(std::unique_ptr<Display> display, bool stretch)
    : m_pDisplay(std::move(display))
    , m_Resolutions(m_pDisplay->Resolutions())
    , m_bStretch(stretch)
    , m_SourceGone(Clock::time_point::max())
{
    Expose();
}

Screen::~Screen() = default;

void Screen::FollowOutput()
{
    const CascadeDims output = m_pDisplay->Output().Dims();
    if (!(output == m_Output)) {
        m_Output = output;
        SetOutputScale(ScaleFor(output));
        WindowStack::Instance().RedrawAll();
    }
    host::SetOutputDims(m_Resolutions[m_nResolution]);
}

void Screen::Expose()
{
    FollowOutput();
    LayOut();
    m_Pending.everything = true;
}

bool Screen::SetResolution(unsigned index)
{
    if (index >= m_Resolutions.size() || !m_pDisplay->SetResolution(index)) {
        return false;
    }
    m_nResolution = index;
    Expose();
    return true;
}

VideoGeometry Screen::LayOutOn(CascadeDims output) const
{
    VideoLayout layout;
    layout.picture = {m_Frame.width, m_Frame.height};
    layout.aspect = m_Frame.aspect;
    layout.nominal = m_Resolutions[m_nResolution];
    layout.placement = m_Placement;
    layout.output = output;
    layout.stretch = m_bStretch;
    return m_Frame ? LayOutVideo(layout) : VideoGeometry {};
}

bool Screen::LayOut()
{
    const VideoGeometry geometry = LayOutOn(m_Output);
    const bool changed = !(geometry == m_Geometry);
    m_Geometry = geometry;
    return changed;
}

// Whether another picture (or none) is to be shown now.
bool Screen::TakePicture(Clock::time_point& next)
{
    const Clock::time_point now = Clock::now();
    host::VideoSource* const source = host::CurrentVideoSource();
    if (source == nullptr) {
        next = Clock::time_point::max();
        if (!m_Frame) {
            return false;
        }
        m_SourceGone = std::min(m_SourceGone, now);
        next = m_SourceGone + kKeepPicture;
        if (now < next) {
            return false;
        }
        m_Frame = {};
        next = Clock::time_point::max();
        return true;
    }
    m_SourceGone = Clock::time_point::max();
    host::VideoFrame frame;
    const bool changed = source->Advance(now + m_Lead, frame, next);
    if (changed) {
        m_Frame = std::move(frame);
    }
    m_Placement = source->Placement();
    if (next != Clock::time_point::max()) {
        next -= m_Lead;
    }
    if (!changed) {
        next = std::max(next, now + kShortestRest);
    }
    return changed;
}

// What lies above the picture then goes with the next one: shown at once, it would have this one converted again.
bool Screen::IsPictureNear(Clock::time_point now, Clock::time_point next) const
{
    return m_Frame && now - m_PresentedAt < kPicturesCome && next - now < kNextPictureSoon;
}

Clock::time_point Screen::Turn()
{
    if (!(m_pDisplay->Output().Dims() == m_Output)) {
        Expose();
    }
    Changes changes = m_Pending;
    m_Pending = {};
    changes.overlay.Unite(WindowStack::Instance().Paint(m_Output));

    const Clock::time_point asked = Clock::now();
    Clock::time_point next;
    const bool picture = TakePicture(next);
    changes.picture = picture;
    if (LayOut()) {
        changes.everything = true;
    }
    if (!picture && !changes.everything && IsPictureNear(asked, next)) {
        m_Pending.overlay = changes.overlay;
    } else if (changes.Any()) {
        ++m_nChange;
        if (!m_pDisplay->Output().Present(MakeScene(), changes)) {
            m_Pending.everything = true;    // with the next turn; the display is between two sizes
        } else if (picture && m_Frame) {
            OnPicturePresented(asked);
        }
    }
    return next;
}

void Screen::OnPicturePresented(Clock::time_point asked)
{
    const Clock::time_point now = Clock::now();
    m_PresentedAt = now;
    ++m_nPresented;
    if (m_nFirstFrameMs < 0) {
        m_nFirstFrameMs = MillisecondsSinceProcessStart();
    } else {
        m_Lead = std::min(kLongestLead, (m_Lead * 7 + (now - asked)) / 8);
    }
    if (host::VideoSource* const source = host::CurrentVideoSource()) {
        source->OnPresented(now);
    }
}

Scene Screen::MakeScene() const
{
    Scene scene;
    scene.frame = &m_Frame;
    scene.geometry = m_Geometry;
    scene.layers = &WindowStack::Instance().Layers();
    return scene;
}

SurfacePtr Screen::Capture()
{
    if (!(m_pDisplay->Output().Dims() == m_Output)) {
        Expose();
    }
    m_Pending.overlay.Unite(WindowStack::Instance().Paint(m_Output));
    return m_pDisplay->Output().Capture(MakeScene());
}

std::function<std::string()> Screen::TakeScreenshot()
{
    std::shared_ptr<cairo_surface_t> composed(Capture().release(), SurfaceDeleter());
    return composed == nullptr ? std::function<std::string()>() : [composed] { return WriteScreenshot(composed.get()); };
}

std::shared_ptr<const host::FeedPicture> Screen::Feed(uint64_t seen)
{
    if (seen == m_nChange) {
        return nullptr;
    }
    if (m_pFeed == nullptr) {
        m_pFeed = std::make_unique<ScreenFeed>();
    }
    Scene scene = MakeScene();
    scene.geometry = LayOutOn(ScreenFeed::DimsFor(m_Output));
    std::shared_ptr<host::FeedPicture> picture = m_pFeed->Compose(scene, m_Output);
    if (picture != nullptr) {
        picture->number = m_nChange;
    }
    return picture;
}

std::string Screen::Stats() const
{
    char text[256];
    const std::string first = m_nFirstFrameMs < 0 ? "null" : std::to_string(m_nFirstFrameMs);
    std::snprintf(text, sizeof text, "\"first_frame_ms\":%s,\"presented\":%lu,\"wakeups\":%lu,\"output\":\"%dx%d\",\"presenter\":\"%s\"",
        first.c_str(), m_nPresented, m_nTurns, m_Output.width, m_Output.height, m_pDisplay->Output().Name());
    return text;
}

}    // namespace screen
