// What one room of the host offers the others without their including each other.
//
// Threads: user-interface thread, unless said otherwise.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace host {

struct HostHooks {
    // host/screen
    // Takes the picture at once and answers the work that writes it as a PNG, for any thread: it takes
    // longer than a picture is shown. The work answers the file's path; empty: failed.
    std::function<std::function<std::string()>()> takeScreenshot;
    std::function<std::vector<std::string>()> windowTitles;    // on screen, lowest first
    // host/decoder: members of a JSON object without braces ("\"state\":\"playing\",..."); empty fields when nothing is open
    std::function<std::string()> decoderStats;
    // host/screen: the same for the screen ("\"presented\":..,\"first_frame_ms\":..")
    std::function<std::string()> screenStats;
};
HostHooks& Hooks();

// Defined in host/network, called by the application loop: external control (and later the phone remote).
// Start answers false, and says why on standard error, when the port cannot be had; the player goes on.
bool StartNetworkServices();
void StopNetworkServices();

// Defined in host/network: claims external commands whose first word is `prefix`; `handler` runs on the
// user-interface thread with the whole command and answers the reply.
void ClaimCommandPrefix(const std::string& prefix, std::function<std::string(const std::string& command)> handler);

}    // namespace host
