// All that the playback engine knows of the application that owns it.
//
// Threads:   the user-interface thread.
// Ownership: not owned by the engine, and outlives it.
#pragma once

class IPlaybackClient {
public:
    virtual ~IPlaybackClient() = default;

    virtual void ShowText(const char* text) = 0;    // a short status text
    virtual bool NextFile() = 0;                    // moves to the next item of the queue; whether it did
    virtual bool PrevFile() = 0;
    virtual bool AskForResume() = 0;                // the opened file has a saved position; true: the viewer is being asked
};
