// Memory shared with the X11 server as a target for the surface presenter.
//
// SDL's own window surface is the same, but waits for the server's answer after every picture: a trip through two
// processes and a second wake-up. Here the server is only waited for now and then, so that it cannot fall far
// behind, and where the memory is drawn on again so soon that the server may still be reading it.
#include <SDL.h>
#include <SDL_syswm.h>

#include "host/base/UiQueue.h"
#include "host/screen/SdlPresenters.h"
#include "host/screen/SurfacePresenter.h"

#if defined(SDL_VIDEO_DRIVER_X11)

#include <sys/ipc.h>
#include <sys/shm.h>

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XShm.h>

namespace screen {
namespace {

constexpr int kPicturesUnanswered = 16;
constexpr auto kSlowServer = std::chrono::milliseconds(5);    // one that takes longer is waited for each time
constexpr auto kStillReading = std::chrono::milliseconds(10);

// The entries used of the libraries that SDL has loaded already; nothing else links them.
struct XEntries {
    void* x = SDL_LoadObject("libX11.so.6");
    void* ext = SDL_LoadObject("libXext.so.6");
    template <typename Function> static Function* Get(void* library, const char* name)
    {
        return library == nullptr ? nullptr : reinterpret_cast<Function*>(SDL_LoadFunction(library, name));
    }
    decltype(XSync)* sync = Get<decltype(XSync)>(x, "XSync");
    decltype(XFlush)* flush = Get<decltype(XFlush)>(x, "XFlush");
    decltype(XCreateGC)* createGc = Get<decltype(XCreateGC)>(x, "XCreateGC");
    decltype(XFreeGC)* freeGc = Get<decltype(XFreeGC)>(x, "XFreeGC");
    decltype(XGetWindowAttributes)* attributes = Get<decltype(XGetWindowAttributes)>(x, "XGetWindowAttributes");
    decltype(XSetErrorHandler)* setErrorHandler = Get<decltype(XSetErrorHandler)>(x, "XSetErrorHandler");
    decltype(XShmQueryExtension)* query = Get<decltype(XShmQueryExtension)>(ext, "XShmQueryExtension");
    decltype(XShmCreateImage)* createImage = Get<decltype(XShmCreateImage)>(ext, "XShmCreateImage");
    decltype(XShmAttach)* attach = Get<decltype(XShmAttach)>(ext, "XShmAttach");
    decltype(XShmDetach)* detach = Get<decltype(XShmDetach)>(ext, "XShmDetach");
    decltype(XShmPutImage)* put = Get<decltype(XShmPutImage)>(ext, "XShmPutImage");

    XEntries() = default;
    XEntries(const XEntries&) = delete;
    XEntries& operator=(const XEntries&) = delete;
    ~XEntries()
    {
        for (void* const library : {x, ext}) {
            if (library != nullptr) {
                SDL_UnloadObject(library);
            }
        }
    }
    bool All() const
    {
        return sync != nullptr && flush != nullptr && createGc != nullptr && freeGc != nullptr && attributes != nullptr && setErrorHandler != nullptr && query != nullptr
            && createImage != nullptr && attach != nullptr && detach != nullptr && put != nullptr;
    }
};

bool g_bRefused = false;    // by the server; the user-interface thread's
int OnRefused(Display*, XErrorEvent*)
{
    g_bRefused = true;
    return 0;
}

class X11Target : public SurfaceTarget {
public:
    X11Target(SDL_Window* window, Display* display, Window id)
        : m_pWindow(window)
        , m_pDisplay(display)
        , m_Id(id)
    {
    }
    ~X11Target() override
    {
        Release();
        if (m_Context != nullptr) {
            m_X.freeGc(m_pDisplay, m_Context);
        }
    }
    X11Target(const X11Target&) = delete;
    X11Target& operator=(const X11Target&) = delete;

    // False: not on this server, or not with this depth of colour.
    bool Open()
    {
        XWindowAttributes window {};
        if (!m_X.All() || m_X.query(m_pDisplay) == 0 || m_X.attributes(m_pDisplay, m_Id, &window) == 0 || window.depth != 24 || ImageByteOrder(m_pDisplay) != LSBFirst) {
            return false;
        }
        m_pVisual = window.visual;
        if (m_pVisual->red_mask != 0xFF0000 || m_pVisual->green_mask != 0xFF00 || m_pVisual->blue_mask != 0xFF) {
            return false;
        }
        m_Context = m_X.createGc(m_pDisplay, m_Id, 0, nullptr);
        Pixels pixels;
        return m_Context != nullptr && Lock(pixels);
    }

    CascadeDims Dims() const override
    {
        CascadeDims dims;
        SDL_GetWindowSizeInPixels(m_pWindow, &dims.width, &dims.height);
        return dims;
    }

    bool Lock(Pixels& pixels) override
    {
        const CascadeDims dims = Dims();
        const bool fits = m_pImage != nullptr && m_pImage->width == dims.width && m_pImage->height == dims.height;
        if (!fits && !Share(dims)) {
            return false;
        }
        if (m_bShown && host::Clock::now() < m_ShownAt + kStillReading) {
            m_X.sync(m_pDisplay, False);
        }
        m_bShown = false;
        pixels = {reinterpret_cast<uint8_t*>(m_pImage->data), m_pImage->bytes_per_line, dims, !fits};
        return true;
    }

    bool Show(const std::vector<CascadeRect>& areas) override
    {
        for (const CascadeRect& area : areas) {
            m_X.put(m_pDisplay, m_Id, m_Context, m_pImage, area.left, area.top, area.left, area.top, unsigned(area.width), unsigned(area.height), False);
        }
        m_ShownAt = host::Clock::now();
        m_bShown = true;
        if (--m_nUnanswered > 0) {
            m_X.flush(m_pDisplay);
            return true;
        }
        m_X.sync(m_pDisplay, False);
        m_bShown = false;
        m_nUnanswered = host::Clock::now() - m_ShownAt > kSlowServer ? 1 : kPicturesUnanswered;
        return true;
    }

private:
    bool Share(CascadeDims dims)
    {
        Release();
        m_pImage = m_X.createImage(m_pDisplay, m_pVisual, 24, ZPixmap, nullptr, &m_Segment, unsigned(dims.width), unsigned(dims.height));
        if (m_pImage == nullptr || m_pImage->bits_per_pixel != 32) {
            Release();
            return false;
        }
        m_Segment.shmid = shmget(IPC_PRIVATE, size_t(m_pImage->bytes_per_line) * size_t(dims.height), IPC_CREAT | 0600);
        void* const memory = m_Segment.shmid < 0 ? nullptr : shmat(m_Segment.shmid, nullptr, 0);
        m_Segment.shmaddr = m_pImage->data = memory == reinterpret_cast<void*>(-1) ? nullptr : static_cast<char*>(memory);
        m_Segment.readOnly = True;    // for the server
        if (m_Segment.shmaddr != nullptr) {
            g_bRefused = false;
            XErrorHandler const before = m_X.setErrorHandler(&OnRefused);
            m_X.attach(m_pDisplay, &m_Segment);
            m_X.sync(m_pDisplay, False);
            m_X.setErrorHandler(before);
            m_bAttached = !g_bRefused;    // a server on another machine refuses
        }
        if (m_Segment.shmid >= 0) {
            shmctl(m_Segment.shmid, IPC_RMID, nullptr);    // goes with its last user, however that one ends
        }
        if (!m_bAttached) {
            Release();
        }
        return m_bAttached;
    }

    void Release()
    {
        if (m_bAttached) {
            m_X.detach(m_pDisplay, &m_Segment);
            m_X.sync(m_pDisplay, False);
        }
        if (m_pImage != nullptr) {
            m_pImage->data = nullptr;
            XDestroyImage(m_pImage);
        }
        if (m_Segment.shmaddr != nullptr) {
            shmdt(m_Segment.shmaddr);
        }
        m_pImage = nullptr;
        m_Segment = {};
        m_bAttached = false;
        m_bShown = false;
    }

    const XEntries m_X;
    SDL_Window* m_pWindow;
    Display* m_pDisplay;
    Window m_Id;
    Visual* m_pVisual = nullptr;
    GC m_Context = nullptr;
    XImage* m_pImage = nullptr;
    XShmSegmentInfo m_Segment {};
    bool m_bAttached = false;
    bool m_bShown = false;    // and the server was not waited for since
    host::Clock::time_point m_ShownAt {};
    int m_nUnanswered = kPicturesUnanswered;
};

bool AskX11(SDL_Window* window, SDL_SysWMinfo& info)
{
    SDL_VERSION(&info.version);
    return SDL_GetWindowWMInfo(window, &info) == SDL_TRUE && info.subsystem == SDL_SYSWM_X11;
}

}    // namespace

std::unique_ptr<Presenter> MakeX11Presenter(SDL_Window* window)
{
    SDL_SysWMinfo info;
    if (!AskX11(window, info)) {
        return nullptr;
    }
    auto target = std::make_unique<X11Target>(window, info.info.x11.display, info.info.x11.window);
    return target->Open() ? std::make_unique<SurfacePresenter>(std::move(target)) : nullptr;
}

int X11Connection(SDL_Window* window)
{
    SDL_SysWMinfo info;
    return AskX11(window, info) ? ConnectionNumber(info.info.x11.display) : -1;
}

}    // namespace screen

#else

namespace screen {

std::unique_ptr<Presenter> MakeX11Presenter(SDL_Window*)
{
    return nullptr;
}

int X11Connection(SDL_Window*)
{
    return -1;
}

}    // namespace screen

#endif
