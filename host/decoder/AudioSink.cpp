#include "host/decoder/AudioSink.h"

#include <SDL.h>

#include <algorithm>
#include <cstring>

#include "host/base/HostOptions.h"
#include "host/decoder/StampLine.h"

namespace host {
namespace {

constexpr int kDeviceSamples = 2048;
constexpr int kDefaultRate = 48000;
constexpr std::chrono::seconds kDeviceRetry{30};
constexpr int64_t kPrimedTicks = 9000;          // 0.1 s: enough to start with
constexpr int64_t kDeadDeviceTicks = 45000;     // a device so far behind the clock takes nothing any more

bool SoundWanted()
{
    const HostOptions& options = CurrentHostOptions();
    return !options.headless && options.audio != "off";
}

}    // namespace

AudioSink::AudioSink(Opening& opening, PlayClock& clock) : m_Opening(opening), m_Clock(clock)
{
    m_nCapacity = kDefaultRate * 2 / 5;
    m_Buffer.resize(static_cast<size_t>(m_nCapacity) * 2);
}

AudioSink::~AudioSink()
{
    CloseDevice();
}

void AudioSink::OpenDevice()
{
    {
        std::lock_guard lock(m_DeviceMutex);
        if (m_nDevice != 0 || !SoundWanted() || Clock::now() < m_NextTry) {
            return;
        }
        m_NextTry = Clock::now() + kDeviceRetry;
    }
    // The sound part alone: the event part belongs to the user-interface thread.
    const char* driver = SDL_GetCurrentAudioDriver();
    if (driver == nullptr && SDL_AudioInit(nullptr) == 0) {
        driver = SDL_GetCurrentAudioDriver();
    }
    if (driver == nullptr || std::strcmp(driver, "dummy") == 0) {
        return;
    }
    SDL_AudioSpec wanted{};
    wanted.freq = kDefaultRate;
    wanted.format = AUDIO_S16SYS;
    wanted.channels = 2;
    wanted.samples = kDeviceSamples;
    wanted.callback = Callback;
    wanted.userdata = this;
    SDL_AudioSpec got{};
    const std::string& name = CurrentHostOptions().audio;
    SDL_AudioDeviceID device = SDL_OpenAudioDevice(name.empty() ? nullptr : name.c_str(), 0, &wanted, &got, SDL_AUDIO_ALLOW_FREQUENCY_CHANGE);
    if (device == 0 && !name.empty()) {
        device = SDL_OpenAudioDevice(nullptr, 0, &wanted, &got, SDL_AUDIO_ALLOW_FREQUENCY_CHANGE);
    }
    if (device == 0) {
        return;
    }
    {
        std::lock_guard lock(m_Mutex);
        m_nRate = got.freq;
        m_nCapacity = got.freq * 2 / 5;
        m_Buffer.assign(static_cast<size_t>(m_nCapacity) * 2, 0);
        m_nSize = m_nRead = 0;
        m_bHeadKnown = false;
        m_nLatency = int64_t{got.samples} * PlayClock::kTicksPerSecond / got.freq;
        m_bDevice = true;
    }
    m_Clock.SetDeviceLatency(m_nLatency);
    {
        std::lock_guard lock(m_DeviceMutex);
        m_nDevice = device;
    }
    FollowClock();
}

void AudioSink::CloseDevice()
{
    uint32_t device = 0;
    {
        std::lock_guard lock(m_DeviceMutex);
        device = m_nDevice;
        m_nDevice = 0;
        m_NextTry = {};
    }
    if (device != 0) {
        SDL_CloseAudioDevice(device);
        m_Clock.SetDeviceLatency(0);
        std::lock_guard lock(m_Mutex);
        m_bDevice = false;
    }
}

void AudioSink::Reset()
{
    std::lock_guard lock(m_Mutex);
    m_nSize = m_nRead = 0;
    m_bHeadKnown = false;
    m_Marks.clear();
    m_Space.notify_all();
}

void AudioSink::FollowClock()
{
    {
        std::lock_guard lock(m_DeviceMutex);
        const bool running = m_Clock.IsRunning();    // asked inside, or an older answer could come last
        if (m_nDevice != 0) {
            SDL_PauseAudioDevice(m_nDevice, running ? 0 : 1);
        }
    }
    Kick();
}

void AudioSink::Kick()
{
    { std::lock_guard lock(m_Mutex); }
    m_Space.notify_all();
}

int64_t AudioSink::PositionOf(int64_t ticks) const
{
    const int64_t rate = m_nRate;
    return ticks / PlayClock::kTicksPerSecond * rate + ticks % PlayClock::kTicksPerSecond * rate / PlayClock::kTicksPerSecond;
}

int64_t AudioSink::TicksOf(int64_t position) const
{
    const int64_t rate = m_nRate;
    return position / rate * PlayClock::kTicksPerSecond + position % rate * PlayClock::kTicksPerSecond / rate;
}

void AudioSink::DropUntil(int64_t position)
{
    if (position <= m_nHead) {
        return;
    }
    const int64_t count = std::min(position - m_nHead, m_nSize);
    m_nRead = (m_nRead + count) % m_nCapacity;
    m_nSize -= count;
    m_nHead = position;
    while (!m_Marks.empty() && m_Marks.front().end + m_nRate < m_nHead) {
        m_Marks.pop_front();
    }
}

// Brings the head to where the clock is. With the lock held.
void AudioSink::Sync(Clock::time_point now)
{
    const std::optional<int64_t> start = m_Clock.Start();
    const unsigned serial = m_Clock.Serial();
    if (!start) {
        return;
    }
    if (!m_bHeadKnown || serial != m_nSerial) {
        m_nSerial = serial;
        m_bHeadKnown = true;
        m_nSize = m_nRead = 0;
        m_Marks.clear();
        m_nHead = PositionOf(*start);
    }
    if (m_Clock.IsRunning()) {
        const int64_t ticks = m_Clock.TicksAt(now);
        DropUntil(PositionOf(m_bDevice ? ticks - kDeadDeviceTicks : ticks));
    }
}

void AudioSink::Append(const int16_t* samples, int64_t count)
{
    while (count > 0) {
        const int64_t at = (m_nRead + m_nSize) % m_nCapacity;
        const int64_t run = std::min(count, m_nCapacity - at);
        int16_t* to = m_Buffer.data() + at * 2;
        if (samples == nullptr) {
            std::fill(to, to + run * 2, int16_t{0});
        } else {
            std::copy(samples, samples + run * 2, to);
            samples += run * 2;
        }
        m_nSize += run;
        count -= run;
    }
}

bool AudioSink::WaitForSpace(std::unique_lock<std::mutex>& lock, Opening::Number opening, unsigned serial)
{
    const int64_t low = m_nCapacity / 2;
    m_bFull = true;
    while (m_Opening.Is(opening) && m_nSize > low && m_Clock.Serial() == serial) {
        const Clock::time_point when = m_Clock.TimeOf(TicksOf(m_nHead + m_nSize - low) + (m_bDevice ? kDeadDeviceTicks : 0));
        if (when == Clock::time_point::max()) {
            m_Space.wait(lock);
        } else {
            m_Space.wait_until(lock, when + std::chrono::milliseconds(1));
        }
        Sync(Clock::now());
    }
    m_bFull = false;
    return m_Opening.Is(opening);
}

bool AudioSink::Write(Opening::Number opening, const int16_t* samples, int count, int64_t position, int64_t stamp)
{
    bool primed = false;
    std::unique_lock lock(m_Mutex);
    const int64_t end = position + count;
    if (!m_Opening.Is(opening)) {
        return false;
    }
    Sync(Clock::now());
    m_Marks.push_back({position, end, stamp});
    while (Tail() < end && m_Opening.Is(opening)) {
        const int64_t space = m_nCapacity - m_nSize;
        if (space == 0) {
            lock.unlock();
            m_Clock.SoundPrimed(opening);
            lock.lock();
            if (!WaitForSpace(lock, opening, m_nSerial)) {
                return false;
            }
            Sync(Clock::now());
            continue;
        }
        if (Tail() < position) {
            Append(nullptr, std::min(space, position - Tail()));
            continue;
        }
        const int64_t skip = Tail() - position;
        Append(samples + skip * 2, std::min(space, count - skip));
    }
    primed = m_bHeadKnown && m_nSize >= PositionOf(kPrimedTicks);
    lock.unlock();
    if (primed) {
        m_Clock.SoundPrimed(opening);
    }
    return m_Opening.Is(opening);
}

int64_t AudioSink::NextNeeded()
{
    std::lock_guard lock(m_Mutex);
    Sync(Clock::now());
    return m_nHead;
}

int64_t AudioSink::BufferedTicks()
{
    std::lock_guard lock(m_Mutex);
    Sync(Clock::now());
    return TicksOf(m_nSize);
}

std::optional<int64_t> AudioSink::HeardStamp(Clock::time_point now)
{
    std::lock_guard lock(m_Mutex);
    Sync(now);
    if (!m_bHeadKnown || !m_Clock.IsRunning()) {
        return std::nullopt;
    }
    const int64_t heard = m_bDevice ? m_nTakenFrom + PositionOf(TimeToTicks(now - m_TakenAt) - m_nLatency) : m_nHead;
    for (const Mark& mark : m_Marks) {
        if (heard >= mark.position && heard < mark.end) {
            return mark.stamp + TicksOf(heard - mark.position);
        }
    }
    return std::nullopt;
}

void AudioSink::Callback(void* context, uint8_t* out, int bytes)
{
    static_cast<AudioSink*>(context)->Fill(reinterpret_cast<int16_t*>(out), bytes / 4);
}

void AudioSink::Fill(int16_t* out, int count)
{
    const Clock::time_point now = Clock::now();
    std::fill(out, out + count * 2, int16_t{0});
    int64_t heard = 0;
    {
        std::lock_guard lock(m_Mutex);
        Sync(now);
        if (!m_bHeadKnown || !m_Clock.IsRunning()) {
            return;
        }
        const int64_t have = std::min<int64_t>(count, m_nSize);
        for (int64_t done = 0; done < have;) {
            const int64_t at = (m_nRead + done) % m_nCapacity;
            const int64_t run = std::min(have - done, m_nCapacity - at);
            std::copy(m_Buffer.data() + at * 2, m_Buffer.data() + (at + run) * 2, out + done * 2);
            done += run;
        }
        m_nTakenFrom = m_nHead;
        m_TakenAt = now;
        heard = TicksOf(m_nHead) - m_nLatency;
        DropUntil(m_nHead + count);
        if (m_bFull && m_nSize <= m_nCapacity / 2) {
            m_Space.notify_all();
        }
    }
    m_Clock.Observe(heard, now);
}

}    // namespace host
