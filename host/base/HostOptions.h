// The host's own words on the command line ("--..."), taken out before the application sees the rest.
//
// Errors:  a bad value gives a text for standard error and exit code 2.
// Threads: read-only after ParseHostOptions.
#pragma once

#include <string>
#include <vector>

namespace host {

enum class Deinterlace { kAuto, kOn, kOff };

struct HostOptions {
    bool headless = false;
    bool windowed = false;              // --window
    bool fullscreen = false;            // --fullscreen; without either: full screen
    int windowWidth = 0;                // 0: the logical screen's
    int windowHeight = 0;
    std::string ecp = "127.0.0.1:4747"; // HOST:PORT or "off"
    std::string remote = "127.0.0.1:4748";    // of the phone remote: HOST:PORT or "off"
    std::string stateFolder;            // --state; empty: the XDG folders
    std::string volumes = "/tmp/Volumes";    // the folder that shows what is mounted, or "off"
    Deinterlace deinterlace = Deinterlace::kAuto;
    bool stretch = false;               // --aspect=stretch
    std::string audio;                  // device name, "off", or empty for the default
    bool help = false;
    bool version = false;
    bool opensHttp = false;             // something to play is an http:// address
};

struct ParsedCommandLine {
    HostOptions options;
    std::vector<std::string> rest;      // argument 0 and what is left for the application
    std::string error;                  // not empty: say it and leave with code 2
};

ParsedCommandLine ParseHostOptions(int argc, const char* const* argv);
const char* HostHelpText();

// The options of this run; set once by CascadeApp::Run before anything else of the host starts.
const HostOptions& CurrentHostOptions();
void SetCurrentHostOptions(HostOptions options);

// Folder for settings (state false) or for screenshots and other state (true), without a trailing "/",
// created when missing: --state, else $XDG_CONFIG_HOME/nuvid and $XDG_STATE_HOME/nuvid with their usual
// fall-backs. Empty when no such folder can be had.
std::string HostFolder(bool state);

}    // namespace host
