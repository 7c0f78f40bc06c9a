#include "host/decoder/Present.h"

#include <algorithm>

#include "host/decoder/StampLine.h"

namespace host {
namespace {

constexpr std::chrono::milliseconds kBlackAfterClose{500};
// A picture later than this gives way to the next when that one is due too.
constexpr std::chrono::milliseconds kLate{40};
constexpr int64_t kTooLateTicks = 2700;    // beyond its own duration
constexpr std::chrono::milliseconds kDrought{100};
constexpr std::chrono::milliseconds kEarly{1};
constexpr size_t kPictures = 5;
constexpr size_t kLargePictures = 1;      // of high definition, three megabytes each
constexpr size_t kLargeWhenLate = 2;      // once one came after its time
constexpr size_t kLargeFields = 3;        // the same at field rate
constexpr int64_t kFieldTicks = 2700;     // a picture that stands for less is one of two fields
constexpr size_t kRefillAt = 2;

}    // namespace

Present::Present(Opening& opening, PlayClock& clock, AudioSink& sink, DecoderStats& stats) : m_Opening(opening), m_Clock(clock), m_Sink(sink), m_Stats(stats) {}

void Present::Opened()
{
    std::lock_guard lock(m_Mutex);
    m_Queue.clear();
    m_bFirst = true;
    m_bCameLate = false;
    m_bHandedOut = false;
    m_BlackAt.reset();
}

void Present::Closed(Clock::time_point now)
{
    std::lock_guard lock(m_Mutex);
    m_Queue.clear();
    m_bHandedOut = false;
    m_Last = {};
    if (m_bOnScreen) {
        m_BlackAt = now + kBlackAfterClose;
    }
}

void Present::Blank()
{
    {
        std::lock_guard lock(m_Mutex);
        if (!m_bOnScreen || !m_bFirst) {
            return;
        }
        m_BlackAt = Clock::time_point::min();
    }
    NotifyVideo();
}

void Present::SetPlacement(const VideoPlacement& placement)
{
    std::lock_guard lock(m_Mutex);
    m_Placement = placement;
}

VideoPlacement Present::Placement() const
{
    std::lock_guard lock(m_Mutex);
    return m_Placement;
}

size_t Present::Capacity() const
{
    if (m_Queue.empty() || m_Queue.front().frame.height <= 576) {
        return kPictures;
    }
    return m_Queue.front().duration < kFieldTicks ? kLargeFields : m_bCameLate ? kLargeWhenLate : kLargePictures;
}

size_t Present::RefillAt() const
{
    return std::min(kRefillAt, Capacity() - 1);
}

bool Present::WaitForRoom(Opening::Number opening)
{
    std::unique_lock lock(m_Mutex);
    m_Room.wait(lock, [&] { return !m_Opening.Is(opening) || m_Queue.size() <= RefillAt(); });
    return m_Opening.Is(opening);
}

bool Present::HasRoom() const
{
    std::lock_guard lock(m_Mutex);
    return m_Queue.size() < Capacity();
}

void Present::Push(Opening::Number opening, TimedPicture picture)
{
    bool notify = false;
    {
        std::lock_guard lock(m_Mutex);
        if (!m_Opening.Is(opening)) {
            return;
        }
        m_bCameLate = m_bCameLate || (!picture.afterDrought && m_Clock.TimeOf(picture.ticks) < Clock::now());
        m_Queue.push_back(std::move(picture));
        notify = m_bScreenWaits;
        m_bScreenWaits = false;
    }
    if (notify) {
        NotifyVideo();
    }
}

bool Present::IsTooLate(int64_t ticks, int64_t duration) const
{
    {
        std::lock_guard lock(m_Mutex);
        for (const TimedPicture& picture : m_Queue) {
            if (picture.afterDrought) {
                return false;    // the clock may be set back when that one is shown
            }
        }
    }
    return m_Clock.IsRunning() && m_Clock.TicksAt(Clock::now()) > ticks + duration + kTooLateTicks;
}

int64_t Present::TicksHeld() const
{
    std::lock_guard lock(m_Mutex);
    int64_t ticks = 0;
    for (const TimedPicture& picture : m_Queue) {
        ticks += picture.duration;
    }
    return ticks;
}

bool Present::IsDryAt(Clock::time_point when) const
{
    std::lock_guard lock(m_Mutex);
    return m_Queue.empty() && !m_bFirst && m_Clock.TicksAt(when) >= m_Last.ticks + m_Last.duration;
}

void Present::Kick()
{
    { std::lock_guard lock(m_Mutex); }
    m_Room.notify_all();
}

bool Present::TakeBlack(Clock::time_point now, VideoFrame& frame, Clock::time_point& next)
{
    if (!m_BlackAt) {
        return false;
    }
    if (now < *m_BlackAt) {
        next = std::min(next, *m_BlackAt);
        return false;
    }
    m_BlackAt.reset();
    m_bOnScreen = false;
    frame = {};
    return true;
}

void Present::DropLate(Clock::time_point now)
{
    unsigned dropped = 0;
    while (m_Queue.size() > 1 && m_Clock.TimeOf(m_Queue[0].ticks) + kLate < now && m_Clock.TimeOf(m_Queue[1].ticks) <= now) {
        m_Queue.pop_front();
        ++dropped;
    }
    if (dropped > 0) {
        m_Stats.Dropped(dropped);
    }
}

void Present::Show(VideoFrame& frame, Clock::time_point due)
{
    m_Last = std::move(m_Queue.front());
    m_Queue.pop_front();
    frame = std::move(m_Last.frame);
    m_Last.frame = {};
    m_LastDue = due;
    m_bHandedOut = true;
    m_bOnScreen = true;
    m_BlackAt.reset();
    if (m_Queue.size() <= RefillAt()) {
        m_Room.notify_one();
    }
}

bool Present::Advance(Clock::time_point now, VideoFrame& frame, Clock::time_point& next)
{
    next = Clock::time_point::max();
    m_Clock.TryStart(now);
    if (ShowFirst(now, frame)) {
        m_Clock.TryStart(now);    // nothing to wait for when there is no sound
    }
    std::lock_guard lock(m_Mutex);
    bool shown = static_cast<bool>(frame);
    if (m_Queue.empty()) {
        shown = TakeBlack(now, frame, next) || shown;
    } else if (m_Clock.IsRunning()) {
        const Clock::time_point due = m_Clock.TimeOf(m_Queue.front().ticks);
        if (!shown && due <= now + kEarly) {
            if (m_Queue.front().afterDrought && now - due > kDrought && m_Sink.BufferedTicks() == 0) {
                m_Clock.Rebase(m_Queue.front().ticks, now);
            }
            DropLate(now);
            Show(frame, m_Clock.TimeOf(m_Queue.front().ticks));
            shown = true;
        }
        if (!m_Queue.empty()) {
            next = m_Clock.TimeOf(m_Queue.front().ticks);
        }
    }
    if (!m_Clock.IsRunning()) {
        next = std::min(next, m_Clock.StartDeadline());
    }
    m_bScreenWaits = next == Clock::time_point::max();
    return shown;
}

// The first picture of an opening is shown as soon as it is there; the clock starts from it.
bool Present::ShowFirst(Clock::time_point now, VideoFrame& frame)
{
    std::lock_guard lock(m_Mutex);
    frame = {};
    if (!m_bFirst || m_Queue.empty()) {
        return false;
    }
    m_bFirst = false;
    m_Clock.FirstPicture(m_Queue.front().ticks, now);
    Show(frame, Clock::time_point::max());
    return true;
}

void Present::OnPresented(Clock::time_point when)
{
    std::lock_guard lock(m_Mutex);
    if (!m_bHandedOut) {
        return;
    }
    m_bHandedOut = false;
    std::optional<double> offset;
    const std::optional<int64_t> heard = m_Sink.HeardStamp(when);
    if (heard && SegmentStamp::Segment(*heard) == SegmentStamp::Segment(m_Last.stamp)) {
        offset = static_cast<double>(m_Last.stamp - *heard) / 90;
    }
    m_Stats.Shown(when, m_Last.ticks, m_Last.duration, m_LastDue, offset);
}

}    // namespace host
