// The decoded pictures that wait for their time, handed to the screen one by one.
//
// Threads:   Push, WaitForRoom and HasRoom on the video decoding thread; the VideoSource operations, Opened,
//            Closed and SetPlacement on the user-interface thread; Blank on any.
// Ownership: pictures are shared with the screen.
#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>

#include "host/base/VideoOutput.h"
#include "host/decoder/AudioSink.h"
#include "host/decoder/DecoderStats.h"
#include "host/decoder/Opening.h"
#include "host/decoder/PlayClock.h"

namespace host {

struct TimedPicture {
    VideoFrame frame;
    int64_t ticks = 0;          // on the time line
    int64_t duration = 3600;
    int64_t stamp = 0;          // the stream's own (SegmentStamp)
    bool afterDrought = false;  // the decoder had nothing to decode before it
};

class Present : public VideoSource {
public:
    Present(Opening& opening, PlayClock& clock, AudioSink& sink, DecoderStats& stats);

    void Opened();
    void Closed(Clock::time_point now);
    void Blank();               // sound without a picture: what stands from before goes
    void SetPlacement(const VideoPlacement& placement);

    bool WaitForRoom(Opening::Number opening);    // false: the opening is over
    bool HasRoom() const;
    void Push(Opening::Number opening, TimedPicture picture);
    // Whether a picture of this time is not worth a conversion any more.
    bool IsTooLate(int64_t ticks, int64_t duration) const;
    int64_t TicksHeld() const;    // how long the waiting pictures last
    bool IsDryAt(Clock::time_point when) const;    // none waits, and the last one's time is over then
    void Kick();

    bool Advance(Clock::time_point now, VideoFrame& frame, Clock::time_point& next) override;
    void OnPresented(Clock::time_point when) override;
    VideoPlacement Placement() const override;

private:
    size_t Capacity() const;
    size_t RefillAt() const;
    bool TakeBlack(Clock::time_point now, VideoFrame& frame, Clock::time_point& next);
    void DropLate(Clock::time_point now);
    bool ShowFirst(Clock::time_point now, VideoFrame& frame);
    void Show(VideoFrame& frame, Clock::time_point due);

    Opening& m_Opening;
    PlayClock& m_Clock;
    AudioSink& m_Sink;
    DecoderStats& m_Stats;

    mutable std::mutex m_Mutex;
    std::condition_variable m_Room;
    std::deque<TimedPicture> m_Queue;
    bool m_bFirst = true;           // of the opening
    bool m_bCameLate = false;       // a picture of the opening did: the machine needs more of them in hand
    bool m_bOnScreen = false;       // a picture of this source
    bool m_bScreenWaits = true;     // the screen was told to ask only when notified
    std::optional<Clock::time_point> m_BlackAt;
    VideoPlacement m_Placement;

    // The picture handed out last, until it is on screen.
    bool m_bHandedOut = false;
    TimedPicture m_Last;
    Clock::time_point m_LastDue{};
};

}    // namespace host
