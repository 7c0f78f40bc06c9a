#include "tests/screen/LoopFixture.h"

#include <thread>

#include "host/base/HostHooks.h"
#include "platform/CascadeInput.h"
#include "platform/CascadeTime.h"
#include "platform/RemoteKeys.h"

using namespace std::chrono_literals;
using Kind = screen::Event::Kind;

TEST_F(LoopTest, TimersKeepTheirBeatAndMayKillAnother)
{
    FunctionTimer a;
    FunctionTimer b;
    uint32_t idB = 0;
    const uint32_t idA = a.SetTimer(20);
    idB = b.SetTimer(21);
    ASSERT_NE(0U, idA);
    ASSERT_NE(idA, idB);
    a.onTimer = [&](unsigned long id) {
        EXPECT_EQ(idA, id);
        b.KillTimer(idB);
    };
    const auto start = host::Clock::now();
    ASSERT_TRUE(TurnUntil([&] { return a.ticks == 5; }));
    EXPECT_GE(host::Clock::now() - start, 100ms);
    EXPECT_EQ(0, b.ticks);
}

TEST_F(LoopTest, MissedTicksAreDropped)
{
    FunctionTimer timer;
    timer.SetTimer(10);
    const auto late = host::Clock::now() + 120ms;
    timer.onTimer = [&](unsigned long) {
        while (timer.ticks == 1 && host::Clock::now() < late) {
            std::this_thread::yield();
        }
    };
    ASSERT_TRUE(TurnUntil([&] { return timer.ticks >= 2 && host::Clock::now() > late + 30ms; }));
    EXPECT_LE(timer.ticks, 8);
}

TEST_F(LoopTest, ATimerThatDeletesItselfIsNotTouchedAgain)
{
    auto* timer = new FunctionTimer;
    bool fired = false;
    timer->SetTimer(1);
    timer->onTimer = [&fired, timer](unsigned long) {
        fired = true;
        delete timer;
    };
    ASSERT_TRUE(TurnUntil([&] { return fired; }));
    Settle();
}

TEST_F(LoopTest, MessagesArriveInTheOrderOfPostingFromAnyThread)
{
    std::thread feeder([] {
        CascadeWormhole wormhole(screen::kWormholeAddress);
        for (uint32_t id = 1; id <= 50; ++id) {
            EXPECT_TRUE(wormhole.PostMessage(screen::kWormholeAddress, id, &id, sizeof id));
        }
        EXPECT_FALSE(wormhole.PostMessage("wormhole://localhost/nobody", 1, nullptr, 0));
    });
    std::vector<unsigned char> last;
    app.onMessage = [&](const CascadeMessage& message) { last = message.data; };
    ASSERT_TRUE(TurnUntil([&] { return app.log.size() == 50; }));
    feeder.join();
    for (unsigned i = 0; i < 50; ++i) {
        EXPECT_EQ(Hex("message", i + 1), app.log[i]);
    }
    EXPECT_EQ((std::vector<unsigned char> {50, 0, 0, 0}), last);
    loop.Stop();
    EXPECT_FALSE(CascadeWormhole("").PostMessage(screen::kWormholeAddress, 1, nullptr, 0));
}

// A wait of the user-interface thread inside an event, as the HTTP stream does it.
struct WaitTest : LoopTest {
    std::mutex mutex;
    host::Waiter waiter;
    bool ready = false;

    host::WaitResult WaitHere()
    {
        std::unique_lock lock(mutex);
        return waiter.Wait(
            lock, [this] { return ready; }, host::Clock::now() + 10s);
    }
    void MakeReady()
    {
        const std::lock_guard lock(mutex);
        ready = true;
        waiter.NotifyAll();
    }
};

TEST_F(WaitTest, KeysGoToTheWaitingHandlerAndTheRestIsHeldBack)
{
    RecordingWindow window(app.log, "main");
    window.Materialize();
    FunctionTimer timer;
    timer.SetTimer(1);
    timer.onTimer = [&](unsigned long) { EXPECT_FALSE(app.IsWaiting()); };
    Push(Kind::kKeyDown, Remote::kFastForward);    // held when the wait begins
    Settle();
    Taken();

    std::vector<host::WaitResult> results;
    bool painted = false;
    app.PostAfterWait([&] {
        CascadeInput::DispatchKeyUp(Remote::kFastForward);
        CascadeInput::DispatchKeyDown(Remote::kStop);
        CascadeInput::DispatchKeyUp(Remote::kStop);
        CascadeWormhole("").PostMessage(screen::kWormholeAddress, 7, nullptr, 0);
        app.PostAfterWait([&] { app.log.push_back(app.IsWaiting() ? "too early" : "after"); });
        window.onPaint = [&](CascadeBitmap&) { painted = true; };
        window.Redraw();
        results.push_back(WaitHere());
        app.log.push_back("left");
    });
    std::thread server([&] {
        // Whatever may arrive meanwhile has arrived once posted work runs behind it.
        bool paintedMeanwhile = false;
        while (!paintedMeanwhile) {
            std::mutex m;
            std::condition_variable c;
            bool done = false;
            host::PostToUi([&] {
                const std::lock_guard lock(m);
                paintedMeanwhile = painted;
                done = true;
                c.notify_one();
            });
            std::unique_lock lock(m);
            ASSERT_TRUE(c.wait_for(lock, 10s, [&] { return done; }));
        }
        MakeReady();
    });
    ASSERT_TRUE(TurnUntil([&] { return std::count(app.log.begin(), app.log.end(), "after") == 1; }));
    server.join();
    Settle();
    EXPECT_EQ((Log {Hex("waiting", Remote::kStop), "left", Hex("main up", Remote::kFastForward), "message 7", "after"}), Taken());
    EXPECT_EQ(std::vector {host::WaitResult::kDone}, results);
    EXPECT_FALSE(app.IsWaiting());
}

TEST_F(WaitTest, EndWaitEndsEveryWaitOfTheEventAndNoLaterOne)
{
    app.onWaitingKey = [&](unsigned long) { app.EndWait(); };
    std::vector<host::WaitResult> results;
    app.PostAfterWait([&] {
        CascadeInput::DispatchKeyDown(Remote::kExit);
        results.push_back(WaitHere());
        results.push_back(WaitHere());
        EXPECT_TRUE(app.WaitWasEnded());
    });
    app.PostAfterWait([&] {
        EXPECT_FALSE(app.WaitWasEnded());
        host::PostToUi([this] { MakeReady(); });
        results.push_back(WaitHere());
    });
    ASSERT_TRUE(TurnUntil([&] { return results.size() == 3; }));
    EXPECT_EQ((std::vector {host::WaitResult::kInterrupted, host::WaitResult::kInterrupted, host::WaitResult::kDone}), results);
}

TEST_F(LoopTest, AnIdleLoopSleeps)
{
    RecordingWindow window(app.log, "main");
    window.Materialize();
    Settle();
    loop.TurnOnce(host::Clock::now() + 150ms);    // returns early if anything wakes it
    const auto asleep = host::Clock::now();
    loop.TurnOnce(host::Clock::now() + 150ms);
    EXPECT_GE(host::Clock::now() - asleep, 149ms);
    EXPECT_EQ(1, window.paints);
}

struct RunningApp : RecordingApp {
    std::function<void()> onInit;
    void OnAppInit() override
    {
        log.push_back("init");
        onInit();
    }
    void OnAppExit() override { log.push_back("exit"); }
};

TEST(AppRun, TerminateInInitMeansNoLoop)
{
    RunningApp app;
    std::string words[] = {"nuvid", "--headless"};
    char* argv[] = {words[0].data(), words[1].data()};
    app.onInit = [&] {
        CascadeInput::DispatchKeyDown(Remote::kPlay);
        app.Terminate(3);
    };
    EXPECT_EQ(3, app.Run(2, argv));
    EXPECT_EQ((Log {"init", "exit"}), app.log);
}

TEST(AppRun, ABadOptionIsCodeTwo)
{
    RunningApp app;
    std::string words[] = {"nuvid", "--window=big"};
    char* argv[] = {words[0].data(), words[1].data()};
    EXPECT_EQ(2, app.Run(2, argv));
    EXPECT_TRUE(app.log.empty());
}
