// The codes that the remote control's keys have on this platform.
#pragma once

#include <cstdint>

namespace Remote {
inline constexpr uint32_t kSelect = 0x1000B;         // in menus: choose; while playing: bookmark
inline constexpr uint32_t kUp = 0x1000C;             // while playing: next bookmark
inline constexpr uint32_t kDown = 0x1000D;           // while playing: previous bookmark
inline constexpr uint32_t kLeft = 0x1000E;           // while playing: skip back
inline constexpr uint32_t kRight = 0x1000F;          // while playing: skip forward
inline constexpr uint32_t kPlay = 0x10016;
inline constexpr uint32_t kPause = 0x10017;
inline constexpr uint32_t kPlayPause = 0x10018;
inline constexpr uint32_t kStop = 0x10019;
inline constexpr uint32_t kFastForward = 0x1001B;
inline constexpr uint32_t kRewind = 0x1001C;
inline constexpr uint32_t kNextChapter = 0x1001D;
inline constexpr uint32_t kPrevChapter = 0x1001E;
inline constexpr uint32_t kZoom = 0x1001F;
inline constexpr uint32_t kMenu = 0x10020;
inline constexpr uint32_t kInfo = 0x10021;
inline constexpr uint32_t kExit = 0x10022;           // in windows: leave; while playing: quit
inline constexpr uint32_t kPower = 0x10023;
inline constexpr uint32_t kPowerAlternate = 0x10026;

// The four keys that move a focus; they reach a window as OnNavKey, every other one as OnKeyDown.
inline constexpr bool IsNavigation(uint32_t key) { return key >= kUp && key <= kRight; }
}    // namespace Remote
