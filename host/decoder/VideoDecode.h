// The video codec's thread: coded pictures in, timed pictures out, a few at a time.
//
// It decides, in display order, where each segment of the stream's clock lies on the time line: a segment's
// first picture follows the last one of the segment before.
//
// Units:     ticks of 90 kHz.
// Threads:   Run on a thread of its own.
// Ownership: owns codec and filter, which outlive a reopening.
#pragma once

#include <functional>
#include <vector>

#include "host/decoder/CodedStore.h"
#include "host/decoder/FrameFilter.h"
#include "host/decoder/Present.h"
#include "host/decoder/SegmentOffsets.h"
#include "host/decoder/UnitCodec.h"

namespace host {

class VideoDecode {
public:
    VideoDecode(Opening& opening, CodedStore& store, SegmentOffsets& offsets, PlayClock& clock, Present& present, DecoderStats& stats, std::function<void()> error);

    void Run();

private:
    void Begin();
    bool DecodeSome(Opening::Number opening);
    void Receive(Opening::Number opening);
    void Drain(Opening::Number opening);
    int64_t DurationOf(const AVFrame& frame);
    int64_t PlaceSegment(Opening::Number opening, unsigned segment, int64_t ticks);
    int64_t LineTicks(Opening::Number opening, const AVFrame& frame, int64_t duration);
    void Finish(Opening::Number opening, FramePtr frame);
    void Send(Opening::Number opening, std::vector<FramePtr>& frames);
    void FollowLoad(int64_t ticks, int64_t duration);
    void Describe(const AVFrame& frame);

    Opening& m_Opening;
    CodedStore& m_Store;
    SegmentOffsets& m_Offsets;
    PlayClock& m_Clock;
    Present& m_Present;
    DecoderStats& m_Stats;

    UnitCodec m_Codec;
    FrameFilter m_Filter;

    bool m_bAny = false;              // a picture of this opening has come out
    unsigned m_nSegment = 0;
    int64_t m_nSegmentOffset = 0;     // time line - segment ticks
    int64_t m_nLast = 0;              // of the last picture, on the time line
    int64_t m_nEnd = 0;
    int64_t m_nMeasured = 0;          // duration as seen between stamps, 0: none yet
    int64_t m_nLastStamp = AV_NOPTS_VALUE;
    bool m_bDrought = false;
    int m_nWidth = 0;
    int m_nHeight = 0;
    bool m_bInterlaced = false;
};

}    // namespace host
