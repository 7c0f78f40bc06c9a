// Real files through the whole decoder: every picture, in order, in time, in step with the sound.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <sstream>

#include <malloc.h>

#include "platform/CascadeMPEGFile.h"
#include "platform/CascadeStream.h"
#include "tests/decoder/PlayerHarness.h"

namespace {

using namespace std::chrono_literals;
using test::FakeUi;
using test::Feeder;
using test::JoinedBytes;

std::string Fixture(const std::string& name)
{
    return std::string(NUVID_FIXTURES) + "/" + name;
}

// What frames.txt says a full decode of the file counts.
int FramesOf(const std::string& name)
{
    std::ifstream list(Fixture("frames.txt"));
    std::string file;
    int frames = 0;
    while (list >> file >> frames) {
        if (file == name) {
            return frames;
        }
    }
    ADD_FAILURE() << name << " is not in frames.txt";
    return -1;
}

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

struct WholeFile {
    const char* name;
    const char* video;
    const char* audio;    // null: none
    int perFrame;         // pictures shown of one coded frame
};

class WholeFiles : public Playback, public testing::WithParamInterface<WholeFile> {};

TEST_P(WholeFiles, ShowEveryPictureInStepWithTheSound)
{
    const WholeFile& file = GetParam();
    JoinedBytes bytes;
    bytes.Add(Fixture(file.name));
    Feeder feeder(bytes.Bytes());
    ASSERT_TRUE(StartOn(feeder, Scan(Fixture(file.name))));
    const size_t pictures = static_cast<size_t>(FramesOf(file.name) * file.perFrame);
    PlayOut(feeder, pictures);
    ExpectWhole(pictures);
    EXPECT_NE(FakeUi::Stats().find(std::string("\"codec\":\"") + file.video + "\""), std::string::npos) << FakeUi::Stats();
    if (file.audio != nullptr) {
        EXPECT_NE(FakeUi::Stats().find(std::string("\"codec\":\"") + file.audio + "\""), std::string::npos) << FakeUi::Stats();
        ExpectInStep();
    }
    EXPECT_FALSE(feeder.HadError());
    EXPECT_EQ(FakeUi::Number("bytes_fed"), bytes.Bytes().size());
}

INSTANTIATE_TEST_SUITE_P(Kinds, WholeFiles,
                         testing::Values(WholeFile{"mpeg1_mp2.mpg", "mpeg1video", "mp2", 1}, WholeFile{"mpeg2_dts.vob", "mpeg2video", "dts", 1}, WholeFile{"ts_1080i.ts", "mpeg2video", "ac3", 2},
                                         WholeFile{"ts_h264_aac.ts", "h264", "aac", 1}, WholeFile{"wrap.mpg", "mpeg2video", "mp2", 1}, WholeFile{"wrap.ts", "mpeg2video", "mp2", 1},
                                         WholeFile{"video_only.mpg", "mpeg2video", nullptr, 1}, WholeFile{"resolution_change.ts", "mpeg2video", "mp2", 1},
                                         WholeFile{"single_iframe.mpg", "mpeg2video", nullptr, 1}, WholeFile{"stills.mpg", "mpeg2video", "mp2", 1}),
                         [](const auto& tested) {
                             std::string name = tested.param.name;
                             std::replace(name.begin(), name.end(), '.', '_');
                             return name;
                         });

TEST_F(Playback, EverySoundTrackIsFoundByItsIdentifier)
{
    struct Track {
        const char* file;
        unsigned index;
        const char* codec;
    };
    for (const Track& track : {Track{"mpeg2_ac3x2.vob", 1, "ac3"}, Track{"mpeg2_lpcm.vob", 0, "pcm_dvd"}, Track{"ts_2audio.ts", 1, "mp2"}, Track{"ts_192byte.ts", 0, "mp2"}}) {
        SCOPED_TRACE(track.file);
        JoinedBytes bytes;
        bytes.Add(Fixture(track.file));
        Feeder feeder(bytes.Bytes());
        ASSERT_TRUE(StartOn(feeder, Scan(Fixture(track.file), 0, track.index)));
        ASSERT_TRUE(ui.RunUntil([&] { return Number("frames_shown") >= 25; }, 5s)) << FakeUi::Stats();
        EXPECT_NE(FakeUi::Stats().find(std::string("\"codec\":\"") + track.codec + "\""), std::string::npos) << FakeUi::Stats();
        EXPECT_NE(Number("av_offset_ms"), 0) << "no sound is heard";
        ExpectInStep();
    }
}

TEST_F(Playback, JoinedRecordingsWithClocksOfTheirOwnPlayAsOne)
{
    JoinedBytes bytes;
    for (const char* name : {"parts/clip3.mpg", "parts/clip1.mpg", "parts/clip2.mpg"}) {
        bytes.Add(Fixture(name));
    }
    Feeder feeder(bytes.Bytes());
    ASSERT_TRUE(StartOn(feeder, Scan(Fixture("parts/clip1.mpg"))));
    PlayOut(feeder, 150);
    ExpectWhole(150);
    ExpectInStep();
    EXPECT_LE(std::abs(FakeUi::Number("worst_av_offset_ms")), 100);
    EXPECT_NEAR(FakeUi::Number("clock_s"), 6.0, 0.001);    // no gap and no overlap in the time line
}

TEST_F(Playback, BytesThatAreCutAnywherePlayLikeTheWholeFile)
{
    JoinedBytes bytes;
    for (const char* name : {"parts_cut/rec_1.ts", "parts_cut/rec_2.ts", "parts_cut/rec_3.ts"}) {
        bytes.Add(Fixture(name));
    }
    Feeder feeder(bytes.Bytes());
    ASSERT_TRUE(StartOn(feeder, Scan(Fixture("parts_cut_whole.ts"))));
    const auto pictures = static_cast<size_t>(FramesOf("parts_cut_whole.ts"));
    PlayOut(feeder, pictures);
    ExpectWhole(pictures);
}

TEST_F(Playback, SoundWithoutPicturesPlaysAndTakesTheOldPictureAway)
{
    JoinedBytes picture;
    picture.Add(Fixture("mpeg1_mp2.mpg"));
    JoinedBytes sound;
    sound.Add(Fixture("audio_only.ts"));
    Feeder feeder(picture.Bytes());
    ASSERT_TRUE(StartOn(feeder, Scan(Fixture("mpeg1_mp2.mpg"))));
    ASSERT_TRUE(ui.RunUntil([&] { return ui.Count() > 3; }, 5s));
    EXPECT_FALSE(ui.IsBlack());
    feeder.Close();

    Feeder second(sound.Bytes());
    ASSERT_TRUE(StartOn(second, Scan(Fixture("audio_only.ts"))));
    EXPECT_TRUE(ui.RunUntil([&] { return FakeUi::Number("clock_s") > 0.5; }, 5s));
    EXPECT_EQ(FakeUi::Number("frames_shown"), 0);
    second.Close();
}

TEST_F(Playback, PauseHoldsThePictureAndResumeGoesOnThere)
{
    JoinedBytes bytes;
    bytes.Add(Fixture("mpeg2_mp2.mpg"));
    Feeder feeder(bytes.Bytes());
    ASSERT_TRUE(StartOn(feeder, Scan(Fixture("mpeg2_mp2.mpg"))));
    ASSERT_TRUE(ui.RunUntil([&] { return ui.Count() >= 20; }, 5s));
    const host::Clock::time_point before = host::Clock::now();
    ASSERT_TRUE(feeder.PauseStreaming());
    EXPECT_LT(host::Clock::now() - before, 200ms);
    const size_t count = ui.Count();
    ui.RunFor(400ms);
    EXPECT_LE(ui.Count(), count + 1);
    EXPECT_NE(FakeUi::Stats().find("\"state\":\"paused\""), std::string::npos);
    ASSERT_TRUE(feeder.ResumeStreaming(true));
    const auto pictures = static_cast<size_t>(FramesOf("mpeg2_mp2.mpg"));
    PlayOut(feeder, pictures);
    ExpectWhole(pictures);
    ExpectInStep();
}

TEST_F(Playback, ReopeningElsewhereShowsAPictureOfThereSoonAndBlackFollowsAClose)
{
    JoinedBytes bytes;
    bytes.Add(Fixture("parts_long_whole.mpg"));
    const Streams streams = Scan(Fixture("parts_long_whole.mpg"));
    Feeder feeder(bytes.Bytes());
    ASSERT_TRUE(StartOn(feeder, streams));
    ASSERT_TRUE(ui.RunUntil([&] { return ui.Count() >= 5; }, 5s));
    for (const size_t part : {6, 2, 4}) {
        feeder.PauseStreaming();
        feeder.Close();
        feeder.SeekTo(bytes.Bytes().size() * part / 8 / 2048 * 2048);
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

TEST_F(Playback, BytesThatComeAfterTheEndPlayToo)
{
    JoinedBytes first;
    first.Add(Fixture("parts/clip1.mpg"));
    JoinedBytes more;
    more.Add(Fixture("parts/clip2.mpg"));
    Feeder feeder(first.Bytes());
    ASSERT_TRUE(StartOn(feeder, Scan(Fixture("parts/clip1.mpg"))));
    PlayOut(feeder, 50);
    ASSERT_EQ(FakeUi::Number("frames_shown") + FakeUi::Number("frames_dropped"), 50);
    feeder.PauseStreaming();
    feeder.Append(more.Bytes());
    feeder.ResumeStreaming(true);
    PlayOut(feeder, 100);
    ExpectWhole(100);
}

TEST_F(Playback, OtherProgramsAndSoundTracksAreTakenAtOnce)
{
    JoinedBytes bytes;
    bytes.Add(Fixture("ts_2programs.ts"));
    const Streams one = Scan(Fixture("ts_2programs.ts"), 0);
    const Streams two = Scan(Fixture("ts_2programs.ts"), 1);
    EXPECT_NE(one.video, two.video);
    EXPECT_NE(one.audio, two.audio);
    Feeder feeder(bytes.Bytes());
    ASSERT_TRUE(StartOn(feeder, one));
    ASSERT_TRUE(ui.RunUntil([&] { return ui.Count() >= 10; }, 5s));
    ASSERT_TRUE(feeder.SelectPIDs(false, two.video, two.video, two.audio, 0, false));
    PlayOut(feeder, 60);
    EXPECT_TRUE(ui.RunUntil([&] { return Number("frames_shown") + Number("frames_dropped") == Number("frames_decoded"); }, 10s));
    const size_t shown = ui.Count();
    EXPECT_GT(shown, 40u);
    EXPECT_LE(shown, 100u);
    EXPECT_EQ(ui.Shown().back().look, ui.Shown()[shown - 3].look) << "the second program's bars stand still";
    EXPECT_NE(ui.Shown()[3].look, ui.Shown()[5].look) << "the first program's picture moves";

    Feeder silent(bytes.Bytes());    // a video identifier that carries sound shows nothing
    ASSERT_TRUE(silent.Start(false, one.audio, one.audio));
    const size_t count = ui.Count();
    EXPECT_TRUE(ui.RunUntil([&] { return FakeUi::Number("clock_s") > 0.3; }, 5s));
    EXPECT_EQ(ui.Count(), count);
}

TEST_F(Playback, AskedVideoThatIsNotThereGivesWayToTheOnlyOneThereIs)
{
    JoinedBytes bytes;
    bytes.Add(Fixture("mpeg1_mp2.mpg"));
    Feeder feeder(bytes.Bytes());
    ASSERT_TRUE(feeder.Start(true, 0xE2, 0xC0));
    EXPECT_TRUE(ui.RunUntil([&] { return ui.Count() >= 10; }, 5s));
}

TEST_F(Playback, DamagedFilesPlayWhatTheyHoldAndEnd)
{
    for (const char* name : {"bad/bitflips.mpg", "bad/bitflips.ts", "bad/truncated.mpg", "bad/scrambled.ts", "bad/pmt_promises.ts", "tiny.mpg"}) {
        SCOPED_TRACE(name);
        JoinedBytes bytes;
        bytes.Add(Fixture(name));
        Feeder feeder(bytes.Bytes().substr(0, 900000));
        const Streams streams = Scan(Fixture(name));
        ASSERT_TRUE(StartOn(feeder, streams));
        EXPECT_TRUE(ui.RunUntil([&] { return feeder.AllTaken(); }, 20s));
        EXPECT_FALSE(feeder.HadError());
    }
    for (const char* name : {"bad/random.mpg", "bad/text.mpg", "bad/jpeg.mpg", "bad/empty.mpg"}) {
        SCOPED_TRACE(name);
        JoinedBytes bytes;
        bytes.Add(Fixture(name));
        for (const bool program : {true, false}) {
            Feeder feeder(bytes.Bytes());
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
    std::ifstream file(Fixture("video_only.ts"), std::ios::binary);
    const std::string real((std::istreambuf_iterator<char>(file)), {});
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

TEST_F(Playback, DeinterlacingCanBeTurnedOff)
{
    host::HostOptions options;
    options.headless = true;
    options.deinterlace = host::Deinterlace::kOff;
    host::SetCurrentHostOptions(options);
    JoinedBytes bytes;
    bytes.Add(Fixture("ts_1080i.ts"));
    Feeder feeder(bytes.Bytes().substr(0, 3000000));
    ASSERT_TRUE(StartOn(feeder, Scan(Fixture("ts_1080i.ts"))));
    PlayOut(feeder, 25);
    EXPECT_TRUE(ui.RunUntil([&] { return Number("frames_shown") + Number("frames_dropped") == Number("frames_decoded"); }, 10s)) << FakeUi::Stats();
}

}    // namespace
