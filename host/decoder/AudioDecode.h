// The sound codec's thread: coded sound in, stereo samples laid on the time line out.
//
// Sound runs on linearly; only where its stamps lie more than a little beside that is it moved, by
// silence or by dropping.
//
// Units:     ticks of 90 kHz; positions are samples of the sink.
// Threads:   Run on a thread of its own, which also opens and closes the sound device.
// Ownership: owns codec and resampler, which outlive a reopening.
#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "host/decoder/AudioSink.h"
#include "host/decoder/CodedStore.h"
#include "host/decoder/DecoderStats.h"
#include "host/decoder/Present.h"
#include "host/decoder/SegmentOffsets.h"
#include "host/decoder/UnitCodec.h"

namespace host {

class AudioDecode {
public:
    AudioDecode(Opening& opening, CodedStore& store, SegmentOffsets& offsets, PlayClock& clock, AudioSink& sink, Present& present, DecoderStats& stats, std::function<void()> error);

    void Run();

private:
    void Begin();
    void Play(Opening::Number opening);
    void Receive(Opening::Number opening);
    bool OpenResampler(const AVFrame& frame, int rate);
    int Resample(const AVFrame& frame);
    bool WaitForStart(Opening::Number opening, int64_t line);
    int64_t OffsetOf(Opening::Number opening, unsigned segment, int64_t ticks);
    void Place(Opening::Number opening, int64_t stamp, int count);
    void AwaitRebase(Opening::Number opening, int64_t position);

    Opening& m_Opening;
    CodedStore& m_Store;
    SegmentOffsets& m_Offsets;
    PlayClock& m_Clock;
    AudioSink& m_Sink;
    Present& m_Present;
    DecoderStats& m_Stats;

    UnitCodec m_Codec;
    ResamplerPtr m_pResampler;
    int m_nInRate = 0;
    int m_nInFormat = -1;
    int m_nInChannels = 0;
    int m_nOutRate = 0;
    std::vector<int16_t> m_Samples;

    std::optional<int64_t> m_Next;    // position that follows what was written
    int64_t m_nLastStamp = AV_NOPTS_VALUE;
    unsigned m_nGuessedSegment = 0;   // a segment that nobody has placed yet
    bool m_bGuessed = false;
    int64_t m_nGuess = 0;
    bool m_bDrought = false;
};

}    // namespace host
