// The contract between decoder and feed: which buffer is offered when, and that stopping ends a callback.
#include <gtest/gtest.h>

#include <set>

#include "host/decoder/FeedRing.h"
#include "tests/decoder/PlayerHarness.h"

namespace {

using namespace std::chrono_literals;

// A feed whose answers the test writes, and which notes the buffers that it was offered.
struct Script {
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<const unsigned char*> offered;
    std::function<unsigned long(size_t call)> answer;

    unsigned long Fill(unsigned char* buffer, unsigned long)
    {
        std::lock_guard lock(mutex);
        offered.push_back(buffer);
        changed.notify_all();
        return answer(offered.size() - 1);
    }
    bool WaitForCalls(size_t count)
    {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, 5s, [&] { return offered.size() >= count; });
    }
    size_t Calls()
    {
        std::lock_guard lock(mutex);
        return offered.size();
    }
};

class Ring : public testing::Test {
protected:
    Ring() : ring(opening, [this](unsigned char* b, unsigned long n) { return script.Fill(b, n); }, [] {}, [this] { return playedOut.load(); }, {})
    {
        EXPECT_TRUE(ring.Configure(4, 1000));
        number = opening.Begin();
    }
    ~Ring() override { opening.Quit(); }
    int Take(int count)
    {
        std::vector<unsigned char> bytes(static_cast<size_t>(count));
        return ring.Read(number, bytes.data(), count);
    }

    Script script;
    std::atomic<bool> playedOut{true};
    host::Opening opening;
    host::FeedRing ring;
    host::Opening::Number number = 0;
};

TEST_F(Ring, OffersBuffersInTurnAndAFilledOneOnlyWhenItsLastByteIsTaken)
{
    script.answer = [](size_t) { return 1000ul; };
    ring.Start();
    ASSERT_TRUE(script.WaitForCalls(4));
    EXPECT_EQ(Take(999), 999);
    EXPECT_EQ(script.Calls(), 4u);
    EXPECT_EQ(Take(10), 1);    // never across the end of a buffer
    ASSERT_TRUE(script.WaitForCalls(5));
    ring.Stop();
    EXPECT_EQ(script.offered[4], script.offered[0]);
    EXPECT_EQ(std::set<const unsigned char*>(script.offered.begin(), script.offered.begin() + 4).size(), 4u);
}

TEST_F(Ring, ShortFillAtTheEndIsAskedAgainOnlyAfterAllWasTakenAndThenItEnds)
{
    // Two full buffers, a short one, then nothing, as the engine does at the end of a file.
    script.answer = [](size_t call) { return call < 2 ? 1000ul : call == 2 ? 300ul : 0ul; };
    ring.Start();
    ASSERT_TRUE(script.WaitForCalls(4));    // the fourth buffer answers 0 and the first is still held
    EXPECT_EQ(Take(1000) + Take(1000), 2000);
    ASSERT_TRUE(script.WaitForCalls(6));
    EXPECT_EQ(Take(200), 200);
    EXPECT_EQ(script.Calls(), 6u);          // the short one is not asked while a byte of it is left
    EXPECT_EQ(Take(200), 100);
    ASSERT_TRUE(script.WaitForCalls(7));
    EXPECT_EQ(Take(100), 0);                // a whole turn of nothing: the end
    ring.Stop();
    EXPECT_EQ(script.offered[6], script.offered[2]);
}

TEST_F(Ring, TheLastBufferComesBackOnlyWhenItHasBeenPlayedAlsoAcrossAPause)
{
    playedOut = false;
    script.answer = [](size_t call) { return call == 0 ? 300ul : 0ul; };
    ring.Start();
    EXPECT_EQ(Take(300), 300);
    ASSERT_TRUE(script.WaitForCalls(4));
    EXPECT_EQ(Take(10), 0);    // who reads hears of the end at once, so that all is decoded
    ring.Stop();
    ring.Start();
    EXPECT_EQ(Take(10), 0);
    EXPECT_EQ(script.Calls(), 4u);
    playedOut = true;
    ASSERT_TRUE(script.WaitForCalls(5));
    ring.Stop();
    EXPECT_EQ(script.offered[4], script.offered[0]);
}

TEST_F(Ring, OneBufferUntilTheTurnIsRoundCostsNoTime)
{
    // After a reopening the engine fills one buffer and answers 0 until that one is offered again.
    const unsigned char* first = nullptr;
    script.answer = [&](size_t call) {
        first = call == 0 ? script.offered[0] : first;
        return call == 0 || call >= 4 ? 1000ul : 0ul;
    };
    ring.Start();
    EXPECT_EQ(Take(1000), 1000);
    const host::Clock::time_point from = host::Clock::now();
    EXPECT_EQ(Take(1000), 1000);
    EXPECT_LT(host::Clock::now() - from, 2s);
    ring.Stop();
    EXPECT_EQ(script.offered[4], first);
}

TEST_F(Ring, DataAfterAnEndIsReadAndAnOverOpeningEndsEveryWait)
{
    std::atomic<bool> more{false};
    script.answer = [&](size_t) { return more.exchange(false) ? 500ul : 0ul; };
    ring.Start();
    EXPECT_EQ(Take(10), 0);
    more = true;
    EXPECT_TRUE(ring.WaitForData(number));
    EXPECT_EQ(Take(1000), 500);
    std::thread closer([&] {
        opening.End();
        ring.Kick();
    });
    EXPECT_FALSE(ring.WaitForData(number));
    closer.join();
    EXPECT_EQ(Take(10), -1);
}

// A callback that waits as a read from a dead server does.
class EndlessFeeder : public MPEGDecoder {
public:
    ~EndlessFeeder() override { Close(); }
    unsigned long OnFillBuffer(unsigned char*, unsigned long) override
    {
        inside = true;
        while (!RestUnlessStopped(50)) {
        }
        sawStop = IsBeingStopped();
        inside = false;
        return 0;
    }
    void OnDecoderError() override {}
    std::atomic<bool> inside{false};
    std::atomic<bool> sawStop{false};
};

TEST(Feed, PauseAndCloseEndACallbackThatWaits)
{
    test::FakeUi ui;
    EndlessFeeder feeder;
    for (int round = 0; round < 3; ++round) {
        ASSERT_TRUE(feeder.NewOpen(8, 192512, 5, 1, 3, 1, true, true, true, true, 45000));
        EXPECT_FALSE(feeder.ResumeStreaming(true)) << "nothing is selected yet";
        ASSERT_TRUE(feeder.SelectPIDs(true, 0xE0, 0xE0, 0xC0, 0, false));
        ASSERT_TRUE(feeder.ResumeStreaming(true));
        ASSERT_TRUE(ui.RunUntil([&] { return feeder.inside.load(); }, 5s));
        const host::Clock::time_point from = host::Clock::now();
        round == 1 ? feeder.Close() : feeder.PauseStreaming();
        EXPECT_FALSE(feeder.inside);
        EXPECT_TRUE(feeder.sawStop);
        EXPECT_LT(host::Clock::now() - from, 1s);
        EXPECT_TRUE(feeder.Close());
    }
    EXPECT_FALSE(feeder.PauseStreaming()) << "closed";
}

TEST(Feed, RefusesARectangleOutsideTheOutput)
{
    test::FakeUi ui;
    host::SetOutputDims({1280, 720});
    EndlessFeeder feeder;
    EXPECT_FALSE(feeder.SetOutputAndScaleRects({2000, 0, 100, 100}, {0, 0, 1280, 720}));
    EXPECT_FALSE(feeder.SetOutputAndScaleRects({0, 0, 1280, 720}, {}));
    ASSERT_TRUE(feeder.NewOpen(0, 0, 5, 1, 3, 1, true, true, true, true, 45000));
    ASSERT_TRUE(feeder.SetOutputAndScaleRects({198, 0, 884, 720}, {0, 0, 1280, 720}));
    EXPECT_EQ(host::CurrentVideoSource()->Placement().output, (CascadeRect{198, 0, 884, 720}));
}

}    // namespace
