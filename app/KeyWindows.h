// The countdowns that give a second key press within a few seconds a meaning of its own, and the hold
// counters of the two fast keys.
//
// Units:   ticks of 100 ms; hold counts are key-down events.
// Threads: the user-interface thread.
#pragma once

#include <array>
#include <cstdint>

class KeyWindows {
public:
    enum Window : uint8_t { kBookmark, kPrevBookmark, kPrevChapter, kInfo, kZoom, kPause, kCount };

    static constexpr int kTwoAndAHalfSeconds = 25;
    static constexpr int kJumpWindow = 27;    // of the keys that jump to a mark: the jump itself takes two ticks

    static constexpr uint8_t Bit(Window window) { return static_cast<uint8_t>(1U << window); }

    bool IsOpen(Window window) const { return m_Ticks[window] != 0; }
    void Open(Window window, int ticks) { m_Ticks[window] = ticks; }
    void Close(Window window) { m_Ticks[window] = 0; }
    void CloseAll(uint8_t bits);    // a set of Bit()
    void Tick();

private:
    std::array<int, kCount> m_Ticks {};
};

// A key whose short press acts on release and whose long press acts while it is held.
class FastKey {
public:
    static constexpr int kLongPress = 5;    // key-down events, the first press and four repeats

    // A key-down event; true when it makes the press a long one.
    bool Down();
    // True when the press was a short one.
    bool Up();

private:
    int m_nHoldCount = 0;
    bool m_bLongDone = false;
};
