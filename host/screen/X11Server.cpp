#include "host/screen/X11Server.h"

#include <SDL_loadso.h>

namespace screen {
namespace {

// The library that SDL itself loads when it is needed; these few entries of it are not worth a link of the whole
// program, which mostly runs without X11 on a box.
struct Xlib {
    void* library = SDL_LoadObject("libX11.so.6");
    template <typename Function> Function* Get(const char* name) const
    {
        return library == nullptr ? nullptr : reinterpret_cast<Function*>(SDL_LoadFunction(library, name));
    }
    ~Xlib()
    {
        if (library != nullptr) {
            SDL_UnloadObject(library);
        }
    }
};

using Id = unsigned long;
using OpenDisplay = void*(const char*);
using CloseDisplay = int(void*);
using RootWindow = Id(void*);
using InternAtom = Id(void*, const char*, int);
using GetProperty = int(void*, Id, Id, long, long, int, Id, Id*, int*, unsigned long*, unsigned long*, unsigned char**);
using FreeMemory = int(void*);
using ErrorHandler = int(void* display, void* error);
using SetErrorHandler = ErrorHandler*(ErrorHandler*);

int GoOn(void*, void*)
{
    return 0;
}

// Extended Window Manager Hints, "_NET_SUPPORTING_WM_CHECK": on the root window while a manager runs.
bool RootHasCheck(const Xlib& x, void* display)
{
    auto* const root = x.Get<RootWindow>("XDefaultRootWindow");
    auto* const intern = x.Get<InternAtom>("XInternAtom");
    auto* const property = x.Get<GetProperty>("XGetWindowProperty");
    auto* const release = x.Get<FreeMemory>("XFree");
    if (root == nullptr || intern == nullptr || property == nullptr || release == nullptr) {
        return true;
    }
    const Id check = intern(display, "_NET_SUPPORTING_WM_CHECK", 1);
    if (check == 0) {
        return false;
    }
    Id type = 0;
    int format = 0;
    unsigned long items = 0;
    unsigned long left = 0;
    unsigned char* value = nullptr;
    property(display, root(display), check, 0, 1, 0, 0, &type, &format, &items, &left, &value);
    if (value != nullptr) {
        release(value);
    }
    return items > 0;
}

}    // namespace

bool HasX11WindowManager()
{
    const Xlib x;
    auto* const open = x.Get<OpenDisplay>("XOpenDisplay");
    auto* const close = x.Get<CloseDisplay>("XCloseDisplay");
    void* const display = open == nullptr || close == nullptr ? nullptr : open(nullptr);
    if (display == nullptr) {
        return true;    // unknown: the ordinary way
    }
    const bool has = RootHasCheck(x, display);
    close(display);
    return has;
}

void IgnoreX11Errors()
{
    const Xlib x;    // SDL keeps the library itself loaded
    if (auto* const set = x.Get<SetErrorHandler>("XSetErrorHandler")) {
        set(&GoOn);
    }
}

}    // namespace screen
