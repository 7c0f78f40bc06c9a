// One way to a screen and a keyboard: memory alone, or SDL's window.
//
// Units:     pixels of the output.
// Errors:    SetResolution answers false and changes nothing.
// Threads:   the user-interface thread; Wake from any.
// Ownership: owns its presenter.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/base/HostOptions.h"
#include "host/base/UiQueue.h"
#include "host/screen/EventQueue.h"
#include "host/screen/Presenter.h"

namespace screen {

struct DisplayEvents {
    std::vector<Event> input;
    bool closeWanted = false;
    bool exposed = false;    // what was shown is lost; also after a change of size
};

class Display {
public:
    virtual ~Display() = default;
    virtual Presenter& Output() = 0;

    // Sleeps until there are events, Wake was called, or `until`; max(): without end. Exact to a millisecond.
    virtual void Wait(host::Clock::time_point until) = 0;
    virtual void Wake() = 0;
    virtual void TakeEvents(DisplayEvents& events) = 0;    // does not wait

    virtual std::vector<CascadeDims> Resolutions() const = 0;    // the first is that of the start
    virtual bool SetResolution(unsigned index) = 0;
    virtual void LetScreenSleep(bool allowed) = 0;
};

// The display that the options ask for, or memory alone where there is no screen (said on standard error).
std::unique_ptr<Display> OpenDisplay(const host::HostOptions& options);

std::unique_ptr<Display> OpenHeadlessDisplay(const host::HostOptions& options);
std::unique_ptr<Display> OpenSdlDisplay(const host::HostOptions& options, std::string& error);    // null: none could be had

// For outputs whose size is ours to choose: as started, then the usual ones.
std::vector<CascadeDims> FreeResolutions(CascadeDims start);
CascadeDims StartDims(const host::HostOptions& options);

}    // namespace screen
