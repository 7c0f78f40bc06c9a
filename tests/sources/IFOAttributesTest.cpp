#include "sources/IFOAttributes.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "sources/LanguageCodes.h"

namespace {

audio_attributes Audio(uint8_t first, uint8_t second, const char* language, uint8_t type = 0)
{
    return {{first, second, static_cast<uint8_t>(language[0]), static_cast<uint8_t>(language[1]), 0, type, 0, 0}};
}

TEST(IFOAttributes, TellsAudioFormatAndStream)
{
    const struct {
        unsigned coding;
        unsigned channels;
        const char* format;
        int32_t streamId;
    } kRows[] = {
        {0, 5, "DD 5.1", 0x80},
        {0, 1, "DD 2.0", 0x80},
        {0, 7, "DD 2.0", 0x80},
        {1, 5, "Unknown", 0},
        {2, 1, "MPEG-1", 0xC0},
        {3, 5, "MPEG-2", 0xC0},
        {4, 1, "Linear PCM", 0xA0},
        {5, 0, "Unknown", 0},
        {6, 5, "DTS", 0x88},
        {7, 1, "Unknown", 0},
    };
    for (const auto& row : kRows) {
        // The bits below the coding mode and above the channels mean other things.
        const audio_stream stream
            = parseAudioStream(Audio(static_cast<uint8_t>(row.coding << 5 | 0x1F), static_cast<uint8_t>(row.channels | 0x08), "en"));
        EXPECT_STREQ(stream.format, row.format) << row.coding;
        EXPECT_EQ(stream.streamId, row.streamId) << row.coding;
    }
}

TEST(IFOAttributes, LooksLanguagesUpAsOnTheDisc)
{
    // On purpose: the names of two codes are other languages', and one language has two codes.
    const std::pair<const char*, const char*> kNames[]
        = {{"ia", "Armenian"}, {"ui", "Vietnamese"}, {"he", "Hebrew"}, {"iw", "Hebrew"}, {"es", "Español"}, {"aa", "Afar"}, {"zu", "Zulu"}};
    for (const auto& [code, name] : kNames) {
        EXPECT_STREQ(parseAudioStream(Audio(0, 0, code)).language, name) << code;
    }
    for (const char* unknown : {"vi", "EN", "\xFF\xFF", "e\0", "\0\0"}) {
        EXPECT_EQ(parseAudioStream(Audio(0, 0, unknown)).language, nullptr) << unknown;
    }
    // A third letter, and a code that fills the record to its last byte without an end.
    EXPECT_EQ(parseAudioStream({{0, 0, 'e', 'n', 'g', 0, 0, 0}}).language, nullptr);
    EXPECT_EQ(parseAudioStream({{0, 0, 'e', 'n', 'e', 'n', 'e', 'n'}}).language, nullptr);

    std::set<std::string_view> codes;
    for (const LanguageRow& row : kLanguages) {
        EXPECT_EQ(row.code.size(), 2U);
        EXPECT_TRUE(codes.insert(row.code).second) << row.code << " would never be found";
    }
}

// Each field lies between others: the bits beside it are set here and there.
TEST(IFOAttributes, DescribesEveryFieldInLabelledLines)
{
    EXPECT_EQ(DescribeStreams({parseAudioStream(Audio(0xC0, 0x55, "de", 3)), parseAudioStream(Audio(0, 0xE1, "xx", 255))}).Str(),
        "Audio Stream Count: 2\n"
        "Audio Format:\tDTS\nLanguage:\tDeutsch\nSample Rate:\t96Kbps\nQuantization:\t20bps\nAudio Type:\tDirector's Comments\n\nStream ID:\t136\n\n"
        "Audio Format:\tDD 2.0\nLanguage:\tUnknown\nSample Rate:\tUnknown\nQuantization:\tDRC\nAudio Type:\t\n\nStream ID:\t128\n\n");
    EXPECT_EQ(DescribeStream(parseVideoStream({{0x5C, 0x04}})).Str(),
        "Compression:\tMPEG-2\nVideo Standard:\tPAL\nAspect Ratio:\t16:9\nBitrate:\tVBR\nResolution:\t720x576\nLetterboxed:\tTrue\n\n");
    EXPECT_EQ(DescribeStream(parseVideoStream({{0xA8, 0x38}})).Str(),
        "Compression:\tUnknown\nVideo Standard:\tUnknown\nAspect Ratio:\tUnknown\nBitrate:\tCBR\nResolution:\t352x240\nLetterboxed:\tFalse\n\n");
    const char* const kPal[] = {"720x576", "704x576", "352x576", "352x288"};
    const char* const kOther[] = {"720x480", "704x480", "352x480", "352x240"};
    for (uint8_t i = 0; i < 4; ++i) {
        const auto second = static_cast<uint8_t>(i << 3);
        EXPECT_STREQ(parseVideoStream({{0x10, second}}).resolution, kPal[i]);
        EXPECT_STREQ(parseVideoStream({{0x00, second}}).resolution, kOther[i]);
        EXPECT_STREQ(parseVideoStream({{0x30, second}}).resolution, kOther[i]);
    }
}

}    // namespace
