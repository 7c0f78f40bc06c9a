// The ring of input buffers and the thread that has them filled.
//
// Order: buffers are offered in turn. One that was filled is offered again when its last byte has been
// taken. A fill of 0 moves on to the next buffer at once; a whole turn of them, which is only possible
// when everything has been taken, is the end of what there is, and the feed then rests for a moment
// before it asks again.
// End: whoever fills takes the return of the buffer with the last bytes for a sign that they are gone, and
// stops the decoder a few tenths of a second later, whatever the stream's real rate. So that buffer
// comes back only when nearly all that was in it has been played.
//
// Units:     bytes.
// Threads:   Configure, Start, Stop and Forget on the user-interface thread; Read and WaitForData on the
//            demultiplexing thread; `fill` and `error` are called on the ring's own thread, without a lock.
// Ownership: owns the buffers and the thread.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "host/base/UiQueue.h"
#include "host/decoder/Opening.h"

namespace host {

class FeedRing {
public:
    using Fill = std::function<unsigned long(unsigned char* buffer, unsigned long length)>;

    // What becomes of the source, told without a lock.
    struct Watch {
        std::function<void()> onWaiting;    // demultiplexing thread, which waits for the source: again and again
        std::function<void(bool all)> onFilled;    // the ring's thread; `all`: there is room for no more, or there is no more
    };

    // `playedOut`: whether hardly anything of what was read is still to be played; called without a lock.
    FeedRing(Opening& opening, Fill fill, std::function<void()> error, std::function<bool()> playedOut, Watch watch);
    ~FeedRing();
    FeedRing(const FeedRing&) = delete;
    FeedRing& operator=(const FeedRing&) = delete;

    // Only while stopped. False: no memory.
    bool Configure(size_t buffers, size_t bytesEach);
    void Start();
    void Stop();      // returns when no callback runs and none will start
    void Forget();    // drops what is in the ring; the first buffer is next. Only while stopped
    void Kick();      // the opening has changed

    // Up to `length` bytes; 0 at the end of what there is; -1 when `opening` is over.
    int Read(Opening::Number opening, unsigned char* to, int length);
    // After an end: false when `opening` is over before there is more.
    bool WaitForData(Opening::Number opening);

    void ReportError();    // any thread: `error` is called once on the feeding thread

    bool IsBeingStopped() const { return m_Token.IsInterrupted(); }
    bool RestUnlessStopped(uint32_t milliseconds) const;

    // Everything was taken, and the callback under way has been waiting for its source for so long. Any thread.
    bool IsWaitingForSource(std::chrono::milliseconds atLeast) const;

    uint64_t BytesFed() const { return m_nBytesFed; }
    uint64_t Fills() const { return m_nFills; }
    size_t BytesHeld() const { return m_nBytesHeld; }

private:
    struct Buffer {
        std::vector<unsigned char> bytes;
        size_t filled = 0;
        size_t taken = 0;
    };
    void Run();
    void Offer(std::unique_lock<std::mutex>& lock);
    void Rest(std::unique_lock<std::mutex>& lock, std::chrono::milliseconds time);
    void AwaitData(std::unique_lock<std::mutex>& lock, Opening::Number opening);
    void TellFilled(std::unique_lock<std::mutex>& lock, bool all);
    bool WaitsForSource(std::chrono::milliseconds atLeast) const { return m_bStreaming && m_bFilling && m_Filled.empty() && Clock::now() - m_CallbackSince >= atLeast; }
    bool EndReached(std::unique_lock<std::mutex>& lock);    // false: stopped before all was played

    Opening& m_Opening;
    const Fill m_Fill;
    const std::function<void()> m_Error;
    const std::function<bool()> m_PlayedOut;
    const Watch m_Watch;
    mutable InterruptToken m_Token;

    mutable std::mutex m_Mutex;
    std::condition_variable m_FeedMayGo;
    std::condition_variable m_DataChanged;
    std::condition_variable m_CallbackDone;
    mutable std::condition_variable m_StopAsked;
    std::vector<Buffer> m_Buffers;
    std::deque<size_t> m_Filled;    // in the order of filling
    size_t m_nNext = 0;
    size_t m_nZeroFills = 0;
    bool m_bEnd = false;
    bool m_bLastFillShort = false;
    bool m_bStreaming = false;
    bool m_bInCallback = false;
    bool m_bFilling = false;    // the callback is the fill
    Clock::time_point m_CallbackSince;    // of a fill
    bool m_bErrorAsked = false;
    bool m_bQuit = false;
    std::atomic<uint64_t> m_nBytesFed{0};
    std::atomic<uint64_t> m_nFills{0};
    std::atomic<size_t> m_nBytesHeld{0};
    std::thread m_Thread;
};

}    // namespace host
