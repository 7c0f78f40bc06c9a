// How far a held key moves the cursor: one row at first, more the longer it is held, so that a list of ten thousand
// is crossed in seconds and a single press is always a single row.
//
// Units:   rows; milliseconds of uptime.
// Threads: one thread at a time.
#pragma once

#include <cstdint>

class ListMotion {
public:
    // A press or one of its repeats; `direction` is -1 or 1, `count` the length of the list. Answers signed rows.
    int Step(int direction, int count, uint32_t nowMs);
    void Release() { m_nDirection = 0; }

private:
    int m_nDirection = 0;    // 0: no key is held
    uint32_t m_nPressedAt = 0;
    uint32_t m_nLastAt = 0;
};
