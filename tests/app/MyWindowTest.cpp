#include "tests/app/AppTest.h"

using TestPlatform::Drawing;

namespace {

constexpr int kLine = 48;    // height of the test font at size 40
int WidthOf(const std::string& text)
{
    return CascadeFont("system", 40).GetTextExtent(text.c_str()).width;
}

class MyWindowTest : public AppTest {
protected:
    MyWindowTest()
    {
        std::filesystem::create_directories(m_Folder / "Themes/Common");
        for (int i = 0; i < Osd::kIconCount; ++i) {
            AddIcon(Osd::kIconFiles[i], {100 + i, 60});
        }
    }
    void AddIcon(const std::string& name, CascadeDims dims)
    {
        m_Folder.Write("Themes/Common/" + name, "x");
        TestPlatform::AddPicture(m_Folder / "Themes/Common/" + name, dims);
    }
    // The text with its shadow: where it was drawn, or an empty rectangle.
    CascadeRect Drawn(const std::string& text)
    {
        CascadeRect at;
        for (const Drawing& drawing : TestPlatform::Paint(Osd())) {
            if (drawing.kind == Drawing::kText && drawing.text == text && drawing.color == 0xA0A0FFFF) {
                at = drawing.rect;
            }
        }
        return at;
    }
};

TEST_F(MyWindowTest, AnIconStandsInForTheWords)
{
    Start({}, true);
    m_pApp->Info("Play", Osd::kPlay, "a.mpg", "fourth");
    const auto drawings = TestPlatform::Paint(Osd());
    EXPECT_EQ(drawings[0].kind, Drawing::kFill);
    EXPECT_EQ(drawings[0].color, 0U);
    ASSERT_NE(TestPlatform::FindBlit(drawings, "play.png"), nullptr);
    EXPECT_EQ(TestPlatform::FindBlit(drawings, "play.png")->rect, (CascadeRect {1280 - 100 - 20, 20, 100, 60}));
    EXPECT_EQ(TestPlatform::FindText(drawings, "Play"), nullptr);
    EXPECT_EQ(Drawn("a.mpg"), (CascadeRect {1280 - WidthOf("a.mpg") - 25, 85, WidthOf("a.mpg"), kLine}));
    EXPECT_EQ(Drawn("fourth").top, 85 + kLine + 5);
}

TEST_F(MyWindowTest, WordsAreShownWhereThereIsNoIcon)
{
    Start({}, true);
    m_pApp->Info("Stop");
    EXPECT_EQ(Drawn("Stop"), (CascadeRect {1280 - WidthOf("Stop") - 25, 20, WidthOf("Stop"), kLine}));
    m_pApp->Info("Odd", 271);    // no icon has this number
    EXPECT_EQ(Drawn("Odd").top, 20);
    m_pApp->Info("Even", 255, "third");
    EXPECT_EQ(Drawn("third").top, 20 + kLine + 5);

    m_pApp->Info("Words", "no-such.png");
    EXPECT_EQ(Drawn("Words").top, 20);
    AddIcon("special.png", {30, 40});
    m_pApp->Info("Words", "special.png");    // a picture by its name
    const auto drawings = TestPlatform::Paint(Osd());
    EXPECT_NE(TestPlatform::FindBlit(drawings, "special.png"), nullptr);
    EXPECT_EQ(TestPlatform::FindText(drawings, "Words"), nullptr);
}

TEST_F(MyWindowTest, AMessageStaysForItsTimeAndIsThenCleared)
{
    Start({});
    TestPlatform::Tick(5);
    m_pApp->Info("Stop");
    const int redraws = TestPlatform::RedrawCount(Osd());
    TestPlatform::Tick(24);
    EXPECT_TRUE(Shows("Stop"));
    EXPECT_EQ(TestPlatform::RedrawCount(Osd()), redraws);    // an idle window costs nothing
    TestPlatform::Tick();
    EXPECT_EQ(TestPlatform::RedrawCount(Osd()), redraws + 1);
    EXPECT_EQ(TestPlatform::Paint(Osd()).size(), 1U);
    TestPlatform::Tick(100);
    EXPECT_EQ(TestPlatform::RedrawCount(Osd()), redraws + 1);
}

TEST_F(MyWindowTest, MissingIconsAreToldAndMissed)
{
    std::filesystem::remove_all(m_Folder / "Themes");
    TestPlatform::Reset();
    const std::string said = Said([&] { Start({}, true); });
    EXPECT_EQ(Count(said, "Failed to load bitmap "), 15);
    EXPECT_TRUE(Has(said, "Failed to load bitmap " + (m_Folder / "Themes/Common/zoom6.png") + "!\n"));
    m_pApp->Info("Play", Osd::kPlay, "third");
    EXPECT_EQ(Drawn("third").top, 25);    // an empty picture of height 0
}

TEST_F(MyWindowTest, TheScreenSaverIsPutOffEveryTwoSecondsOfVideo)
{
    Play({MakeFile("a.mpg")});
    const int before = TestPlatform::ScreenActivity();
    TestPlatform::Tick(60);
    EXPECT_EQ(TestPlatform::ScreenActivity() - before, 3);
    TestPlatform::PressKey(Remote::kPause);
    TestPlatform::Tick(60);
    EXPECT_EQ(TestPlatform::ScreenActivity() - before, 3);
}

}    // namespace
