// Which keyboard and media keys stand for which key of the remote control. docs/remote.md lists the same rows.
//
// A letter means the key that types it, wherever the keyboard's layout has it; on layouts without Latin letters it
// means the key's place. Where letters are typed (the file browser), the keys without one are there.
#pragma once

#include <SDL_keyboard.h>

#include "host/screen/HostKeys.h"
#include "platform/RemoteKeys.h"

namespace screen {

struct KeyMapRow {
    SDL_Scancode scancode;
    const char* key;    // what is printed on it
    uint32_t code;
    const char* remote;    // name of the remote's key
};

inline constexpr KeyMapRow kKeyMap[] = {
    {SDL_SCANCODE_RETURN, "Enter", Remote::kSelect, "Select"},
    {SDL_SCANCODE_KP_ENTER, "Keypad Enter", Remote::kSelect, "Select"},
    {SDL_SCANCODE_SELECT, "Select", Remote::kSelect, "Select"},
    {SDL_SCANCODE_B, "B", Remote::kSelect, "Select"},
    {SDL_SCANCODE_UP, "Up", Remote::kUp, "Up"},
    {SDL_SCANCODE_DOWN, "Down", Remote::kDown, "Down"},
    {SDL_SCANCODE_LEFT, "Left", Remote::kLeft, "Left"},
    {SDL_SCANCODE_RIGHT, "Right", Remote::kRight, "Right"},
    {SDL_SCANCODE_P, "P", Remote::kPlay, "Play"},
    {SDL_SCANCODE_PAUSE, "Pause", Remote::kPause, "Pause"},
    {SDL_SCANCODE_SPACE, "Space", Remote::kPlayPause, "Play/Pause"},
    {SDL_SCANCODE_AUDIOPLAY, "Media Play", Remote::kPlayPause, "Play/Pause"},
    {SDL_SCANCODE_S, "S", Remote::kStop, "Stop"},
    {SDL_SCANCODE_AUDIOSTOP, "Media Stop", Remote::kStop, "Stop"},
    {SDL_SCANCODE_DELETE, "Delete", Remote::kStop, "Stop"},
    {SDL_SCANCODE_F, "F", Remote::kFastForward, "Fast Forward"},
    {SDL_SCANCODE_AUDIOFASTFORWARD, "Media Fast Forward", Remote::kFastForward, "Fast Forward"},
    {SDL_SCANCODE_R, "R", Remote::kRewind, "Rewind"},
    {SDL_SCANCODE_AUDIOREWIND, "Media Rewind", Remote::kRewind, "Rewind"},
    {SDL_SCANCODE_PAGEUP, "Page Up", Remote::kNextChapter, "Next Chapter"},
    {SDL_SCANCODE_N, "N", Remote::kNextChapter, "Next Chapter"},
    {SDL_SCANCODE_AUDIONEXT, "Media Next", Remote::kNextChapter, "Next Chapter"},
    {SDL_SCANCODE_PAGEDOWN, "Page Down", Remote::kPrevChapter, "Previous Chapter"},
    {SDL_SCANCODE_V, "V", Remote::kPrevChapter, "Previous Chapter"},
    {SDL_SCANCODE_AUDIOPREV, "Media Previous", Remote::kPrevChapter, "Previous Chapter"},
    {SDL_SCANCODE_Z, "Z", Remote::kZoom, "Zoom"},
    {SDL_SCANCODE_F2, "F2", Remote::kZoom, "Zoom"},
    {SDL_SCANCODE_M, "M", Remote::kMenu, "Menu"},
    {SDL_SCANCODE_HOME, "Home", Remote::kMenu, "Menu"},
    {SDL_SCANCODE_APPLICATION, "Context Menu", Remote::kMenu, "Menu"},
    {SDL_SCANCODE_MENU, "Menu", Remote::kMenu, "Menu"},
    {SDL_SCANCODE_AC_HOME, "Media Home", Remote::kMenu, "Menu"},
    {SDL_SCANCODE_I, "I", Remote::kInfo, "Info"},
    {SDL_SCANCODE_F1, "F1", Remote::kInfo, "Info"},
    {SDL_SCANCODE_ESCAPE, "Escape", Remote::kExit, "Exit"},
    {SDL_SCANCODE_BACKSPACE, "Backspace", Remote::kExit, "Exit"},
    {SDL_SCANCODE_Q, "Q", Remote::kExit, "Exit"},
    {SDL_SCANCODE_AC_BACK, "Media Back", Remote::kExit, "Exit"},
    {SDL_SCANCODE_POWER, "Power", Remote::kPower, "Power"},
    {SDL_SCANCODE_SLEEP, "Sleep", Remote::kPowerAlternate, "Power (second key)"},
    {SDL_SCANCODE_PRINTSCREEN, "Print Screen", HostKey::kScreenshot, "Screenshot"},
    {SDL_SCANCODE_F12, "F12", HostKey::kScreenshot, "Screenshot"},
    {SDL_SCANCODE_F11, "F11", HostKey::kDevices, "Devices"},
};

constexpr bool KeysAreUnique()
{
    for (const KeyMapRow& row : kKeyMap) {
        int rows = 0;
        for (const KeyMapRow& other : kKeyMap) {
            rows += other.scancode == row.scancode ? 1 : 0;
        }
        if (rows != 1) {
            return false;
        }
    }
    return true;
}
static_assert(KeysAreUnique());

// The remote's code of a key, 0 for a key that stands for none.
constexpr uint32_t RemoteCode(SDL_Scancode scancode, SDL_Keycode typed)
{
    if (typed >= SDLK_a && typed <= SDLK_z) {
        scancode = SDL_Scancode(SDL_SCANCODE_A + (typed - SDLK_a));
    }
    for (const KeyMapRow& row : kKeyMap) {
        if (row.scancode == scancode) {
            return row.code;
        }
    }
    return 0;
}

}    // namespace screen
