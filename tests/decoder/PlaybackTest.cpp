// Real files through the whole decoder: every picture, in order, in time, in step with the sound.
#include <gtest/gtest.h>

#include <algorithm>

#include <malloc.h>

#include "platform/CascadeMPEGFile.h"
#include "platform/CascadeStream.h"
#include "tests/decoder/PlayerHarness.h"

namespace {

using namespace std::chrono_literals;
using test::BytesOf;
using test::FakeUi;
using test::Feeder;
using test::Fixture;

struct Streams {
    bool program = true;
    unsigned video = 0;
    unsigned audio = 0;
    unsigned sub = 0;
    bool ac3 = false;
};

Streams Scan(const std::string& path, unsigned program = 0, unsigned audio = 0)
{
    CascadeFileStream stream;
    CascadeMPEGFile file;
    EXPECT_TRUE(stream.Open(CascadeFile(path.c_str())) && file.SetStream(&stream)) << path;
    const CascadeMPEGFile::AudioStream sound = file.GetAudioStreamAt(program, audio);
    Streams streams;
    streams.program = file.GetStreamType() != CascadeMPEGFile::kMPEG2TransportStream;
    streams.video = file.GetVideoStreamAt(program, 0).pid;
    if (streams.video == 0) {
        streams.video = file.GetProgramAt(program).pcrPID;
    }
    streams.audio = sound.pid;
    streams.ac3 = sound.type == CascadeMPEGFile::kAC3;
    streams.sub = streams.ac3 ? sound.subStreamId : 0;
    return streams;
}

bool StartOn(Feeder& feeder, const Streams& s)
{
    return feeder.Start(s.program, s.video, s.audio, s.sub, s.ac3);
}

class Playback : public testing::Test {
protected:
    Playback()
    {
        host::HostOptions options;
        options.headless = true;
        host::SetCurrentHostOptions(options);
    }
    ~Playback() override { host::SetCurrentHostOptions(host::HostOptions()); }

    // Plays until so many pictures have come and a little longer, to see whether there are more.
    void PlayOut(Feeder& feeder, size_t pictures)
    {
        EXPECT_TRUE(ui.RunUntil([&] { return feeder.AllTaken() && Number("frames_shown") + Number("frames_dropped") >= static_cast<double>(pictures); }, 20s)) << FakeUi::Stats();
        ui.RunFor(100ms);
    }
    static double Number(const char* name) { return FakeUi::Number(name); }

    // Every picture was decoded, and shown unless the machine was too busy to show it in time.
    void ExpectWhole(size_t pictures)
    {
        EXPECT_EQ(FakeUi::Number("frames_shown") + FakeUi::Number("frames_dropped"), pictures) << FakeUi::Stats();
        EXPECT_EQ(FakeUi::Number("frames_shown"), ui.Count());
        EXPECT_LE(FakeUi::Number("frames_dropped"), pictures / 10) << FakeUi::Stats();
    }
    void ExpectInStep() { EXPECT_LE(std::abs(FakeUi::Number("av_offset_ms")), 40) << FakeUi::Stats(); }

    FakeUi ui;
};

TEST_F(Playback, EverySoundTrackIsFoundByItsIdentifier)
{
    struct Track {
        const char* file;
        unsigned index;
        const char* codec;
    };
    const Track tracks[] = {{"mpeg2_ac3x2.vob", 1, "ac3"}, {"mpeg2_dts.vob", 0, "dts"}, {"mpeg2_lpcm.vob", 0, "pcm_dvd"}, {"ts_2audio.ts", 1, "mp2"}, {"ts_192byte.ts", 0, "mp2"},
                            {"ts_h264_aac.ts", 0, "aac"}};
    for (const Track& track : tracks) {
        SCOPED_TRACE(track.file);
        Feeder feeder(BytesOf(track.file));
        ASSERT_TRUE(StartOn(feeder, Scan(Fixture(track.file), 0, track.index)));
        ASSERT_TRUE(ui.RunUntil([&] { return Number("frames_shown") >= 25; }, 5s)) << FakeUi::Stats();
        EXPECT_NE(FakeUi::Stats().find(std::string("\"codec\":\"") + track.codec + "\""), std::string::npos) << FakeUi::Stats();
        EXPECT_NE(Number("av_offset_ms"), 0) << "no sound is heard";
        ExpectInStep();
    }
}

TEST_F(Playback, JoinedRecordingsWithClocksOfTheirOwnPlayAsOneAlsoOverAPause)
{
    Feeder feeder(BytesOf("parts/clip3.mpg") + BytesOf("parts/clip1.mpg") + BytesOf("parts/clip2.mpg"));
    ASSERT_TRUE(StartOn(feeder, Scan(Fixture("parts/clip1.mpg"))));
    ASSERT_TRUE(ui.RunUntil([&] { return ui.Count() >= 20; }, 5s));
    ASSERT_TRUE(feeder.PauseStreaming());
    const size_t count = ui.Count();
    ui.RunFor(400ms);
    EXPECT_LE(ui.Count(), count + 1);
    ASSERT_TRUE(feeder.ResumeStreaming(true));
    PlayOut(feeder, 150);
    ExpectWhole(150);
    ExpectInStep();
    EXPECT_LE(std::abs(FakeUi::Number("worst_av_offset_ms")), 100);
    EXPECT_NEAR(FakeUi::Number("clock_s"), 6.0, 0.001);    // no gap and no overlap in the time line
}

TEST_F(Playback, ReopeningElsewhereShowsAPictureOfThereSoonAndBlackFollowsAClose)
{
    const std::string bytes = BytesOf("parts_long_whole.mpg");
    const Streams streams = Scan(Fixture("parts_long_whole.mpg"));
    Feeder feeder(bytes);
    ASSERT_TRUE(StartOn(feeder, streams));
    ASSERT_TRUE(ui.RunUntil([&] { return ui.Count() >= 5; }, 5s));
    for (const size_t part : {6, 2, 4}) {
        feeder.PauseStreaming();
        feeder.Close();
        feeder.SeekTo(bytes.size() * part / 8 / 2048 * 2048);
        const size_t count = ui.Count();
        ASSERT_TRUE(StartOn(feeder, streams));
        ASSERT_TRUE(ui.RunUntil([&] { return ui.Count() > count; }, 5s));
        EXPECT_FALSE(ui.IsBlack());
        EXPECT_GT(FakeUi::Number("last_seek_ms"), 0);
        ASSERT_TRUE(ui.RunUntil([&] { return ui.Count() > count + 5; }, 5s));    // and goes on from there
        ExpectInStep();
    }
    feeder.PauseStreaming();
    feeder.Close();
    ui.RunFor(200ms);
    EXPECT_FALSE(ui.IsBlack());
    EXPECT_TRUE(ui.RunUntil([&] { return ui.IsBlack(); }, 5s));
}

TEST_F(Playback, AskedVideoThatIsNotThereGivesWayToTheOnlyOneThereIs)
{
    Feeder feeder(BytesOf("mpeg1_mp2.mpg"));
    ASSERT_TRUE(feeder.Start(true, 0xE2, 0xC0));
    EXPECT_TRUE(ui.RunUntil([&] { return ui.Count() >= 10; }, 5s));
}

TEST_F(Playback, WhatIsNoRecordingEndsLikeAnyOther)
{
    for (const char* name : {"bad/random.mpg", "bad/text.mpg", "bad/jpeg.mpg", "bad/empty.mpg"}) {
        SCOPED_TRACE(name);
        for (const bool program : {true, false}) {
            Feeder feeder(BytesOf(name));
            ASSERT_TRUE(feeder.Start(program, 0xE0, 0xC0));
            EXPECT_TRUE(ui.RunUntil([&] { return feeder.AllTaken(); }, 20s));
            EXPECT_FALSE(feeder.HadError());
        }
    }
}

// Watches the heap while it feeds.
class WeighingFeeder : public Feeder {
public:
    using Feeder::Feeder;
    ~WeighingFeeder() override { Close(); }
    unsigned long OnFillBuffer(unsigned char* buffer, unsigned long length) override
    {
        const struct mallinfo2 heap = mallinfo2();
        m_nMost = std::max<size_t>(m_nMost, heap.uordblks + heap.hblkhd);
        return Feeder::OnFillBuffer(buffer, length);
    }
    size_t Most() const { return m_nMost; }

private:
    std::atomic<size_t> m_nMost{0};
};

TEST_F(Playback, StreamThatIsNotWhatItsTableSaysDoesNotPileUp)
{
    // The first packets hold the tables; then 40 MB under the video's identifier in which no picture ever begins.
    constexpr size_t kPacket = 188;
    const std::string real = BytesOf("video_only.ts");
    size_t tables = 0;
    while ((real[tables + 1] & 0x1F) != 0x01 || real[tables + 2] != 0) {    // up to the first packet of 0x100
        tables += kPacket;
    }
    std::string bytes = real.substr(0, tables);
    for (unsigned n = 0; bytes.size() < (40u << 20); ++n) {
        std::string packet("\x47\x01\0\x10", 4);
        packet[1] = n == 0 ? '\x41' : '\x01';
        packet[3] = static_cast<char>(0x10 | n % 16);
        packet += n == 0 ? std::string("\0\0\1\xE0\0\0\x80\0\0", 9) : std::string();
        packet.resize(kPacket, '\x55');
        bytes += packet;
    }
    const size_t lead = bytes.size();
    bytes += real;
    WeighingFeeder feeder(std::move(bytes));
    const struct mallinfo2 before = mallinfo2();
    ASSERT_TRUE(feeder.Start(false, 0x100, 0));
    ASSERT_TRUE(ui.RunUntil([&] { return Number("frames_shown") > 10; }, 30s)) << FakeUi::Stats();
    EXPECT_GE(Number("bytes_fed"), static_cast<double>(lead));
    EXPECT_LE(feeder.Most(), before.uordblks + before.hblkhd + (24u << 20));
}

}    // namespace
