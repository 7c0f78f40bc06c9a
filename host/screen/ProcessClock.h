// How long this process has been running, its loading included.
//
// Units:   milliseconds, exact to the kernel's tick of 10.
// Threads: any.
#pragma once

namespace screen {

long MillisecondsSinceProcessStart();

}    // namespace screen
