// What SDL leaves open about the X11 server.
//
// Threads: the user-interface thread, with SDL's video part running.
#pragma once

namespace screen {

// A box under a television often runs the player on a bare server. Opens a connection of its own for the question.
bool HasX11WindowManager();

// Xlib ends the program at the first refused request. SDL wakes its own event loop by a message to its window, on a
// connection of its own; when the window is closed in the same moment, that message is refused.
void IgnoreX11Errors();

}    // namespace screen
