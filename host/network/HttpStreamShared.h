// What the two sides of an HTTP stream share: the thread that reads the stream and the thread that talks
// to the server.
//
// Units:   positions are bytes of the resource.
// Threads: every member is guarded by `mutex`; `changed` is notified with it held.
#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>

#include "host/base/UiQueue.h"
#include "host/network/HttpStreamWindow.h"

namespace host {

struct HttpStreamShared {
    enum class State {
        kOpening,    // no final answer yet
        kFlowing,    // bytes come, or are being asked for
        kEnded,    // the window's end is the resource's end
        kFailed    // nothing comes any more; `error` says why
    };

    std::mutex mutex;
    Waiter changed;    // the state, or the window has reached wantedEnd

    // Orders of the reading side. A new number means: bytes from the window's end on, whatever is under way.
    uint64_t order = 0;
    bool orderIsProbe = false;    // only look whether the resource has grown beyond its end
    bool abort = false;
    bool mayFlow = true;    // false: the window is full and the transfer rests
    uint64_t wantedEnd = UINT64_MAX;
    uint64_t readPosition = 0;

    State state = State::kOpening;
    std::string error;
    HttpStreamWindow window;
    std::optional<uint64_t> size;
    bool sizeStated = false;    // by the server, not found out by reaching the end
    bool rangesWork = false;    // as far as is known
};

}    // namespace host
