#include "host/decoder/AudioDecode.h"

#include <cstdlib>

#include "host/decoder/StampLine.h"

extern "C" {
#include <libavutil/channel_layout.h>
}

namespace host {
namespace {

constexpr int kLowestRate = 4000;      // a stream may state any; a frame at 1 Hz would last for minutes
constexpr int kHighestRate = 384000;
constexpr int kTolerance = 30;                           // thousandths of a second beside the line that are let be
constexpr int64_t kSoundAloneTicks = 72000;              // so much sound and no picture: there is none
constexpr std::chrono::seconds kPicturePatience{3};
constexpr std::chrono::milliseconds kShortPatience{500};
constexpr size_t kSoundWaitBytes = 512 << 10;
constexpr std::chrono::milliseconds kLook{20};
constexpr int64_t kOffsetReserve = 7200;                 // sound still buffered when a joint is no longer waited for
constexpr std::chrono::milliseconds kDroughtWait{100};
constexpr std::chrono::milliseconds kRebasePatience{300};
constexpr std::chrono::milliseconds kKeepDevice{5000};   // a device nobody plays on is given back

}    // namespace

AudioDecode::AudioDecode(Opening& opening, CodedStore& store, SegmentOffsets& offsets, PlayClock& clock, AudioSink& sink, Present& present, DecoderStats& stats,
                         std::function<void()> error)
    : m_Opening(opening), m_Store(store), m_Offsets(offsets), m_Clock(clock), m_Sink(sink), m_Present(present), m_Stats(stats), m_Codec(0, std::move(error))
{
}

void AudioDecode::Run()
{
    Opening::Number opening = 0;
    while (!m_Opening.HasQuit()) {
        Opening::Number next = m_Opening.WaitForOther(opening, kKeepDevice);
        if (next == opening && !m_Opening.HasQuit()) {
            m_Sink.CloseDevice();
            next = m_Opening.WaitForOther(opening);
        }
        if (next == 0) {
            break;
        }
        opening = next;
        Begin();
        Play(opening);
    }
    m_Sink.CloseDevice();
}

void AudioDecode::Begin()
{
    m_Codec.Begin();
    m_Next.reset();
    m_nLastStamp = AV_NOPTS_VALUE;
    m_bGuessed = false;
    m_bDrought = false;
}

void AudioDecode::Play(Opening::Number opening)
{
    while (true) {
        CodedUnit unit;
        CodedStore::Got got = m_Store.Take(opening, CodedStore::kAudio, false, unit);
        if (got == CodedStore::Got::kNothing) {
            const Clock::time_point from = Clock::now();
            got = m_Store.Take(opening, CodedStore::kAudio, true, unit);
            m_bDrought = m_bDrought || Clock::now() - from > kDroughtWait;
        }
        if (got == CodedStore::Got::kOver) {
            return;
        }
        if (!unit.packet) {
            if (m_Codec.Drain()) {
                Receive(opening);
            }
            m_Clock.SoundPrimed(opening);    // no more is coming
            continue;
        }
        m_Sink.OpenDevice();
        const UnitCodec::Sent sent = m_Codec.Send(unit);
        if (sent == UnitCodec::Sent::kNot) {
            continue;
        }
        if (sent == UnitCodec::Sent::kToOpened) {
            m_nInRate = 0;
        }
        Receive(opening);
    }
}

void AudioDecode::Receive(Opening::Number opening)
{
    FramePtr frame(av_frame_alloc());
    while (frame && avcodec_receive_frame(m_Codec.Get(), frame.get()) >= 0) {
        const int64_t stamp = frame->pts;
        const int count = Resample(*frame);
        if (count > 0) {
            Place(opening, stamp, count);
        }
        av_frame_unref(frame.get());
    }
}

bool AudioDecode::OpenResampler(const AVFrame& frame, int rate)
{
    AVChannelLayout from{};    // the library takes its arguments non-constant
    if (frame.ch_layout.order != AV_CHANNEL_ORDER_UNSPEC) {
        av_channel_layout_copy(&from, &frame.ch_layout);
    } else {
        av_channel_layout_default(&from, frame.ch_layout.nb_channels);
    }
    AVChannelLayout stereo = AV_CHANNEL_LAYOUT_STEREO;
    SwrContext* made = nullptr;
    const int result = swr_alloc_set_opts2(&made, &stereo, AV_SAMPLE_FMT_S16, rate, &from, static_cast<AVSampleFormat>(frame.format), frame.sample_rate, 0, nullptr);
    av_channel_layout_uninit(&from);
    m_pResampler.reset(made);
    if (result < 0 || swr_init(made) < 0) {
        m_pResampler.reset();
        return false;
    }
    m_nInRate = frame.sample_rate;
    m_nInFormat = frame.format;
    m_nInChannels = frame.ch_layout.nb_channels;
    m_nOutRate = rate;
    return true;
}

int AudioDecode::Resample(const AVFrame& frame)
{
    const int rate = m_Sink.Rate();
    const int channels = frame.ch_layout.nb_channels;
    if (frame.sample_rate < kLowestRate || frame.sample_rate > kHighestRate || frame.nb_samples <= 0 || channels <= 0) {
        return 0;
    }
    if (!m_pResampler || frame.sample_rate != m_nInRate || frame.format != m_nInFormat || channels != m_nInChannels || rate != m_nOutRate) {
        if (!OpenResampler(frame, rate)) {
            return 0;
        }
        m_Stats.SetAudio(avcodec_get_name(m_Codec->codec_id), frame.sample_rate, channels);
    }
    const int room = swr_get_out_samples(m_pResampler.get(), frame.nb_samples);
    if (room <= 0) {
        return 0;
    }
    m_Samples.resize(static_cast<size_t>(room) * 2);
    auto* out = reinterpret_cast<uint8_t*>(m_Samples.data());
    return swr_convert(m_pResampler.get(), &out, room, const_cast<const uint8_t**>(frame.extended_data), frame.nb_samples);
}

// Sound waits for the first picture, which it is aligned on; where none comes it starts alone.
bool AudioDecode::WaitForStart(Opening::Number opening, int64_t line)
{
    const Clock::time_point from = Clock::now();
    while (!m_Clock.WaitForStart(opening, Clock::now() + kLook)) {
        if (!m_Opening.Is(opening)) {
            return false;
        }
        if (m_Clock.IsPaused()) {
            continue;
        }
        const auto waited = Clock::now() - from;
        const bool ended = m_Store.HasEnded();
        const bool noVideo = !m_Store.Seen(CodedStore::kVideo) && (ended || m_Store.TicksHeld(CodedStore::kAudio) >= kSoundAloneTicks / 2);
        if (noVideo || waited > kPicturePatience || (ended && waited > kShortPatience) || m_Store.BytesHeld(CodedStore::kAudio) > kSoundWaitBytes) {
            m_Clock.FirstSound(opening, line, Clock::now());
            m_Present.Blank();
            return true;
        }
    }
    return true;
}

// Where the segment lies. The video side says so when its first picture of the segment is decoded, a moment
// before it is due; meanwhile the sound that is buffered plays on.
int64_t AudioDecode::OffsetOf(Opening::Number opening, unsigned segment, int64_t ticks)
{
    std::optional<int64_t> offset = m_Offsets.Get(segment);
    if (offset) {
        m_bGuessed = false;
        return *offset;
    }
    if (m_bGuessed && m_nGuessedSegment == segment) {
        return m_nGuess;
    }
    while (m_Opening.Is(opening) && m_Store.Seen(CodedStore::kVideo) && m_Clock.Start() && m_Sink.BufferedTicks() > kOffsetReserve) {
        m_Clock.WaitForChange(opening, Clock::now() + kLook);
        offset = m_Offsets.Get(segment);
        if (offset) {
            return *offset;
        }
    }
    m_bGuessed = true;
    m_nGuessedSegment = segment;
    m_nGuess = m_Next ? m_Sink.TicksOf(*m_Next) - ticks : 0;
    if (!m_Store.Seen(CodedStore::kVideo)) {
        m_Offsets.Set(opening, segment, m_nGuess);
    }
    return m_nGuess;
}

void AudioDecode::AwaitRebase(Opening::Number opening, int64_t position)
{
    if (!m_bDrought) {
        return;
    }
    m_bDrought = false;
    if (m_Sink.NextNeeded() <= position + m_Sink.Rate() / 10) {
        return;
    }
    if (!m_Store.Seen(CodedStore::kVideo)) {
        m_Clock.Rebase(m_Sink.TicksOf(position), Clock::now());
        return;
    }
    const unsigned serial = m_Clock.Serial();
    const Clock::time_point until = Clock::now() + kRebasePatience;
    while (m_Opening.Is(opening) && m_Clock.Serial() == serial && Clock::now() < until) {
        m_Clock.WaitForChange(opening, Clock::now() + kLook);
    }
}

void AudioDecode::Place(Opening::Number opening, int64_t stamp, int count)
{
    const int rate = m_Sink.Rate();
    if (stamp == AV_NOPTS_VALUE) {
        if (!m_Next || m_nLastStamp == AV_NOPTS_VALUE) {
            return;    // cut sound before the first stamp
        }
        stamp = m_nLastStamp;
    } else {
        const unsigned segment = SegmentStamp::Segment(stamp);
        const int64_t ticks = SegmentStamp::Ticks(stamp);
        if (!m_Clock.Start() && !WaitForStart(opening, ticks + m_Offsets.Get(segment).value_or(0))) {
            return;
        }
        const int64_t position = m_Sink.PositionOf(ticks + OffsetOf(opening, segment, ticks));
        if (!m_Next || std::llabs(position - *m_Next) > int64_t{rate} * kTolerance / 1000) {
            m_Next = position;
        }
    }
    AwaitRebase(opening, *m_Next);
    m_Sink.Write(opening, m_Samples.data(), count, *m_Next, stamp);
    *m_Next += count;
    m_nLastStamp = stamp + m_Sink.TicksOf(count);
}

}    // namespace host
