#include "host/decoder/VideoDecode.h"

#include <algorithm>

#include "host/decoder/StampLine.h"

namespace host {
namespace {

constexpr int64_t kMostPixels = 4096 * 2304;    // a header of a few bytes may claim 400 MB a picture
constexpr int64_t kUsualDuration = 3600;
constexpr int64_t kUnstamped = int64_t{1} << 34;    // where pictures begin that have no stamp yet
constexpr int64_t kOddStep = 45000;       // a stamp that goes back by more is taken for a new clock
constexpr std::chrono::milliseconds kVerdictPatience{300};
constexpr std::chrono::milliseconds kDroughtWait{30};

TimedPicture Wrap(FramePtr frame, bool drought)
{
    TimedPicture picture;
    picture.ticks = frame->pts;
    picture.duration = std::max<int64_t>(frame->pkt_duration, 1);
    picture.stamp = frame->pts + frame->reordered_opaque;
    picture.afterDrought = drought;
    VideoFrame& to = picture.frame;
    for (int i = 0; i < 3; ++i) {
        to.plane[i] = frame->data[i];
        to.stride[i] = frame->linesize[i];
    }
    to.width = frame->width;
    to.height = frame->height;
    const AVPixelFormat format = static_cast<AVPixelFormat>(frame->format);
    const bool j422 = format == AV_PIX_FMT_YUV422P || format == AV_PIX_FMT_YUVJ422P;
    const bool j444 = format == AV_PIX_FMT_YUV444P || format == AV_PIX_FMT_YUVJ444P;
    to.format = j422 ? PixelFormat::kYuv422 : j444 ? PixelFormat::kYuv444 : PixelFormat::kYuv420;
    to.fullRange = frame->color_range == AVCOL_RANGE_JPEG || format == AV_PIX_FMT_YUVJ420P || format == AV_PIX_FMT_YUVJ422P || format == AV_PIX_FMT_YUVJ444P;
    to.bt709 = frame->colorspace == AVCOL_SPC_BT709 || (frame->colorspace == AVCOL_SPC_UNSPECIFIED && frame->height > 576);
    const AVRational sample = frame->sample_aspect_ratio;
    to.aspect = static_cast<double>(frame->width) / std::max(frame->height, 1) * (sample.num > 0 && sample.den > 0 ? av_q2d(sample) : 1.0);
    to.keepAlive = std::shared_ptr<const void>(frame.release(), [](const void* p) { AvFree()(const_cast<AVFrame*>(static_cast<const AVFrame*>(p))); });
    return picture;
}

}    // namespace

VideoDecode::VideoDecode(Opening& opening, CodedStore& store, SegmentOffsets& offsets, PlayClock& clock, Present& present, DecoderStats& stats, std::function<void()> error)
    : m_Opening(opening), m_Store(store), m_Offsets(offsets), m_Clock(clock), m_Present(present), m_Stats(stats), m_Codec(kMostPixels, std::move(error))
{
}

void VideoDecode::Run()
{
    Opening::Number opening = 0;
    while ((opening = m_Opening.WaitForOther(opening)) != 0) {
        Begin();
        while (m_Present.WaitForRoom(opening)) {
            if (!DecodeSome(opening)) {
                break;
            }
        }
    }
}

void VideoDecode::Begin()
{
    m_Codec.Begin();
    if (m_Codec.Get() != nullptr) {
        m_Codec->skip_frame = AVDISCARD_DEFAULT;
    }
    m_Filter.Reset();
    m_bAny = false;
    m_nSegment = 0;
    m_nSegmentOffset = 0;
    m_nLast = m_nEnd = 0;
    m_nMeasured = 0;
    m_nLastStamp = AV_NOPTS_VALUE;
    m_bDrought = false;
    m_nWidth = m_nHeight = 0;
}

bool VideoDecode::DecodeSome(Opening::Number opening)
{
    while (m_Present.HasRoom()) {
        CodedUnit unit;
        CodedStore::Got got = m_Store.Take(opening, CodedStore::kVideo, false, unit);
        if (got == CodedStore::Got::kNothing) {
            const Clock::time_point from = Clock::now();
            got = m_Store.Take(opening, CodedStore::kVideo, true, unit);
            m_bDrought = m_bDrought || Clock::now() - from > kDroughtWait;
        }
        if (got == CodedStore::Got::kOver) {
            return false;
        }
        if (!unit.packet) {
            Drain(opening);
            continue;
        }
        const UnitCodec::Sent sent = m_Codec.Send(unit);
        if (sent == UnitCodec::Sent::kNot) {
            continue;
        }
        if (sent == UnitCodec::Sent::kToChanged) {
            m_Filter.Reset();
        }
        Receive(opening);
    }
    return m_Opening.Is(opening);
}

void VideoDecode::Receive(Opening::Number opening)
{
    while (true) {
        FramePtr frame(av_frame_alloc());
        if (!frame || avcodec_receive_frame(m_Codec.Get(), frame.get()) < 0) {
            return;
        }
        Finish(opening, std::move(frame));
    }
}

void VideoDecode::Drain(Opening::Number opening)
{
    if (m_Codec.Drain()) {
        Receive(opening);
    }
    std::vector<FramePtr> out;
    m_Filter.Drain(out);
    Send(opening, out);
}

int64_t VideoDecode::DurationOf(const AVFrame& frame)
{
    int64_t one = m_nMeasured;
    const AVRational rate = m_Codec->framerate;
    if (rate.num > 0 && rate.den > 0 && av_q2d(rate) >= 5 && av_q2d(rate) <= 130) {
        one = av_rescale(90000, rate.den, rate.num);
    }
    if (one <= 0) {
        one = kUsualDuration;
    }
    return one + one * std::max(frame.repeat_pict, 0) / 2;
}

// A segment's first picture follows the last one before, unless the segment only lies behind a hole. While
// that is in doubt, the answer is waited for, a little longer than there are pictures to show.
int64_t VideoDecode::PlaceSegment(Opening::Number opening, unsigned segment, int64_t ticks)
{
    Clock::time_point asked = Clock::now();
    while (m_bAny && m_Opening.Is(opening) && m_Offsets.IsInDoubt(segment) && !m_Store.HasEnded()) {
        const Clock::time_point now = Clock::now();
        if (m_Clock.IsPaused() || m_Clock.IsHeld()) {
            asked = now;
        }
        // A clock that stands although nobody holds it may be waiting for the very picture that waits here.
        const Clock::time_point due = m_Clock.TimeOf(m_nEnd);
        if (now > (due == Clock::time_point::max() ? asked : due) + kVerdictPatience) {
            break;
        }
        m_Offsets.AwaitVerdict(opening, segment, now + kVerdictPatience);
    }
    const std::optional<int64_t> known = m_bAny && !m_Offsets.IsHole(segment) ? std::nullopt : m_Offsets.Get(segment);
    const int64_t offset = known ? *known : m_bAny ? m_nEnd - ticks : 0;
    m_Offsets.Set(opening, segment, offset);
    return offset;
}

// Where a picture lies on the time line. Pictures come in display order; those without a stamp follow their
// predecessor.
int64_t VideoDecode::LineTicks(Opening::Number opening, const AVFrame& frame, int64_t duration)
{
    if (frame.pts == AV_NOPTS_VALUE) {
        return m_bAny ? m_nEnd : kUnstamped;
    }
    const unsigned segment = SegmentStamp::Segment(frame.pts);
    const int64_t ticks = SegmentStamp::Ticks(frame.pts);
    if (segment != m_nSegment || m_nLastStamp == AV_NOPTS_VALUE) {
        m_nSegmentOffset = PlaceSegment(opening, segment, ticks);
        m_nSegment = segment;
    } else {
        const int64_t step = frame.pts - m_nLastStamp;
        if (step > duration / 4 && step < 18000) {
            m_nMeasured = step;
        }
    }
    m_nLastStamp = frame.pts;
    int64_t line = ticks + m_nSegmentOffset;
    if (m_bAny && line <= m_nLast) {
        if (line < m_nLast - kOddStep) {
            m_nSegmentOffset += m_nEnd - line;
            m_Offsets.Set(opening, segment, m_nSegmentOffset);
        }
        line = m_nEnd;
    }
    return line;
}

void VideoDecode::Finish(Opening::Number opening, FramePtr frame)
{
    m_Stats.Decoded();
    Describe(*frame);
    const int64_t duration = DurationOf(*frame);
    const int64_t line = LineTicks(opening, *frame, duration);
    frame->reordered_opaque = (frame->pts == AV_NOPTS_VALUE ? SegmentStamp::Make(m_nSegment, line - m_nSegmentOffset) : frame->pts) - line;
    m_bAny = true;
    m_nLast = line;
    m_nEnd = line + duration;
    frame->pts = line;
    frame->pict_type = AV_PICTURE_TYPE_NONE;
    if (!m_bDrought && m_Present.IsTooLate(line, duration)) {
        FollowLoad(line, duration);
        m_Stats.Dropped(static_cast<unsigned>(m_Filter.PicturesOf(*frame)));
        return;
    }
    m_Codec->skip_frame = AVDISCARD_DEFAULT;
    std::vector<FramePtr> out;
    m_Filter.Filter(std::move(frame), duration, out);
    Send(opening, out);
}

// Far behind in spite of dropping: pictures that no other needs are not even decoded until it is caught up.
void VideoDecode::FollowLoad(int64_t ticks, int64_t duration)
{
    if (m_Present.IsTooLate(ticks + 13500, duration)) {
        m_Codec->skip_frame = AVDISCARD_NONREF;
    }
}

void VideoDecode::Send(Opening::Number opening, std::vector<FramePtr>& frames)
{
    for (FramePtr& frame : frames) {
        m_Present.Push(opening, Wrap(std::move(frame), m_bDrought));
        m_bDrought = false;
    }
}

void VideoDecode::Describe(const AVFrame& frame)
{
    const bool interlaced = frame.interlaced_frame != 0;
    if (frame.width != m_nWidth || frame.height != m_nHeight || interlaced != m_bInterlaced) {
        m_nWidth = frame.width;
        m_nHeight = frame.height;
        m_bInterlaced = interlaced;
        m_Stats.SetVideo(avcodec_get_name(m_Codec->codec_id), frame.width, frame.height, interlaced);
    }
}

}    // namespace host
