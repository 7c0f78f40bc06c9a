// Choosing with the browser, and deleting, in the whole application.
#include <chrono>

#include "browser/BrowserKeys.h"
#include "tests/app/AppTest.h"

namespace {

class BrowseFlowTest : public AppTest {
protected:
    // On the command line: browse there, and be able to see everything.
    std::vector<std::string> Here(std::vector<std::string> more = {}) const
    {
        more.insert(more.begin(), {"-browsedir=" + m_Folder.Path(), "-browseroot=" + m_Folder.Path()});
        return more;
    }
    static EFileBrowser::FileInfo Entry(const std::string& path)
    {
        EFileBrowser::FileInfo entry;
        entry.path = entry.location = path.c_str();
        return entry;
    }
    static EFileBrowser* Browser() { return static_cast<EFileBrowser*>(Window("File browser")); }
    static CascadeWindow* DeleteDialog() { return Window("Delete"); }
    static bool Until(const std::function<bool()>& condition)
    {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (!condition()) {
            if (std::chrono::steady_clock::now() > deadline) {
                return false;
            }
            TestPlatform::Tick();
            TestPlatform::PaintAll();
        }
        return true;
    }
    static bool IsPainted(const std::string& text)
    {
        for (CascadeWindow* const window : TestPlatform::WindowsOnScreen()) {
            if (TestPlatform::FindText(TestPlatform::Paint(*window), text) != nullptr) {
                return true;
            }
        }
        return false;
    }
    // Answers the deletion, once it is known what goes.
    static bool Answer(unsigned long key)
    {
        const bool asked = Until([] { return IsPainted("Press [Select] to proceed. [Exit] to quit"); });
        TestPlatform::PressKey(key);
        return asked && Until([] { return DeleteDialog() == nullptr; });
    }
    bool Exists(const std::string& name) const { return std::filesystem::exists(m_Folder / name); }
};

TEST_F(BrowseFlowTest, AFileIsFoundWithKeysAndTheBrowserComesBackToIt)
{
    std::filesystem::create_directories(m_Folder / "films/new");
    MakeFile("films/new/a.mpg", 1000);
    MakeFile("films/new/b.mpg", 1000);
    Start(Here({"-nomenu"}));
    TestPlatform::Tick();
    ASSERT_NE(Browser(), nullptr);
    const auto open = [](const char* name) {
        EXPECT_TRUE(Until([&] { return IsPainted(name); })) << name;
        TestPlatform::PressKey(Remote::kSelect);
    };
    open("films");
    ASSERT_TRUE(Until([] { return IsPainted("new"); }));
    TestPlatform::PressKey(Remote::kDown);    // from the way up
    open("new");
    ASSERT_TRUE(Until([] { return IsPainted("b.mpg"); }));
    TestPlatform::PressKey(Remote::kDown);
    TestPlatform::PressKey(Remote::kDown);
    EXPECT_EQ(Pressed(Remote::kStop) + Pressed(Remote::kZoom), "inReason 3\n");    // the browser's, not the player's
    ASSERT_TRUE(Answer(Remote::kExit));

    ASSERT_TRUE(Until([] { return IsPainted("b.mpg"); }));    // back on the same item
    const std::string said = Said([] {
        TestPlatform::PressKey(Remote::kSelect);
        EXPECT_TRUE(Until([] { return Browser() == nullptr; }));
    });
    EXPECT_EQ(said, "inReason 0\n");
    EXPECT_TRUE(Shows(("Opening " + m_Folder / "films/new/b.mpg" + "...").c_str()));
    TestPlatform::Tick(5);
    EXPECT_EQ(CurrentFile(), "b.mpg");

    TestPlatform::PressKey(Remote::kMenu);
    ASSERT_TRUE(Until([] { return IsPainted("b.mpg"); }));
    EXPECT_EQ(Pressed(Remote::kExit), "inReason 1\n");
    EXPECT_TRUE(Shows("Press [Menu] to open a file"));
    EXPECT_EQ(CurrentFile(), "b.mpg");
    EXPECT_EQ(Status(), "Playing");
}

TEST_F(BrowseFlowTest, TheNextFilterIsForThisRunOnly)
{
    Start(Here());
    TestPlatform::Tick();
    TestPlatform::PressKey(Remote::kExit);
    EXPECT_EQ(Said([&] { m_pApp->callback(Entry(m_Folder / "a.mpg"), 2); }), "inReason 2\ninPath: " + m_Folder / "a.mpg" + "\n");
    EXPECT_EQ(Browser(), nullptr);    // the old one is still closing
    EXPECT_EQ(TestPlatform::DeliverKeys(), 2);
    ASSERT_NE(Browser(), nullptr);
    EXPECT_TRUE(Until([] { return IsPainted("Filter: Sequence"); }));
    m_pApp->OnAppExit();
    EXPECT_EQ(TestPlatform::Settings()["orvandi.nuvid.settings"]["BrowserMode"], "0");
}

TEST_F(BrowseFlowTest, DeletingFromTheBrowserLeadsBackToIt)
{
    MakeFile("film_1.mpg", 1000);
    MakeFile("film_2.mpg", 1000);
    MakeFile("other.mpg", 1000);
    Play(Here({m_Folder / "film_1.mpg"}));
    ASSERT_EQ(Status(), "Playing");
    for (const unsigned long key : {Remote::kExit, Remote::kSelect}) {
        EXPECT_EQ(Said([&] { m_pApp->callback(Entry(m_Folder / "film_1.mpg"), 3); }), "inReason 3\n");
        TestPlatform::Command("Nuvid stop");    // the question has the keys
        EXPECT_EQ(Status(), "Playing");
        ASSERT_TRUE(Answer(key));
        ASSERT_NE(Browser(), nullptr);
        TestPlatform::PressKey(Remote::kExit);
        EXPECT_TRUE(Until([] { return Browser() == nullptr; }));
    }
    EXPECT_EQ(Status(), "Stopped");    // let go of before it went
    EXPECT_EQ(m_Folder.Names(), std::set<std::string> {"other.mpg"});
}

TEST_F(BrowseFlowTest, DeletingFromTheMenuGoesOnUntilTheViewerHasHadEnough)
{
    MakeFile("a.mpg", 1000);
    MakeFile("b.mpg", 1000);
    Start(Here());
    TestPlatform::Tick();
    TestPlatform::PressKey(Remote::kExit);
    m_pApp->OnMenu(Menus::kDeleteFile);
    ASSERT_NE(Browser(), nullptr);
    EXPECT_TRUE(Until([] { return IsPainted("WARNING: Delete File"); }));
    ASSERT_TRUE(Until([] { return IsPainted("a.mpg"); }));
    TestPlatform::PressKey(Remote::kSelect);
    ASSERT_TRUE(Until([] { return DeleteDialog() != nullptr; }));
    ASSERT_TRUE(Answer(Remote::kSelect));
    EXPECT_FALSE(Exists("a.mpg"));
    ASSERT_TRUE(Until([] { return IsPainted("b.mpg"); }));
    EXPECT_TRUE(IsPainted("WARNING: Delete File"));
    TestPlatform::PressKey(Remote::kSelect);
    ASSERT_TRUE(Until([] { return DeleteDialog() != nullptr; }));
    ASSERT_TRUE(Answer(Remote::kExit));
    EXPECT_TRUE(Exists("b.mpg"));
    EXPECT_EQ(Browser(), nullptr);
    EXPECT_EQ(TestPlatform::FocusWindow(), &Osd());
    TestPlatform::PressKey(Remote::kMenu);
    EXPECT_TRUE(MainMenuIsOpen());
}

TEST_F(BrowseFlowTest, WhatComesFromOutsideTakesThePlaceOfTheBrowser)
{
    const std::string a = MakeFile("a.mpg");
    const std::string b = MakeFile("b.mpg");
    Play(Here({a}));
    m_pApp->OnMenu(Menus::kOpenFile);
    ASSERT_NE(Browser(), nullptr);
    TestPlatform::Command(("Nuvid queue " + b).c_str());
    EXPECT_NE(Browser(), nullptr);
    EXPECT_TRUE(IsPainted("File added to the playlist: " + b));
    EXPECT_FALSE(Shows("File added to the playlist"));    // it would show through
    TestPlatform::Command("Nuvid stop");
    EXPECT_EQ(Status(), "Playing");
    // What is chosen now is still to be opened, not queued.
    ASSERT_TRUE(Until([] { return IsPainted("b.mpg"); }));
    TestPlatform::PressKey(Remote::kSelect);
    EXPECT_TRUE(Until([] { return Browser() == nullptr; }));
    EXPECT_TRUE(Shows(("Opening " + a + "...").c_str()));
    TestPlatform::Tick(5);

    m_pApp->callback(Entry(a), 3);
    ASSERT_NE(DeleteDialog(), nullptr);
    EXPECT_FALSE(Has(Said([&] { TestPlatform::Command(("Nuvid open " + b).c_str()); }), "inReason 1"));
    EXPECT_EQ(DeleteDialog(), nullptr);
    TestPlatform::Tick(5);
    EXPECT_EQ(CurrentFile(), "b.mpg");
    TestPlatform::PressKey(Remote::kMenu);    // nothing is pending any more
    EXPECT_TRUE(MainMenuIsOpen());
    TestPlatform::PressKey(Remote::kExit);
    m_pApp->OnMenu(Menus::kOpenFile);
    EXPECT_FALSE(Has(Said([&] { TestPlatform::Command(("Nuvid open " + a).c_str()); }), "inReason 1"));
    EXPECT_EQ(Browser(), nullptr);
    TestPlatform::Tick(5);
    EXPECT_EQ(CurrentFile(), "a.mpg");
}

TEST_F(BrowseFlowTest, FoldersThatAreNotThereAreToldAndReplaced)
{
    Start({"-browseroot=/no such root", "-browsedir=" + m_Folder.Path(), "-nomenu"});
    TestPlatform::Tick();
    EXPECT_TRUE(IsPainted("Invalid root directory!"));
    EXPECT_NE(Browser(), nullptr);
    m_pApp.reset();    // with the browser open
    TestPlatform::Reset();
    Start({"-browseroot=" + m_Folder.Path(), "-browsedir=/no such folder", "-nomenu"});
    TestPlatform::Tick();
    EXPECT_TRUE(IsPainted("Invalid path directory!"));
}

// | Remote key | In the browser |
TEST_F(BrowseFlowTest, ThePageOfTheRemoteSaysWhatEachKeyDoes)
{
    std::ifstream file(NUVID_SOURCE "/docs/remote.md");
    const std::string page((std::istreambuf_iterator<char>(file)), {});
    for (const BrowserKeys::Row& row : BrowserKeys::kRows) {
        EXPECT_TRUE(Has(page, std::string(" | ") + row.meaning + " |\n")) << row.meaning;
    }
}

}    // namespace
