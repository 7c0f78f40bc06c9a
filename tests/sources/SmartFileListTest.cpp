#include "sources/SmartFileList.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <thread>

#include "tests/support/TemporaryFolder.h"

namespace {

class SmartFileListTest : public ::testing::Test {
protected:
    void Fill(std::initializer_list<const char*> names)
    {
        size_t size = 0;
        for (const char* name : names) {
            m_Folder.Write(name, std::string(size += 10, 'x'));
        }
    }
    SmartFileList ListOn(const char* name)
    {
        SmartFileList list;
        list.Create((m_Folder / name).c_str());
        return list;
    }
    // The names that steps forward give, "-" at the end.
    static std::string Walk(SmartFileList& list)
    {
        std::string names;
        while (list.GetNextFile() != nullptr) {
            names += list.GetCurrentName().Str() + " ";
        }
        return names + "-";
    }
    TemporaryFolder m_Folder;
};

TEST_F(SmartFileListTest, WalksInByteOrderBothWays)
{
    Fill({"clip1.mpg", "clip2.mpg", "clip10.mpg", "clip.mpg", "other.mpg"});
    SmartFileList list = ListOn("clip.mpg");
    EXPECT_EQ(Walk(list), "clip1.mpg clip10.mpg clip2.mpg -");
    EXPECT_EQ(list.GetCurrent().Str(), m_Folder / "clip2.mpg");    // stays on the last
    EXPECT_STREQ(list.GetPrevFile(), (m_Folder / "clip10.mpg").c_str());
    list.GetPrevFile();
    list.GetPrevFile();
    EXPECT_EQ(list.GetPrevFile(), nullptr);
    EXPECT_STREQ(list.GetCurrentName(), "clip.mpg");
}

TEST_F(SmartFileListTest, TakesMenuFileOnlyWhenOpenedOnIt)
{
    Fill({"VTS_01_0.VOB", "VTS_01_1.VOB", "VTS_01_2.VOB", "VTS_02_1.VOB", "VIDEO_TS.VOB"});
    SmartFileList title = ListOn("VTS_01_1.VOB");
    EXPECT_EQ(Walk(title), "VTS_01_2.VOB -");
    title = ListOn("VTS_01_1.VOB");
    EXPECT_EQ(title.GetPrevFile(), nullptr);
    SmartFileList menu = ListOn("VTS_01_0.VOB");
    EXPECT_EQ(Walk(menu), "VTS_01_1.VOB VTS_01_2.VOB -");
}

TEST_F(SmartFileListTest, SeesTheFolderAsItIs)
{
    Fill({"a_1.mpg", "a_2.mpg", "a_3.mpg"});
    SmartFileList list = ListOn("a_1.mpg");
    std::filesystem::remove(m_Folder / "a_1.mpg");
    EXPECT_EQ(list.GetPrevFile(), nullptr);
    EXPECT_STREQ(list.GetNextFile(), (m_Folder / "a_3.mpg").c_str());    // on purpose the second member
    m_Folder.Write("a_4.mpg", "later");
    EXPECT_STREQ(list.GetNextFile(), (m_Folder / "a_4.mpg").c_str());
}

TEST_F(SmartFileListTest, SumsSizesThroughTheCurrentFile)
{
    Fill({"a1.x", "clip1.mpg", "clip2.mpg", "clip3.mpg"});    // 10, 20, 30, 40 bytes
    SmartFileList list = ListOn("clip2.mpg");
    long long through = -1;
    EXPECT_EQ(list.GetTotalFileSize(through), 90U);
    EXPECT_EQ(through, 50);
    list.GetNextFile();
    EXPECT_EQ(list.GetTotalFileSize(through), 90U);
    EXPECT_EQ(through, 90);
    EXPECT_EQ(list.GetCurrentFileSize(), 40U);

    through = -7;
    std::filesystem::remove(m_Folder / "clip3.mpg");
    EXPECT_EQ(list.GetTotalFileSize(through), 50U);
    EXPECT_EQ(through, -7);    // the current file is no member any more
    testing::internal::CaptureStdout();
    EXPECT_EQ(list.GetCurrentFileSize(), 0U);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "stat of " + m_Folder / "clip3.mpg" + " failed!\n");
}

TEST_F(SmartFileListTest, TellsWhyThereIsNoFile)
{
    SmartFileList gone;
    gone.Create("/does/not/exist/clip1.mpg");
    SmartFileList alone = ListOn("clip1.mpg");
    SmartFileList url;
    url.Create("http://server/media/a1.mpg");
    EXPECT_STREQ(url.GetCurrentName(), "a1.mpg");
    testing::internal::CaptureStdout();
    EXPECT_EQ(gone.GetNextFile(), nullptr);
    EXPECT_EQ(url.GetPrevFile(), nullptr);
    EXPECT_EQ(alone.GetNextFile(), nullptr);
    EXPECT_EQ(alone.GetPrevFile(), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
        "Out of memory in scandir()\nOut of memory in scandir()\nGetNextFile: No matches!\nGetPrevFile: No matches!\n");
}

TEST_F(SmartFileListTest, TwoThreadsScanAtOnce)
{
    Fill({"a1x_1.mpg", "a1x_2.mpg", "b_1.VOB", "b_2.VOB"});
    std::string wrong[2];
    const auto walk = [this, &wrong](int which, const char* first, const char* expected) {
        for (int i = 0; i < 200; ++i) {
            SmartFileList list = ListOn(first);
            const std::string names = Walk(list);
            if (names != expected) {
                wrong[which] = names;
            }
        }
    };
    testing::internal::CaptureStdout();
    std::thread other(walk, 0, "a1x_1.mpg", "a1x_2.mpg -");
    walk(1, "b_1.VOB", "b_2.VOB -");
    other.join();
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(wrong[0] + wrong[1], "");
}

}    // namespace
