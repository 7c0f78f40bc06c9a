#include "playback/MHWDecoder.h"

#include <thread>

#include "playback/PlaybackMessages.h"
#include "tests/playback/PlaybackFixture.h"

namespace {

constexpr unsigned long kBuffer = 1000;

class FeedTest : public PlaybackTest {
protected:
    FeedTest()
        : m_Feeder(std::make_unique<MHWDecoder>())
    {
    }
    void Start(const std::string& path, uint32_t bufferSize = kBuffer)
    {
        m_Feeder->SetStream(OpenStream(path.c_str()));
        m_Feeder->SetFiles(path.c_str());
        m_Feeder->PrepareStart();
        m_Feeder->m_bReopened = false;
        ASSERT_TRUE(m_Feeder->NewOpen(4, bufferSize, 5, 1, 3, 1, true, true, true, true, g_nAudioSyncThreshold));
        ASSERT_TRUE(m_Feeder->ResumeStreaming(true));
    }
    std::string WriteParts(const std::vector<size_t>& sizes)
    {
        std::string all;
        for (size_t i = 0; i < sizes.size(); ++i) {
            const std::string bytes = Pattern(sizes[i], static_cast<unsigned>(i + 1));
            m_Folder.Write("clip" + std::to_string(i + 1) + ".mpg", bytes);
            all += bytes;
        }
        return all;
    }
    std::string First() { return m_Folder / "clip1.mpg"; }

    std::unique_ptr<MHWDecoder> m_Feeder;
};

TEST_F(FeedTest, WalksFromFileToFileWithoutAGap)
{
    // Joins inside a fill, on its first and last byte, and empty parts where a fill begins.
    const std::vector<size_t> kPartLists[] = {{2500, 2300}, {1000, 1000, 1}, {999, 1002}, {1001, 999}, {1000, 0, 1500}, {0, 1500, 1700}, {700}};
    for (const std::vector<size_t>& sizes : kPartLists) {
        for (const auto& name : m_Folder.Names()) {
            std::filesystem::remove(m_Folder / name);
        }
        const std::string all = WriteParts(sizes);
        m_Feeder->m_bEOF = false;
        Start(First());
        EXPECT_TRUE(TestDecoder::PullBytes(all.size() + 1) == all) << sizes.size() << " parts, first " << sizes[0];
        EXPECT_TRUE(m_Feeder->m_bEOF);
        EXPECT_EQ(m_Feeder->GetPlace().files.GetCurrent().Str(), m_Folder / ("clip" + std::to_string(sizes.size()) + ".mpg"));
    }
}

TEST_F(FeedTest, SecondChangeInOneFillLandsTooFarOnButInside)
{
    const std::string all = WriteParts({400, 100, 3000});
    Start(First());
    const std::string fill = TestDecoder::Pull();
    ASSERT_EQ(fill.size(), kBuffer);
    EXPECT_EQ(fill.substr(0, 500), all.substr(0, 500));
    EXPECT_EQ(fill.substr(900), all.substr(500, 100));    // 400 + 500 instead of 500; the rest is read away
    EXPECT_EQ(m_Feeder->GetPosition(), 500U);
    EXPECT_TRUE(TestDecoder::Pull() == all.substr(1000, kBuffer));
}

TEST_F(FeedTest, EndIsToldOnceWhenItsBufferComesBack)
{
    WriteParts({2500});
    Start(First());
    g_bVideoRunning = true;
    TestDecoder::PullBytes(2500);    // buffers 0 to 2
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(TestDecoder::Pull(), "");    // 3, 0, 1
    }
    EXPECT_TRUE(TestPlatform::Messages().empty());
    EXPECT_TRUE(g_bVideoRunning);
    for (int i = 0; i < 9; ++i) {
        EXPECT_EQ(TestDecoder::Pull(), "");
    }
    ASSERT_EQ(TestPlatform::Messages().size(), 1U);
    EXPECT_EQ(TestPlatform::Messages()[0].id, kMessageEndOfStream);
    EXPECT_EQ(TestPlatform::Messages()[0].address, m_App.GetWormholeAddress());
    EXPECT_FALSE(g_bVideoRunning);
}

TEST_F(FeedTest, MessagesThatCannotBePostedAreTold)
{
    WriteParts({500});
    Start(First());
    TestPlatform::RefuseMessages(true);
    TestDecoder::Pull();
    testing::internal::CaptureStdout();
    for (int i = 0; i < 8; ++i) {
        TestDecoder::Pull();
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), std::string("Failed to post Wormhole message. URL: ") + m_App.GetWormholeAddress() + "\n");
    TestPlatform::RefuseMessages(false);
    TestDecoder::Fail();
    EXPECT_EQ(TestPlatform::Messages().at(0).id, kMessageDecoderError);
}

TEST_F(FeedTest, AfterAReopenOneBufferOnlyUntilItComesBack)
{
    WriteParts({9000});
    Start(First());
    m_Feeder->m_bReopened = true;
    EXPECT_EQ(TestDecoder::Pull().size(), kBuffer);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(TestDecoder::Pull(), "");
    }
    EXPECT_EQ(TestDecoder::PullBytes(5000).size(), 5000U);
    EXPECT_EQ(m_Feeder->GetPosition(), 6000U);

    // Closed before the ring came round: the new ring has other buffers.
    m_Feeder->m_bReopened = true;
    TestDecoder::Pull();
    const std::vector<std::vector<unsigned char>> elsewhere(8, std::vector<unsigned char>(kBuffer));
    m_Feeder->PrepareStart();
    std::vector<unsigned char> other(kBuffer);
    EXPECT_EQ(m_Feeder->OnFillBuffer(other.data(), kBuffer), kBuffer);
}

TEST_F(FeedTest, StuffsWhileTheUserInterfaceStarves)
{
    const std::string all = WriteParts({5000});
    Start(First());
    TestPlatform::Advance(3000);
    EXPECT_TRUE(TestDecoder::Pull() == all.substr(0, kBuffer));
    TestPlatform::Advance(1);
    EXPECT_EQ(TestDecoder::Pull(), std::string(kBuffer, '\xFF'));
    EXPECT_EQ(m_Feeder->GetPosition(), kBuffer);
    g_LastUITick_ms = CascadeTime::GetUptimeMilliseconds() + 5;    // in the future
    EXPECT_TRUE(TestDecoder::Pull() == all.substr(kBuffer, kBuffer));
    EXPECT_EQ(g_LastUITick_ms, 0U);
}

TEST_F(FeedTest, MeasuresTheBitrateAfterSixWindows)
{
    Start(WriteSparse("long.mpg", 100000000), 100000);
    m_Feeder->m_nBitrate = 5120000;
    const auto window = [](uint32_t msPerFill) {
        for (int i = 0; i < 6; ++i) {    // 600000 bytes: the first count above 500000
            TestPlatform::Advance(msPerFill);
            g_LastUITick_ms = CascadeTime::GetUptimeMilliseconds();
            TestDecoder::Pull();
        }
    };
    for (int i = 0; i < 6; ++i) {
        window(100);
    }
    EXPECT_EQ(m_Feeder->m_nBitrate, 5120000U);
    EXPECT_EQ(m_Feeder->m_nWarmup, 6);
    window(100);
    EXPECT_EQ(m_Feeder->m_nBitrate, 8000000U);
    window(50);
    EXPECT_EQ(m_Feeder->m_nBitrate, 12000000U);    // of two
    window(0);
    EXPECT_EQ(m_Feeder->m_nBitrate, 12000000U);    // no time, no sample
    m_Feeder->m_nBitrate = 8000000;
    for (int i = 0; i < 18; ++i) {
        window(100);
    }
    window(50);
    EXPECT_EQ(m_Feeder->m_nBitrate, 8400000U);    // one of twenty, and no more than twenty
    window(50);
    EXPECT_EQ(m_Feeder->m_nBitrate, 8780000U);
}

TEST_F(FeedTest, AReadThatWasCutOffIsNoEnd)
{
    TestPlatform::HTTPResource resource;
    resource.bytes = Pattern(9000, 1);
    resource.longestRead = 300;
    resource.stallAt = 2500;
    TestPlatform::SetHTTPResource("http://s/a.mpg", resource);
    Start("http://s/a.mpg");
    EXPECT_TRUE(TestDecoder::Pull() == resource.bytes.substr(0, kBuffer));
    EXPECT_TRUE(TestDecoder::Pull() == resource.bytes.substr(1000, kBuffer));
    EXPECT_TRUE(TestDecoder::Pull() == resource.bytes.substr(2000, 600));
    EXPECT_EQ(TestDecoder::Pull(), "");
    EXPECT_FALSE(m_Feeder->m_bEOF);
    EXPECT_EQ(m_Feeder->GetPosition(), 2600U);
}

TEST_F(FeedTest, PauseEndsAWalkThroughManyEmptyFiles)
{
    WriteParts({500, 0, 0, 0, 100});
    Start(First());
    TestDecoder::SetBeingStopped(true);
    EXPECT_EQ(TestDecoder::Pull().size(), 500U);
    EXPECT_FALSE(m_Feeder->m_bEOF);
    TestDecoder::SetBeingStopped(false);
    EXPECT_EQ(TestDecoder::Pull().size(), 100U);
    EXPECT_TRUE(m_Feeder->m_bEOF);
}

TEST_F(FeedTest, ANextFileThatCannotBeOpenedEndsTheStream)
{
    const std::string all = WriteParts({1500});
    std::filesystem::create_directory(m_Folder / "clip2.mpg");
    Start(First());
    EXPECT_TRUE(TestDecoder::PullBytes(2000) == all);
    EXPECT_TRUE(m_Feeder->m_bEOF);
    EXPECT_EQ(m_Feeder->GetKind(), MHWDecoder::Kind::kNone);
    EXPECT_EQ(m_Feeder->GetPosition() + m_Feeder->GetStreamSize(), 0U);
    EXPECT_TRUE(m_Feeder->Jump(-1000));    // nothing to stand on
    m_Feeder->m_bEOF = false;
    EXPECT_EQ(TestDecoder::Pull(), "");
}

TEST_F(FeedTest, RepairsOnlyProgramStreamsWhenAsked)
{
    // Where the walk expects a packet, a sequence header holds it for ever; only pause and close end it.
    const std::string bytes = std::string("\0\0\1\xB3", 4) + Pattern(996, 1);
    m_Folder.Write("clip1.mpg", bytes + bytes + bytes);
    Start(First());
    m_Feeder->m_bProgramStream = true;
    EXPECT_TRUE(TestDecoder::Pull() == bytes);
    g_bTSFix = true;
    TestDecoder::SetOnRest([](uint32_t ms) {
        EXPECT_EQ(ms, 100U);
        TestDecoder::SetBeingStopped(TestDecoder::Rests() == 3);
    });
    testing::internal::CaptureStdout();
    EXPECT_TRUE(TestDecoder::Pull() == bytes);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Sequence Start\nSequence Start\nSequence Start\n");
    m_Feeder->m_bProgramStream = false;
    EXPECT_TRUE(TestDecoder::Pull() == bytes);
    EXPECT_EQ(TestDecoder::Rests(), 3);
}

// The user interface asks where playback stands while the feed walks through the files.
TEST_F(FeedTest, NameAndPositionBelongTogetherWhileTheFeedWalks)
{
    constexpr int kFiles = 40;
    for (int i = 10; i < 10 + kFiles; ++i) {
        m_Folder.Write("clip" + std::to_string(i) + ".mpg", Pattern(static_cast<size_t>(i) * 100, 1));
    }
    Start(m_Folder / "clip10.mpg");
    std::atomic<bool> ended = false;
    testing::internal::CaptureStdout();
    std::thread feed([&] {
        std::vector<unsigned char> buffer(700);
        while (!m_Feeder->m_bEOF) {
            m_Feeder->OnFillBuffer(buffer.data(), buffer.size());
        }
        ended = true;
    });
    std::string wrong;
    int lastFile = 0;
    while (!ended) {
        const MHWDecoder::Place place = m_Feeder->GetPlace();
        const int file = std::stoi(place.files.GetCurrentName().Str().substr(4));
        if (file < lastFile || place.position > static_cast<unsigned long long>(file) * 100) {
            wrong += place.files.GetCurrentName().Str() + "@" + std::to_string(place.position) + " ";
        }
        lastFile = file;
    }
    feed.join();
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(wrong, "");
    EXPECT_EQ(m_Feeder->GetPlace().files.GetCurrentName().Str(), "clip49.mpg");
}

class JumpTest : public FeedTest {
protected:
    void StandAt(const std::string& name, unsigned long long position)
    {
        m_Feeder->SetStream(OpenStream((m_Folder / name).c_str()));
        m_Feeder->SetFiles((m_Folder / name).c_str());
        ASSERT_TRUE(m_Feeder->GetStream()->SeekToPosition(position));
    }
    std::string Jump(int distance)
    {
        EXPECT_TRUE(m_Feeder->Jump(distance));
        return m_Feeder->GetPlace().files.GetCurrentName().Str() + "@" + std::to_string(m_Feeder->GetPosition());
    }
};

TEST_F(JumpTest, CrossesFilesInBothDirections)
{
    WriteSparse("clip1.mpg", 10000);
    WriteSparse("clip2.mpg", 20000);
    WriteSparse("clip3.mpg", 3000000);
    struct Case {
        bool programStream;
        int distance;
        const char* lands;
    };
    const Case kCases[] = {
        {false, 1000, "clip2.mpg@6000"},
        {false, 14999, "clip2.mpg@19999"},
        {false, 15000, "clip3.mpg@0"},
        {false, 40000, "clip3.mpg@25000"},
        {false, 100000000, "clip3.mpg@1000000"},
        {false, -5000, "clip2.mpg@0"},
        {false, -5001, "clip1.mpg@9999"},
        {false, -15000, "clip1.mpg@0"},
        {false, -2000000000, "clip1.mpg@0"},
        {true, 3000, "clip2.mpg@6144"},    // 5000 + 2048, rounded down
        {true, -3000, "clip2.mpg@2048"},    // towards zero first: 5000 - 2048 = 2952
        {true, -7000, "clip1.mpg@8192"},    // 5000 - 6144 = -1144, 8856 in the file before
        {true, 100000000, "clip3.mpg@999424"},
    };
    for (const Case& c : kCases) {
        StandAt("clip2.mpg", 5000);
        m_Feeder->m_bProgramStream = c.programStream;
        EXPECT_EQ(Jump(c.distance), c.lands) << c.distance;
    }
    StandAt("clip1.mpg", 10000);
    m_Feeder->m_bProgramStream = false;
    EXPECT_EQ(Jump(0), "clip2.mpg@0");
}

TEST_F(JumpTest, ShortLastFileAndEmptyFilesEnd)
{
    WriteSparse("clip1.mpg", 10000);
    StandAt("clip1.mpg", 5000);
    EXPECT_EQ(Jump(90000), "clip1.mpg@0");
    WriteSparse("clip2.mpg", 0);
    StandAt("clip1.mpg", 5000);
    testing::internal::CaptureStdout();
    EXPECT_EQ(Jump(90000), "clip2.mpg@0");
    EXPECT_NE(testing::internal::GetCapturedStdout().find("CurFileSize = 0\nFile size error. Not jumping.\n"), std::string::npos);
}

TEST_F(JumpTest, AFailedSeekReopensTheFile)
{
    WriteSparse("clip1.mpg", 10000);
    StandAt("clip1.mpg", 5000);
    std::filesystem::rename(m_Folder / "clip1.mpg", m_Folder / "old");
    WriteSparse("clip1.mpg", 90000);    // another file of that name: the open one cannot seek so far
    testing::internal::CaptureStdout();
    EXPECT_EQ(Jump(50000), "clip1.mpg@55000");
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
        "Using stat for file size: CurFileSize = 90000\nTry 0: Seek failed!\nTrying reopening the file\nUsing stat for file size: CurFileSize = "
        "90000\n");
    std::filesystem::remove(m_Folder / "clip1.mpg");
    EXPECT_EQ(Jump(1000), "clip1.mpg@56000");    // open still: the disk's name is gone, the bytes are not
}

// A stream whose size never agrees with itself, between files of the disk.
class LyingStream : public CascadeStream {
public:
    unsigned long long GetSize() override { return 1000; }
    unsigned long long GetPosition() override { return 0; }
    bool SeekToPosition(unsigned long long) override
    {
        ++seeks;
        return false;
    }
    unsigned long ReadBytes(unsigned long, void*) override { return 0; }
    static inline int seeks = 0;
};

TEST_F(JumpTest, GivesUpWhenNothingCanBeReopened)
{
    m_Feeder->SetFiles((m_Folder / "gone.mpg").c_str());
    m_Feeder->SetStream(new LyingStream);
    LyingStream::seeks = 0;
    testing::internal::CaptureStdout();
    EXPECT_TRUE(m_Feeder->Jump(500));
    const std::string output = testing::internal::GetCapturedStdout();
    EXPECT_EQ(LyingStream::seeks, 1);
    EXPECT_NE(output.find("Failed to open " + m_Folder / "gone.mpg" + "\n"), std::string::npos);
    EXPECT_EQ(m_Feeder->GetKind(), MHWDecoder::Kind::kNone);
}

}    // namespace
