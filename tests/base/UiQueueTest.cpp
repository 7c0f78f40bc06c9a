#include "host/base/UiQueue.h"

#include <atomic>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/FakeUiLoop.h"

using host::Clock;
using host::WaitResult;

namespace {

// Only a wait whose wake-up was lost lasts so long.
Clock::time_point Deadline()
{
    return Clock::now() + std::chrono::seconds(60);
}

bool Never()
{
    return false;
}

bool Already()
{
    return true;
}

WaitResult WaitForever(host::Waiter& waiter)
{
    std::mutex mutex;
    std::unique_lock lock(mutex);
    return waiter.Wait(lock, Never, Deadline());
}

TEST(UiQueueTest, RunsInOrderWhatWasQueuedAndLeavesWhatThatQueues)
{
    std::vector<int> ran;
    host::PostToUi([&] {
        ran.push_back(1);
        host::PostToUi([&] { ran.push_back(3); });
    });
    host::PostToUi([&] { ran.push_back(2); });
    host::DrainUiQueue();
    EXPECT_EQ(ran, (std::vector<int> {1, 2}));
    host::DrainUiQueue();
    EXPECT_EQ(ran, (std::vector<int> {1, 2, 3}));
}

TEST(UiQueueTest, KeepsTheOrderWhenWorkWaitsAndDrainsFromInside)
{
    std::vector<int> ran;
    host::PostToUi([&] {
        ran.push_back(1);
        host::PostToUi([&] { ran.push_back(3); });
        host::DrainUiQueue();
        ran.push_back(4);
    });
    host::PostToUi([&] { ran.push_back(2); });
    host::DrainUiQueue();
    EXPECT_EQ(ran, (std::vector<int> {1, 2, 3, 4}));
}

TEST(WaiterTest, AnswersDoneTimedOutOrInterrupted)
{
    host::Waiter waiter;
    std::mutex mutex;
    std::unique_lock lock(mutex);
    EXPECT_EQ(waiter.Wait(lock, Already, Clock::time_point::min()), WaitResult::kDone);
    EXPECT_EQ(waiter.Wait(lock, Never, Clock::now()), WaitResult::kTimedOut);
    EXPECT_TRUE(lock.owns_lock());

    host::InterruptToken token;
    const host::InterruptToken::Scope scope(&token);
    token.Interrupt();
    EXPECT_EQ(waiter.Wait(lock, Never, Deadline()), WaitResult::kInterrupted);
    EXPECT_EQ(waiter.Wait(lock, Already, Deadline()), WaitResult::kDone);
    EXPECT_TRUE(token.IsInterrupted());
    token.Reset();
    EXPECT_EQ(waiter.Wait(lock, Never, Clock::now()), WaitResult::kTimedOut);
}

TEST(WaiterTest, ATokenCountsOnItsThreadAndInItsScope)
{
    host::InterruptToken outer;
    host::InterruptToken inner;
    const host::InterruptToken::Scope outerScope(&outer);
    {
        const host::InterruptToken::Scope innerScope(&inner);
        EXPECT_EQ(host::InterruptToken::Current(), &inner);
    }
    EXPECT_EQ(host::InterruptToken::Current(), &outer);
    std::thread([] { EXPECT_EQ(host::InterruptToken::Current(), nullptr); }).join();
}

TEST(WaiterTest, TwoThreadsPassABallWithoutLosingAWake)
{
    constexpr int kRounds = 20000;
    host::Waiter waiter;
    std::mutex mutex;
    int ball = 0;
    const auto play = [&](int parity) {
        std::unique_lock lock(mutex);
        for (int round = 0; round < kRounds; ++round) {
            ASSERT_EQ(waiter.Wait(
                          lock, [&] { return ball % 2 == parity; }, Deadline()),
                WaitResult::kDone);
            ++ball;
            waiter.NotifyAll();
        }
    };
    std::thread other(play, 1);
    play(0);
    other.join();
    EXPECT_EQ(ball, 2 * kRounds);
}

TEST(WaiterTest, NoInterruptIsLostAtTheBrinkOfAWait)
{
    host::InterruptToken token;
    host::Waiter waiter;
    for (int round = 0; round < 2000; ++round) {
        token.Reset();
        std::atomic<bool> started {false};
        std::thread feeder([&] {
            const host::InterruptToken::Scope scope(&token);
            started = true;
            started.notify_one();
            EXPECT_EQ(WaitForever(waiter), WaitResult::kInterrupted);
        });
        started.wait(false);
        token.Interrupt();
        feeder.join();
        ASSERT_FALSE(HasFailure());
    }
}

TEST(WaiterTest, AnInterruptThatIsResetAtOnceStillEndsTheWaitItWasMeantFor)
{
    host::InterruptToken token;
    host::Waiter waiter;
    std::mutex mutex;
    bool waiting = false;
    std::thread feeder([&] {
        const host::InterruptToken::Scope scope(&token);
        std::unique_lock lock(mutex);
        const auto ready = [&] {
            waiting = true;
            return false;
        };
        EXPECT_EQ(waiter.Wait(lock, ready, Deadline()), WaitResult::kInterrupted);
    });
    for (bool seen = false; !seen; std::this_thread::yield()) {
        const std::lock_guard lock(mutex);
        seen = waiting;
    }
    token.Interrupt();
    token.Reset();
    feeder.join();
}

TEST(UiWaitTest, TheLoopTurnsWhileTheThreadWaits)
{
    FakeUiLoop loop;
    EXPECT_TRUE(host::IsUiThread());
    EXPECT_EQ(host::UiWaitDepth(), 0);
    host::Waiter waiter;
    std::mutex mutex;
    std::unique_lock lock(mutex);
    bool answered = false;
    int depth = 0;
    host::PostToUi([&] { depth = host::UiWaitDepth(); });
    std::thread server([&] {
        EXPECT_FALSE(host::IsUiThread());
        {
            const std::lock_guard inner(mutex);    // free: the wait has given it up
            answered = true;
        }
        waiter.NotifyAll();
    });
    EXPECT_EQ(waiter.Wait(
                  lock, [&] { return answered; }, Deadline()),
        WaitResult::kDone);
    server.join();
    EXPECT_GT(loop.turns, 0);
    EXPECT_EQ(depth, 1);
    EXPECT_EQ(host::UiWaitDepth(), 0);
    EXPECT_EQ(waiter.Wait(lock, Never, Clock::now()), WaitResult::kTimedOut);
}

TEST(UiWaitTest, EndingAWaitEndsAllWaitsOfTheSameEvent)
{
    FakeUiLoop loop;
    host::Waiter waiter;
    WaitResult inner = WaitResult::kDone;
    host::PostToUi([&] { inner = WaitForever(waiter); });    // waits inside the wait
    std::thread remote([] { host::EndUiWait(); });
    EXPECT_EQ(WaitForever(waiter), WaitResult::kInterrupted);
    remote.join();
    host::DrainUiQueue();
    EXPECT_EQ(inner, WaitResult::kInterrupted);
    EXPECT_TRUE(host::UiWaitWasEnded());
    EXPECT_EQ(WaitForever(waiter), WaitResult::kInterrupted);

    host::ClearUiWaitEnd();
    std::mutex mutex;
    std::unique_lock lock(mutex);
    EXPECT_EQ(waiter.Wait(lock, Never, Clock::now()), WaitResult::kTimedOut);

    // What ends the user-interface thread's wait does not touch another thread's.
    host::EndUiWait();
    std::thread([&] {
        std::mutex own;
        std::unique_lock ownLock(own);
        EXPECT_EQ(waiter.Wait(ownLock, Never, Clock::now()), WaitResult::kTimedOut);
    }).join();
}

TEST(UiWaitTest, NoWakeOfTheLoopIsLost)
{
    FakeUiLoop loop;
    host::Waiter waiter;
    std::mutex mutex;
    int sent = 0;
    int posted = 0;
    constexpr int kRounds = 5000;
    std::unique_lock lock(mutex);
    int seen = 0;
    std::thread sender([&] {
        std::unique_lock own(mutex);
        for (int round = 0; round < kRounds; ++round) {
            ++sent;
            own.unlock();
            waiter.NotifyAll();
            host::PostToUi([&] { ++posted; });
            own.lock();
            ASSERT_EQ(waiter.Wait(
                          own, [&] { return seen == sent; }, Deadline()),
                WaitResult::kDone);
        }
    });
    for (int round = 1; round <= kRounds; ++round) {
        ASSERT_EQ(waiter.Wait(
                      lock, [&] { return sent == round; }, Deadline()),
            WaitResult::kDone);
        seen = round;
        waiter.NotifyAll();
    }
    lock.unlock();
    sender.join();
    host::DrainUiQueue();
    EXPECT_EQ(posted, kRounds);
}

class SlowLoop : public host::UiLoop {
public:
    void Wake() override
    {
        entered = true;
        for (int i = 0; i < 10000; ++i) {
            std::this_thread::yield();
        }
        left = true;
    }
    void TurnWhileWaiting(Clock::time_point) override { }
    std::atomic<bool> entered {false};
    std::atomic<bool> left {false};
};

TEST(UiWaitTest, ALoopIsGivenUpOnlyWhenNobodyWakesItAnyMore)
{
    SlowLoop loop;
    host::SetUiLoop(&loop);
    std::thread poster([] { host::WakeUi(); });
    while (!loop.entered) {
        std::this_thread::yield();
    }
    host::SetUiLoop(nullptr);
    EXPECT_TRUE(loop.left);
    poster.join();
}

}    // namespace
