// Which opening of the decoder the threads work for. Closing makes every wait of the workers end; a new
// opening has a new number, so what is left of an old one is refused wherever it turns up.
//
// Units:   numbers count from 1; 0 is "closed".
// Threads: Begin, End and Quit on the user-interface thread; the rest on any.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>

namespace host {

class Opening {
public:
    using Number = unsigned;

    Number Begin();
    void End();
    void Quit();

    Number Current() const { return m_nCurrent.load(std::memory_order_acquire); }
    bool Is(Number number) const { return Current() == number; }
    bool HasQuit() const { return m_bQuit.load(std::memory_order_acquire); }

    // Waits for an opening other than `done`; 0 when the decoder goes away. A deadline may end it early,
    // with `done` itself as the answer.
    Number WaitForOther(Number done);
    Number WaitForOther(Number done, std::chrono::milliseconds atMost);

private:
    std::mutex m_Mutex;
    std::condition_variable m_Changed;
    std::atomic<Number> m_nCurrent{0};
    std::atomic<bool> m_bQuit{false};
    Number m_nLast = 0;
};

}    // namespace host
