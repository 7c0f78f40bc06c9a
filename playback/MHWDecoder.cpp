#include "playback/MHWDecoder.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <utility>

#include "platform/CascadeApp.h"
#include "platform/CascadeHTTPStream.h"
#include "platform/CascadeTime.h"
#include "playback/FeedState.h"
#include "playback/MDecoder.h"
#include "playback/PlaybackMessages.h"
#include "sources/DVDISOStream.h"

std::atomic<uint32_t> g_LastUITick_ms {0};
std::atomic<bool> g_bVideoRunning {false};
std::atomic<bool> g_bTSFix {false};
FeedState g_FeedState;

namespace {

constexpr uint32_t kStarvingMs = 3001;
constexpr uint32_t kSampleBytes = 500000;    // a bit-rate sample is taken when more were asked for
constexpr int kWarmupWindows = 6;
constexpr uint32_t kMostSamples = 20;
constexpr int kMostShortReadsTold = 10;
constexpr uint32_t kWalkRestMs = 100;

PackParser g_PackParser;

const char* ApplicationAddress()
{
    return CascadeApp::s_pTheApp == nullptr ? "" : CascadeApp::s_pTheApp->GetWormholeAddress();
}

MHWDecoder::Kind KindOf(const CascadeStream* stream)
{
    if (stream == nullptr) {
        return MHWDecoder::Kind::kNone;
    }
    if (dynamic_cast<const CascadeFileStream*>(stream) != nullptr) {
        return MHWDecoder::Kind::kFile;
    }
    if (dynamic_cast<const DVDISOStream*>(stream) != nullptr) {
        return MHWDecoder::Kind::kImage;
    }
    return dynamic_cast<const CascadeHTTPStream*>(stream) != nullptr ? MHWDecoder::Kind::kHTTP : MHWDecoder::Kind::kOther;
}

// Reads into buffer[at..], as far as the buffer of `length` bytes reaches; what lies beyond its end is
// read away, so that the stream moves on by all of it.
unsigned long ReadInside(CascadeStream& stream, unsigned char* buffer, unsigned long length, unsigned long at, unsigned long count, bool& interrupted)
{
    unsigned char dropped[4096];
    unsigned long got = 0;
    while (got < count) {
        const unsigned long to = at + got;
        const bool inside = to < length;
        const unsigned long want = std::min(count - got, inside ? length - to : sizeof dropped);
        const unsigned long now = stream.ReadBytes(want, inside ? buffer + to : dropped);
        if (now == 0) {
            interrupted = stream.WasInterrupted();
            break;
        }
        got += std::min(now, want);
    }
    return got;
}

}    // namespace

void InitPSParser()
{
    g_PackParser.Reset();
}

MHWDecoder::MHWDecoder()
    : m_Wormhole("wormhole://localhost/orvandi.nuvid")
{
}

MHWDecoder::~MHWDecoder()
{
    Close();
}

unsigned long MHWDecoder::OnFillBuffer(unsigned char* buffer, unsigned long length)
{
    if (m_bEOF) {
        AnnounceEnd(buffer);
        return 0;
    }
    if (!MayFillAfterReopen(buffer)) {
        return 0;
    }
    if (UserInterfaceIsStarving()) {
        std::memset(buffer, 0xFF, length);    // stuffing: the decoder is kept going, the stream stays where it is
        return length;
    }
    MeasureBitrate(length);
    if (!g_FeedState.firstFillTold) {
        g_FeedState.firstFillTold = true;
        std::printf("OnFill: %d\n", static_cast<int>(length));
    }
    bool interrupted = false;
    const unsigned long got = ReadAcrossFiles(buffer, length, interrupted);
    if (g_bTSFix && m_bProgramStream) {
        parse(buffer, static_cast<int>(got));
    }
    // A read that was cut off by pause or close has taken nothing: it is no end, the next fill asks again.
    if (got < length && !interrupted) {
        TellEnd(buffer, got, length);
    }
    return got;
}

void MHWDecoder::OnDecoderError()
{
    m_Wormhole.PostMessage(ApplicationAddress(), kMessageDecoderError, nullptr, 0);
}

// The end is told only when the decoder comes back for the buffer that held the last bytes: all before it
// has been taken then. Told once.
void MHWDecoder::AnnounceEnd(const unsigned char* buffer)
{
    if (g_FeedState.endBuffer == nullptr || buffer != g_FeedState.endBuffer) {
        return;
    }
    if (!m_Wormhole.PostMessage(ApplicationAddress(), kMessageEndOfStream, nullptr, 0)) {
        std::printf("Failed to post Wormhole message. URL: %s\n", ApplicationAddress());
    }
    g_bVideoRunning = false;
    g_FeedState.endBuffer = nullptr;
}

void MHWDecoder::TellEnd(const unsigned char* buffer, unsigned long got, unsigned long length)
{
    std::printf("EOF\n");
    m_bEOF = true;
    g_FeedState.endBuffer = buffer;
    if (g_FeedState.shortReadsTold < kMostShortReadsTold) {
        ++g_FeedState.shortReadsTold;
        std::printf("MyDecoder::OnFillBuffer() short read %d/%d\n", static_cast<int>(got), static_cast<int>(length));
        std::fflush(stdout);
    }
}

// On purpose only one buffer is filled after a reopen until the decoder has gone once round its ring.
bool MHWDecoder::MayFillAfterReopen(const unsigned char* buffer)
{
    if (!m_bReopened) {
        return true;
    }
    if (g_FeedState.reopenBuffer == nullptr) {
        g_FeedState.reopenBuffer = buffer;
        return true;
    }
    if (buffer != g_FeedState.reopenBuffer) {
        return false;
    }
    g_FeedState.reopenBuffer = nullptr;
    m_bReopened = false;
    return true;
}

bool MHWDecoder::UserInterfaceIsStarving()
{
    // The tick first: one that falls between the two reads would look like one from the future.
    const uint32_t tick = g_LastUITick_ms;
    const uint32_t elapsed = CascadeTime::GetUptimeMilliseconds() - tick;
    if (elapsed > 0x80000000U) {
        g_LastUITick_ms = 0;    // a tick in the future
        return false;
    }
    if (elapsed < kStarvingMs) {
        return false;
    }
    std::printf("UI thread is starving (%d)!\n", static_cast<int>(elapsed));
    std::fflush(stdout);
    return true;
}

// Counts what the decoder asks for, not what the stream gives. The first windows after a start only fill
// the decoder's buffers and say nothing about the rate.
void MHWDecoder::MeasureBitrate(unsigned long length)
{
    FeedState& feed = g_FeedState;
    feed.bytesInSample += static_cast<uint32_t>(length);
    if (feed.bytesInSample <= kSampleBytes) {
        return;
    }
    m_nPrevSampleTime = m_nLastSampleTime;
    m_nLastSampleTime = CascadeTime::GetUptimeMilliseconds();
    if (m_nWarmup < kWarmupWindows) {
        feed.samples = 0;
        ++m_nWarmup;
    } else if (m_nLastSampleTime != m_nPrevSampleTime) {
        const uint32_t bytesPerMs = feed.bytesInSample / (m_nLastSampleTime - m_nPrevSampleTime);
        feed.samples = std::min(feed.samples + 1, kMostSamples);
        m_nBitrate = (m_nBitrate * (feed.samples - 1) + bytesPerMs * 8000) / feed.samples;
    }
    feed.bytesInSample = 0;
}

unsigned long MHWDecoder::ReadAcrossFiles(unsigned char* buffer, unsigned long length, bool& interrupted)
{
    FeedSource& source = m_Source.Current();
    CascadeStream* stream = source.m_pStream.get();
    unsigned long got = stream == nullptr ? 0 : ReadInside(*stream, buffer, length, 0, length, interrupted);
    if (got >= length || interrupted) {
        return got;
    }
    auto walk = std::make_unique<FeedSource>();
    walk->m_FileList = source.m_FileList;
    bool walked = false;
    unsigned long writeAt = 0;
    while (got < length && !interrupted) {
        if (IsBeingStopped()) {
            interrupted = true;    // a long row of empty files: the next fill goes on from here
            break;
        }
        const char* next = walk->m_FileList.GetNextFile();
        if (next == nullptr) {
            break;
        }
        std::printf("Walking into next file\n");
        std::fflush(stdout);
        walked = true;
        walk->m_pStream.reset();
        walk->m_pStream.reset(OpenStream(next));
        if (!walk->m_pStream) {
            std::printf("Failed to open %s\n", next);
            std::fflush(stdout);
            break;
        }
        // On purpose the place moves on by all that has been read so far, each time round: right for the
        // first change of file in a fill, too far for a second one. What would fall behind the
        // buffer's end is read away.
        writeAt += got;
        got += ReadInside(*walk->m_pStream, buffer, length, writeAt, length - got, interrupted);
    }
    if (walked) {
        m_Source.Replace(std::move(walk));
    }
    return got;
}

void MHWDecoder::parse(unsigned char* buffer, int length)
{
    g_PackParser.Parse(buffer, length, *this);
}

bool MHWDecoder::RestInWalk()
{
    return RestUnlessStopped(kWalkRestMs) || IsBeingStopped();
}

// The remembered buffer of an earlier opening is forgotten: its address means nothing in the new ring, and
// to wait for it could last for ever.
void MHWDecoder::PrepareStart()
{
    m_nWarmup = 0;
    g_FeedState.reopenBuffer = nullptr;
    InitPSParser();
}

void MHWDecoder::SetStream(CascadeStream* stream)
{
    m_Source.Current().m_pStream.reset(stream);
}

void MHWDecoder::SetFiles(const char* path)
{
    m_Source.Current().m_FileList.Create(path);
}

MHWDecoder::Place MHWDecoder::GetPlace()
{
    const FeedSourceSlot::View view(m_Source);
    return {KindOf(view->m_pStream.get()), view->m_FileList, view->m_pStream ? view->m_pStream->GetPosition() : 0};
}

MHWDecoder::Kind MHWDecoder::GetKind()
{
    const FeedSourceSlot::View view(m_Source);
    return KindOf(view->m_pStream.get());
}

unsigned long long MHWDecoder::GetPosition()
{
    const FeedSourceSlot::View view(m_Source);
    return view->m_pStream ? view->m_pStream->GetPosition() : 0;
}

unsigned long long MHWDecoder::GetStreamSize()
{
    const FeedSourceSlot::View view(m_Source);
    return view->m_pStream ? view->m_pStream->GetSize() : 0;
}
