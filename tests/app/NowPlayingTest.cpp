#include "platform/CascadeNowPlaying.h"
#include "tests/app/AppTest.h"

namespace {

class NowPlayingTest : public AppTest {
protected:
    CascadeNowPlaying Now()
    {
        CascadeNowPlaying now;
        m_pApp->OnNowPlaying(now);
        return now;
    }
    // The disk is asked by another thread.
    CascadeNowPlaying NowOfSize(uint64_t bytes)
    {
        EXPECT_TRUE(Until([&] { return Now().sizeBytes == bytes; }));
        return Now();
    }
};

TEST_F(NowPlayingTest, TellsItemPlaceAndMarks)
{
    const std::string first = MakeFile("a.mpg", 100000);
    Start({first, MakeFile("b.mpg")});
    EXPECT_EQ(CascadeNowPlaying::State::kStopped, Now().state);
    EXPECT_TRUE(Now().title.IsEmpty());
    EXPECT_EQ(2, Now().queueCount);
    TestPlatform::Tick(5);
    TestDecoder::Pull(25000);
    EXPECT_EQ(TestPlatform::Command("Nuvid bookmark add"), "OK");
    TestPlatform::Tick(5);
    const CascadeNowPlaying now = NowOfSize(100000);
    EXPECT_EQ(CascadeNowPlaying::State::kPlaying, now.state);
    EXPECT_STREQ("a.mpg", now.title);
    EXPECT_EQ(first, now.path.Str());
    EXPECT_EQ(1, now.queueIndex);
    EXPECT_EQ(100000U, now.sizeBytes);
    EXPECT_EQ(25000U, now.positionBytes);
    ASSERT_EQ(1U, now.bookmarks.size());    // set since it was asked last
    EXPECT_GE(now.durationMs, now.positionMs);
}

TEST_F(NowPlayingTest, AGrowingRecordingIsMeasuredAgain)
{
    const std::string path = MakeFile("a.mpg", 20000);
    Play({path});
    EXPECT_EQ(20000U, NowOfSize(20000).sizeBytes);
    std::filesystem::resize_file(path, 400000);
    TestDecoder::Pull(20000);
    TestDecoder::Pull(20000);
    EXPECT_EQ(400000U, NowOfSize(400000).sizeBytes);
}

}    // namespace
