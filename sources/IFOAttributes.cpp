#include "sources/IFOAttributes.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <string>
#include <string_view>

#include "sources/ByteReader.h"
#include "sources/LanguageCodes.h"

namespace {

constexpr const char* kUnknown = "Unknown";

struct AudioFormatRow {
    unsigned coding;
    const char* format;
    int32_t streamId;    // of the format's stream 0: MPEG audio stream, or sub-stream of private stream 1
};
constexpr AudioFormatRow kAudioFormats[] = {
    {0, "DD", 0x80},    // the number of channels follows
    {2, "MPEG-1", 0xC0},
    {3, "MPEG-2", 0xC0},
    {4, "Linear PCM", 0xA0},
    {6, "DTS", 0x88},
};
constexpr unsigned kCodingDolbyDigital = 0;
constexpr unsigned kSixChannels = 5;    // the record counts from 0

// On purpose: the units of the two audio tables are not those of frequency and bits.
constexpr const char* kSampleRates[] = {"48Kbps", "96Kbps"};
constexpr const char* kQuantizations[] = {"16bps", "20bps", "24bps", "DRC"};
constexpr const char* kAudioTypes[] = {"", "", "For Visually Impaired", "Director's Comments", "Alt. Director's Comments"};

constexpr const char* kCompressions[] = {"MPEG-1", "MPEG-2"};
constexpr const char* kStandards[] = {"NTSC", "PAL"};
constexpr const char* kAspects[] = {"4:3", kUnknown, kUnknown, "16:9"};
constexpr const char* kBitrates[] = {"VBR", "CBR"};
constexpr const char* kResolutions625[] = {"720x576", "704x576", "352x576", "352x288"};
constexpr const char* kResolutions525[] = {"720x480", "704x480", "352x480", "352x240"};

template <size_t N> const char* Look(const char* const (&table)[N], unsigned value, const char* otherwise)
{
    return value < N ? table[value] : otherwise;
}

// `width` bits of a byte from bit `low` on.
constexpr unsigned Bits(uint8_t byte, unsigned low, unsigned width)
{
    return (unsigned {byte} >> low) & ((1U << width) - 1);
}

template <size_t N> void Copy(char (&field)[N], std::string_view text)
{
    const size_t length = std::min(text.size(), N - 1);
    std::memcpy(field, text.data(), length);
    field[length] = '\0';
}

void SetFormat(audio_stream& stream, unsigned coding, unsigned channels)
{
    const auto* const row
        = std::find_if(std::begin(kAudioFormats), std::end(kAudioFormats), [&](const AudioFormatRow& r) { return r.coding == coding; });
    if (row == std::end(kAudioFormats)) {
        Copy(stream.format, kUnknown);
        return;
    }
    std::string format = row->format;
    if (coding == kCodingDolbyDigital) {
        format += channels == kSixChannels ? " 5.1" : " 2.0";
    }
    Copy(stream.format, format);
    stream.streamId = row->streamId;
}

}    // namespace

audio_stream parseAudioStream(const audio_attributes& attributes)
{
    const uint8_t* const bytes = attributes.bytes.data();
    audio_stream stream;
    SetFormat(stream, Bits(bytes[0], 5, 3), Bits(bytes[1], 0, 3));
    // A code that is not ended by the byte behind its two letters is none of the table.
    stream.language = LanguageName(ByteReader(attributes.bytes).Text(2));
    Copy(stream.sampleRate, Look(kSampleRates, Bits(bytes[1], 4, 2), kUnknown));
    Copy(stream.quantization, Look(kQuantizations, Bits(bytes[1], 6, 2), kUnknown));
    Copy(stream.type, Look(kAudioTypes, bytes[5], ""));
    return stream;
}

video_stream parseVideoStream(const video_attributes& attributes)
{
    const auto [first, second] = attributes.bytes;
    video_stream stream;
    Copy(stream.compression, Look(kCompressions, Bits(first, 6, 2), kUnknown));
    Copy(stream.standard, Look(kStandards, Bits(first, 4, 2), kUnknown));
    Copy(stream.aspect, Look(kAspects, Bits(first, 2, 2), kUnknown));
    Copy(stream.bitrate, Look(kBitrates, Bits(second, 5, 1), kUnknown));
    const bool lines625 = std::strcmp(stream.standard, "PAL") == 0;
    Copy(stream.resolution, Look(lines625 ? kResolutions625 : kResolutions525, Bits(second, 3, 2), kUnknown));
    stream.letterboxed = static_cast<int32_t>(Bits(second, 2, 1));
    return stream;
}

CascadeString DescribeStreams(const std::vector<audio_stream>& streams)
{
    CascadeString text = CascadeString::Format("Audio Stream Count: %i\n", static_cast<int>(streams.size()));
    for (const audio_stream& stream : streams) {
        text += CascadeString::Format("Audio Format:\t%s\n", stream.format);
        text += CascadeString::Format("Language:\t%s\n", stream.language == nullptr ? kUnknown : stream.language);
        text += CascadeString::Format("Sample Rate:\t%s\n", stream.sampleRate);
        text += CascadeString::Format("Quantization:\t%s\n", stream.quantization);
        text += CascadeString::Format("Audio Type:\t%s\n\n", stream.type);
        text += CascadeString::Format("Stream ID:\t%i\n\n", stream.streamId);
    }
    return text;
}

CascadeString DescribeStream(const video_stream& stream)
{
    CascadeString text = CascadeString::Format("Compression:\t%s\n", stream.compression);
    text += CascadeString::Format("Video Standard:\t%s\n", stream.standard);
    text += CascadeString::Format("Aspect Ratio:\t%s\n", stream.aspect);
    text += CascadeString::Format("Bitrate:\t%s\n", stream.bitrate);
    text += CascadeString::Format("Resolution:\t%s\n", stream.resolution);
    text += CascadeString::Format("Letterboxed:\t%s\n\n", stream.letterboxed != 0 ? "True" : "False");
    return text;
}
