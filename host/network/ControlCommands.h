// Carries out one external command: the host's own words, or the handler that claimed its first word.
//
// Threads: the user-interface thread.
#pragma once

#include <string>

namespace host {

inline constexpr const char* kUnknownCommand = "Unknown command";

std::string RunControlCommand(const std::string& command);

// One line of JSON: what the rooms say of themselves, the windows, memory and processor time.
std::string ControlStats();

}    // namespace host
