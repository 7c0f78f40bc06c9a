// Which codec the bytes of an elementary stream are, for streams whose container does not say.
//
// Threads: any; looks at the bytes only.
#pragma once

#include <cstddef>
#include <cstdint>

#include "host/decoder/AvPointers.h"

namespace host {

// AV_CODEC_ID_NONE while nothing has been found that proves one.
AVCodecID SniffVideo(const uint8_t* bytes, size_t count);

// For the first bytes of a packet of an MPEG audio identifier: ADTS, LATM, or MPEG audio.
AVCodecID SniffMpegAudio(const uint8_t* bytes, size_t count);

}    // namespace host
