// Input of the platform: injected keys and the screen saver.
//
// Threads: the user-interface thread.
#pragma once

class CascadeInput {
public:
    static void NotifyScreenActivity();    // puts the screen saver off for a while

    // As if the remote's key had been pressed or released: queued, and delivered as an event of its own.
    static void DispatchKeyDown(unsigned long key);
    static void DispatchKeyUp(unsigned long key);
};
