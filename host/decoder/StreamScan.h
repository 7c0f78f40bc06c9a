// Lists what a stream carries, by letting the library look at a bounded part of it.
//
// Units:     bytes.
// Errors:    a stream that tells nothing gives empty lists.
// Threads:   the calling thread; blocks on the stream.
// Ownership: uses the stream, moves its position.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/CascadeMPEGFile.h"
#include "platform/CascadeStream.h"

namespace host {

struct ScannedProgram {
    CascadeMPEGFile::Program program;
    std::vector<CascadeMPEGFile::VideoStream> video;
    std::vector<CascadeMPEGFile::AudioStream> audio;
};

// `seen` are the bytes that were read already; the stream stands behind them.
std::vector<ScannedProgram> ScanStream(CascadeStream& stream, CascadeMPEGFile::StreamType type, const std::vector<uint8_t>& seen);

}    // namespace host
