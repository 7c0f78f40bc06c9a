// The host's own external commands and the names of keys, as lists. docs/control.md has the same rows.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "host/network/ControlCommands.h"
#include "platform/RemoteKeys.h"

namespace host {

inline constexpr std::string_view kHostPrefix = "Cascade";

struct ControlKeyName {
    std::string_view name;
    uint32_t key;
};

inline constexpr ControlKeyName kControlKeys[] = {
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

// Each runs on the user-interface thread with what follows its word, and answers the reply.
ControlReply PressKeyWord(std::string_view argument);
ControlReply KeyDownWord(std::string_view argument);
ControlReply KeyUpWord(std::string_view argument);
ControlReply ScreenshotWord(std::string_view argument);
ControlReply StatsWord(std::string_view argument);
ControlReply HelpWord(std::string_view argument);

struct ControlHostWord {
    std::string_view name;
    std::string_view argument;    // as help shows it; empty: takes none
    ControlReply (*run)(std::string_view argument);
};

inline constexpr ControlHostWord kHostWords[] = {
    {"key", "NAME|0xCODE", PressKeyWord},
    {"keydown", "NAME|0xCODE", KeyDownWord},
    {"keyup", "NAME|0xCODE", KeyUpWord},
    {"screenshot", "", ScreenshotWord},
    {"stats", "", StatsWord},
    {"help", "", HelpWord},
};

}    // namespace host
