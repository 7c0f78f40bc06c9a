// A call to the file system that may not come back: a disk that has to wake up, a share whose server is gone.
//
// Threads:   on the user-interface thread, whose loop turns when the call takes long, and on a thread with an
//            InterruptToken the work runs on a thread of its own and the wait can be ended; on any other thread
//            it runs at once, where it is called.
// Ownership: a call that was given up runs on in the background, for ever if need be: what `work` uses must be
//            its own (captured by value or shared). At the program's end it is left behind.
#pragma once

#include <functional>

#include "host/base/UiQueue.h"

namespace host {

// Whether a wait of the calling thread can be ended.
bool CanEndWait();

// While one lives, the user-interface loop is not turned inside a call: the disk is waited for where it is asked.
class NoTurnScope {
public:
    NoTurnScope();
    ~NoTurnScope();
    NoTurnScope(const NoTurnScope&) = delete;
    NoTurnScope& operator=(const NoTurnScope&) = delete;
};

// kDone: the work has run. kTimedOut: not within `patience`. kInterrupted: the wait was ended first, or too many
// calls hang already.
WaitResult CallDisk(std::function<void()> work, Clock::duration patience = std::chrono::hours(1000));

}    // namespace host
