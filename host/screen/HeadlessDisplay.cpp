// The display of a box without one: the composed screen is memory, keys come from external control alone.
#include <cstdlib>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include "host/screen/Display.h"
#include "host/screen/SurfacePresenter.h"
#include "host/screen/WakeEvent.h"

namespace screen {

WakeEvent::WakeEvent()
    : m_Fd(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    if (m_Fd < 0) {
        std::abort();    // no file number left before anything was opened
    }
}

WakeEvent::~WakeEvent()
{
    close(m_Fd);
}

void WakeEvent::Set()
{
    const uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = write(m_Fd, &one, sizeof one);
}

bool WakeEvent::Wait(host::Clock::time_point until, int other)
{
    pollfd waiting[2] {{m_Fd, POLLIN, 0}, {other, POLLIN, 0}};
    timespec rest {};
    const bool endless = until == host::Clock::time_point::max();
    if (!endless) {
        const auto left = std::max(std::chrono::nanoseconds(0), std::chrono::duration_cast<std::chrono::nanoseconds>(until - host::Clock::now()));
        rest.tv_sec = time_t(left.count() / 1'000'000'000);
        rest.tv_nsec = long(left.count() % 1'000'000'000);
    }
    if (ppoll(waiting, 2, endless ? nullptr : &rest, nullptr) <= 0 || waiting[0].revents == 0) {
        return false;
    }
    uint64_t count = 0;
    return read(m_Fd, &count, sizeof count) > 0;
}

namespace {

class HeadlessDisplay : public Display {
public:
    explicit HeadlessDisplay(CascadeDims start)
        : m_Resolutions(FreeResolutions(start))
    {
        auto target = std::make_unique<MemoryTarget>(start);
        m_pTarget = target.get();
        m_pPresenter = std::make_unique<SurfacePresenter>(std::move(target));
    }
    Presenter& Output() override { return *m_pPresenter; }
    void Wait(host::Clock::time_point until) override { m_Wake.Wait(until); }
    void Wake() override { m_Wake.Set(); }
    void TakeEvents(DisplayEvents&) override { }
    std::vector<CascadeDims> Resolutions() const override { return m_Resolutions; }
    bool SetResolution(unsigned index) override { return index < m_Resolutions.size() && m_pTarget->Resize(m_Resolutions[index]); }
    void LetScreenSleep(bool) override { }

private:
    std::vector<CascadeDims> m_Resolutions;
    MemoryTarget* m_pTarget = nullptr;
    std::unique_ptr<SurfacePresenter> m_pPresenter;
    WakeEvent m_Wake;
};

}    // namespace

std::vector<CascadeDims> FreeResolutions(CascadeDims start)
{
    return {start, {1280, 720}, {1920, 1080}, {3840, 2160}, {720, 576}, {720, 480}};
}

CascadeDims StartDims(const host::HostOptions& options)
{
    return options.windowWidth > 0 && options.windowHeight > 0 ? CascadeDims {options.windowWidth, options.windowHeight} : kLogicalScreen;
}

std::unique_ptr<Display> OpenHeadlessDisplay(const host::HostOptions& options)
{
    return std::make_unique<HeadlessDisplay>(StartDims(options));
}

}    // namespace screen
