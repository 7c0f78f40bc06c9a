#include "host/decoder/FeedRing.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace host {
namespace {

// How long an idle feed rests between two turns round the ring.
constexpr std::chrono::milliseconds kIdleRest{20};
// How often the reader looks whether its waiting for the source has become a matter of playing, and from when on.
constexpr std::chrono::milliseconds kLook{20};
constexpr std::chrono::milliseconds kSilence{50};
// A buffer of nothing but 0xFF is stuffing handed out so that somebody else gets processor time.
constexpr std::chrono::milliseconds kStuffingRest{100};
// Longest time that the end is held back for what is still to be played: sound that no device takes.
constexpr std::chrono::seconds kLongestTail{20};

bool IsStuffing(const unsigned char* bytes, size_t count)
{
    return count > 0 && bytes[0] == 0xFF && std::memcmp(bytes, bytes + 1, count - 1) == 0;
}

}    // namespace

FeedRing::FeedRing(Opening& opening, Fill fill, std::function<void()> error, std::function<bool()> playedOut, Watch watch)
    : m_Opening(opening), m_Fill(std::move(fill)), m_Error(std::move(error)), m_PlayedOut(std::move(playedOut)), m_Watch(std::move(watch))
{
}

FeedRing::~FeedRing()
{
    Stop();
    {
        std::lock_guard lock(m_Mutex);
        m_bQuit = true;
    }
    m_FeedMayGo.notify_all();
    if (m_Thread.joinable()) {
        m_Thread.join();
    }
}

bool FeedRing::Configure(size_t buffers, size_t bytesEach)
{
    std::lock_guard lock(m_Mutex);
    if (m_Buffers.size() == buffers && m_Buffers.front().bytes.size() == bytesEach) {
        return true;
    }
    std::vector<Buffer> made;
    try {
        made.resize(buffers);
        for (Buffer& buffer : made) {
            buffer.bytes.resize(bytesEach);
        }
    } catch (const std::bad_alloc&) {
        return false;
    }
    m_Buffers = std::move(made);
    m_Filled.clear();
    m_nNext = 0;
    return true;
}

void FeedRing::Start()
{
    {
        std::lock_guard lock(m_Mutex);
        m_Token.Reset();
        m_bStreaming = true;
        if (!m_Thread.joinable()) {
            m_Thread = std::thread([this] { Run(); });
        }
    }
    m_FeedMayGo.notify_all();
    m_DataChanged.notify_all();
}

void FeedRing::Stop()
{
    std::unique_lock lock(m_Mutex);
    m_bStreaming = false;
    m_Token.Interrupt();
    m_StopAsked.notify_all();
    m_FeedMayGo.notify_all();
    if (m_Thread.get_id() != std::this_thread::get_id()) {
        m_CallbackDone.wait(lock, [this] { return !m_bInCallback; });
    }
}

void FeedRing::Forget()
{
    std::lock_guard lock(m_Mutex);
    for (Buffer& buffer : m_Buffers) {
        buffer.filled = 0;
        buffer.taken = 0;
    }
    m_Filled.clear();
    m_nNext = 0;
    m_nZeroFills = 0;
    m_bEnd = false;
    m_bLastFillShort = false;
    m_bErrorAsked = false;
    m_nBytesHeld = 0;
    m_nBytesFed = 0;
    m_nFills = 0;
}

void FeedRing::Kick()
{
    { std::lock_guard lock(m_Mutex); }
    m_DataChanged.notify_all();
}

void FeedRing::AwaitData(std::unique_lock<std::mutex>& lock, Opening::Number opening)
{
    const auto over = [&] { return !m_Opening.Is(opening) || !m_Filled.empty() || m_bEnd; };
    while (!over()) {
        if (!m_bStreaming || !m_Watch.onWaiting) {
            m_DataChanged.wait(lock, [&] { return over() || (m_bStreaming && m_Watch.onWaiting); });
        } else if (!m_DataChanged.wait_for(lock, kLook, over) && WaitsForSource(kSilence)) {
            lock.unlock();
            m_Watch.onWaiting();
            lock.lock();
        }
    }
}

int FeedRing::Read(Opening::Number opening, unsigned char* to, int length)
{
    std::unique_lock lock(m_Mutex);
    AwaitData(lock, opening);
    if (!m_Opening.Is(opening)) {
        return -1;
    }
    if (m_Filled.empty() || length <= 0) {
        return 0;
    }
    Buffer& buffer = m_Buffers[m_Filled.front()];
    const size_t count = std::min<size_t>(static_cast<size_t>(length), buffer.filled - buffer.taken);
    std::memcpy(to, buffer.bytes.data() + buffer.taken, count);
    buffer.taken += count;
    m_nBytesHeld -= count;
    if (buffer.taken == buffer.filled) {
        buffer.filled = 0;
        buffer.taken = 0;
        m_Filled.pop_front();
        m_FeedMayGo.notify_all();
    }
    return static_cast<int>(count);
}

bool FeedRing::WaitForData(Opening::Number opening)
{
    std::unique_lock lock(m_Mutex);
    m_DataChanged.wait(lock, [&] { return !m_Opening.Is(opening) || !m_Filled.empty(); });
    return m_Opening.Is(opening);
}

bool FeedRing::IsWaitingForSource(std::chrono::milliseconds atLeast) const
{
    std::lock_guard lock(m_Mutex);
    return WaitsForSource(atLeast);
}

void FeedRing::ReportError()
{
    {
        std::lock_guard lock(m_Mutex);
        m_bErrorAsked = true;
    }
    m_FeedMayGo.notify_all();
}

bool FeedRing::RestUnlessStopped(uint32_t milliseconds) const
{
    std::unique_lock lock(m_Mutex);
    m_StopAsked.wait_for(lock, std::chrono::milliseconds(milliseconds), [this] { return !m_bStreaming; });
    return !m_bStreaming;
}

void FeedRing::Rest(std::unique_lock<std::mutex>& lock, std::chrono::milliseconds time)
{
    m_StopAsked.wait_for(lock, time, [this] { return !m_bStreaming || m_bErrorAsked; });
}

// As a callback, so that none runs once Stop has returned.
void FeedRing::TellFilled(std::unique_lock<std::mutex>& lock, bool all)
{
    if (!m_Watch.onFilled || !m_bStreaming) {
        return;
    }
    m_bInCallback = true;
    lock.unlock();
    m_Watch.onFilled(all);
    lock.lock();
    m_bInCallback = false;
    m_CallbackDone.notify_all();
}

// Everything has been taken: the demultiplexer hears of the end, and what is left is played.
bool FeedRing::EndReached(std::unique_lock<std::mutex>& lock)
{
    m_bEnd = true;
    m_DataChanged.notify_all();
    TellFilled(lock, true);
    const Clock::time_point deadline = Clock::now() + kLongestTail;
    do {
        Rest(lock, kIdleRest);
        lock.unlock();
        const bool over = m_PlayedOut();
        lock.lock();
        if (over || Clock::now() >= deadline) {
            return true;
        }
    } while (m_bStreaming && !m_bErrorAsked);
    return false;
}

void FeedRing::Run()
{
    std::unique_lock lock(m_Mutex);
    while (true) {
        m_FeedMayGo.wait(lock, [this] { return m_bQuit || (m_bStreaming && (m_bErrorAsked || (!m_Buffers.empty() && m_Buffers[m_nNext].filled == 0))); });
        if (m_bQuit) {
            return;
        }
        if (m_bErrorAsked) {
            m_bErrorAsked = false;
            m_bInCallback = true;
            lock.unlock();
            m_Error();
            lock.lock();
            m_bInCallback = false;
            m_CallbackDone.notify_all();
            continue;
        }
        const bool wholeTurn = m_nZeroFills >= m_Buffers.size();
        if (wholeTurn || (m_bLastFillShort && m_nZeroFills + 1 == m_Buffers.size())) {
            if (EndReached(lock)) {
                m_bLastFillShort = false;
                m_nZeroFills = wholeTurn ? 0 : m_nZeroFills;
            }
            continue;
        }
        Offer(lock);
    }
}

void FeedRing::Offer(std::unique_lock<std::mutex>& lock)
{
    Buffer& buffer = m_Buffers[m_nNext];
    const size_t size = buffer.bytes.size();
    m_bInCallback = m_bFilling = true;
    m_CallbackSince = Clock::now();
    lock.unlock();
    size_t got = 0;
    bool stuffing = false;
    {
        InterruptToken::Scope scope(&m_Token);
        got = std::min<size_t>(m_Fill(buffer.bytes.data(), size), size);
        stuffing = IsStuffing(buffer.bytes.data(), got);
    }
    lock.lock();
    m_bInCallback = m_bFilling = false;
    m_CallbackDone.notify_all();
    if (got == 0) {
        if (!m_bStreaming) {
            return;    // cut off, not the end: the same buffer is offered again
        }
        m_nNext = (m_nNext + 1) % m_Buffers.size();
        ++m_nZeroFills;
        TellFilled(lock, m_Buffers[m_nNext].filled != 0);
        return;
    }
    m_nZeroFills = 0;
    m_bEnd = false;
    m_bLastFillShort = got < size;
    buffer.filled = got;
    buffer.taken = 0;
    m_Filled.push_back(m_nNext);
    m_nNext = (m_nNext + 1) % m_Buffers.size();
    ++m_nFills;
    m_nBytesFed += got;
    m_nBytesHeld += got;
    m_DataChanged.notify_all();
    TellFilled(lock, m_Buffers[m_nNext].filled != 0);
    if (stuffing) {
        Rest(lock, kStuffingRest);
    }
}

}    // namespace host
