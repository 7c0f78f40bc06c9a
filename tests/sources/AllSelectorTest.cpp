#include "sources/AllSelector.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <regex.h>

#include "sources/FileSearch.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using Names = std::vector<std::string>;

class AllSelectorTest : public ::testing::Test {
protected:
    void Make(const Names& names, size_t size = 10) const
    {
        for (const std::string& name : names) {
            m_Folder.Write(name, std::string(size, 'x'));
        }
    }
    Names Scan(AllSelector selector) const
    {
        const CascadeDirScanner scanner(m_Folder.Path().c_str(), &selector);
        Names found;
        for (size_t i = 0; i < scanner.GetNumEntries(); ++i) {
            found.push_back(scanner.GetEntryName(i).Str());
        }
        return found;
    }
    TemporaryFolder m_Folder;
};

constexpr auto kFiles = AllSelector::kFiles;

TEST_F(AllSelectorTest, TellsFilesFromFolders)
{
    Make({"a.mpg"});
    std::filesystem::create_directory(m_Folder / "b.mpg");
    std::filesystem::create_directory(m_Folder / "c.Nuvidlist");
    std::filesystem::create_symlink("b.mpg", m_Folder / "d");
    std::filesystem::create_symlink("nowhere", m_Folder / "e.mpg");
    EXPECT_EQ(Scan(AllSelector(kFiles, 0, false, nullptr)), (Names {"a.mpg", "e.mpg"}));
    EXPECT_EQ(Scan(AllSelector(AllSelector::kDirectories, 0, false, nullptr)), (Names {"b.mpg", "c.Nuvidlist", "d"}));
    EXPECT_EQ(Scan(AllSelector(AllSelector::kFilesAndDirectories, 1000, true, "*.x")), (Names {"b.mpg", "c.Nuvidlist", "d"}));
    EXPECT_EQ(Scan(AllSelector(static_cast<CascadeFSObject::Selector::SelectorTypeFilter>(4), 0, false, nullptr)), Names {});
}

TEST_F(AllSelectorTest, HidesSystemFilesAndKeepsPlaylists)
{
    Make({"Thumbs.db", "my thumbs.db.bak", "folder.cfg", "FOLDER.CFG", "folder.cfg.txt", "list.Nuvidlist", "LIST2.NUVIDLIST", "a.mpg", "a.nuvid"}, 1);
    EXPECT_EQ(Scan(AllSelector(kFiles, 0, false, nullptr)), (Names {"LIST2.NUVIDLIST", "a.mpg", "a.nuvid", "folder.cfg.txt", "list.Nuvidlist"}));
    EXPECT_EQ(Scan(AllSelector(kFiles, 1000, true, "*.vob")), (Names {"LIST2.NUVIDLIST", "list.Nuvidlist"}));
}

TEST_F(AllSelectorTest, MatchesTheLowerCasedNameWithEachPattern)
{
    Make({"MOVIE.MPG", "b.vob", "c.txt", "Äb.mpg"});
    EXPECT_EQ(Scan(AllSelector(kFiles, 0, false, "*.mpg;*.vob")), (Names {"MOVIE.MPG", "b.vob", "Äb.mpg"}));
    EXPECT_EQ(Scan(AllSelector(kFiles, 0, false, "*.MPG")), Names {}) << "patterns are not lower-cased";
    EXPECT_EQ(Scan(AllSelector(kFiles, 0, false, "?.[tv]*")), (Names {"b.vob", "c.txt"}));
    EXPECT_EQ(Scan(AllSelector(kFiles, 0, false, "")), (Names {"MOVIE.MPG", "b.vob", "c.txt", "Äb.mpg"}));
    EXPECT_EQ(Scan(AllSelector(kFiles, 0, false, ";")), Names {}) << "a list of no patterns matches nothing";
}

TEST_F(AllSelectorTest, ComparesSizesAndNeverRejectsHugeFiles)
{
    Make({"small.mpg"}, 999);
    Make({"enough.mpg"}, 1000);
    Make({"huge.mpg"});
    std::filesystem::resize_file(m_Folder / "huge.mpg", 5ULL << 30);    // sparse
    std::filesystem::create_symlink("nowhere", m_Folder / "gone.mpg");
    EXPECT_EQ(Scan(AllSelector(kFiles, 1000, false, nullptr)), (Names {"enough.mpg", "gone.mpg", "huge.mpg"}));
    EXPECT_EQ(Scan(AllSelector(kFiles, static_cast<unsigned long>(6ULL << 30), false, nullptr)), (Names {"gone.mpg", "huge.mpg"}));
}

TEST_F(AllSelectorTest, FoldsASequenceIntoItsFirstMember)
{
    Make({"VTS_01_1.VOB", "VTS_01_2.vob", "VTS_02_1.VOB", "a1.mpg", "a2.mpg", "clip.mpg", "clip1.avi", "clip1.mpg", "clip1.nuvid", "clip2.mpg",
        "clip_3.mpg", "other 1.mpg", "show~1.ts", "show~2.ts"});
    // clip1.avi comes between the members of clip and begins its own.
    EXPECT_EQ(Scan(AllSelector(kFiles, 0, true, nullptr)),
        (Names {"VTS_01_1.VOB", "VTS_02_1.VOB", "a1.mpg", "a2.mpg", "clip.mpg", "clip1.avi", "clip1.mpg", "other 1.mpg", "show~1.ts"}));
    // The same entry again is no later member.
    AllSelector selector(kFiles, 0, true, nullptr);
    CascadeFSObject first((m_Folder / "VTS_01_1.VOB").c_str());
    CascadeFSObject second((m_Folder / "VTS_01_2.vob").c_str());
    EXPECT_TRUE(selector.Match(first));
    EXPECT_FALSE(selector.Match(second));
    EXPECT_TRUE(selector.Match(first));
    // A rejected file does not become the last one.
    m_Folder.Write("clip0.mpg", "");
    EXPECT_EQ(Scan(AllSelector(kFiles, 5, true, "clip*.mpg")), (Names {"clip.mpg"}));
}

// Both cut names: what the browser lists as one entry must be what plays as one sequence.
TEST_F(AllSelectorTest, CutsNamesAsTheSequenceDoes)
{
    const char* const kStems[]
        = {"clip12", "clip_12", "clip.12", "clip", "a1", "12", "1", "a", "ab_", "_7", "__7", "x_1_2", "é1", "a.b.3", "00a", "n-1"};
    for (const char* stem : kStems) {
        FileSearch search;
        search.Create((m_Folder / (std::string(stem) + ".mpg")).c_str());
        const std::string sibling = search.GetBase().Str() + ".mpg";
        CascadeFSObject given((m_Folder / (std::string(stem) + ".mpg")).c_str());
        CascadeFSObject base((m_Folder / sibling).c_str());
        AllSelector selector(kFiles, 0, true, nullptr);
        EXPECT_TRUE(selector.Match(given));
        FileSearch again;
        again.Create(base.GetPath());
        const bool sameSequence = again.GetBase() == search.GetBase() && sibling != std::string(stem) + ".mpg";
        EXPECT_EQ(selector.Match(base), !sameSequence) << stem;
    }
}

TEST(AllSelectorPattern, BecomesAnEqualExpression)
{
    EXPECT_STREQ(AllSelector::PatternToRegex(nullptr), "");
    regex_t compiled;
    ASSERT_EQ(regcomp(&compiled, AllSelector::PatternToRegex("+()^$.{}[]|\\"), REG_EXTENDED), 0);
    EXPECT_EQ(regexec(&compiled, "x+()^$.{}[]|\\x", 0, nullptr, 0), 0);
    regfree(&compiled);
}

}    // namespace
