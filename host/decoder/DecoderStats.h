// What is counted while playing, and its text for external control.
//
// Units:   milliseconds, seconds, bytes as the names say.
// Threads: any.
#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>

#include "host/base/UiQueue.h"

namespace host {

class DecoderStats {
public:
    using Time = Clock::time_point;

    void Opened(Time now);            // counters of an opening start anew
    void Closed(Time now);
    void SetState(const char* state);
    void SetVideo(const std::string& codec, int width, int height, bool interlaced);
    void SetAudio(const std::string& codec, int rate, int channels);
    void Decoded();
    void Dropped(unsigned count);
    // A picture is on screen. `late` is how long after its time, `duration` how long it is due to stay.
    void Shown(Time when, int64_t lineTicks, int64_t duration, Time due, std::optional<double> soundOffsetMs);
    void Interrupted();               // pauses and the like: no gap is measured over them

    struct Feed {
        uint64_t bytesFed = 0;
        uint64_t bytesInFlight = 0;
        uint64_t fills = 0;
        bool starving = false;    // picture and sound have stopped for lack of data
        unsigned refills = 0;    // how often they were stopped until enough was in hand again
    };
    // Members of a JSON object without the braces. `soundTicks` is how far sound alone has come.
    std::string Json(const Feed& feed, int64_t soundTicks) const;

private:
    mutable std::mutex m_Mutex;
    std::string m_State = "stopped";
    std::string m_VideoCodec;
    std::string m_AudioCodec;
    int m_nWidth = 0;
    int m_nHeight = 0;
    bool m_bInterlaced = false;
    int m_nRate = 0;
    int m_nChannels = 0;
    uint64_t m_nShown = 0;
    uint64_t m_nDropped = 0;
    uint64_t m_nRepeated = 0;
    uint64_t m_nDecoded = 0;
    double m_SoundOffsetMs = 0;
    double m_WorstSoundOffsetMs = 0;
    double m_LastSeekMs = 0;
    double m_LastOpenMs = 0;
    double m_LongestGapMs = 0;
    int64_t m_nFirstTicks = 0;
    int64_t m_nLastTicks = 0;
    std::optional<Time> m_OpenedAt;
    std::optional<Time> m_ClosedAt;
    std::optional<Time> m_LastShown;
};

}    // namespace host
