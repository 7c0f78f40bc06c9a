#include "sources/FileList.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/TemporaryFolder.h"

namespace {

class FileListTest : public ::testing::Test {
protected:
    FileListTest()
    {
        const size_t sizes[] = {0, 100, 0, 50, 1};
        for (int i = 1; i <= 5; ++i) {
            m_Folder.Write("VTS_01_" + std::to_string(i) + ".VOB", std::string(sizes[i - 1], 'x'));
        }
        std::filesystem::create_symlink("nowhere", m_Folder / "VTS_01_6.VOB");
        Create("");
    }
    void Create(const char* start) { m_List.Create((m_Folder / "VTS_01_1.VOB").c_str(), start); }
    // "name+offset", or "none" with both outputs untouched.
    std::string At(unsigned long long offset)
    {
        CascadeString name("untouched");
        unsigned long long inFile = 77;
        if (!m_List.GetFileAt(offset, &name, &inFile)) {
            return name == "untouched" && inFile == 77 ? "none" : "none, but touched";
        }
        return name.Str() + "+" + std::to_string(inFile);
    }
    TemporaryFolder m_Folder;
    FileList m_List;
};

TEST_F(FileListTest, MapsOffsetsAcrossEmptyParts)
{
    EXPECT_EQ(m_List.GetEntries().size(), 6U);    // one of them a link to nowhere, which counts 0 bytes
    EXPECT_EQ(m_List.GetTotalSize(), 151U);
    EXPECT_EQ(At(0), "VTS_01_2.VOB+0");
    EXPECT_EQ(At(99), "VTS_01_2.VOB+99");
    EXPECT_EQ(At(100), "VTS_01_4.VOB+0");
    EXPECT_EQ(At(149), "VTS_01_4.VOB+49");
    EXPECT_EQ(At(150), "VTS_01_5.VOB+0");
    EXPECT_EQ(At(151), "none");
    EXPECT_EQ(At(~0ULL), "none");
}

TEST_F(FileListTest, BeginsWithTheNamedMember)
{
    Create("VTS_01_4.VOB");
    EXPECT_EQ(m_List.GetTotalSize(), 51U);
    EXPECT_EQ(At(0), "VTS_01_4.VOB+0");
    Create("VTS_01_9.VOB");
    EXPECT_TRUE(m_List.GetEntries().empty());
    EXPECT_EQ(m_List.GetTotalSize(), 0U);
    EXPECT_EQ(At(0), "none");
}

TEST_F(FileListTest, EmptiesItselfWhenNothingIsFound)
{
    testing::internal::CaptureStdout();
    m_List.Create("/does/not/exist/a.mpg", nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "path, base, ext /does/not/exist, a, mpg\nOut of memory in scandir()\n");
    EXPECT_EQ(m_List.GetTotalSize(), 0U);
    testing::internal::CaptureStdout();
    m_List.Create((m_Folder / "b.mpg").c_str(), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "path, base, ext " + m_Folder.Path() + ", b, mpg\nCreate: No matches!\n");
    EXPECT_EQ(At(0), "none");
}

}    // namespace
