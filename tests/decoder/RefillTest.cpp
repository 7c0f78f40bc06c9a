// A source slower than the stream: few long stops instead of many short ones, and nothing is lost over them.
#include <gtest/gtest.h>

#include "host/decoder/Refill.h"
#include "tests/decoder/PlayerHarness.h"

namespace {

using namespace std::chrono_literals;

// The bytes come at an even pace, as from a socket.
class SlowFeeder : public test::Feeder {
public:
    SlowFeeder(std::string bytes, unsigned long bytesPerSecond) : Feeder(std::move(bytes)), m_nRate(bytesPerSecond) {}
    ~SlowFeeder() override { Close(); }

    unsigned long OnFillBuffer(unsigned char* buffer, unsigned long length) override
    {
        return RestUnlessStopped(static_cast<uint32_t>(length * 1000 / m_nRate)) ? 0 : Feeder::OnFillBuffer(buffer, length);
    }

private:
    const unsigned long m_nRate;
};

TEST(Refill, GoesOnWithThreeSecondsOrOneWhenTheSourceHasBecomeFast)
{
    constexpr uint64_t kRate = 500000;
    EXPECT_FALSE(host::IsEnoughToPlayOn(1400000, kRate, 1400000, 4s));
    EXPECT_TRUE(host::IsEnoughToPlayOn(1500000, kRate, 1500000, 4s));
    EXPECT_FALSE(host::IsEnoughToPlayOn(400000, kRate, 4000000, 4s));
    EXPECT_TRUE(host::IsEnoughToPlayOn(500000, kRate, 2000000, 4s));
    // Nobody waits for ever for a trickle.
    EXPECT_FALSE(host::IsEnoughToPlayOn(300000, kRate, 300000, 14s));
    EXPECT_TRUE(host::IsEnoughToPlayOn(300000, kRate, 300000, 15s));
    EXPECT_FALSE(host::IsEnoughToPlayOn(100000, kRate, 100000, 60s));
}

TEST(Refill, AStreamFromASlowSourceStopsSeldomAndLosesNothing)
{
    host::HostOptions options;
    options.headless = true;
    host::SetCurrentHostOptions(options);
    test::FakeUi ui;
    const std::string bytes = test::BytesOf("mpeg2_mp2.mpg");    // 125 pictures, five seconds
    SlowFeeder feeder(bytes, bytes.size() / 7);
    ASSERT_TRUE(feeder.Open(32, 98304) && feeder.SelectPIDs(true, 0xE0, 0xE0, 0xC0, 0, false) && feeder.ResumeStreaming(true));
    ASSERT_TRUE(ui.RunUntil([] { return test::FakeUi::Number("refills") > 0; }, 10s));
    // A pause within the stop, and one that it outlives.
    const host::Clock::time_point before = host::Clock::now();
    ASSERT_TRUE(feeder.PauseStreaming());
    EXPECT_LT(host::Clock::now() - before, 200ms);
    EXPECT_FALSE(feeder.IsStarving());
    const size_t count = ui.Count();
    ASSERT_TRUE(feeder.ResumeStreaming(true));
    ASSERT_TRUE(ui.RunUntil([&] { return feeder.IsStarving(); }, 10s)) << test::FakeUi::Stats();
    EXPECT_LE(ui.Count(), count + 1);
    EXPECT_TRUE(ui.RunUntil([&] { return feeder.AllTaken() && test::FakeUi::Number("frames_shown") + test::FakeUi::Number("frames_dropped") >= 125; }, 20s)) << test::FakeUi::Stats();
    EXPECT_EQ(test::FakeUi::Number("frames_shown") + test::FakeUi::Number("frames_dropped"), 125);
    EXPECT_LE(test::FakeUi::Number("frames_dropped"), 6) << test::FakeUi::Stats();
    EXPECT_LE(test::FakeUi::Number("refills"), 2);
    EXPECT_LE(std::abs(test::FakeUi::Number("av_offset_ms")), 40);
    feeder.Close();
    host::SetCurrentHostOptions(host::HostOptions());
}

}    // namespace
