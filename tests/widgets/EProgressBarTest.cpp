#include "widgets/EProgressBar.h"

#include <filesystem>

#include "playback/MDecoder.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestPlatform.h"

namespace {

constexpr uint64_t kGiB = 1ULL << 30;

TEST(ProgressMarksTest, FileEndsStandInForChapters)
{
    const auto marks = ProgressMarks::OfFiles({{"a1.mpg", kGiB}, {"a2.mpg", kGiB}}, {}, {{"A2.MPG", kGiB / 2}, {"other.mpg", 5}});
    EXPECT_EQ(marks.Chapters(), (std::vector<double> {50.0, 100.0}));
    EXPECT_EQ(marks.Bookmarks(), (std::vector<double> {75.0}));
    EXPECT_EQ(marks.PositionInWhole("a2.mpg", 7), kGiB + 7);
    EXPECT_EQ(marks.PositionInWhole("a2.mpg", 9 * kGiB), 2 * kGiB);
    EXPECT_EQ(marks.PositionInWhole("gone.mpg", 7), 7U);

    const auto chapters = ProgressMarks::OfFiles({{"a1.mpg", kGiB}, {"a2.mpg", kGiB}}, {{"a1.mpg", kGiB / 2}}, {});
    EXPECT_EQ(chapters.Chapters(), (std::vector<double> {25.0}));
}

TEST(ProgressMarksTest, AStreamsMarksCountWhateverFileTheyName)
{
    const auto marks = ProgressMarks::OfStream(4 * kGiB, {{"x", kGiB}}, {{"y", 3 * kGiB}});
    EXPECT_EQ(marks.Chapters(), (std::vector<double> {25.0}));
    EXPECT_EQ(marks.Bookmarks(), (std::vector<double> {75.0}));
    EXPECT_EQ(marks.PositionInWhole("z", kGiB), kGiB);

    // Of less than a kilobyte nothing can be said.
    const auto nothing = ProgressMarks::OfStream(1000, {{"x", 500}}, {});
    EXPECT_TRUE(nothing.Chapters().empty());
    EXPECT_TRUE(ProgressMarks::OfFiles({{"a", 0}}, {}, {{"a", 0}}).Bookmarks().empty());
}

class EProgressBarTest : public PlatformTest {
protected:
    EProgressBarTest()
    {
        for (const char* name : {"rec1.mpg", "rec2.mpg"}) {
            std::filesystem::resize_file(m_Folder.Write(name, ""), 1 << 20);
        }
    }
    void Open() { ASSERT_TRUE(m_Decoder.DoTheOpen((m_Folder / "rec1.mpg").c_str())); }

    TemporaryFolder m_Folder;
    MDecoder m_Decoder;
    EProgressBar m_Bar;
};

TEST_F(EProgressBarTest, TheBandStaysForItsTimeWhichASecondDisplayBeginsAnew)
{
    Open();
    m_Bar.Display(&m_Decoder, 2500);
    EXPECT_EQ(m_Bar.GetRect(), (CascadeRect {0, 620, 1280, 100}));
    const int redraws = TestPlatform::RedrawCount(m_Bar);
    TestPlatform::Tick(24);
    EXPECT_TRUE(m_Bar.IsMaterialized());
    EXPECT_NEAR(TestPlatform::RedrawCount(m_Bar) - redraws, 5, 1);    // the counter is shared by all bands
    m_Bar.Display(&m_Decoder, 1000);
    EXPECT_EQ(TestPlatform::RunningTimers(), 1);
    TestPlatform::Tick(9);
    EXPECT_TRUE(m_Bar.IsMaterialized());
    TestPlatform::Tick();
    EXPECT_FALSE(m_Bar.IsMaterialized());
    EXPECT_EQ(TestPlatform::RunningTimers(), 0);

    m_Bar.Display(&m_Decoder, 150);    // never comes to exactly zero
    TestPlatform::Tick(10);
    EXPECT_TRUE(m_Bar.IsMaterialized());
}

TEST_F(EProgressBarTest, TheBandTellsShareTimesAndMarks)
{
    Open();
    tagBookmark mark {"rec2.mpg", 1 << 19};
    ASSERT_TRUE(m_Decoder.GoToBookmark(&mark));
    m_Decoder.SetBookmark();
    m_Decoder.SetDuration(600);
    m_Bar.Display(&m_Decoder, 2500);
    auto drawings = TestPlatform::Paint(m_Bar);
    EXPECT_NE(TestPlatform::FindText(drawings, "75%"), nullptr);
    EXPECT_NE(TestPlatform::FindText(drawings, "7:30 / 10:00"), nullptr);
    int ticks = 0;
    for (const auto& drawing : drawings) {
        ticks += drawing.kind == TestPlatform::Drawing::kRect ? 1 : 0;
    }
    EXPECT_EQ(ticks, 2);    // where one file ends and the next begins, and one bookmark; the whole's end needs none

    // Painted once more after the file was closed under it.
    m_Decoder.DoTheClose();
    m_Decoder.SetDuration(0);
    drawings = TestPlatform::Paint(m_Bar);
    EXPECT_NE(TestPlatform::FindText(drawings, "0:00"), nullptr);
}

TEST_F(EProgressBarTest, AnyNumberOfMarksIsPaintedInNoTime)
{
    std::string text = "#Nuvid File.\nb rec2.mpg@999999999\n";
    for (int i = 0; i < 10000; ++i) {
        text += "b rec1.mpg@" + std::to_string(i * 100) + "\nc rec2.mpg@" + std::to_string(i * 100) + "\n";
    }
    m_Folder.Write("rec.nuvid", text);
    Open();
    m_Bar.Display(&m_Decoder, 2500);
    EXPECT_LT(TestPlatform::Paint(m_Bar).size(), 1160U * 4);    // the bar's pixels, three shapes a bookmark
}

}    // namespace
