// The end of what is behind CascadeThumbnails; its worker starts with the first request.
//
// Threads: user-interface thread.
#pragma once

namespace host {

// Outstanding requests are dropped unanswered. Takes a third of a second when a disk does not answer, else less.
void StopThumbnails();

}    // namespace host
