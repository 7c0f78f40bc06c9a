// The external commands. The first row that matches decides; letters match in either case.
//
// Threads: constants; the handlers run on the user-interface thread.
#pragma once

#include <cstddef>
#include <cstdint>

#include "app/NuvidApp.h"
#include "platform/RemoteKeys.h"

// What becomes of a command that arrives while the user-interface thread waits for a server.
enum class WhileWaiting {
    kAnswered,    // at once: it only asks
    kEndsWait,    // the wait is ended, the command acts after it
    kAfterWait,    // acts after the wait, which goes on
    kIgnored,    // as a key is that comes at the wrong moment
};

struct CommandRow {
    using Handler = void (NuvidApp::*)(const CascadeString& rest, CascadeString& reply);

    const char* text;
    size_t compared;    // characters; CascadeString::kWhole: all of them
    size_t argumentAt;    // where the rest begins that the handler is given
    bool needsArgument;    // replies "Failed" without one
    uint32_t key;    // pressed, when there is no handler
    Handler handler;    // the reply is "OK" when it comes in
    WhileWaiting whileWaiting;
};

constexpr CommandRow KeyCommand(const char* text, uint32_t key, WhileWaiting whileWaiting = WhileWaiting::kIgnored)
{
    return {text, CascadeString::kWhole, 0, false, key, nullptr, whileWaiting};
}

constexpr CommandRow PlainCommand(const char* text, CommandRow::Handler handler, WhileWaiting whileWaiting)
{
    return {text, CascadeString::kWhole, 0, false, 0, handler, whileWaiting};
}

constexpr CommandRow Query(const char* text, CommandRow::Handler handler)
{
    return PlainCommand(text, handler, WhileWaiting::kAnswered);
}

struct CommandTable {
    static constexpr CommandRow kRows[] = {
        PlainCommand("Nuvid quit", &NuvidApp::OnQuitCommand, WhileWaiting::kEndsWait),
        PlainCommand("Nuvid exit", &NuvidApp::OnQuitCommand, WhileWaiting::kEndsWait),
        KeyCommand("Nuvid bookmark add", Remote::kSelect),
        KeyCommand("Nuvid bookmark next", Remote::kUp),
        KeyCommand("Nuvid bookmark previous", Remote::kDown),
        KeyCommand("Nuvid chapter next", Remote::kNextChapter),
        KeyCommand("Nuvid chapter previous", Remote::kPrevChapter),
        KeyCommand("Nuvid pause", Remote::kPause),
        KeyCommand("Nuvid play", Remote::kPlay),
        KeyCommand("Nuvid stop", Remote::kStop, WhileWaiting::kEndsWait),
        KeyCommand("Nuvid zoom", Remote::kZoom),
        {"Nuvid forward ", 14, 14, false, 0, &NuvidApp::OnForwardCommand, WhileWaiting::kIgnored},
        {"Nuvid back ", 11, 11, false, 0, &NuvidApp::OnBackCommand, WhileWaiting::kIgnored},
        KeyCommand("Nuvid info", Remote::kInfo),
        Query("Nuvid status", &NuvidApp::OnStatusQuery),
        Query("Nuvid currentfilename", &NuvidApp::OnFileNameQuery),
        Query("Nuvid currentfileprogress", &NuvidApp::OnFileProgressQuery),
        Query("Nuvid totalfileprogress", &NuvidApp::OnTotalProgressQuery),
        Query("Nuvid currentzoom", &NuvidApp::OnZoomQuery),
        // These two take whatever single character follows them for the separator.
        {"Nuvid open", 10, 11, true, 0, &NuvidApp::OnOpenCommand, WhileWaiting::kEndsWait},
        {"Nuvid queue", 11, 12, true, 0, &NuvidApp::OnQueueCommand, WhileWaiting::kAfterWait},
        Query("Nuvid ping", &NuvidApp::OnPing),
    };

    static const CommandRow* Find(const CascadeString& command)
    {
        for (const CommandRow& row : kRows) {
            if (command.Compare(row.text, false, false, row.compared) == 0) {
                return &row;
            }
        }
        return nullptr;
    }
};
