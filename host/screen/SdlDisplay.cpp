#include "host/screen/SdlDisplay.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>

#include <dirent.h>
#include <unistd.h>

#include "host/screen/KeyMap.h"
#include "host/screen/SdlPresenters.h"
#include "host/screen/X11Server.h"

namespace screen {

using host::Clock;

namespace {

// How often a driver that cannot sleep until an event is asked for keys. 50 times a second is quicker than a finger.
constexpr auto kAskForKeys = std::chrono::milliseconds(20);

bool IsSet(const char* name)
{
    const char* const value = std::getenv(name);
    return value != nullptr && *value != '\0';
}

bool HasNode(const char* folder, const char* prefix)
{
    DIR* const directory = opendir(folder);
    bool found = false;
    while (const dirent* const entry = directory == nullptr ? nullptr : readdir(directory)) {
        found = found || std::strncmp(entry->d_name, prefix, std::strlen(prefix)) == 0;
    }
    if (directory != nullptr) {
        closedir(directory);
    }
    return found;
}

// SDL takes ten times as long to find out.
bool MayHaveDisplay()
{
    return IsSet("DISPLAY") || IsSet("WAYLAND_DISPLAY") || IsSet("SDL_VIDEODRIVER") || HasNode("/dev/dri", "card");
}

// Drivers that show nothing are for those who ask for them by name.
bool ShowsNothing(const char* driver)
{
    return std::strcmp(driver, "offscreen") == 0 || std::strcmp(driver, "dummy") == 0 || std::strcmp(driver, "evdev") == 0;
}

}    // namespace

bool HasGraphicsProcessor()
{
    return HasNode("/dev/dri", "renderD") || HasNode("/dev", "nvidia0") || HasNode("/dev", "mali");
}

SdlDisplay::~SdlDisplay()
{
    m_pPresenter.reset();
    if (m_pWindow != nullptr) {
        SDL_DestroyWindow(m_pWindow);
    }
    if (m_bVideo) {
        SDL_QuitSubSystem(SDL_INIT_VIDEO);
    }
}

bool SdlDisplay::StartVideo(std::string& error)
{
    if (!MayHaveDisplay()) {
        error = "there is none";
        return false;
    }
    SDL_SetMainReady();
    SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
    SDL_SetHint(SDL_HINT_VIDEO_ALLOW_SCREENSAVER, "1");
    SDL_SetHint(SDL_HINT_VIDEO_MINIMIZE_ON_FOCUS_LOSS, "0");
    SDL_SetHint(SDL_HINT_RENDER_SCALE_QUALITY, "linear");
    SDL_SetHint(SDL_HINT_APP_NAME, "Nuvid");
    if (SDL_InitSubSystem(SDL_INIT_VIDEO) != 0) {
        error = SDL_GetError();
        return false;
    }
    m_bVideo = true;
    const char* const driver = SDL_GetCurrentVideoDriver();
    if (ShowsNothing(driver) && !IsSet("SDL_VIDEODRIVER")) {
        error = "no X11, Wayland or KMS screen can be had";
        return false;
    }
    m_bX11 = std::strcmp(driver, "x11") == 0;
    m_bSleepsInSdl = m_bX11 || std::strcmp(driver, "wayland") == 0;
    if (m_bX11) {
        IgnoreX11Errors();
        SDL_SetHint(SDL_HINT_FRAMEBUFFER_ACCELERATION, "0");    // window surfaces go to the server, not through GL
    }
    m_nWakeType = SDL_RegisterEvents(1);
    return true;
}

bool SdlDisplay::OpenWindow(const host::HostOptions& options, std::string& error)
{
    m_bWindowed = options.windowed && !options.fullscreen;
    const CascadeDims dims = StartDims(options);
    SDL_Rect place {SDL_WINDOWPOS_UNDEFINED, SDL_WINDOWPOS_UNDEFINED, dims.width, dims.height};
    Uint32 flags = SDL_WINDOW_ALLOW_HIGHDPI | (m_bWindowed ? SDL_WINDOW_RESIZABLE : SDL_WINDOW_FULLSCREEN_DESKTOP);
    // Nobody answers the wish for the full screen on a bare server, and SDL waits a tenth of a second for the answer. A
    // window without borders as large as the screen is the same there.
    const bool bare = !m_bWindowed && m_bX11 && !HasX11WindowManager() && SDL_GetDisplayBounds(0, &place) == 0;
    if (bare) {
        flags = SDL_WINDOW_BORDERLESS;
    }
    m_pWindow = SDL_CreateWindow("Nuvid", place.x, place.y, place.w, place.h, flags);
    if (m_pWindow == nullptr) {
        error = SDL_GetError();
        return false;
    }
    if (bare) {
        SDL_SetWindowInputFocus(m_pWindow);    // nobody else gives it
    }
    SDL_ShowCursor(SDL_DISABLE);
    m_nX11Connection = m_bX11 ? X11Connection(m_pWindow) : -1;
    return true;
}

bool SdlDisplay::Open(const host::HostOptions& options, std::string& error)
{
    if (!StartVideo(error) || !OpenWindow(options, error)) {
        return false;
    }
    if (!ChoosePresenter()) {
        error = SDL_GetError();
        return false;
    }
    if (m_bWindowed) {
        m_Resolutions = FreeResolutions(m_pPresenter->Dims());
    } else {
        CollectModes();
    }
    return true;
}

bool SdlDisplay::ChoosePresenter()
{
    // NUVID_PRESENTER=surface or texture takes that one untried: for tests, and for drivers that lie.
    const char* const wanted = std::getenv("NUVID_PRESENTER");
    const bool forced = wanted != nullptr && std::strcmp(wanted, "texture") == 0;
    const bool refused = wanted != nullptr && std::strcmp(wanted, "surface") == 0;
    if (!refused && (forced || HasGraphicsProcessor())) {
        m_pPresenter = MakeTexturePresenter(m_pWindow, forced);
    }
    if (m_pPresenter == nullptr) {
        m_pPresenter = MakeX11Presenter(m_pWindow);
    }
    if (m_pPresenter == nullptr) {
        m_pPresenter = MakeWindowSurfacePresenter(m_pWindow);
    }
    return m_pPresenter != nullptr;
}

void SdlDisplay::CollectModes()
{
    m_Resolutions = {m_pPresenter->Dims()};
    const int display = SDL_GetWindowDisplayIndex(m_pWindow);
    for (int i = 0; i < SDL_GetNumDisplayModes(display); ++i) {
        SDL_DisplayMode mode;
        const bool known = SDL_GetDisplayMode(display, i, &mode) != 0
            || std::any_of(
                m_Resolutions.begin() + 1, m_Resolutions.end(), [&](CascadeDims dims) { return dims.width == mode.w && dims.height == mode.h; });
        if (!known) {
            m_Resolutions.push_back({mode.w, mode.h});
        }
    }
}

bool SdlDisplay::SetScreenMode(unsigned index)
{
    if (index == 0) {
        return SDL_SetWindowFullscreen(m_pWindow, SDL_WINDOW_FULLSCREEN_DESKTOP) == 0;
    }
    SDL_DisplayMode wanted {};
    wanted.w = m_Resolutions[index].width;
    wanted.h = m_Resolutions[index].height;
    SDL_DisplayMode mode;
    if (SDL_GetClosestDisplayMode(SDL_GetWindowDisplayIndex(m_pWindow), &wanted, &mode) == nullptr || mode.w != wanted.w || mode.h != wanted.h) {
        return false;
    }
    return SDL_SetWindowDisplayMode(m_pWindow, &mode) == 0 && SDL_SetWindowFullscreen(m_pWindow, SDL_WINDOW_FULLSCREEN) == 0;
}

bool SdlDisplay::SetResolution(unsigned index)
{
    if (index >= m_Resolutions.size()) {
        return false;
    }
    if (!m_bWindowed) {
        return SetScreenMode(index);
    }
    SDL_SetWindowSize(m_pWindow, m_Resolutions[index].width, m_Resolutions[index].height);
    return true;
}

void SdlDisplay::LetScreenSleep(bool allowed)
{
    if (allowed) {
        SDL_EnableScreenSaver();
    } else {
        SDL_DisableScreenSaver();
    }
}

void SdlDisplay::Wake()
{
    if (!m_bSleepsInSdl || m_nX11Connection >= 0) {
        m_Wake.Set();
        return;
    }
    if (!m_bWakePending.exchange(true)) {
        SDL_Event event {};
        event.type = m_nWakeType;
        if (SDL_PushEvent(&event) != 1) {
            m_bWakePending = false;    // the queue is full: the loop is awake anyway
        }
    }
}

void SdlDisplay::Wait(Clock::time_point until)
{
    if (m_nX11Connection >= 0) {
        // SDL would count whole milliseconds, and be woken by way of the server.
        SDL_PumpEvents();
        if (SDL_HasEvents(SDL_FIRSTEVENT, SDL_LASTEVENT) == SDL_FALSE) {
            m_Wake.Wait(until, m_nX11Connection);
        }
        return;
    }
    if (!m_bSleepsInSdl) {
        SDL_PumpEvents();
        while (SDL_HasEvents(SDL_FIRSTEVENT, SDL_LASTEVENT) == SDL_FALSE && Clock::now() < until) {
            if (m_Wake.Wait(std::min(until, Clock::now() + kAskForKeys))) {
                return;
            }
            SDL_PumpEvents();
        }
        return;
    }
    if (until == Clock::time_point::max()) {
        SDL_WaitEvent(nullptr);
        return;
    }
    constexpr long kLongest = 1'000'000'000;
    const long left = long(std::min<long long>(kLongest, std::chrono::duration_cast<std::chrono::milliseconds>(until - Clock::now()).count()));
    // SDL counts whole milliseconds; the rest is slept away, so that a picture is neither early nor late.
    if (SDL_WaitEventTimeout(nullptr, int(std::max(left, 0L))) == 0 && left < kLongest) {
        std::this_thread::sleep_until(until);
    }
}

void SdlDisplay::TakeKey(const SDL_KeyboardEvent& key, DisplayEvents& events)
{
    Event event;
    event.kind = key.type == SDL_KEYDOWN ? Event::Kind::kKeyDown : Event::Kind::kKeyUp;
    event.physical = int(key.keysym.scancode) + 1;    // 0 is for injected keys
    event.repeat = key.repeat != 0;
    event.key = RemoteCode(key.keysym.scancode, key.keysym.sym);
    if (key.type == SDL_KEYDOWN) {
        // What the key types follows right behind it.
        SDL_Event next;
        if (SDL_PeepEvents(&next, 1, SDL_PEEKEVENT, SDL_FIRSTEVENT, SDL_LASTEVENT) == 1 && next.type == SDL_TEXTINPUT) {
            SDL_PeepEvents(&next, 1, SDL_GETEVENT, SDL_TEXTINPUT, SDL_TEXTINPUT);
            event.text = next.text.text;
        } else if (key.keysym.scancode == SDL_SCANCODE_BACKSPACE) {
            event.text = "\b";
        }
    }
    if (event.key != 0 || !event.text.empty() || event.kind == Event::Kind::kKeyUp) {
        events.input.push_back(std::move(event));
    }
}

void SdlDisplay::TakeEvents(DisplayEvents& events)
{
    SDL_Event event;
    while (SDL_PollEvent(&event) != 0) {
        switch (event.type) {
        case SDL_KEYDOWN:
        case SDL_KEYUP:
            TakeKey(event.key, events);
            break;
        case SDL_TEXTINPUT: {
            Event typed;
            typed.kind = Event::Kind::kText;
            typed.text = event.text.text;
            events.input.push_back(std::move(typed));
            break;
        }
        case SDL_WINDOWEVENT:
            events.closeWanted = events.closeWanted || event.window.event == SDL_WINDOWEVENT_CLOSE;
            events.exposed = events.exposed || event.window.event == SDL_WINDOWEVENT_EXPOSED || event.window.event == SDL_WINDOWEVENT_SIZE_CHANGED;
            break;
        case SDL_RENDER_TARGETS_RESET:
        case SDL_RENDER_DEVICE_RESET:
            events.exposed = true;
            break;
        default:
            break;    // a quit follows the closing of the last window, which is already told
        }
    }
    // Behind the loop, which may have taken a wake that came meanwhile: what it was for is seen in this turn.
    m_bWakePending.exchange(false);
}

std::unique_ptr<Display> OpenSdlDisplay(const host::HostOptions& options, std::string& error)
{
    auto display = std::make_unique<SdlDisplay>();
    if (!display->Open(options, error)) {
        return nullptr;
    }
    return display;
}

std::unique_ptr<Display> OpenDisplay(const host::HostOptions& options)
{
    if (!options.headless) {
        std::string error;
        if (auto display = OpenSdlDisplay(options, error)) {
            return display;
        }
        std::fprintf(stderr, "Nuvid: no display (%s): running headless\n", error.c_str());
    }
    return OpenHeadlessDisplay(options);
}

}    // namespace screen
