// Walks through folders as a viewer with a remote.
#include <sys/stat.h>
#include <unistd.h>

#include <condition_variable>
#include <mutex>

#include "browser/BrowserKeys.h"
#include "tests/browser/BrowserFixture.h"

using ::testing::ElementsAre;
using ::testing::HasSubstr;

namespace {

using EFileBrowserTest = BrowserFixture;

TEST_F(EFileBrowserTest, WalksDownAndUpAndComesBackToTheFolderLeft)
{
    for (const char* folder : {"a", "b/inner", "c"}) {
        Make(folder);
    }
    m_Folder.Write("b/film.mpg", std::string(2048, 'x'));
    OpenAndList();
    // The top folder has no way up.
    EXPECT_THAT(Names(), ElementsAre("a", "b", "c"));
    EXPECT_EQ("a", Cursor());
    EXPECT_THAT(Painted("Browser position"), HasSubstr("1 of 3"));
    TestPlatform::PressKey(Remote::kLeft);
    EXPECT_EQ(0, TestPlatform::RunningTimers());

    Press(Remote::kDown);
    Press(Remote::kSelect);
    EXPECT_THAT(Names(), ElementsAre("..", "inner", "film.mpg"));
    EXPECT_EQ("..", Cursor());
    EXPECT_STREQ("2 KB", List().GetText(2, List().GetColumn("Size")));
    EXPECT_EQ(m_Folder / "b/film.mpg", List().GetTag(2));
    EXPECT_THAT(Painted("Browser position"), HasSubstr("2 items"));

    Press(Remote::kDown);
    Press(Remote::kRight);
    EXPECT_THAT(Names(), ElementsAre(".."));
    EXPECT_THAT(Painted("Browser list"), HasSubstr("This folder is empty."));
    Press(Remote::kSelect);
    EXPECT_EQ("inner", Cursor());
    Press(Remote::kLeft);
    EXPECT_EQ("b", Cursor());
    EXPECT_THAT(Painted("File browser"), HasSubstr("Open File"));
    EXPECT_TRUE(m_Results.empty());
}

TEST_F(EFileBrowserTest, EachWayOutSaysWhatWasChosen)
{
    Make("films");
    m_Folder.WriteEach({"films/one.mpg", "films/two.mpg"});
    const std::string two = m_Folder / "films/two.mpg";
    struct Case {
        const char* item;
        unsigned long key;
        int reason;
        std::string path;
    };
    const Case cases[] = {
        {"two.mpg", Remote::kSelect, 0, two},
        {"two.mpg", Remote::kPlay, 0, two},
        {"two.mpg", Remote::kStop, 3, two},
        {"two.mpg", Remote::kMenu, 2, two},
        {"..", Remote::kMenu, 2, m_Folder / "films/.."},
        {"two.mpg", Remote::kExit, 1, ""},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(one.key);
        m_Results.clear();
        m_pBrowser.reset();
        OpenAndList("films");
        MoveTo(one.item);
        TestPlatform::PressKey(one.key);
        ASSERT_EQ(1U, m_Results.size());
        EXPECT_EQ(one.reason, m_Results[0].reason);
        EXPECT_EQ(one.path, m_Results[0].info.path.Str());
        EXPECT_EQ(one.path, m_Results[0].info.location.Str());
        EXPECT_TRUE(m_Results[0].info.title.IsEmpty());
        EXPECT_TRUE(TestPlatform::WindowsOnScreen().empty());
        EXPECT_EQ(0, TestPlatform::RunningTimers());
    }
}

TEST_F(EFileBrowserTest, DeletingNeedsLeaveAndAFile)
{
    m_Folder.Write("one.mpg", "x");
    Make("sub");
    OpenAndList();
    TestPlatform::PressKey(Remote::kStop);
    EXPECT_THAT(Painted("File browser"), HasSubstr("Only files can be deleted."));
    m_pBrowser->SetDeletionAllowed(false);
    MoveTo("one.mpg");
    TestPlatform::PressKey(Remote::kStop);
    EXPECT_THAT(Painted("File browser"), HasSubstr("Deleting is switched off."));
    EXPECT_TRUE(m_Results.empty());
}

TEST_F(EFileBrowserTest, TheCursorBeginsWhereTheClientWants)
{
    Make("films");
    m_Folder.WriteEach({"films/a.mpg", "films/b.mpg", "films/c.iso"});
    struct Case {
        const char* selected;
        const char* cursor;
    };
    for (const Case& one : {Case {"films/b.mpg", "b.mpg"}, {"films/c.iso~VTS_02", "c.iso"}, {"films/unknown.mpg", ".."}, {"films", "films"}}) {
        SCOPED_TRACE(one.selected);
        Prepare();
        m_pBrowser->SetSelectedFile((m_Folder / one.selected).c_str());
        OpenAndList();
        EXPECT_EQ(one.cursor, Cursor());
    }
    // The top folder is never left upwards.
    Prepare();
    m_pBrowser->SetSelectedFile(m_Folder.Path().c_str());
    OpenAndList();
    EXPECT_THAT(Names(), ElementsAre("films"));
    m_pBrowser->SetSelectedFile((m_Folder / "films/c.iso").c_str());
    WaitForListing();
    EXPECT_EQ("c.iso", Cursor());
    m_pBrowser->SetCurrentFolder("http://host/x");
    WaitForListing();
    EXPECT_EQ("/", CascadeString(List().GetTag(0)).Left(1));
}

TEST_F(EFileBrowserTest, AfterADeletionTheNextFileHasTheCursor)
{
    m_Folder.WriteEach({"a.mpg", "b.mpg", "c.mpg"});
    OpenAndList();
    MoveTo("b.mpg");
    TestPlatform::PressKey(Remote::kStop);
    ASSERT_EQ(1U, m_Results.size());
    ASSERT_EQ(0, unlink(m_Results[0].info.path));
    Prepare();
    m_pBrowser->SetSelectedFile(m_Results[0].info.path);
    OpenAndList();
    EXPECT_EQ("c.mpg", Cursor());
    // A folder that is read again keeps its cursor too.
    m_Folder.Write("b.mpg", "x");
    m_pBrowser->RescanFolder();
    WaitForListing();
    EXPECT_THAT(Names(), ElementsAre("a.mpg", "b.mpg", "c.mpg"));
    EXPECT_EQ("c.mpg", Cursor());
}

TEST_F(EFileBrowserTest, AFoldersSettingsHoldForItAlone)
{
    Make("plain");
    Make("large");
    m_Folder.Write("large/folder.cfg", "icons=extralarge\r\nfilter=size\r\npattern=*.MPG\r\n");
    m_Folder.WriteEach({"large/a.mpg", "large/a.ts"});
    OpenAndList("", EFileBrowser::kFilterSequence);
    EXPECT_EQ(EListView::kSmall, List().GetListMode());
    EXPECT_THAT(Painted("File browser"), HasSubstr("Filter: Sequence"));
    Press(Remote::kSelect);
    EXPECT_EQ(EListView::kExtraLarge, List().GetListMode());
    EXPECT_THAT(Painted("File browser"), HasSubstr("Filter: Size"));
    EXPECT_THAT(Names(), ElementsAre("..", "a.mpg"));
    Press(Remote::kLeft);
    EXPECT_EQ(EListView::kSmall, List().GetListMode());
    TestPlatform::PressKey(Remote::kZoom);
    TestPlatform::PressKey(Remote::kZoom);
    EXPECT_EQ(EListView::kLarge, List().GetListMode());
    EXPECT_EQ("large", Cursor());
}

TEST_F(EFileBrowserTest, APasswordKeepsAFolderClosed)
{
    Make("secret");
    m_Folder.Write("secret/folder.cfg", "password=Open\n");
    m_Folder.Write("secret/film.mpg", "x");
    const auto enter = [this](const char* text) {
        TestPlatform::PressKey(Remote::kSelect);
        ASSERT_TRUE(Until([] { return TestPlatform::FocusWindow() != nullptr && TestPlatform::FocusWindow()->GetTitle() == "Enter Password"; }));
        TestPlatform::TypeText(text);
    };
    OpenAndList();
    enter("open");
    Press(Remote::kPlay);
    EXPECT_THAT(Names(), ElementsAre("You are not authorized to view this folder."));
    // From there it can be tried again, or left.
    enter("Open");
    Press(Remote::kPlay);
    EXPECT_THAT(Names(), ElementsAre("..", "film.mpg"));
    Press(Remote::kLeft);
    enter("Open");
    Press(Remote::kExit);
    EXPECT_THAT(Names(), ElementsAre("secret"));
    EXPECT_TRUE(m_Results.empty());
}

class DVDChoice : public BrowserFixture {
protected:
    void MakeDVD(const std::string& folder)
    {
        Make(folder + "/VIDEO_TS");
        m_Folder.Write(folder + "/VIDEO_TS/VTS_01_1.VOB", std::string(5000, 'x'));
        m_Folder.Write(folder + "/VIDEO_TS/VTS_02_1.VOB", std::string(9000, 'x'));
        m_Folder.Write(folder + "/VIDEO_TS/VTS_03_1.VOB", std::string(100, 'x'));
    }
    void ExpectSettled(const std::string& path, const std::string& location)
    {
        ASSERT_TRUE(Until([this] { return !m_Results.empty(); }));
        EXPECT_EQ(EFileBrowser::kPathSettled, m_Results[0].reason);
        EXPECT_EQ(path, m_Results[0].info.path.Str());
        EXPECT_EQ(location, m_Results[0].info.location.Str());
    }
};

TEST_F(DVDChoice, SeveralLongTitlesAreOffered)
{
    MakeDVD("disc");
    Prepare();
    m_pBrowser->SetTitleSetThreshold(1000);
    OpenAndList();
    TestPlatform::PressKey(Remote::kSelect);
    ASSERT_TRUE(Until([] { return OnScreen("Select Title Set") != nullptr; }));
    EXPECT_THAT(Painted("Title sets"), HasSubstr("VTS_01 (4 MB)"));
    EXPECT_THAT(Painted("Title sets"), Not(HasSubstr("VTS_03")));
    TestPlatform::PressKey(Remote::kExit);
    EXPECT_EQ(nullptr, OnScreen("Select Title Set"));
    EXPECT_TRUE(m_Results.empty());

    // The cursor stands on the longest.
    TestPlatform::PressKey(Remote::kSelect);
    ASSERT_TRUE(Until([] { return OnScreen("Select Title Set") != nullptr; }));
    TestPlatform::PressKey(Remote::kUp);
    TestPlatform::PressKey(Remote::kSelect);
    ExpectSettled(m_Folder / "disc/VIDEO_TS/VTS_01_1.VOB", m_Folder / "disc");
}

TEST_F(DVDChoice, AProtectedDiscAsksBeforeItPlays)
{
    MakeDVD("disc");
    m_Folder.Write("disc/folder.cfg", "password=x\n");
    OpenAndList();
    for (const char* typed : {"y", "x"}) {
        TestPlatform::PressKey(Remote::kPlay);
        ASSERT_TRUE(Until([] { return OnScreen("Enter Password") != nullptr; }));
        TestPlatform::TypeText(typed);
        EXPECT_TRUE(m_Results.empty());
        TestPlatform::PressKey(Remote::kPlay);
    }
    ExpectSettled(m_Folder / "disc/VIDEO_TS/VTS_02_1.VOB", m_Folder / "disc");
}

TEST_F(DVDChoice, ThePaneTellsItsRunningTime)
{
    std::filesystem::create_symlink(NUVID_FIXTURES "/dvd", m_Folder / "disc");
    std::filesystem::create_symlink(NUVID_FIXTURES "/dvd.iso", m_Folder / "image.iso");
    OpenAndList();
    EXPECT_THAT(Painted("Browser detail"), testing::ContainsRegex("DVD, 0:[0-9][0-9] min"));
    Press(Remote::kDown);
    EXPECT_EQ("image.iso", Cursor());
    EXPECT_THAT(Painted("Browser detail"), testing::ContainsRegex("DVD, 0:[0-9][0-9] min"));
}

TEST_F(DVDChoice, ItsFolderCanStillBeLookedInto)
{
    MakeDVD("disc");
    OpenAndList();
    Press(Remote::kRight);
    EXPECT_THAT(Names(), ElementsAre("..", "VIDEO_TS"));
}

TEST_F(EFileBrowserTest, AFolderIsDescribedAsFarAsThereIsRoom)
{
    Make("films");
    std::string story = "It begins.";
    while (story.size() < 4000) {
        story += " It goes on and on.";
    }
    m_Folder.Write("films/folder.nfo", "summary=" + story + " It ends.\n");
    OpenAndList("films/");
    EXPECT_EQ((m_Folder / "films/"), m_curPath.Str());
    EXPECT_THAT(Painted("Browser detail"), HasSubstr("It begins."));
    EXPECT_THAT(Painted("Browser detail"), HasSubstr("..."));
}

TEST_F(EFileBrowserTest, ARecordingTellsHowLongItLasts)
{
    m_Folder.WriteEach({"film.mpg", "show_1.mpg", "show_2.mpg"});
    OpenAndList("", EFileBrowser::kFilterSequence);
    ASSERT_TRUE(TestPlatform::AnswerThumbnail(m_Folder / "film.mpg", "", 3725));
    EXPECT_THAT(Painted("Browser detail"), HasSubstr("1 h 02 min"));
    Press(Remote::kDown);
    ASSERT_TRUE(TestPlatform::AnswerThumbnail(m_Folder / "show_1.mpg", "", 3725));    // the first of two parts
    EXPECT_THAT(Painted("Browser detail"), testing::Not(HasSubstr("1 h 02 min")));
}

TEST_F(EFileBrowserTest, InfoDeletes)
{
    m_Folder.Write("film.mpg", "x");
    m_Folder.Write("film.nfo", "title=The Film\nyear=2003\n");
    OpenAndList();
    TestPlatform::PressKey(Remote::kInfo);
    ASSERT_TRUE(Until([] { return OnScreen("Information") != nullptr; }));
    EXPECT_THAT(Painted("Information"), HasSubstr("The Film (2003)"));
    TestPlatform::PressKeys({Remote::kRight, Remote::kSelect});
    ASSERT_EQ(1U, m_Results.size());
    EXPECT_EQ(EFileBrowser::kItemChosenForDeletion, m_Results[0].reason);
}

TEST_F(EFileBrowserTest, TypedCharactersJumpToAName)
{
    m_Folder.WriteEach({"alpha.mpg", "beta.mpg", "bond.mpg", "\xC3\x84rger.mpg"});
    OpenAndList();
    EXPECT_TRUE(TestPlatform::TypeText("B"));
    EXPECT_EQ("beta.mpg", Cursor());
    TestPlatform::Advance(900);
    TestPlatform::TypeText("o");
    EXPECT_EQ("bond.mpg", Cursor());
    TestPlatform::Advance(1100);
    TestPlatform::TypeText("a");
    EXPECT_EQ("alpha.mpg", Cursor());
    TestPlatform::Advance(1100);
    TestPlatform::TypeText("\xC3\x84");
    EXPECT_EQ("\xC3\x84rger.mpg", Cursor());
    TestPlatform::Advance(1100);
    EXPECT_FALSE(TestPlatform::TypeText(" "));
    TestPlatform::TypeText("q");
    EXPECT_EQ("\xC3\x84rger.mpg", Cursor());
}

TEST_F(EFileBrowserTest, AVanishedFolderIsLeftForTheOneAbove)
{
    Make("disk/films/new");
    m_Folder.Write("disk/other.mpg", "x");
    OpenAndList("disk/films");
    MoveTo("new");
    std::filesystem::remove_all(m_Folder / "disk/films");
    Press(Remote::kRight);
    EXPECT_THAT(Names(), ElementsAre("..", "other.mpg"));
    std::filesystem::remove_all(m_Folder / "disk");
    m_pBrowser->RescanFolder();
    ASSERT_TRUE(Until([this] { return OnScreen("Browser wait") == nullptr; }));
    EXPECT_THAT(Painted("File browser"), HasSubstr("That folder is no longer there."));
    WaitForListing();
    EXPECT_THAT(Names(), ElementsAre());
    EXPECT_THAT(Painted("Browser list"), HasSubstr("This folder is empty."));
}

// A share whose server has gone: reading it does not come back while the gate is shut.
class HangingShare : public BrowserFixture {
protected:
    struct Gate {
        std::mutex mutex;
        std::condition_variable opened;
        bool open = false;
        int waiting = 0;
        int left = 0;
    };
    HangingShare()
    {
        Make("fine");
        Make("share/deep");
        Prepare([gate = m_pGate](const FolderScanRequest& request, const JobStop& stop) {
            if (request.folder.Contains("/share/", true)) {
                std::unique_lock lock(gate->mutex);
                ++gate->waiting;
                gate->opened.wait(lock, [&] { return gate->open; });
                ++gate->left;
                gate->opened.notify_all();
            }
            return ReadFolder(request, stop);
        });
    }
    // No thread of the share outlives the test's folders.
    ~HangingShare() override
    {
        m_pBrowser.reset();
        std::unique_lock lock(m_pGate->mutex);
        m_pGate->open = true;
        m_pGate->opened.notify_all();
        m_pGate->opened.wait(lock, [this] { return m_pGate->left == m_pGate->waiting; });
    }
    void WaitUntilItHangs(int times)
    {
        ASSERT_TRUE(Until([&] {
            const std::lock_guard lock(m_pGate->mutex);
            return m_pGate->waiting == times;
        }));
    }
    std::shared_ptr<Gate> m_pGate = std::make_shared<Gate>();
};

TEST_F(HangingShare, ExitGoesBackToTheFolderBefore)
{
    OpenAndList();
    MoveTo("share");
    TestPlatform::PressKey(Remote::kRight);
    WaitUntilItHangs(1);
    EXPECT_NE(nullptr, OnScreen("Browser wait"));
    TestPlatform::PressKeys({Remote::kSelect, Remote::kDown, Remote::kMenu, Remote::kInfo, Remote::kLeft});
    EXPECT_TRUE(m_Results.empty());
    EXPECT_THAT(Names(), ElementsAre("fine", "share"));

    TestPlatform::PressKey(Remote::kExit);
    EXPECT_EQ(nullptr, OnScreen("Browser wait"));
    EXPECT_TRUE(m_Results.empty());
    EXPECT_EQ("share", Cursor());
    MoveTo("fine");
    Press(Remote::kRight);
    EXPECT_THAT(Names(), ElementsAre(".."));
}

TEST_F(HangingShare, AsTheFirstFolderItIsLeftForTheTop)
{
    Open("share/deep");
    WaitUntilItHangs(1);
    TestPlatform::PressKey(Remote::kExit);
    WaitForListing();
    EXPECT_THAT(Names(), ElementsAre("fine", "share"));
}

TEST_F(HangingShare, ClosingTheBrowserWaitsForNothing)
{
    Open("share");
    WaitUntilItHangs(1);
    m_pBrowser->Dismiss();
    EXPECT_TRUE(m_Results.empty());
    EXPECT_TRUE(TestPlatform::WindowsOnScreen().empty());
    EXPECT_EQ(0, TestPlatform::RunningTimers());
}

}    // namespace
