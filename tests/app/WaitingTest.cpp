// Keys and commands that arrive while a server is waited for.
#include "tests/app/AppTest.h"

using TestPlatform::Command;

namespace {

class WaitingTest : public AppTest {
protected:
    WaitingTest()
    {
        for (const char* url : {"http://server/a.mpg", "http://server/b.mpg"}) {
            TestPlatform::SetHTTPResource(url, {std::string(100000, '\0')});
        }
    }
    // What happens inside the next wait for a server, once.
    void WhileWaiting(std::function<void()> action)
    {
        TestPlatform::SetHTTPWait([this, action = std::move(action)] {
            if (!m_bHappened) {
                m_bHappened = true;
                action();
            }
        });
    }
    // Each tick is an event of its own.
    void Tick(int times)
    {
        for (int i = 0; i < times; ++i) {
            TestPlatform::Tick();
            TestPlatform::LeaveEvent();
        }
    }
    static size_t Opens() { return TestPlatform::HTTPOpens().size(); }

    bool m_bHappened = false;
};

TEST_F(WaitingTest, StopEndsTheWaitAndTheQueueIsLeftAlone)
{
    for (const bool byCommand : {false, true}) {
        m_bHappened = false;
        Start({"http://server/a.mpg", "http://server/b.mpg"});
        const size_t before = Opens();
        WhileWaiting([&] { byCommand ? void(Command("Nuvid stop")) : TestPlatform::KeyDown(Remote::kStop); });
        Tick(10);
        EXPECT_EQ(Opens() - before, 1U);
        EXPECT_EQ(Status(), "Stopped");
        EXPECT_TRUE(Shows("Stop"));
        TestPlatform::PressKey(Remote::kMenu);    // keys are heard again
        EXPECT_TRUE(MainMenuIsOpen());
        m_pApp.reset();
    }
}

TEST_F(WaitingTest, ExitAndPowerActAfterTheWait)
{
    Start({"http://server/a.mpg", "http://server/b.mpg"});
    WhileWaiting([] {
        TestPlatform::KeyDown(Remote::kExit);
        EXPECT_FALSE(TestPlatform::WasTerminated());    // not inside the wait
    });
    Tick(4);
    EXPECT_TRUE(TestPlatform::WasTerminated());
    EXPECT_EQ(Opens(), 1U);
    m_pApp.reset();

    m_bHappened = false;
    TestPlatform::SetHTTPWait(nullptr);
    Start({"http://server/a.mpg", "http://server/b.mpg"});
    WhileWaiting([] { TestPlatform::KeyDown(Remote::kPower); });
    EXPECT_TRUE(Has(Said([this] { Tick(10); }), "Power button pressed\n"));
    EXPECT_EQ(Opens(), 2U);
}

TEST_F(WaitingTest, OtherKeysAreDroppedAndQueriesAnsweredAtOnce)
{
    Start({"http://server/a.mpg"});
    WhileWaiting([] {
        TestPlatform::PressKeys({Remote::kRight, Remote::kPause, Remote::kMenu, Remote::kInfo, Remote::kZoom});
        EXPECT_EQ(Command("Nuvid pause"), "OK");
        EXPECT_EQ(Command("Nuvid forward 30"), "OK");
        EXPECT_EQ(Command("Nuvid ping"), "pong");
        EXPECT_EQ(Command("Nuvid status"), "Stopped");
        EXPECT_EQ(Command("Nuvid currentfilename"), "");
        EXPECT_EQ(Command("Nuvid open"), "Failed");    // and ends nothing
    });
    EXPECT_FALSE(Has(Said([this] { Tick(10); }), "To Skip"));
    EXPECT_TRUE(m_bHappened);
    EXPECT_EQ(Status(), "Playing");
    EXPECT_TRUE(Shows("Play"));
}

TEST_F(WaitingTest, OpenEndsTheWaitAndOpensItsFile)
{
    const std::string file = MakeFile("c.mpg");
    Start({"http://server/a.mpg", "http://server/b.mpg"});
    WhileWaiting([&] { EXPECT_EQ(Command(("Nuvid open " + file).c_str()), "OK"); });
    Tick(10);
    EXPECT_EQ(Opens(), 1U);
    EXPECT_EQ(CurrentFile(), "c.mpg");
}

TEST_F(WaitingTest, QueueAppendsAfterTheWait)
{
    const std::string file = MakeFile("c.mpg");
    Start({"http://server/a.mpg"});
    WhileWaiting([&] { EXPECT_EQ(Command(("Nuvid queue " + file).c_str()), "OK"); });
    Tick(5);
    EXPECT_EQ(Status(), "Playing");
    EXPECT_EQ(CurrentFile(), "a.mpg");
    EndStream();
    EXPECT_EQ(CurrentFile(), "c.mpg");
}

TEST_F(WaitingTest, AWalkAlongTheQueueStopsWhereItsWaitWasEnded)
{
    const std::string last = MakeFile("c.mpg");
    Play({MakeFile("a.mpg"), "http://server/a.mpg", last});
    WhileWaiting([] { TestPlatform::KeyDown(Remote::kStop); });
    EndStream();
    TestPlatform::LeaveEvent();
    Tick(10);
    EXPECT_EQ(Status(), "Stopped");

    // Backwards too, from inside an action that has made the keys deaf.
    TestPlatform::SetHTTPWait(nullptr);
    m_pApp.reset();
    Play({MakeFile("a.mpg"), "http://server/a.mpg", last});
    TestPlatform::PressKey(Remote::kNextChapter);
    Tick(3);
    TestPlatform::PressKey(Remote::kNextChapter);
    Tick(3);
    ASSERT_EQ(CurrentFile(), "c.mpg");
    m_bHappened = false;
    WhileWaiting([] { TestPlatform::KeyDown(Remote::kStop); });
    TestPlatform::PressKey(Remote::kPrevChapter);
    Tick(10);
    EXPECT_TRUE(m_bHappened);
    EXPECT_EQ(Status(), "Stopped");
    EXPECT_TRUE(Shows("Stop"));
}

TEST_F(WaitingTest, StoppedPictureSaysThatItWaitsForData)
{
    Play({MakeFile("a.mpg")});
    TestDecoder::SetStarving(true);
    Tick(1);
    EXPECT_TRUE(Shows("Buffering..."));
    Tick(60);    // longer than a text stays
    EXPECT_TRUE(Shows("Buffering..."));
    TestDecoder::SetStarving(false);
    Tick(60);
    EXPECT_FALSE(Shows("Buffering..."));
    // A paused one waits for nothing.
    TestPlatform::PressKey(Remote::kPause);
    TestDecoder::SetStarving(true);
    Tick(10);
    EXPECT_FALSE(Shows("Buffering..."));
}

}    // namespace
