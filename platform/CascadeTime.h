// The platform's clock.
//
// Units:   milliseconds since the machine started; the 32-bit value wraps after 49.7 days.
// Threads: any.
#pragma once

#include <cstdint>

class CascadeTime {
public:
    static uint32_t GetUptimeMilliseconds();
};
