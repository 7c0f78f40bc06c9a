// Where the sound goes: a short buffer laid on the time line, emptied by the sound device, or, where there
// is none, by the clock itself, exactly and without a thread.
//
// Samples are stereo, 16 bits, interleaved, at Rate(). A position is a sample number of the time line.
// What comes too late is dropped, what leaves a hole is preceded by silence, and an empty buffer plays
// silence while time goes on.
//
// Threads:   OpenDevice, CloseDevice and Write on the sound decoding thread; the device takes samples on a
//            thread of its own; the rest on any thread and never waits for long.
// Ownership: owns the device. One sink at a time uses the machine's sound output.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <vector>

#include "host/decoder/PlayClock.h"

namespace host {

class AudioSink {
public:
    AudioSink(Opening& opening, PlayClock& clock);
    ~AudioSink();
    AudioSink(const AudioSink&) = delete;
    AudioSink& operator=(const AudioSink&) = delete;

    void OpenDevice();     // does nothing when it is open, or was tried a short while ago
    void CloseDevice();
    int Rate() const { return m_nRate; }

    void Reset();          // forgets what is buffered; the next start positions it anew
    void FollowClock();    // the clock runs or stands: the device too
    void Kick();

    // Waits while the buffer is full. `stamp` is the stream's own stamp of the first sample. False: the
    // opening is over.
    bool Write(Opening::Number opening, const int16_t* samples, int count, int64_t position, int64_t stamp);

    int64_t PositionOf(int64_t ticks) const;
    int64_t TicksOf(int64_t position) const;
    int64_t NextNeeded();          // first position that is not too late
    int64_t BufferedTicks();
    // The stream's stamp of what is heard; nothing while silence is.
    std::optional<int64_t> HeardStamp(Clock::time_point now);

private:
    struct Mark {
        int64_t position = 0;
        int64_t end = 0;
        int64_t stamp = 0;
    };
    static void Callback(void* context, uint8_t* out, int bytes);
    void Fill(int16_t* out, int count);
    void Sync(Clock::time_point now);
    void DropUntil(int64_t position);
    void Append(const int16_t* samples, int64_t count);    // null: silence
    int64_t Tail() const { return m_nHead + m_nSize; }
    bool WaitForSpace(std::unique_lock<std::mutex>& lock, Opening::Number opening, unsigned serial);

    Opening& m_Opening;
    PlayClock& m_Clock;
    std::atomic<int> m_nRate{48000};
    std::atomic<bool> m_bDevice{false};

    std::mutex m_DeviceMutex;      // the device's identifier and whether it is paused
    uint32_t m_nDevice = 0;
    Clock::time_point m_NextTry{};
    int64_t m_nLatency = 0;        // ticks

    std::mutex m_Mutex;
    std::condition_variable m_Space;
    std::vector<int16_t> m_Buffer;
    int64_t m_nCapacity = 0;
    int64_t m_nRead = 0;           // index into the buffer
    int64_t m_nSize = 0;
    int64_t m_nHead = 0;           // position of the next sample to hand out
    bool m_bHeadKnown = false;
    unsigned m_nSerial = 0;
    bool m_bFull = false;          // the writer waits
    std::deque<Mark> m_Marks;
    int64_t m_nTakenFrom = 0;      // of the device's last taking
    Clock::time_point m_TakenAt{};
};

}    // namespace host
