// The names of the remote control's keys, for external control and the phone remote. docs/control.md lists them.
//
// Threads: constants.
#pragma once

#include <cstdint>
#include <string_view>

#include "platform/RemoteKeys.h"

namespace host {

struct KeyName {
    std::string_view name;
    uint32_t key;
};

inline constexpr KeyName kKeyNames[] = {
    {"select", Remote::kSelect},
    {"up", Remote::kUp},
    {"down", Remote::kDown},
    {"left", Remote::kLeft},
    {"right", Remote::kRight},
    {"play", Remote::kPlay},
    {"pause", Remote::kPause},
    {"playpause", Remote::kPlayPause},
    {"stop", Remote::kStop},
    {"forward", Remote::kFastForward},
    {"rewind", Remote::kRewind},
    {"next", Remote::kNextChapter},
    {"previous", Remote::kPrevChapter},
    {"zoom", Remote::kZoom},
    {"menu", Remote::kMenu},
    {"info", Remote::kInfo},
    {"exit", Remote::kExit},
    {"power", Remote::kPower},
};

// 0: no key has that name.
constexpr uint32_t KeyNamed(std::string_view name)
{
    for (const KeyName& row : kKeyNames) {
        if (row.name == name) {
            return row.key;
        }
    }
    return 0;
}

}    // namespace host
