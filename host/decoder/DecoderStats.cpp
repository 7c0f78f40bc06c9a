#include "host/decoder/DecoderStats.h"

#include <algorithm>
#include <atomic>
#include <cinttypes>
#include <cmath>
#include <cstdio>

namespace host {
namespace {

// Of the whole process: decoders come and go with the output resolution.
std::atomic<uint64_t> g_nTotalShown{0};

double Milliseconds(Clock::duration time)
{
    return std::chrono::duration<double, std::milli>(time).count();
}

}    // namespace

void DecoderStats::Opened(Time now)
{
    std::lock_guard lock(m_Mutex);
    m_nShown = m_nDropped = m_nRepeated = m_nDecoded = 0;
    m_SoundOffsetMs = m_WorstSoundOffsetMs = m_LongestGapMs = 0;
    m_nFirstTicks = m_nLastTicks = 0;
    m_VideoCodec.clear();
    m_AudioCodec.clear();
    m_nWidth = m_nHeight = m_nRate = m_nChannels = 0;
    m_bInterlaced = false;
    m_OpenedAt = now;
    m_LastShown.reset();
    m_State = "paused";
}

void DecoderStats::Closed(Time now)
{
    std::lock_guard lock(m_Mutex);
    if (m_State != "stopped") {
        m_ClosedAt = now;
    }
    m_State = "stopped";
}

void DecoderStats::SetState(const char* state)
{
    std::lock_guard lock(m_Mutex);
    m_State = state;
}

void DecoderStats::SetVideo(const std::string& codec, int width, int height, bool interlaced)
{
    std::lock_guard lock(m_Mutex);
    m_VideoCodec = codec;
    m_nWidth = width;
    m_nHeight = height;
    m_bInterlaced = interlaced;
}

void DecoderStats::SetAudio(const std::string& codec, int rate, int channels)
{
    std::lock_guard lock(m_Mutex);
    m_AudioCodec = codec;
    m_nRate = rate;
    m_nChannels = channels;
}

void DecoderStats::Decoded()
{
    std::lock_guard lock(m_Mutex);
    ++m_nDecoded;
}

void DecoderStats::Dropped(unsigned count)
{
    std::lock_guard lock(m_Mutex);
    m_nDropped += count;
}

void DecoderStats::Shown(Time when, int64_t lineTicks, int64_t duration, Time due, std::optional<double> soundOffsetMs)
{
    std::lock_guard lock(m_Mutex);
    ++g_nTotalShown;
    if (++m_nShown == 1) {
        m_nFirstTicks = lineTicks;
        if (m_OpenedAt) {
            m_LastOpenMs = Milliseconds(when - *m_OpenedAt);
        }
        if (m_ClosedAt) {
            m_LastSeekMs = Milliseconds(when - *m_ClosedAt);
            m_ClosedAt.reset();
        }
    }
    m_nLastTicks = std::max(m_nLastTicks, lineTicks + duration);
    if (m_LastShown) {
        m_LongestGapMs = std::max(m_LongestGapMs, Milliseconds(when - *m_LastShown));
    }
    m_LastShown = when;
    const double lateMs = due == Time::max() ? 0 : Milliseconds(when - due);
    const double stayMs = static_cast<double>(duration) / 90;
    if (stayMs > 1 && lateMs >= stayMs) {
        m_nRepeated += static_cast<uint64_t>(lateMs / stayMs);
    }
    if (soundOffsetMs) {
        m_SoundOffsetMs = *soundOffsetMs;
        if (std::fabs(*soundOffsetMs) > std::fabs(m_WorstSoundOffsetMs)) {
            m_WorstSoundOffsetMs = *soundOffsetMs;
        }
    }
}

void DecoderStats::Interrupted()
{
    std::lock_guard lock(m_Mutex);
    m_LastShown.reset();
}

std::string DecoderStats::Json(const Feed& feed, int64_t soundTicks) const
{
    std::lock_guard lock(m_Mutex);
    const int64_t ticks = m_nShown > 0 ? m_nLastTicks - m_nFirstTicks : soundTicks;
    char text[1024];
    std::snprintf(text, sizeof text,
                  "\"state\":\"%s\",\"frames_shown\":%" PRIu64 ",\"frames_dropped\":%" PRIu64 ",\"frames_repeated\":%" PRIu64 ",\"frames_decoded\":%" PRIu64
                  ",\"total_frames_shown\":%" PRIu64 ",\"av_offset_ms\":%.1f,\"worst_av_offset_ms\":%.1f,\"clock_s\":%.3f,\"bytes_fed\":%" PRIu64 ",\"bytes_in_flight\":%" PRIu64
                  ",\"fills\":%" PRIu64 ",\"starving\":%s,\"refills\":%u,\"video\":{\"codec\":\"%s\",\"width\":%d,\"height\":%d,\"interlaced\":%s},\"audio\":{\"codec\":\"%s\",\"rate\":%d,\"channels\":%d}"
                  ",\"last_seek_ms\":%.1f,\"last_open_ms\":%.1f,\"longest_gap_ms\":%.1f",
                  m_State.c_str(), m_nShown, m_nDropped, m_nRepeated, m_nDecoded, g_nTotalShown.load(), m_SoundOffsetMs, m_WorstSoundOffsetMs,
                  static_cast<double>(std::max<int64_t>(ticks, 0)) / 90000, feed.bytesFed, feed.bytesInFlight, feed.fills, feed.starving ? "true" : "false", feed.refills, m_VideoCodec.c_str(), m_nWidth, m_nHeight,
                  m_bInterlaced ? "true" : "false", m_AudioCodec.c_str(), m_nRate, m_nChannels, m_LastSeekMs, m_LastOpenMs, m_LongestGapMs);
    return text;
}

}    // namespace host
