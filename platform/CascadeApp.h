// The application object and its event loop.
//
// Threads:   everything here runs on the user-interface thread, one event at a time: keys, timers,
//            painting, wormhole messages, external commands.
// Waiting:   some platform calls (CascadeHTTPStream) block the user-interface thread for a server. The
//            loop then keeps turning in a small way: windows paint, video is shown, external commands
//            arrive, but timers and wormhole messages wait, and keys go to OnKeyWhileWaiting alone.
//            EndWait makes the blocked call, and every further one of the same event, give up at once.
// Ownership: exactly one object, owned by main.
#pragma once

#include <functional>

#include "platform/CascadeString.h"
#include "platform/CascadeWormhole.h"

struct CascadeNowPlaying;

class CascadeApp {
public:
    static CascadeApp* s_pTheApp;    // the one object; null before it is built and after it is gone

    CascadeApp();
    virtual ~CascadeApp();
    CascadeApp(const CascadeApp&) = delete;
    CascadeApp& operator=(const CascadeApp&) = delete;

    virtual void OnAppInit() {}
    virtual void OnAppExit() {}
    virtual void OnKeyDown(unsigned long /*key*/) {}
    virtual void OnKeyUp(unsigned long /*key*/) {}
    virtual void OnWormholeMessage(const CascadeMessage& /*message*/) {}
    virtual void OnECPCommand(const CascadeString& /*command*/, CascadeString& /*reply*/) {}
    virtual void OnKeyWhileWaiting(unsigned long /*key*/) {}
    // For phones and the desktop. Asked at any time, also while a call waits: a query that does not block.
    virtual void OnNowPlaying(CascadeNowPlaying& /*now*/) {}
    virtual void OnSkipWanted(int /*seconds*/) {}    // negative: back
    virtual void OnOpenWanted(const CascadeString& /*path*/) {}    // plays it in place of what is playing

    // Takes the host's own words ("--...") out, calls OnAppInit, delivers events until Terminate, calls
    // OnAppExit, and answers the exit code. Argument 0 is the program's path, with a folder.
    int Run(int argc, char** argv);
    void Terminate(int exitCode);

    int GetArgCount() const;
    const char* GetArg(int index) const;
    CascadeString GetProgramName() const;    // the file name of argument 0

    // Claims the external commands whose first word is `prefix`. They reach OnECPCommand whole; the reply
    // that it leaves is sent back.
    void RegisterECPCommand(const char* prefix);

    const char* GetWormholeAddress() const;

    bool IsWaiting() const;    // a blocked call is on the stack below
    bool WaitWasEnded() const;    // EndWait was called and its event has not been left yet
    void EndWait();
    void PostAfterWait(std::function<void()> action);    // runs as an event of its own once nothing waits
};
