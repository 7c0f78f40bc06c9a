// The side file while a recording plays: when it is saved, with what, and by whom.
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <functional>
#include <future>

#include "playback/SaveSchedule.h"
#include "playback/SideFileWriter.h"
#include "tests/playback/PlaybackFixture.h"
#include "tests/support/OrdinaryUser.h"

namespace {
std::function<int()> g_OnFlush;    // an errno to fail with, or 0
}

// The C library's is replaced in this program, so that a medium can be slow or fail.
extern "C" int fsync(int fd)
{
    const int error = g_OnFlush ? g_OnFlush() : 0;
    if (error != 0) {
        errno = error;
        return -1;
    }
    return static_cast<int>(syscall(SYS_fsync, fd));
}

namespace {

const std::string kSignatureLine = "#Nuvid File. Do not modify\n";

TEST(SaveScheduleTest, SavesFromTimeToTimeAndOnLeavingPlayback)
{
    constexpr int playing = 1, paused = 2;
    const uint32_t start = 0xFFFFF000U;    // the clock wraps on the way
    SaveSchedule schedule;
    schedule.Begin(start);
    int saves = 0;
    for (uint32_t ms = 100; ms <= 30000; ms += 100) {
        saves += schedule.Tick(start + ms, playing);
        EXPECT_EQ(schedule.IsPastFirstSeconds(), ms >= 8000) << ms;
        EXPECT_EQ(saves, static_cast<int>(ms / 9000)) << ms;
    }
    EXPECT_TRUE(schedule.Tick(start + 30100, paused));
    EXPECT_FALSE(schedule.Tick(start + 90000, paused));    // nothing moves
    EXPECT_TRUE(schedule.Tick(start + 90100, playing));

    schedule.Begin(start);
    EXPECT_TRUE(schedule.Tick(start + 100, paused));
    EXPECT_FALSE(schedule.Tick(start + 60000, paused));
    EXPECT_FALSE(schedule.IsPastFirstSeconds());    // a pause is no playing
    schedule.Moved();
    EXPECT_TRUE(schedule.IsPastFirstSeconds());
}

class SideFileWriterTest : public PlaybackTest {
protected:
    // All that was handed over stands on the medium, or was told, when the writer takes up another file.
    std::string PrintedBy(const std::vector<std::string>& texts)
    {
        testing::internal::CaptureStdout();
        for (const std::string& text : texts) {
            m_Writer.Save(text);
        }
        m_Writer.Begin((m_Folder / "film.nuvid").c_str());
        return testing::internal::GetCapturedStdout();
    }
    SideFileWriter m_Writer;
};

TEST_F(SideFileWriterTest, TheNewestTextStays)
{
    m_Writer.Begin((m_Folder / "film.nuvid").c_str());
    for (int i = 0; i < 200; ++i) {
        m_Writer.Save(kSignatureLine + "z " + std::to_string(i) + "\n");
    }
    m_Writer.Finish(kSignatureLine + "last\n");
    EXPECT_EQ(m_Folder.Read("film.nuvid"), kSignatureLine + "last\n");
    EXPECT_EQ(m_Folder.Names().size(), 1U);
    m_Writer.Save(kSignatureLine + "of the film\n");
    m_Writer.Begin((m_Folder / "other.nuvid").c_str());
    EXPECT_EQ(m_Folder.Read("film.nuvid"), kSignatureLine + "of the film\n");    // never in the other's file
    {
        SideFileWriter short_lived;
        short_lived.Begin((m_Folder / "other.nuvid").c_str());
        short_lived.Save(kSignatureLine + "in time\n");
    }
    EXPECT_EQ(m_Folder.Read("other.nuvid"), kSignatureLine + "in time\n");
}

TEST_F(SideFileWriterTest, LeavesForeignFilesAloneAndTellsOnceWhatItCannotWrite)
{
    m_Folder.Write("film.nuvid", "shopping list\n");
    m_Writer.Begin((m_Folder / "film.nuvid").c_str());
    EXPECT_EQ(PrintedBy({kSignatureLine}), "");
    EXPECT_EQ(m_Folder.Read("film.nuvid"), "shopping list\n");
    std::filesystem::remove(m_Folder / "film.nuvid");

    m_Folder.Write("film.nuvid", kSignatureLine + "old\n");
    std::filesystem::permissions(m_Folder.Path(), std::filesystem::perms(0555));
    {
        const OrdinaryUser user;
        testing::internal::CaptureStdout();
        m_Writer.Finish(kSignatureLine + "1\n");
        m_Writer.Finish(kSignatureLine + "2\n");
        m_Writer.Finish(kSignatureLine + "old\n");    // says so already
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "Can not open settings file for writing\n");
        EXPECT_EQ(PrintedBy({}), "");
        EXPECT_EQ(PrintedBy({kSignatureLine + "3\n"}), "Can not open settings file for writing\n");    // of another recording
    }
    std::filesystem::permissions(m_Folder.Path(), std::filesystem::perms(0755));
    EXPECT_EQ(m_Folder.Read("film.nuvid"), kSignatureLine + "old\n");
}

TEST_F(SideFileWriterTest, AfterASaveThatFailedTheNextOneIsWritten)
{
    m_Folder.Write("film.nuvid", kSignatureLine + "z 1\n");
    m_Writer.Begin((m_Folder / "film.nuvid").c_str());
    testing::internal::CaptureStdout();
    g_OnFlush = [] { return EIO; };
    m_Writer.Finish(kSignatureLine + "z 2\n");
    g_OnFlush = nullptr;
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Can not open settings file for writing\n");
    EXPECT_EQ(m_Folder.Read("film.nuvid"), kSignatureLine + "z 1\n");
    m_Writer.Finish(kSignatureLine + "z 2\n");    // the medium has come to itself
    EXPECT_EQ(m_Folder.Read("film.nuvid"), kSignatureLine + "z 2\n");
}

class SavingTest : public PlaybackTest {
protected:
    SavingTest()
    {
        TestPlatform::SetResolutions({{720, 480}});
        m_Engine.SetClient(&m_Client);
        m_Folder.Write("clip1.mpg", Pattern(4000000, 1));
    }
    ~SavingTest() override { m_Engine.DoTheClose(); }
    void PlayFor(uint32_t ms)
    {
        for (uint32_t at = 0; at < ms; at += 100) {
            TestPlatform::Advance(100);
            g_LastUITick_ms = CascadeTime::GetUptimeMilliseconds();
            m_Engine.Tick();
        }
    }
    // The worker's save becomes visible at once and whole; how soon is its own affair.
    bool ComesToHold(const std::string& line)
    {
        return TestPlatform::Until([&] { return m_Folder.Read("clip.nuvid").find(line) != std::string::npos; });
    }
    bool Open() { return m_Engine.DoTheOpen((m_Folder / "clip1.mpg").c_str()); }

    RecordingClient m_Client;
    MDecoder m_Engine;
};

TEST_F(SavingTest, APointIsSavedWhilePlayingAndOnAPause)
{
    ASSERT_TRUE(Open());
    TestDecoder::Pull();
    PlayFor(8900);
    EXPECT_FALSE(m_Folder.Names().count("clip.nuvid"));
    PlayFor(100);
    EXPECT_TRUE(ComesToHold("z 0\nr clip1.mpg@192512\na 0\n"));
    m_Engine.SetBookmark();
    m_Engine.PauseStreaming();
    PlayFor(100);
    EXPECT_TRUE(ComesToHold("b clip1.mpg@192512\n"));
    std::filesystem::remove(m_Folder / "clip.nuvid");
    PlayFor(60000);
    m_Engine.DoTheClose();    // nothing was saved meanwhile, and this is the last word
    EXPECT_TRUE(ComesToHold("r clip1.mpg@192512\n"));
    PlayFor(20000);
    EXPECT_EQ(m_Folder.Names().size(), 2U);
}

TEST_F(SavingTest, TheOldPointOutlivesTheFirstSeconds)
{
    m_Folder.Write("clip.nuvid", kSignatureLine + "z 0\nr clip1.mpg@2048000\na 0\n");
    ASSERT_TRUE(Open());
    TestDecoder::Pull();
    m_Engine.NextZoomMode();
    m_Engine.PauseStreaming();
    PlayFor(100);
    EXPECT_TRUE(ComesToHold("z 1\nr clip1.mpg@2048000\n"));
    m_Engine.ResumeStreaming();
    PlayFor(9000);
    EXPECT_TRUE(ComesToHold("r clip1.mpg@192512\n"));

    m_Folder.Write("clip.nuvid", kSignatureLine + "z 0\nr clip1.mpg@2048000\na 0\n");
    ASSERT_TRUE(Open());
    m_Folder.Write("clip.nuvid", kSignatureLine + "z 0\nr clip1.mpg@2048000\na 0\n");    // the close before said another
    tagBookmark here {"clip1.mpg", 1024000};
    ASSERT_TRUE(m_Engine.GoToBookmark(&here));    // the viewer chose
    m_Engine.PauseStreaming();
    PlayFor(100);
    EXPECT_TRUE(ComesToHold("r clip1.mpg@1024000\n"));
}

TEST_F(SavingTest, TheOldPointStaysAsLongAsTheQuestionIsOpen)
{
    const std::string old = kSignatureLine + "z 0\nr clip1.mpg@2048000\na 0\n";
    m_Client.asks = true;
    m_Folder.Write("clip.nuvid", old);
    ASSERT_TRUE(Open());
    TestDecoder::Pull();
    m_Engine.SetBookmark();
    PlayFor(60000);
    EXPECT_TRUE(ComesToHold("b clip1.mpg@192512\nz 0\nr clip1.mpg@2048000\n"));
    m_Engine.DoTheClose();    // without an answer
    EXPECT_TRUE(ComesToHold("r clip1.mpg@2048000\n"));

    ASSERT_TRUE(Open());
    TestDecoder::Pull();
    PlayFor(60000);
    m_Engine.ResumeAnswered();    // from the start, then
    PlayFor(9000);
    EXPECT_TRUE(ComesToHold("r clip1.mpg@192512\n"));
}

TEST_F(SavingTest, ASlowMediumHoldsUpNeitherTheFeedNorTheKeys)
{
    std::promise<void> reached, released;
    g_OnFlush = [&, first = true]() mutable {
        if (std::exchange(first, false)) {
            reached.set_value();
            released.get_future().wait();
        }
        return 0;
    };
    ASSERT_TRUE(Open());
    TestDecoder::Pull();
    PlayFor(9000);
    reached.get_future().wait();    // the save hangs in the medium now
    size_t fed = 192512;
    for (int i = 0; i < 16; ++i) {
        fed += TestDecoder::Pull().size();
        m_Engine.SetBookmark();
        PlayFor(9000);    // further saves come due
    }
    EXPECT_GT(fed, 8U * 192512U);
    released.set_value();
    m_Engine.DoTheClose();
    g_OnFlush = nullptr;
    EXPECT_TRUE(ComesToHold("r clip1.mpg@" + std::to_string(fed) + "\n"));
}

}    // namespace
