// The surface of an SDL window as a target for the surface presenter.
#include <SDL.h>

#include "host/screen/SdlPresenters.h"
#include "host/screen/SurfacePresenter.h"

namespace screen {
namespace {

bool IsOurFormat(const SDL_Surface* surface)
{
    return surface->format->format == SDL_PIXELFORMAT_RGB888 || surface->format->format == SDL_PIXELFORMAT_ARGB8888;
}

class WindowTarget : public SurfaceTarget {
public:
    explicit WindowTarget(SDL_Window* window)
        : m_pWindow(window)
    {
    }
    ~WindowTarget() override { SDL_FreeSurface(m_pOwn); }

    CascadeDims Dims() const override
    {
        CascadeDims dims;
        SDL_GetWindowSizeInPixels(m_pWindow, &dims.width, &dims.height);
        return dims;
    }

    bool Lock(Pixels& pixels) override
    {
        SDL_Surface* const surface = SDL_GetWindowSurface(m_pWindow);    // another one after a change of size
        if (surface == nullptr) {
            return false;
        }
        SDL_Surface* drawn = surface;
        if (!IsOurFormat(surface) || SDL_MUSTLOCK(surface)) {
            // A screen of another depth: we draw into a surface of our own and SDL converts.
            if (m_pOwn == nullptr || m_pOwn->w != surface->w || m_pOwn->h != surface->h) {
                SDL_FreeSurface(m_pOwn);
                m_pOwn = SDL_CreateRGBSurfaceWithFormat(0, surface->w, surface->h, 32, SDL_PIXELFORMAT_RGB888);
            }
            drawn = m_pOwn;
        }
        if (drawn == nullptr) {
            return false;
        }
        pixels = {static_cast<uint8_t*>(drawn->pixels), drawn->pitch, {drawn->w, drawn->h}, false};
        pixels.isNew = pixels.data != m_pLast || !(pixels.dims == m_LastDims);
        m_pLast = pixels.data;
        m_LastDims = pixels.dims;
        return true;
    }

    bool Show(const std::vector<CascadeRect>& areas) override
    {
        std::vector<SDL_Rect> rects;
        for (const CascadeRect& area : areas) {
            rects.push_back({area.left, area.top, area.width, area.height});
            if (m_pOwn != nullptr) {
                SDL_Rect to = rects.back();
                SDL_BlitSurface(m_pOwn, &rects.back(), SDL_GetWindowSurface(m_pWindow), &to);
            }
        }
        return SDL_UpdateWindowSurfaceRects(m_pWindow, rects.data(), int(rects.size())) == 0;
    }

private:
    SDL_Window* m_pWindow;
    SDL_Surface* m_pOwn = nullptr;
    uint8_t* m_pLast = nullptr;
    CascadeDims m_LastDims;
};

}    // namespace

std::unique_ptr<Presenter> MakeWindowSurfacePresenter(SDL_Window* window)
{
    auto target = std::make_unique<WindowTarget>(window);
    SurfaceTarget::Pixels pixels;
    if (!target->Lock(pixels)) {
        return nullptr;
    }
    return std::make_unique<SurfacePresenter>(std::move(target));
}

}    // namespace screen
