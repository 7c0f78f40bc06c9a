// What kind of MPEG container a run of bytes is, told by its own marks alone.
//
// Threads: any; looks at the bytes only.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/CascadeMPEGFile.h"

namespace host {

// The first bytes of a stream (or of a place inside one). Stuffing and some garbage before the first mark
// are looked over. A transport stream needs several packet marks in a raster of 188, 192 or 204 bytes; a
// program stream a pack header whose marker bits are right and that is followed by another start code.
CascadeMPEGFile::StreamType KindOfStream(const uint8_t* bytes, size_t count);

}    // namespace host
