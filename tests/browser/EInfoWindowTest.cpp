// Header and painted text of the information window, and how it closes.
#include "browser/EInfoWindow.h"
#include "platform/RemoteKeys.h"
#include "tests/support/TestPlatform.h"

namespace {

class EInfoWindowTest : public PlatformTest, protected EInfoWindow::Client {
protected:
    void Show(const EInfoFile& info)
    {
        m_Window.SetInfo("/a/film.mpg", info);
        m_Window.ShowDialog(this);
    }
    void OnInfoPlay() override { m_Calls += "play "; }
    void OnInfoDelete() override { m_Calls += "delete "; }

    EInfoWindow m_Window;
    std::string m_Calls;
};

TEST_F(EInfoWindowTest, TheHeaderStandsAtTheBottomOfFourLines)
{
    EInfoFile info;
    m_Window.SetInfo("/a", info);
    EXPECT_STREQ("", m_Window.GetHeader());
    info.genre = "Drama";
    m_Window.SetInfo("/a", info);
    EXPECT_STREQ("\n\n\nDrama\n", m_Window.GetHeader());
    info.rating = "PG";
    info.writer = "B";
    m_Window.SetInfo("/a", info);
    EXPECT_STREQ("\nPG\nWritten by: B\nDrama\n", m_Window.GetHeader());
    info.director = "A";
    m_Window.SetInfo("/a", info);
    EXPECT_STREQ("PG\nDirected by: A\nWritten by: B\nDrama\n", m_Window.GetHeader());
}

TEST_F(EInfoWindowTest, OnlyAPressedButtonTellsTheClient)
{
    struct Case {
        std::vector<unsigned long> keys;
        const char* calls;
    };
    const Case cases[] = {
        {{Remote::kSelect}, "play "},
        {{Remote::kRight, Remote::kSelect}, "delete "},
        {{Remote::kRight, Remote::kRight, Remote::kRight, Remote::kSelect}, ""},
        {{Remote::kRight, Remote::kExit}, ""},
        {{Remote::kPlay}, "play "},
    };
    for (const Case& one : cases) {
        m_Calls.clear();
        Show({});
        EXPECT_TRUE(m_Window.HasFocus());
        TestPlatform::PressKeys(one.keys);
        EXPECT_EQ(one.calls, m_Calls);
        EXPECT_FALSE(m_Window.IsMaterialized());
    }
    m_Calls.clear();
    m_Window.SetDeletionAllowed(false);
    Show({});
    EXPECT_EQ(nullptr, TestPlatform::FindText(TestPlatform::Paint(m_Window), "Delete"));
    TestPlatform::PressKey(Remote::kRight);
    TestPlatform::PressKey(Remote::kSelect);
    EXPECT_EQ("", m_Calls);
}

TEST_F(EInfoWindowTest, ALongDescriptionScrollsToItsEndAndNoFurther)
{
    EInfoFile info;
    for (int i = 1; i <= 60; ++i) {
        info.description += CascadeString::Format("line %d\n", i);
    }
    info.description += "the end";
    Show(info);
    const auto shows = [this](const char* text) { return TestPlatform::FindText(TestPlatform::Paint(m_Window), text) != nullptr; };
    EXPECT_TRUE(shows("line 1"));
    TestPlatform::PressKey(Remote::kDown);
    EXPECT_FALSE(shows("line 1"));
    EXPECT_TRUE(shows("line 2"));
    for (int i = 0; i < 100; ++i) {
        TestPlatform::PressKey(Remote::kPrevChapter);
    }
    EXPECT_TRUE(shows("the end"));
    TestPlatform::PressKey(Remote::kUp);
    EXPECT_FALSE(shows("the end"));
    for (int i = 0; i < 100; ++i) {
        TestPlatform::PressKey(Remote::kNextChapter);
    }
    EXPECT_TRUE(shows("line 1"));
}

}    // namespace
