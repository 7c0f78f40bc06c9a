// Classification and lists.
#include <gtest/gtest.h>

#include "host/decoder/Demux.h"
#include "host/decoder/StreamKind.h"
#include "host/decoder/StreamSniff.h"
#include "platform/CascadeMPEGFile.h"
#include "platform/CascadeStream.h"
#include "tests/decoder/PlayerHarness.h"

namespace {

using test::Fixture;
using Type = CascadeMPEGFile::StreamType;

Type Kind(const std::string& bytes)
{
    return host::KindOfStream(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
}

TEST(StreamKind, IsToldByTheMarksWhateverStandsBefore)
{
    const std::pair<const char*, Type> table[] = {
        {"mpeg1_mp2.mpg", CascadeMPEGFile::kMPEG1ProgramStream},    {"mpeg2_mp2.mpg", CascadeMPEGFile::kMPEG2ProgramStream}, {"tiny.mpg", CascadeMPEGFile::kMPEG2ProgramStream},
        {"ts_188byte.ts", CascadeMPEGFile::kMPEG2TransportStream},  {"ts_192byte.ts", CascadeMPEGFile::kMPEG2TransportStream},
        {"ts_204byte.ts", CascadeMPEGFile::kMPEG2TransportStream},  {"bad/no_pat.ts", CascadeMPEGFile::kMPEG2TransportStream},
        {"bad/text.mpg", CascadeMPEGFile::kUnsupported},            {"bad/jpeg.mpg", CascadeMPEGFile::kUnsupported},         {"bad/random.mpg", CascadeMPEGFile::kUnsupported},
        {"bad/empty.mpg", CascadeMPEGFile::kUnsupported},
    };
    for (const auto& [name, type] : table) {
        SCOPED_TRACE(name);
        const std::string bytes = test::BytesOf(name).substr(0, 400000);
        EXPECT_EQ(Kind(bytes), type);
        if (type != CascadeMPEGFile::kUnsupported) {
            EXPECT_EQ(Kind(std::string(5000, '\xFF') + bytes), type);
            EXPECT_EQ(Kind(std::string(3000, '\0') + bytes), type);
            EXPECT_EQ(Kind(std::string("some garbage, G and all") + bytes), type);
            EXPECT_EQ(Kind(bytes.substr(std::min<size_t>(bytes.size() / 3, 777))), bytes.size() > 3000 ? type : Kind(bytes.substr(bytes.size() / 3)));
        }
    }
    EXPECT_EQ(Kind(std::string(100000, 'G')), CascadeMPEGFile::kUnsupported) << "sync bytes alone are no packets";
    EXPECT_EQ(Kind(std::string("\0\0\1\xBA", 4)), CascadeMPEGFile::kUnsupported);
}

struct Listed {
    const char* file;
    unsigned programs;
    unsigned video;
    unsigned audio;
    CascadeMPEGFile::AudioType type;
    uint32_t audioPid;
};

TEST(MPEGFile, ListsStreamsAndLeavesThePosition)
{
    const Listed table[] = {
        {"mpeg1_mp2.mpg", 1, 1, 1, CascadeMPEGFile::kMPEGAudio, 0xC0},  {"mpeg2_ac3x2.vob", 1, 1, 2, CascadeMPEGFile::kAC3, 0xBD},
        {"mpeg2_dts.vob", 1, 1, 1, CascadeMPEGFile::kDTS, 0x88BD},      {"mpeg2_lpcm.vob", 1, 1, 1, CascadeMPEGFile::kLPCM, 0xA0BD},
        {"ts_2audio.ts", 1, 1, 2, CascadeMPEGFile::kMPEGAudio, 0x101},  {"ts_2programs.ts", 2, 1, 1, CascadeMPEGFile::kMPEGAudio, 0x101},
        {"ts_h264_aac.ts", 1, 1, 1, CascadeMPEGFile::kOtherAudio, 0x101}, {"ts_1080i.ts", 1, 1, 1, CascadeMPEGFile::kAC3, 0x101},
        {"bad/no_pat.ts", 1, 1, 1, CascadeMPEGFile::kMPEGAudio, 0x101}, {"bad/pmt_promises.ts", 1, 1, 1, CascadeMPEGFile::kMPEGAudio, 0x101},
        {"video_only.mpg", 1, 1, 0, CascadeMPEGFile::kMPEGAudio, 0},    {"audio_only.mpg", 1, 0, 1, CascadeMPEGFile::kMPEGAudio, 0xC0},
    };
    for (const Listed& row : table) {
        SCOPED_TRACE(row.file);
        CascadeFileStream stream;
        ASSERT_TRUE(stream.Open(CascadeFile(Fixture(row.file).c_str())));
        ASSERT_TRUE(stream.SeekToPosition(2048));
        CascadeMPEGFile file;
        ASSERT_TRUE(file.SetStream(&stream));
        EXPECT_EQ(stream.GetPosition(), 2048u);
        EXPECT_EQ(file.GetNumPrograms(), row.programs);
        EXPECT_EQ(file.GetNumVideoStreams(0), row.video);
        EXPECT_EQ(file.GetNumAudioStreams(0), row.audio);
        EXPECT_EQ(file.GetAudioStreamAt(0, 0).pid, row.audioPid);
        EXPECT_EQ(file.GetAudioStreamAt(0, 0).type, row.type);
        if (row.video > 0) {
            EXPECT_GT(file.GetVideoStreamAt(0, 0).height, 0);
        }
        EXPECT_NE(file.GetProgramAt(0).pcrPID, 0u);
        EXPECT_EQ(file.GetNumVideoStreams(99), 0u);
        EXPECT_EQ(file.GetAudioStreamAt(0, 99).pid, 0u);
    }
}

TEST(MPEGFile, TellsLanguagesAndSubStreamsAndRefusesWhatCannotBeRead)
{
    CascadeMPEGFile file;
    CascadeFileStream stream;
    ASSERT_TRUE(stream.Open(CascadeFile(Fixture("ts_2audio.ts").c_str())));
    ASSERT_TRUE(file.SetStream(&stream));
    EXPECT_STREQ(file.GetAudioStreamAt(0, 0).language, "eng");
    EXPECT_STREQ(file.GetAudioStreamAt(0, 1).language, "deu");
    CascadeFileStream dvd;
    ASSERT_TRUE(dvd.Open(CascadeFile(Fixture("mpeg2_ac3x2.vob").c_str())));
    ASSERT_TRUE(file.SetStream(&dvd));
    EXPECT_EQ(file.GetAudioStreamAt(0, 0).subStreamId, 0x80u);
    EXPECT_EQ(file.GetAudioStreamAt(0, 1).subStreamId, 0x81u);
    CascadeFileStream closed;
    EXPECT_FALSE(file.SetStream(&closed));
    EXPECT_EQ(file.GetNumPrograms(), 0u);
    EXPECT_FALSE(file.SetStream(nullptr));
}

TEST(Selection, NamesTheSubStreamBySecondByteThenByArgumentThenByKind)
{
    using host::RoleInProgramStream;
    using host::Selection;
    using host::StreamRole;
    const Selection dts{true, true, 0xE0, 0x88BD, 0x80, true};    // the kept AC-3 words of another track do not count
    EXPECT_EQ(RoleInProgramStream(dts, 0x88), StreamRole::kAudio);
    EXPECT_EQ(RoleInProgramStream(dts, 0x80), StreamRole::kOther);
    const Selection second{true, true, 0xE0, 0xBD, 0x81, true};
    EXPECT_EQ(RoleInProgramStream(second, 0x81), StreamRole::kAudio);
    EXPECT_EQ(RoleInProgramStream(second, 0x80), StreamRole::kOther);
    const Selection firstAc3{true, true, 0xE0, 0xBD, 0, true};
    EXPECT_EQ(RoleInProgramStream(firstAc3, 0x82), StreamRole::kAudio);
    EXPECT_EQ(RoleInProgramStream(firstAc3, 0xA0), StreamRole::kOther);
    const Selection other{true, true, 0xE0, 0xBD, 0, false};
    EXPECT_EQ(RoleInProgramStream(other, 0xA0), StreamRole::kAudio);
    EXPECT_EQ(RoleInProgramStream(other, 0x80), StreamRole::kOther);
    const Selection mpeg{true, true, 0xE0, 0xC1, 0, false};
    EXPECT_EQ(RoleInProgramStream(mpeg, 0x1C1), StreamRole::kAudio);
    EXPECT_EQ(RoleInProgramStream(mpeg, 0x1C0), StreamRole::kOther);
    EXPECT_EQ(RoleInProgramStream(mpeg, 0x1E0), StreamRole::kVideo);
    EXPECT_EQ(RoleInProgramStream(mpeg, 0x1E2), StreamRole::kVideoCandidate);
    EXPECT_EQ(RoleInProgramStream({true, true, 0xC0, 0xC0, 0, false}, 0x1E0), StreamRole::kOther) << "a sound identifier asks for no picture";
}

TEST(StreamSniff, DecidesOnlyOnProof)
{
    const auto sniff = [](std::initializer_list<int> bytes) {
        std::vector<uint8_t> data(bytes.begin(), bytes.end());
        data.resize(data.size() + 8);
        return host::SniffVideo(data.data(), data.size());
    };
    EXPECT_EQ(sniff({0, 0, 1, 0xB3, 0x2D, 0x02}), AV_CODEC_ID_MPEG2VIDEO);
    EXPECT_EQ(sniff({0, 0, 0, 1, 9, 0x10, 0, 0, 0, 1, 0x67, 100, 0, 30, 0xAC, 0, 0, 1, 0x68, 0xEE, 1, 2, 3, 4}), AV_CODEC_ID_H264);
    EXPECT_EQ(sniff({0, 0, 1, 0x27, 0x4B, 0x12, 0x80, 1, 0, 0, 1, 0x28, 0x4B, 0x12, 0x80, 1}), AV_CODEC_ID_NONE) << "slices of a tall picture";
    EXPECT_EQ(sniff({0, 0, 1, 0x40, 0x01, 0x0C, 0x01}), AV_CODEC_ID_HEVC);
    EXPECT_EQ(sniff({}), AV_CODEC_ID_NONE);
    const uint8_t adts[] = {0xFF, 0xF1, 0x4C, 0x80, 0x10, 0x1F, 0xFC};
    const uint8_t mp2[] = {0xFF, 0xFD, 0xA4, 0x00, 0x10, 0x1F, 0xFC};
    EXPECT_EQ(host::SniffMpegAudio(adts, sizeof adts), AV_CODEC_ID_AAC);
    EXPECT_EQ(host::SniffMpegAudio(mp2, sizeof mp2), AV_CODEC_ID_MP2);
    EXPECT_EQ(host::SniffMpegAudio(mp2, 1), AV_CODEC_ID_MP2);
}

}    // namespace
