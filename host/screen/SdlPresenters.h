// The presenters that show on an SDL window.
//
// Errors:  null: the window cannot be shown on in that way.
// Threads: the user-interface thread. The window has to outlive its presenter.
#pragma once

#include <memory>

#include "host/screen/Presenter.h"

struct SDL_Window;

namespace screen {

bool HasGraphicsProcessor();

std::unique_ptr<Presenter> MakeWindowSurfacePresenter(SDL_Window* window);

// In memory shared with the X11 server.
std::unique_ptr<Presenter> MakeX11Presenter(SDL_Window* window);
int X11Connection(SDL_Window* window);    // its file number; -1: not on X11

// Renderers that run on the processor count as none, unless `anyRenderer`.
std::unique_ptr<Presenter> MakeTexturePresenter(SDL_Window* window, bool anyRenderer);

}    // namespace screen
