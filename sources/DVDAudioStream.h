// One audio stream of a DVD title set as its information file describes it.
//
// Ownership: a value; `language` points into a constant table.
#pragma once

#include <cstdint>

struct audio_stream {
    char format[21] = {};          // "DD 5.1"
    const char* language = nullptr;    // null: unknown
    char sampleRate[9] = {};
    char quantization[9] = {};
    char type[129] = {};           // empty for an ordinary track
    int32_t streamId = 0;          // identifier in the program stream, sub-stream number or'ed in
};
