// What is asked before a recording is deleted, and what goes.
#include "app/MDeleteDialog.h"

#include <set>

#include "tests/app/AppTest.h"

namespace {

constexpr char kAsks[] = "Press [Select] to proceed. [Exit] to quit";
constexpr char kSignature[] = "#Nuvid File. Do not modify\n";
using Names = std::set<std::string>;

class MDeleteDialogTest : public AppTest, public IDeleteDialogCB {
protected:
    ~MDeleteDialogTest() override
    {
        if (m_pDialog != nullptr) {
            m_pDialog->Vanish();
        }
    }
    void DeleteDialogDone(bool deleted) override
    {
        m_Done.push_back(deleted);
        m_pDialog = nullptr;
    }
    bool CloseFile(const char* path) override
    {
        m_Released.emplace_back(std::filesystem::path(path).filename());
        EXPECT_TRUE(std::filesystem::exists(path) || m_Released.back().ends_with(".nuvid")) << path;
        return false;
    }
    // Asked, and painted as often as the disk needs.
    void Ask(const std::string& name)
    {
        FileInfo entry;
        entry.path = m_Folder / name;
        m_pDialog = new MDeleteDialog(this, entry);
        m_pDialog->Materialize(CascadeWindow::kPlane3);
        EXPECT_TRUE(Until([] { return IsPainted(kAsks); }));
    }
    // The rows of the list, and nothing else, begin with two blanks.
    std::vector<std::string> Listed()
    {
        std::vector<std::string> rows;
        for (const TestPlatform::Drawing& drawing : TestPlatform::Paint(*m_pDialog)) {
            if (drawing.kind == TestPlatform::Drawing::kText && drawing.text.starts_with("  ")) {
                rows.push_back(drawing.text.substr(2));
            }
        }
        return rows;
    }
    std::string Pressed(unsigned long key)
    {
        return Said([&] {
            const size_t done = m_Done.size();
            TestPlatform::PressKey(key);
            EXPECT_TRUE(key != Remote::kSelect || Until([&] { return m_Done.size() > done; }));
        });
    }
    void WriteFilm()
    {
        m_Folder.WriteEach({"film_1.mpg", "film_2.mpg", "film_3.mpg", "film_1.nfo", "film_x.mpg", "films_1.mpg", "film_1.jpg"});
        m_Folder.Write("film.nuvid", kSignature);
    }

    MDeleteDialog* m_pDialog = nullptr;
    std::vector<bool> m_Done;
    std::vector<std::string> m_Released;
};

TEST_F(MDeleteDialogTest, ARecordingGoesWithAllItsFilesAndNothingElseDoes)
{
    WriteFilm();
    Ask("film_1.mpg");
    const std::vector<std::string> film = {"film_1.mpg", "film_2.mpg", "film_3.mpg", "film.nuvid"};
    EXPECT_EQ(Listed(), film);
    EXPECT_EQ(Listed(), film);    // a repaint adds nothing
    EXPECT_EQ(m_pDialog->GetRect(), (CascadeRect {315, 160, 650, 400}));
    EXPECT_TRUE(m_pDialog->HasFocus());
    std::string expected = "Got 1000b\nAbout to delete\n";
    for (const std::string& name : film) {
        expected += "Deleted " + m_Folder / name + "\n";
    }
    EXPECT_EQ(Pressed(Remote::kSelect), expected);
    EXPECT_EQ(m_Released, film);
    EXPECT_EQ(m_Done, std::vector {true});
    EXPECT_EQ(m_Folder.Names(), (Names {"film_1.nfo", "film_x.mpg", "films_1.mpg", "film_1.jpg"}));
    EXPECT_TRUE(TestPlatform::WindowsOnScreen().empty());
}

TEST_F(MDeleteDialogTest, ExitKeepsEverythingAndOtherKeysAreSwallowed)
{
    WriteFilm();
    const Names before = m_Folder.Names();
    Ask("film_1.mpg");
    EXPECT_EQ(Pressed(Remote::kMenu) + Pressed(Remote::kUp), "Got 10020\nGot Nav 1000c\n");
    EXPECT_EQ(TestPlatform::FocusWindow(), m_pDialog);
    EXPECT_EQ(Pressed(Remote::kExit), "Got 10022\nGot exit\n");
    EXPECT_EQ(m_Done, std::vector {false});
    EXPECT_TRUE(m_Released.empty());
    EXPECT_EQ(m_Folder.Names(), before);
}

TEST_F(MDeleteDialogTest, WhatCannotGoIsToldAndTheRestGoes)
{
    m_Folder.WriteEach({"clip1.mpg", "clip4.mpg"});
    std::filesystem::create_directory(m_Folder / "clip2.mpg");
    std::filesystem::create_directory(m_Folder / "elsewhere");
    std::filesystem::create_directory_symlink(m_Folder / "elsewhere", m_Folder / "clip3.mpg");
    Ask("clip1.mpg");
    const std::string said = Pressed(Remote::kSelect);
    for (const char* const name : {"clip2.mpg", "clip3.mpg", "clip.nuvid"}) {
        EXPECT_NE(said.find("Failed to delete " + m_Folder / name + "\n"), std::string::npos) << said;
    }
    EXPECT_EQ(m_Folder.Names(), (Names {"clip2.mpg", "clip3.mpg", "elsewhere"}));
}

TEST_F(MDeleteDialogTest, OnlyFilesOfThisItemAreListed)
{
    m_Folder.WriteEach({"Show1", "Show2", "film~old.mpg", "film~old.mpg.1x", "film~old.mpg.2x"});
    std::filesystem::create_directory(m_Folder / "Show");
    m_Folder.WriteEach({"clip2.mpg", "clip3.mpg"});
    m_Folder.Write("clip.nuvid", "my own notes\n");
    EXPECT_TRUE(DeletionList::Gather(m_Folder / "Show").files.empty());    // a folder
    EXPECT_TRUE(DeletionList::Gather("http://server/film.mpg").files.empty());
    EXPECT_TRUE(DeletionList::Gather("").files.empty());
    EXPECT_EQ(DeletionList::Gather(m_Folder / "film~old.mpg").files.size(), 2U);    // itself and its side file
    // One that vanished meanwhile: no other file takes its place, and somebody else's notes are no side file.
    EXPECT_EQ(DeletionList::Gather(m_Folder / "clip1.mpg").files.size(), 1U);
    EXPECT_EQ(DeletionList::Gather(m_Folder / "clip2.mpg").files.size(), 2U);
}

TEST_F(MDeleteDialogTest, ALongListIsCutOnTheScreenOnly)
{
    constexpr int kParts = 300;
    for (int i = 1; i <= kParts; ++i) {
        m_Folder.Write("film_" + std::to_string(1000 + i) + ".mpg", "x");
    }
    Ask("film_1001.mpg");
    const std::vector<std::string> rows = Listed();
    ASSERT_GT(rows.size(), 3U);
    const int hidden = kParts + 1 - static_cast<int>(rows.size() - 1);
    EXPECT_EQ(rows.back(), "... and " + std::to_string(hidden) + " more");
    TestPlatform::PressKey(Remote::kDown);
    EXPECT_EQ(Listed().front(), "film_1002.mpg");
    for (int i = 0; i < kParts; ++i) {
        TestPlatform::PressKey(Remote::kDown);
    }
    EXPECT_EQ(Listed().back(), "film.nuvid");
    for (int i = 0; i < kParts; ++i) {
        TestPlatform::PressKey(Remote::kUp);
    }
    EXPECT_EQ(Listed(), rows);
    Pressed(Remote::kSelect);
    EXPECT_TRUE(m_Folder.Names().empty());
}

}    // namespace
