// Carries out one external command: the host's own words, or the handler that claimed its first word.
//
// Threads: the user-interface thread.
#pragma once

#include <functional>
#include <string>

namespace host {

inline constexpr const char* kUnknownCommand = "Unknown command";

struct ControlReply {
    ControlReply(std::string reply) : text(std::move(reply)) {}
    ControlReply(const char* reply) : text(reply) {}
    std::string text;
    std::function<std::string()> later;    // set: what answers the reply instead, on any other thread
};

ControlReply RunControlCommand(const std::string& command);

// One line of JSON: what the rooms say of themselves, the windows, memory and processor time.
std::string ControlStats();

}    // namespace host
