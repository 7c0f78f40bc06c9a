#include <atomic>
#include <memory>
#include <thread>

#include <gtest/gtest.h>

#include "host/base/DiskCall.h"

namespace {

using namespace std::chrono_literals;

// A call to a disk that answers only when the test says so.
struct DeadDisk {
    std::mutex mutex;
    std::condition_variable changed;
    bool asked = false;
    bool answers = false;

    void Ask()
    {
        std::unique_lock lock(mutex);
        asked = true;
        changed.notify_all();
        changed.wait(lock, [&] { return answers; });
    }
    void AwaitAsked()
    {
        std::unique_lock lock(mutex);
        changed.wait(lock, [&] { return asked; });
    }
    void Answer()
    {
        const std::lock_guard lock(mutex);
        answers = true;
        changed.notify_all();
    }
};

TEST(DiskCallTest, RunsWhereItIsCalledWhenNoWaitCanBeEnded)
{
    std::thread::id ran;
    EXPECT_EQ(host::CallDisk([&] { ran = std::this_thread::get_id(); }), host::WaitResult::kDone);
    EXPECT_EQ(ran, std::this_thread::get_id());
}

TEST(DiskCallTest, AnInterruptGivesUpACallThatHangs)
{
    const auto disk = std::make_shared<DeadDisk>();
    host::InterruptToken token;
    std::atomic<host::WaitResult> result {host::WaitResult::kDone};
    std::thread feed([&] {
        const host::InterruptToken::Scope scope(&token);
        result = host::CallDisk([disk] { disk->Ask(); });
    });
    disk->AwaitAsked();
    token.Interrupt();
    feed.join();    // with the disk still silent
    EXPECT_EQ(result, host::WaitResult::kInterrupted);
    disk->Answer();

    token.Reset();
    const host::InterruptToken::Scope scope(&token);
    EXPECT_EQ(host::CallDisk([] {}), host::WaitResult::kDone);
}

TEST(DiskCallTest, PatienceEnds)
{
    const auto disk = std::make_shared<DeadDisk>();
    host::InterruptToken token;
    const host::InterruptToken::Scope scope(&token);
    EXPECT_EQ(host::CallDisk([disk] { disk->Ask(); }, 1ms), host::WaitResult::kTimedOut);
    disk->Answer();
}

}    // namespace
