#include <filesystem>

#include "browser/EFileBrowser.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestPlatform.h"

namespace {

class TitleSetLookupTest : public PlatformTest {
protected:
    ~TitleSetLookupTest() override
    {
        for (EFileBrowser::FileInfo* info : m_List) {
            delete info;
        }
    }

    // Sparse: the size alone counts.
    void Make(const std::string& name, unsigned long long size)
    {
        std::filesystem::create_directories(std::filesystem::path(In(name)).parent_path());
        std::filesystem::resize_file(m_Folder.Write(name, ""), size);
    }
    std::string Find(unsigned long long minSize = 0) { return EFileBrowser::GetDVDFeatureVTS(m_Folder.Path().c_str(), minSize, &m_List).Str(); }
    std::string In(const std::string& name) const { return m_Folder / name; }

    TemporaryFolder m_Folder;
    CascadeTemplateArray<EFileBrowser::FileInfo*> m_List;
};

TEST_F(TitleSetLookupTest, TheLargestTitleSetOfAFolderIsItsFeature)
{
    Make("VIDEO_TS/VIDEO_TS.VOB", 9 << 20);
    Make("VIDEO_TS/VTS_01_0.IFO", 5000);
    Make("VIDEO_TS/VTS_01_0.VOB", 1000);
    Make("VIDEO_TS/VTS_01_1.VOB", 1ULL << 30);
    Make("VIDEO_TS/VTS_02_0.VOB", 1000);
    Make("VIDEO_TS/VTS_02_1.VOB", 1ULL << 30);
    Make("VIDEO_TS/VTS_02_2.VOB", 1ULL << 30);
    Make("VIDEO_TS/VTS_02_3.VOB", 1ULL << 30);
    Make("VIDEO_TS/VTS_03_1.VOB", 1ULL << 30);
    EXPECT_EQ(Find(), In("VIDEO_TS/VTS_02_1.VOB"));
    EXPECT_EQ(EFileBrowser::GetDVDFeatureVTS(In("VIDEO_TS/").c_str(), 0, nullptr).Str(), In("VIDEO_TS/VTS_02_1.VOB"));
    EXPECT_TRUE(m_List.IsEmpty());
}

TEST_F(TitleSetLookupTest, SetsAboveTheThresholdAreListed)
{
    Make("VTS_01_1.VOB", 2048);
    Make("VTS_02_1.VOB", 2049);
    Make("VTS_03_1.VOB", 1ULL << 30);
    Make("VTS_03_2.VOB", 1ULL << 29);
    Make("VTS_04_1.VOB", 0);
    EXPECT_EQ(Find(2048), In("VTS_03_1.VOB"));
    ASSERT_EQ(m_List.GetSize(), 2U);
    EXPECT_EQ(m_List[0]->path.Str(), In("VTS_02_1.VOB"));
    EXPECT_EQ(m_List[0]->title.Str(), "VTS_02 (2 MB)");
    EXPECT_EQ(m_List[1]->title.Str(), "VTS_03 (1.50 GB)");
    EXPECT_EQ(m_List[1]->size, 3ULL << 29);
    EXPECT_TRUE(m_List[1]->location.IsEmpty());
}

TEST_F(TitleSetLookupTest, TiesKeepTheFirstAndCaseDoesNotMatter)
{
    Make("vts_01_1.vob", 500);
    Make("vts_01_2.vob", 500);
    Make("vts_02_1.vob", 1000);
    EXPECT_EQ(Find(), In("vts_01_1.vob"));
}

TEST_F(TitleSetLookupTest, WhatIsNoDvdFolderHasNoFeature)
{
    EXPECT_EQ(Find(), "");
    Make("VTS_01_1.VOB", 0);    // empty
    Make("film.mpg", 1000);
    Make("VTS_01_1.mpg", 1000);
    EXPECT_EQ(Find(), "");
    for (const std::string& path : {In("film.mpg"), In("missing"), std::string("http://server/a.mpg"), std::string()}) {
        EXPECT_EQ(EFileBrowser::GetDVDFeatureVTS(path.c_str(), 0, nullptr).Str(), "") << path;
    }
}

}    // namespace
