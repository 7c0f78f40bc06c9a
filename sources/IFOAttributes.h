// What the information file of a DVD title set says of its video and audio streams, as readable text.
//
// Errors:    a value outside the tables reads "Unknown"; nothing is printed.
// Threads:   no state.
// Ownership: values; language names point into a constant table.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "platform/CascadeString.h"
#include "sources/DVDAudioStream.h"

// The audio record of the information file (DVD-Video, VTS_AST_ATR), as on the disc.
struct audio_attributes {
    std::array<uint8_t, 8> bytes = {};
};

// The video record of the information file (DVD-Video, VTS_V_ATR), as on the disc.
struct video_attributes {
    std::array<uint8_t, 2> bytes = {};
};

struct video_stream {
    char compression[9] = {};    // "MPEG-2"
    char standard[9] = {};    // "PAL"
    char aspect[9] = {};    // "16:9"
    char bitrate[9] = {};    // "VBR" or "CBR"
    char resolution[9] = {};    // "720x576"
    int32_t letterboxed = 0;    // 0 or 1
};

// The identifier is that of the first stream of the format; the stream's own number is or'ed in by who knows it.
audio_stream parseAudioStream(const audio_attributes& attributes);
video_stream parseVideoStream(const video_attributes& attributes);

// Labelled lines, one a field.
CascadeString DescribeStreams(const std::vector<audio_stream>& streams);
CascadeString DescribeStream(const video_stream& stream);
