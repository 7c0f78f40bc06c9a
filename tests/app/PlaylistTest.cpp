#include "app/Playlist.h"

#include "app/RecentFiles.h"
#include "tests/app/AppTest.h"

namespace {

std::string Parsed(const std::string& text)
{
    std::string paths;
    for (const CascadeString& path : Playlist::Parse(text, "/mnt/a")) {
        paths += path.Str() + "|";
    }
    return paths;
}

TEST(PlaylistTest, LinesAreReadAsTheyAreWritten)
{
    const std::string path = "/" + std::string(508, 'p');    // with its line feed 510 bytes
    const struct {
        std::string text;
        std::string paths;
    } cases[] = {
        {"", ""}, {"/x/b.mpg\r\n/c.mpg\n\r\n\n/d.mpg", "/x/b.mpg|/c.mpg|/d.mpg|"}, {"/b.mpg\r\r\n", "/b.mpg|"}, {"sub/b.mpg\n", "/mnt/a/sub/b.mpg|"},
        {"#/b.mpg\n#", ""}, {"/b.mpg\n:repeat\n", "/b.mpg|:repeat|"},
        {"http://h/b.mpg\nHTTP://h/b\nhttp:/b\n", "http://h/b.mpg|/mnt/a/HTTP://h/b|/mnt/a/http:/b|"}, {"b", ""},    // too short with its line end
        {"b\n", "/mnt/a/b|"}, {" /b.mpg\n", "/mnt/a/ /b.mpg|"}, {path + "\n/b\n", path + "|/b|"},
        {path + "qqrest\n/b\n", path + "qq|/mnt/a/rest|/b|"},    // 511 bytes and what is left
        {path + "qq\n/b\n", path + "qq|/b|"},    // the line end alone is left
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Parsed(c.text), c.paths) << c.text;
    }
    EXPECT_EQ(Playlist::Format({"/x/b.mpg", "", ":repeat", "http://h/b"}), "/x/b.mpg\r\n\r\n:repeat\r\nhttp://h/b\r\n");
    EXPECT_EQ(Playlist::Format({"b.mpg"}), std::filesystem::current_path().string() + "/b.mpg\r\n");
}

TEST(PlaylistTest, ItsNameTellsFolderAndTime)
{
    std::tm time {};
    time.tm_year = 106;
    time.tm_mon = 2;
    time.tm_mday = 5;
    time.tm_hour = 14;
    time.tm_min = 7;
    EXPECT_EQ(Playlist::NameFor("/mnt/a/b.mpg", time).Str(), "/mnt/a/060305_1407.Nuvidlist");
    EXPECT_EQ(Playlist::NameFor("", time).Str(), "");
    EXPECT_TRUE(Playlist::IsPlaylist("/a/b.nuvidLIST"));
    EXPECT_FALSE(Playlist::IsPlaylist("/a/Nuvidlist"));
    EXPECT_FALSE(Playlist::IsPlaylist("/a/b.Nuvidlist2"));
}

TEST(RecentFilesTest, TheLatestIsFirstAndNothingIsThereTwice)
{
    RecentFiles recent;
    const auto slots = [&recent] {
        std::string text;
        for (size_t i = 0; i < RecentFiles::kSlots; ++i) {
            text += recent[i].Str() + " ";
        }
        return text;
    };
    EXPECT_EQ(slots(), "Empty Empty Empty Empty Empty ");
    const struct {
        const char* added;
        const char* slots;
    } cases[] = {{"a", "a Empty Empty Empty Empty "}, {"a", "a Empty Empty Empty Empty "}, {"b", "b a Empty Empty Empty "},
        {"a", "a b Empty Empty Empty "}, {"c", "c a b Empty Empty "}, {"d", "d c a b Empty "}, {"e", "e d c a b "}, {"b", "b e d c a "},
        {"d", "d b e c a "}, {"f", "f d b e c "}, {"B", "B f d b e "}};
    for (const auto& c : cases) {
        recent.Add(c.added);
        EXPECT_EQ(slots(), c.slots) << c.added;
    }
}

class PlaylistFlowTest : public AppTest {
protected:
    std::string Recent(size_t slot)
    {
        m_pApp->OnAppExit();
        return TestPlatform::Settings()["orvandi.nuvid.settings"]["Recent" + std::to_string(slot)];
    }
};

TEST_F(PlaylistFlowTest, APlaylistReplacesTheQueueAndItsFirstItemThatOpensPlays)
{
    const std::string list = m_Folder.Write("x.Nuvidlist", "missing.mpg\nb.mpg\nc.mpg\n");
    MakeFile("b.mpg");
    MakeFile("c.mpg");
    const std::string said = Said([&] { Play({list, MakeFile("a.mpg")}); });
    EXPECT_TRUE(Has(said, "Adding " + (m_Folder / "c.mpg") + " to FileList(3)\n"));
    EXPECT_EQ(CurrentFile(), "b.mpg");
    EndStream();
    EXPECT_EQ(CurrentFile(), "c.mpg");
    EXPECT_EQ(Recent(0), list);    // the playlist, not its items
    EXPECT_EQ(Recent(1), "Empty");
}

TEST_F(PlaylistFlowTest, PlaylistsThatLeadNowhereEnd)
{
    const std::string self = m_Folder.Write("self.Nuvidlist", "self.Nuvidlist\n./self.Nuvidlist\n");
    const std::string empty = m_Folder.Write("empty.Nuvidlist", "# nothing\n");
    const std::string dead = m_Folder.Write("dead.Nuvidlist", "missing.mpg\n");
    for (const std::string& path : {self, empty, dead}) {
        Start({path});
        TestPlatform::Tick(10);
        EXPECT_TRUE(MainMenuIsOpen()) << path;
        EXPECT_EQ(Status(), "Stopped");
    }
    // One that cannot be read fails like a file, and the next item is tried.
    Play({m_Folder / "gone.Nuvidlist", MakeFile("a.mpg")});
    TestPlatform::Tick();
    EXPECT_EQ(CurrentFile(), "a.mpg");
    EXPECT_FALSE(m_pApp->OpenFile((m_Folder / "gone.Nuvidlist").c_str(), false));
    EXPECT_TRUE(Shows("File open failed"));
}

TEST_F(PlaylistFlowTest, APlaylistThatCannotBeSavedIsTold)
{
    Play({"/nowhere/a.mpg"});
    m_pApp->OnMenu(Menus::kSavePlaylist);
    EXPECT_TRUE(Shows("Failed to open file for writing"));
}

}    // namespace
