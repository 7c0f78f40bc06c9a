#include "platform/MPEGDecoder.h"

#include <algorithm>
#include <string>
#include <thread>

#include "host/base/HostHooks.h"
#include "host/decoder/AudioDecode.h"
#include "host/decoder/Demux.h"
#include "host/decoder/Refill.h"
#include "host/decoder/VideoDecode.h"

namespace {

constexpr uint32_t kMostBuffers = 32;
constexpr uint32_t kUsualBufferSize = 192512;    // 1,024 transport packets
constexpr uint32_t kLargestBuffer = 16u << 20;
constexpr int64_t kShortTail = 90 * 200;    // 200 ms
constexpr std::chrono::milliseconds kSlowSource {500};    // a disk or a server answers within less
constexpr int64_t kSilence = 90 * 20;    // 20 ms

}    // namespace

// The decoder's rooms and threads. They live as long as the decoder; an opening only gives them a new
// number to work for, so a reopening finds codecs, sound device and threads ready.
class MPEGDecoder::Impl {
public:
    explicit Impl(MPEGDecoder& owner);
    ~Impl();

    bool Open(uint32_t buffers, uint32_t bytesEach);
    bool Select(const host::Selection& selection);
    bool Resume();
    bool Pause();
    bool Close();
    bool Place(const CascadeRect& output, const CascadeRect& scale);
    bool IsStarving();
    const host::FeedRing& Ring() const { return m_Ring; }

private:
    bool IsNearlyPlayedOut();    // any thread
    void StartThreads();
    void KickAll();
    std::string Stats();
    static void RegisterStats();

    static Impl* s_pLatest;    // whose statistics are asked for; user-interface thread

    bool m_bOpen = false;
    host::Opening m_Opening;
    host::DecoderStats m_Stats;
    host::PlayClock m_Clock{m_Opening};
    host::AudioSink m_Sink{m_Opening, m_Clock};
    host::SegmentOffsets m_Offsets{m_Opening};
    host::CodedStore m_Store{m_Opening};
    host::Present m_Present{m_Opening, m_Clock, m_Sink, m_Stats};
    host::FeedRing m_Ring;
    host::Refill m_Refill{m_Ring, m_Clock, m_Store, m_Present, m_Sink};
    host::Demux m_Demux{m_Opening, m_Ring, m_Store, m_Offsets};
    host::VideoDecode m_Video;
    host::AudioDecode m_Audio;
    std::thread m_Threads[3];
};

MPEGDecoder::Impl* MPEGDecoder::Impl::s_pLatest = nullptr;

MPEGDecoder::Impl::Impl(MPEGDecoder& owner)
    : m_Ring(m_Opening, [&owner](unsigned char* buffer, unsigned long length) { return owner.OnFillBuffer(buffer, length); }, [&owner] { owner.OnDecoderError(); },
          [this] { return IsNearlyPlayedOut(); }, {[this] { m_Refill.SourceWaits(); }, [this](bool all) { m_Refill.Filled(all); }}),
      m_Video(m_Opening, m_Store, m_Offsets, m_Clock, m_Present, m_Stats, [this] { m_Ring.ReportError(); }),
      m_Audio(m_Opening, m_Store, m_Offsets, m_Clock, m_Sink, m_Present, m_Stats, [this] { m_Ring.ReportError(); })
{
    host::PrepareLibrary();
    m_Clock.SetListener([this] {
        m_Sink.FollowClock();
        host::NotifyVideo();
    });
    RegisterStats();
    s_pLatest = this;
}

MPEGDecoder::Impl::~Impl()
{
    Close();
    m_Opening.Quit();
    KickAll();
    for (std::thread& thread : m_Threads) {
        if (thread.joinable()) {
            thread.join();
        }
    }
    if (host::CurrentVideoSource() == &m_Present) {
        host::SetVideoSource(nullptr);
    }
    if (s_pLatest == this) {
        s_pLatest = nullptr;
    }
}

void MPEGDecoder::Impl::RegisterStats()
{
    static bool registered = false;
    if (!registered) {
        registered = true;
        host::Hooks().decoderStats = [] { return s_pLatest != nullptr ? s_pLatest->Stats() : host::DecoderStats().Json({}, 0); };
    }
}

std::string MPEGDecoder::Impl::Stats()
{
    host::DecoderStats::Feed feed;
    feed.bytesFed = m_Ring.BytesFed();
    feed.fills = m_Ring.Fills();
    feed.starving = IsStarving();
    feed.refills = m_Refill.Count();
    feed.bytesInFlight = m_Ring.BytesHeld() + m_Store.BytesHeld(host::CodedStore::kVideo);
    const std::optional<int64_t> start = m_Clock.Start();
    return m_Stats.Json(feed, start && m_bOpen ? m_Clock.TicksAt(host::Clock::now()) - *start : 0);
}

bool MPEGDecoder::Impl::IsNearlyPlayedOut()
{
    return m_Store.IsDrained() && m_Present.TicksHeld() <= kShortTail && m_Sink.BufferedTicks() <= kShortTail;
}

// Without the coded data in between: with nothing behind it, that is decoded as soon as there is room.
bool MPEGDecoder::Impl::IsStarving()
{
    return m_bOpen && !m_Clock.IsPaused() && (m_Refill.HasLasted(kSlowSource) || (m_Ring.IsWaitingForSource(kSlowSource) && m_Present.TicksHeld() == 0 && m_Sink.BufferedTicks() <= kSilence));
}

void MPEGDecoder::Impl::StartThreads()
{
    if (!m_Threads[0].joinable()) {
        m_Threads[0] = std::thread([this] { m_Demux.Run(); });
        m_Threads[1] = std::thread([this] { m_Video.Run(); });
        m_Threads[2] = std::thread([this] { m_Audio.Run(); });
    }
}

void MPEGDecoder::Impl::KickAll()
{
    m_Ring.Kick();
    m_Store.Kick();
    m_Demux.Kick();
    m_Present.Kick();
    m_Sink.Kick();
    m_Clock.Kick();
    m_Offsets.Kick();
}

bool MPEGDecoder::Impl::Open(uint32_t buffers, uint32_t bytesEach)
{
    Close();
    const uint32_t count = buffers == 0 ? kMostBuffers : std::min(buffers, kMostBuffers);
    const uint32_t size = bytesEach == 0 ? kUsualBufferSize : std::min(bytesEach, kLargestBuffer);
    if (!m_Ring.Configure(count, size)) {
        return false;
    }
    m_Ring.Forget();
    m_Store.Reset();
    m_Offsets.Reset();
    m_Clock.SetPaused(true, host::Clock::now());
    m_Clock.Reset();
    m_Refill.Reset();
    m_Sink.Reset();
    m_Demux.Forget();
    m_Present.Opened();
    m_Stats.Opened(host::Clock::now());
    m_bOpen = true;
    s_pLatest = this;
    m_Opening.Begin();
    StartThreads();
    if (host::CurrentVideoSource() != &m_Present) {
        host::SetVideoSource(&m_Present);
    }
    return true;
}

bool MPEGDecoder::Impl::Select(const host::Selection& selection)
{
    if (!m_bOpen) {
        return false;
    }
    m_Clock.SetSoundExpected(selection.audio != 0);
    m_Demux.Select(selection);
    return true;
}

bool MPEGDecoder::Impl::Resume()
{
    if (!m_bOpen || !m_Demux.HasSelection()) {
        return false;
    }
    m_Ring.Start();
    m_Clock.SetPaused(false, host::Clock::now());
    m_Stats.SetState("playing");
    host::NotifyVideo();
    return true;
}

bool MPEGDecoder::Impl::Pause()
{
    if (!m_bOpen) {
        return false;
    }
    m_Clock.SetPaused(true, host::Clock::now());
    m_Ring.Stop();
    m_Stats.SetState("paused");
    m_Stats.Interrupted();
    return true;
}

bool MPEGDecoder::Impl::Close()
{
    if (!m_bOpen) {
        return true;
    }
    m_bOpen = false;
    const host::Clock::time_point now = host::Clock::now();
    m_Opening.End();
    m_Ring.Stop();
    m_Clock.SetPaused(true, now);
    KickAll();
    m_Present.Closed(now);
    m_Stats.Closed(now);
    host::NotifyVideo();
    return true;
}

bool MPEGDecoder::Impl::Place(const CascadeRect& output, const CascadeRect& scale)
{
    const CascadeDims dims = host::OutputDims();
    CascadeRect whole{0, 0, dims.width, dims.height};
    CascadeRect part = output;
    part.Intersect(whole);
    if (output.IsEmpty() || scale.IsEmpty() || (!whole.IsEmpty() && part.IsEmpty())) {
        return false;
    }
    m_Present.SetPlacement({output, scale});
    host::NotifyVideo();
    return true;
}

MPEGDecoder::MPEGDecoder() : m_pImpl(std::make_unique<Impl>(*this)) {}

MPEGDecoder::~MPEGDecoder() = default;

bool MPEGDecoder::NewOpen(uint32_t numBuffers, uint32_t bufferSize, uint32_t, uint32_t, uint32_t, uint32_t, bool, bool, bool, bool, uint32_t)
{
    return m_pImpl->Open(numBuffers, bufferSize);
}

bool MPEGDecoder::SelectPIDs(bool bProgramStream, uint32_t, uint32_t nVideoPID, uint32_t nAudioPID, uint32_t nSSID, bool bAC3Audio)
{
    host::Selection selection;
    selection.programStream = bProgramStream;
    selection.video = nVideoPID;
    selection.audio = nAudioPID;
    selection.subStream = nSSID;
    selection.ac3 = bAC3Audio;
    return m_pImpl->Select(selection);
}

bool MPEGDecoder::ResumeStreaming(bool)
{
    return m_pImpl->Resume();
}

bool MPEGDecoder::PauseStreaming()
{
    return m_pImpl->Pause();
}

bool MPEGDecoder::Close()
{
    return m_pImpl->Close();
}

bool MPEGDecoder::SetOutputAndScaleRects(const CascadeRect& output, const CascadeRect& scale)
{
    return m_pImpl->Place(output, scale);
}

bool MPEGDecoder::IsStarving() const
{
    return m_pImpl->IsStarving();
}

bool MPEGDecoder::IsBeingStopped() const
{
    return m_pImpl->Ring().IsBeingStopped();
}

bool MPEGDecoder::RestUnlessStopped(uint32_t milliseconds) const
{
    return m_pImpl->Ring().RestUnlessStopped(milliseconds);
}
