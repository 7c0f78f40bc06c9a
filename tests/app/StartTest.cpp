#include "playback/PlaybackGlobals.h"
#include "tests/app/AppTest.h"

namespace {

class StartTest : public AppTest { };

TEST_F(StartTest, TheFirstFileIsOpenedAfterThreeTicks)
{
    Start({MakeFile("a.mpg")});
    EXPECT_TRUE(Shows("Nuvid is loading..."));
    EXPECT_EQ(TestPlatform::FocusWindow(), &Osd());
    EXPECT_GE(TestPlatform::ScreenActivity(), 1);
    EXPECT_EQ(g_AppFolder.Str(), m_Folder.Path() + "/");

    TestPlatform::Tick(3);
    EXPECT_EQ(Status(), "Stopped");
    TestPlatform::Tick();
    EXPECT_EQ(Status(), "Playing");
    EXPECT_EQ(CurrentFile(), "a.mpg");
}

TEST_F(StartTest, UnattendedWithoutAFileQuits)
{
    Start({"-unattended"});
    TestPlatform::Tick();
    EXPECT_TRUE(TestPlatform::WasTerminated());
    EXPECT_EQ(TestPlatform::RunningTimers(), 0);
}

TEST_F(StartTest, ATitleIsShownInPlaceOfThePath)
{
    Play({"-name=The Film", MakeFile("a.mpg"), MakeFile("b.mpg")});
    EXPECT_TRUE(Shows("Play"));
    EXPECT_TRUE(Shows("The Film"));
    TestPlatform::PressKey(Remote::kInfo);
    EXPECT_TRUE(Shows("The Film: 0%"));
    EndStream();
    EXPECT_TRUE(Shows(EUtils::TrimStringInMiddle((m_Folder / "b.mpg").c_str(), 1230, CascadeFont("system", 40)).Str()));
}

TEST_F(StartTest, ParametersReachTheEngineAndTheWindow)
{
    const std::string said = Said([&] { Play({"-maxbuffer", "-NTSCRes=2", "-PALRes=x", "-fontsize=12", MakeFile("a.mpg")}); });
    EXPECT_TRUE(Has(said, "VideoMode 1 = 1\n"));
    EXPECT_TRUE(Has(said, "VideoMode 2 = -1\n"));
    EXPECT_EQ(TestDecoder::NumBuffers(), 32U);
    EXPECT_EQ(TestPlatform::FindText(TestPlatform::Paint(Osd()), "Play")->fontSize, 12);
    EXPECT_FALSE(g_bTSFix);
    // The buffer keeps its size where timestamps are repaired.
    Play({"-maxbuffer", "-FixTS", MakeFile("a.mpg")});
    EXPECT_TRUE(g_bTSFix);
    EXPECT_EQ(TestDecoder::NumBuffers(), 8U);
    g_bTSFix = false;
}

TEST_F(StartTest, AFontSizeThatCannotBeDrawnIsBounded)
{
    for (const char* argument : {"-fontsize=0", "-fontsize=-5", "-fontsize=2000000000"}) {
        Start({argument});
        const auto drawings = TestPlatform::Paint(Osd());
        EXPECT_TRUE(drawings.back().fontSize >= 1 && drawings.back().fontSize <= 720) << argument;
    }
}

}    // namespace
