// How long a recording lasts, told by the times that stand at its beginning, in its middle and at its end.
//
// Units:     seconds.
// Errors:    0: not known. So it is with a clock that starts again on the way, and with times that no bit rate fits.
// Threads:   one at a time; reads up to a few megabytes, so it blocks on the disk.
// Ownership: borrows the descriptor.
#pragma once

#include <cstdint>
#include <functional>

namespace host {

// `fd` is a regular file of `size` bytes; `stop` is asked often and ends the work.
int RecordingLength(int fd, int64_t size, const std::function<bool()>& stop);

}    // namespace host
