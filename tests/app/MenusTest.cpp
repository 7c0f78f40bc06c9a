// The menus in the whole application: what their items do, the options, and the resume question.
#include "tests/app/AppTest.h"

namespace {

class MenusTest : public AppTest {
protected:
    void Down(int times, unsigned long thenKey)
    {
        for (int i = 0; i < times; ++i) {
            TestPlatform::PressKey(Remote::kDown);
        }
        TestPlatform::PressKey(thenKey);
    }
    // Injected keys arrive too.
    void Choose(int item)
    {
        Down(item, Remote::kSelect);
        TestPlatform::DeliverKeys();
    }
    std::string WriteResumePoint(const std::string& name)
    {
        const std::string path = MakeFile(name + ".mpg");
        m_Folder.Write(name + ".nuvid", "#Nuvid File. Do not modify\nr " + name + ".mpg@104857600\n");
        return path;
    }
    bool Asked() { return Window("Resume Playback") != nullptr; }
};

TEST_F(MenusTest, EachItemLeadsWhereItSays)
{
    const char* const browser = "File browser";
    const struct {
        std::vector<int> items;
        const char* window;    // with the focus afterwards; null: the main window, with a text
        const char* text;
    } cases[] = {
        {{0}, browser, nullptr}, {{1}, browser, nullptr}, {{2}, "Nuvid Recent Files", nullptr}, {{3}, "Nuvid Options", nullptr},
        {{4}, "Nuvid Advanced Menu", nullptr}, {{4, 0}, browser, nullptr}, {{4, 1}, nullptr, "No files to save!"},
        {{4, 2}, Menus::kRows[Menus::kMain].title, nullptr}, {{3, 6}, Menus::kRows[Menus::kMain].title, nullptr},
        {{2, 4}, nullptr, "File open failed"},    // a slot that has not been used
    };
    for (const auto& c : cases) {
        Start({});
        TestPlatform::Tick();
        for (const int item : c.items) {
            Choose(item);
        }
        const std::string title = c.window == nullptr ? "Nuvid" : c.window;
        EXPECT_NE(Window(title), nullptr) << title;
        EXPECT_EQ(TestPlatform::FocusWindow()->GetTitle().Str(), title);
        EXPECT_TRUE(c.text == nullptr || Shows(c.text)) << c.text;
    }
}

TEST_F(MenusTest, WhileAMenuIsOpenKeysAreItsOwn)
{
    Play({MakeFile("a.mpg")});
    TestPlatform::PressKey(Remote::kMenu);
    EXPECT_EQ(Pressed(Remote::kStop) + Pressed(Remote::kPause) + Pressed(Remote::kFastForward), "");
    TestPlatform::Command("Nuvid stop");
    EXPECT_EQ(Status(), "Playing");
    // What comes from outside is put into the queue below the menu; opened, it takes the menu's place.
    TestPlatform::Command(("Nuvid queue " + MakeFile("b.mpg")).c_str());
    TestPlatform::Command("Nuvid stop");
    EXPECT_EQ(Status(), "Playing");
    EXPECT_TRUE(MainMenuIsOpen());
    TestPlatform::Command(("Nuvid open " + MakeFile("c.mpg")).c_str());
    EXPECT_FALSE(MainMenuIsOpen());
    TestPlatform::Tick(4);
    EXPECT_EQ(CurrentFile(), "c.mpg");
    TestPlatform::PressKey(Remote::kMenu);
    TestPlatform::PressKey(Remote::kMenu);
    EXPECT_EQ(TestPlatform::FocusWindow(), &Osd());
    EXPECT_TRUE(TestPlatform::NeedsPaint(Osd()));
    TestPlatform::PressKey(Remote::kStop);
    EXPECT_EQ(Status(), "Stopped");
    TestPlatform::PressKey(Remote::kMenu);
    m_pApp->OnMenu(Menus::kQuit);
    EXPECT_TRUE(TestPlatform::WasTerminated());
}

TEST_F(MenusTest, OptionsAreShownAsTheyAreAndTakenOverOnDone)
{
    std::filesystem::create_directories(m_Folder / "Themes/Ice");
    std::filesystem::create_directories(m_Folder / "Themes/Dark");
    TestPlatform::Settings()["orvandi.nuvid.settings"] = {{"BrowserMode", "3"}, {"ResumeTimeout", "7"}};
    Start({"-minfilesize=60000000", "-largeicons", "-fontsize=29"});
    TestPlatform::Tick();
    Choose(3);
    auto drawings = TestPlatform::Paint(*Window("Nuvid Options"));
    for (const char* const text : {"All", "100 MB", "Large", "24", "Infinite", "Ice"}) {
        EXPECT_NE(TestPlatform::FindText(drawings, text), nullptr) << text;
    }
    Down(4, Remote::kRight);    // a time-out
    Down(1, Remote::kRight);    // round to the first theme
    Down(0, Remote::kRight);
    Choose(1);
    EXPECT_TRUE(MainMenuIsOpen());
    TestPlatform::PressKey(Remote::kExit);
    TestPlatform::PressKey(Remote::kInfo);
    EXPECT_EQ(TestPlatform::FindText(TestPlatform::Paint(Osd()), "No file")->fontSize, 24);
    m_pApp->OnAppExit();
    auto& saved = TestPlatform::Settings()["orvandi.nuvid.settings"];
    EXPECT_EQ(saved["BrowserMode"] + saved["IconSize"] + saved["FontSize"] + saved["ResumeTimeout"], "31245");
    EXPECT_EQ(saved["MinFileSize"], "104857600");
    EXPECT_EQ(saved["Theme"], "Dark");
}

// ---- the resume question

TEST_F(MenusTest, NothingIsAskedInAQueueOverAMenuOrWhenSwitchedOff)
{
    const std::string a = WriteResumePoint("a");
    Play({a, MakeFile("b.mpg")});
    EXPECT_FALSE(Asked());
    m_pApp.reset();    // has written its own
    WriteResumePoint("a");
    Play({"-noresume", a});
    EXPECT_FALSE(Asked());
    m_pApp.reset();    // has written its own
    WriteResumePoint("a");
    Start({});
    TestPlatform::Tick();
    m_pApp->OpenFile(a.c_str(), false);
    EXPECT_FALSE(Asked());
    EXPECT_TRUE(MainMenuIsOpen());
}

TEST_F(MenusTest, AFileOpenedFromOutsideWithdrawsTheQuestion)
{
    Play({WriteResumePoint("a")});
    TestPlatform::Command(("Nuvid open " + MakeFile("b.mpg")).c_str());
    EXPECT_FALSE(Asked());
    TestPlatform::Tick(4);
    EXPECT_EQ(CurrentFile(), "b.mpg");
    m_pApp->OnDialogResult("Resume", "Yes");    // b has nowhere to go on from
    EXPECT_TRUE(Shows("Resume failed!"));
}

}    // namespace
