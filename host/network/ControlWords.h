// The host's own external commands, as a list. docs/control.md has the same rows.
#pragma once

#include <string>
#include <string_view>

#include "host/network/ControlCommands.h"

namespace host {

inline constexpr std::string_view kHostPrefix = "Cascade";

// Each runs on the user-interface thread with what follows its word, and answers the reply.
ControlReply PressKeyWord(std::string_view argument);
ControlReply KeyDownWord(std::string_view argument);
ControlReply KeyUpWord(std::string_view argument);
ControlReply ScreenshotWord(std::string_view argument);
ControlReply StatsWord(std::string_view argument);
ControlReply DevicesWord(std::string_view argument);
ControlReply UnpairWord(std::string_view argument);
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
    {"devices", "", DevicesWord},
    {"unpair", "", UnpairWord},
    {"help", "", HelpWord},
};

}    // namespace host
