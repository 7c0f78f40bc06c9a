// The small text files beside recordings: the folder's settings and information files.
#include <gtest/gtest.h>

#include "browser/EInfoFile.h"
#include "browser/FolderConfig.h"
#include "browser/TextBytes.h"
#include "tests/support/TemporaryFolder.h"

#include <filesystem>
#include <fstream>
#include <iterator>

using namespace std::string_literals;

TEST(TextBytes, DecodesWhateverWroteIt)
{
    EXPECT_STREQ("Gr\xC3\xBC\xC3\x9F""e", TextBytes::Decode("Gr\xFC\xDF""e"));
    EXPECT_STREQ("Gr\xC3\xBC", TextBytes::Decode("\xEF\xBB\xBFGr\xC3\xBC"));
    EXPECT_STREQ("a\xF0\x9F\x8E\xAC", TextBytes::Decode("\xFF\xFE""a\0\x3C\xD8\xAC\xDF"s));
    EXPECT_STREQ("\xC3\xBC\xEF\xBF\xBD", TextBytes::Decode("\xFE\xFF\0\xFC\xD8\x3C"s));
    EXPECT_STREQ("one\ntwo", TextBytes::Decode("one\r\ntwo\0three"s));
    // A character that the end cuts does not make the whole text another encoding.
    EXPECT_STREQ("\xC3\xBC\xE2\x82", TextBytes::Decode("\xC3\xBC\xE2\x82"));
    EXPECT_STREQ("\xC3\xA0\xC2\x80\xC2\x80", TextBytes::Decode("\xE0\x80\x80"));    // overlong, so no UTF-8
}

TEST(TextBytes, ReadsNoMoreThanAViewerCanRead)
{
    const TemporaryFolder folder;
    folder.Write("huge.txt", std::string(TextBytes::kMostBytes + 100, 'x'));
    EXPECT_EQ(TextBytes::kMostBytes, TextBytes::ReadTextFile((folder / "huge.txt").c_str()).GetLength());
    EXPECT_TRUE(TextBytes::ReadTextFile(folder.Path().c_str()).IsEmpty());
    EXPECT_TRUE(TextBytes::ReadTextFile((folder / "missing").c_str()).IsEmpty());
}

TEST(FolderConfig, LaterLinesOverrideEarlierOnes)
{
    const FolderConfig config = FolderConfig::Parse("password=One=1 \nPATTERN=*.MPG;*.Vob\nfilter=size\nfilter=all\nicons=small\nicons=smallnosize\nnonsense\n");
    EXPECT_STREQ("One=1 ", config.password);
    EXPECT_STREQ("*.mpg;*.vob", config.pattern);
    EXPECT_EQ(0, config.filter);
    EXPECT_EQ(1, config.iconMode);
}

TEST(FolderConfig, OnlyWholeLinesChoose)
{
    const FolderConfig config = FolderConfig::Parse("icons=small \n filter=all\nfilter=sequences\npassword\n");
    EXPECT_EQ(FolderConfig::kNotSaid, config.iconMode);
    EXPECT_EQ(FolderConfig::kNotSaid, config.filter);
    EXPECT_TRUE(config.password.IsEmpty());
    EXPECT_EQ(2, FolderConfig::Parse("icons=large").iconMode);
    EXPECT_EQ(3, FolderConfig::Parse("Icons=ExtraLarge").iconMode);
    EXPECT_EQ(1, FolderConfig::Parse("filter=sequence").filter);
    EXPECT_EQ(2, FolderConfig::Parse("filter=sequencesize").filter);
}

// The example of the page about files, by the language of its block.
std::string DocumentedExample(const std::string& language)
{
    std::ifstream file(NUVID_SOURCE "/docs/formats.md");
    const std::string page(std::istreambuf_iterator<char>(file), {});
    const size_t start = page.find("```" + language + "\n");
    EXPECT_NE(std::string::npos, start) << language;
    const size_t from = page.find('\n', start) + 1;
    return page.substr(from, page.find("```", from) - from);
}

TEST(TextFiles, TheDocumentedExamplesAreUnderstood)
{
    const FolderConfig config = FolderConfig::Parse(DocumentedExample("foldercfg"));
    EXPECT_STREQ("open sesame", config.password);
    EXPECT_STREQ("*.mpg;*.vob", config.pattern);
    EXPECT_EQ(2, config.iconMode);
    EXPECT_EQ(2, config.filter);
    EInfoFile info;
    info.ParseText(CascadeString(DocumentedExample("infofile")));
    EXPECT_STREQ("The Long River", info.title);
    for (const CascadeString* field : {&info.description, &info.genre, &info.rating, &info.director, &info.writer, &info.year, &info.actors}) {
        EXPECT_FALSE(field->IsEmpty());
    }
}

class InfoFileTest : public ::testing::Test {
protected:
    EInfoFile Parse(const std::string& name) const { return EInfoFile((m_Folder / name).c_str()); }
    CascadeString FoundFor(const std::string& name)
    {
        const CascadeString found = EInfoFile::GetAssociatedInfoFile((m_Folder / name).c_str(), m_Title);
        return found.IsEmpty() ? found : found.From(m_Folder.Path().size() + 1);
    }
    TemporaryFolder m_Folder;
    CascadeString m_Title;
};

TEST_F(InfoFileTest, FindsTheFirstOfItsNames)
{
    m_Folder.WriteEach({"film.mpg", "film.txt", "film.my", "other_1.VOB", "other_2.VOB", "other.my", "bare.ts"}, "x=1");
    EXPECT_STREQ("film.txt", FoundFor("film.mpg"));
    EXPECT_STREQ("film", m_Title);
    m_Folder.Write("film.nfo", "");
    EXPECT_STREQ("film.nfo", FoundFor("film.mpg"));
    EXPECT_STREQ("other.my", FoundFor("other_2.VOB"));
    EXPECT_STREQ("other_2", m_Title);
    EXPECT_STREQ("", FoundFor("bare.ts"));
    EXPECT_STREQ("bare", m_Title);

    // A recording without notes shows those of its folder.
    for (const char* name : {"folder.my", "description.txt", "info.txt", "folder.nfo"}) {
        m_Folder.Write(name, "");
        EXPECT_STREQ(name, FoundFor("bare.ts"));
        EXPECT_STREQ(name, FoundFor(""));
        EXPECT_EQ(std::filesystem::path(m_Folder.Path()).filename(), m_Title.Str());
    }
    EXPECT_TRUE(Parse("bare.ts").IsOfParentFolder());
    EXPECT_FALSE(Parse("film.mpg").IsOfParentFolder());
}

TEST_F(InfoFileTest, TakesLinesWithOneEqualsSign)
{
    m_Folder.Write("a.mpg", "");
    m_Folder.Write("a.nfo",
        "Titles=First\r\nTITLE=Second \r\nsummary=a=b\r\ntvoverview=What happens\r\nTVDirector=Someone\r\nYearly=2003\r\ngenre=\r\nwriter\r\n"
        "tvparentalratings=PG\r\nactors=A, B\r\nunknown=1\r\n");
    const EInfoFile info = Parse("a.mpg");
    EXPECT_STREQ("Second ", info.title);
    EXPECT_STREQ("What happens", info.description);
    EXPECT_STREQ("Someone", info.director);
    EXPECT_STREQ("2003", info.year);
    EXPECT_STREQ("PG", info.rating);
    EXPECT_STREQ("A, B", info.actors);
    EXPECT_TRUE(info.genre.IsEmpty());
    EXPECT_TRUE(info.writer.IsEmpty());
    EXPECT_EQ(m_Folder / "a.mpg", info.file.Str());
}

TEST_F(InfoFileTest, ProseIsADescription)
{
    m_Folder.Write("a.mpg", "");
    m_Folder.Write("a.txt", "A quiet film.\r\nIn two lines, with x=y=z.\n");
    const EInfoFile info = Parse("a.mpg");
    EXPECT_STREQ("A quiet film.\nIn two lines, with x=y=z.\n", info.description);
    EXPECT_STREQ("a", info.title);
    m_Folder.Write("a.nfo", "");
    EXPECT_STREQ("", Parse("a.mpg").description);
}
