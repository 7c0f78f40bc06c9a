// The clock and the timers, moved by the test.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>

#include "platform/CascadeTime.h"
#include "platform/CascadeTimer.h"
#include "tests/support/TestInternals.h"
#include "tests/support/TestPlatform.h"

namespace {

constexpr uint64_t kStart = 1000000;

struct Timer {
    CascadeTimer* owner;
    uint32_t id;
    uint32_t period;
    uint64_t due;
};

std::atomic<uint64_t> g_nNow {kStart};
std::vector<Timer> g_Timers;
uint32_t g_nLastId = 0;

Timer* Find(uint32_t id)
{
    const auto found = std::find_if(g_Timers.begin(), g_Timers.end(), [id](const Timer& timer) { return timer.id == id; });
    return found == g_Timers.end() ? nullptr : &*found;
}

}    // namespace

uint32_t CascadeTime::GetUptimeMilliseconds()
{
    return static_cast<uint32_t>(g_nNow);
}

CascadeTimer::~CascadeTimer()
{
    std::erase_if(g_Timers, [this](const Timer& timer) { return timer.owner == this; });
}

uint32_t CascadeTimer::SetTimer(uint32_t periodMs)
{
    const uint32_t period = std::max<uint32_t>(periodMs, 1);
    g_Timers.push_back({this, ++g_nLastId, period, g_nNow + period});
    return g_nLastId;
}

void CascadeTimer::KillTimer(uint32_t id)
{
    std::erase_if(g_Timers, [this, id](const Timer& timer) { return timer.owner == this && timer.id == id; });
}

void TestInternals::ResetTimers()
{
    g_nNow = kStart;
    g_Timers.clear();
}

namespace TestPlatform {

void SetTime(uint32_t ms)
{
    g_nNow = ms;
    for (Timer& timer : g_Timers) {
        timer.due = g_nNow + timer.period;
    }
}

void Advance(uint32_t ms)
{
    g_nNow += ms;
}

void Tick(int times)
{
    for (int i = 0; i < times && !TestInternals::IsWaiting(); ++i) {
        std::vector<uint32_t> ids;
        for (const Timer& timer : g_Timers) {
            ids.push_back(timer.id);
        }
        for (const uint32_t id : ids) {
            if (const Timer* const timer = Find(id)) {    // an earlier one may have killed it
                timer->owner->OnTimer(id);
            }
        }
    }
}

void RunFor(uint32_t ms)
{
    const uint64_t end = g_nNow + ms;
    while (!TestInternals::IsWaiting()) {
        const auto next = std::min_element(g_Timers.begin(), g_Timers.end(), [](const Timer& a, const Timer& b) { return a.due < b.due; });
        if (next == g_Timers.end() || next->due > end) {
            break;
        }
        g_nNow = std::max<uint64_t>(g_nNow, next->due);
        next->due = g_nNow + next->period;    // ticks that were missed are dropped
        next->owner->OnTimer(next->id);
    }
    g_nNow = std::max<uint64_t>(g_nNow, end);
}

int RunningTimers()
{
    return static_cast<int>(g_Timers.size());
}

bool Until(const std::function<bool()>& condition)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        Tick();
        std::this_thread::yield();
    }
    return true;
}

}    // namespace TestPlatform
