// Wormhole messages from the decoder feed to the application; neither carries data.
#pragma once

#include <cstdint>

inline constexpr uint32_t kMessageEndOfStream = 0xDEADBEEF;    // the last data has been taken by the decoder
inline constexpr uint32_t kMessageDecoderError = 0xDEADDEAD;
