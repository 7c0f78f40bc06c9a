// What the application does around its browser: filters, deletion, and what comes from outside meanwhile.
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
    // Answers the deletion, once it is known what goes.
    static bool Answer(unsigned long key)
    {
        const bool asked = Until([] { return IsPainted("Press [Select] to proceed. [Exit] to quit"); });
        TestPlatform::PressKey(key);
        return asked && Until([] { return DeleteDialog() == nullptr; });
    }
    bool Exists(const std::string& name) const { return std::filesystem::exists(m_Folder / name); }
};

TEST_F(BrowseFlowTest, TheNextFilterComesWhenTheOldBrowserHasClosedAndForThisRunOnly)
{
    Start(Here());
    TestPlatform::Tick();
    TestPlatform::PressKey(Remote::kExit);
    m_pApp->callback(Entry(m_Folder / "a.mpg"), 2);
    EXPECT_EQ(Browser(), nullptr);
    TestPlatform::DeliverKeys();
    EXPECT_TRUE(Until([] { return IsPainted("Filter: Sequence"); }));
    m_pApp->OnAppExit();
    EXPECT_EQ(TestPlatform::Settings()["orvandi.nuvid.settings"]["BrowserMode"], "0");
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
}

TEST_F(BrowseFlowTest, FoldersThatAreNotThereAreToldAndReplaced)
{
    Start({"-browseroot=/no such root", "-browsedir=" + m_Folder.Path(), "-nomenu"});
    TestPlatform::Tick();
    EXPECT_TRUE(IsPainted("Invalid root directory!"));
    EXPECT_NE(Browser(), nullptr);
    m_pApp.reset();    // with the browser open
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
