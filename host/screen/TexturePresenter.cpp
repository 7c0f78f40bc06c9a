// The presenter with a GPU: the picture is uploaded once as YUV and scaled by the renderer; what the windows painted
// is one texture, uploaded when it changes.
#include <cstdlib>
#include <cstring>

#include <SDL.h>

#include "host/screen/SdlPresenters.h"
#include "host/screen/VideoScaler.h"

namespace screen {
namespace {

using GetStringFunction = const unsigned char* (*)(unsigned);
constexpr unsigned kGlRenderer = 0x1F01;    // GL_RENDERER
constexpr const char* kSoftwareRenderers[] = {"llvmpipe", "softpipe", "swrast", "Software Rasterizer", "SwiftShader"};

bool RunsOnProcessor(SDL_Renderer* renderer)
{
    SDL_RendererInfo info;
    if (SDL_GetRendererInfo(renderer, &info) != 0 || (info.flags & SDL_RENDERER_SOFTWARE) != 0) {
        return true;
    }
    const auto getString = reinterpret_cast<GetStringFunction>(SDL_GL_GetProcAddress("glGetString"));
    const unsigned char* const name = getString == nullptr ? nullptr : getString(kGlRenderer);
    for (const char* const software : kSoftwareRenderers) {
        if (name != nullptr && std::strstr(reinterpret_cast<const char*>(name), software) != nullptr) {
            return true;
        }
    }
    return false;
}

SDL_Rect ToSdl(const CascadeRect& rect)
{
    return {rect.left, rect.top, rect.width, rect.height};
}

class TexturePresenter : public Presenter {
public:
    explicit TexturePresenter(SDL_Renderer* renderer)
        : m_pRenderer(renderer)
    {
    }
    ~TexturePresenter() override
    {
        SDL_DestroyTexture(m_pVideo);
        SDL_DestroyTexture(m_pOverlay);
        SDL_DestroyRenderer(m_pRenderer);
    }
    const char* Name() const override { return "texture"; }
    CascadeDims Dims() const override
    {
        CascadeDims dims;
        SDL_GetRendererOutputSize(m_pRenderer, &dims.width, &dims.height);
        return dims;
    }
    bool Present(const Scene& scene, const Changes& changes) override;
    SurfacePtr Capture(const Scene& scene) override;

private:
    void Update(const Scene& scene, const Changes& changes);
    bool UploadPicture(const host::VideoFrame& frame);
    void UploadOverlay(const std::vector<const Layer*>& layers);
    void Draw(const Scene& scene);

    SDL_Renderer* m_pRenderer;
    SDL_Texture* m_pVideo = nullptr;
    CascadeDims m_VideoDims;
    bool m_bHasPicture = false;
    SDL_Texture* m_pOverlay = nullptr;
    CascadeDims m_OverlayDims;    // of the texture, which only grows
    CascadeRect m_OverlayBox;    // what of it is used, and where; empty: nothing above the picture
    VideoScaler m_Converter;
};

bool TexturePresenter::UploadPicture(const host::VideoFrame& frame)
{
    const CascadeDims dims {frame.width, frame.height};
    if (m_pVideo == nullptr || !(dims == m_VideoDims)) {
        SDL_DestroyTexture(m_pVideo);
        m_pVideo = SDL_CreateTexture(m_pRenderer, SDL_PIXELFORMAT_IYUV, SDL_TEXTUREACCESS_STREAMING, dims.width, dims.height);
        m_VideoDims = dims;
    }
    if (m_pVideo == nullptr) {
        return false;
    }
    // SDL knows full range for BT.601 alone, and planes of 4:2:0 alone.
    const bool convert = frame.format != host::PixelFormat::kYuv420 || (frame.fullRange && frame.bt709);
    const bool fullRange = frame.fullRange && !convert;
    SDL_SetYUVConversionMode(fullRange ? SDL_YUV_CONVERSION_JPEG : frame.bt709 ? SDL_YUV_CONVERSION_BT709 : SDL_YUV_CONVERSION_BT601);
    if (!convert) {
        return SDL_UpdateYUVTexture(
                   m_pVideo, nullptr, frame.plane[0], frame.stride[0], frame.plane[1], frame.stride[1], frame.plane[2], frame.stride[2])
            == 0;
    }
    const int strides[3] = {(dims.width + 127) / 64 * 64, (dims.width / 2 + 127) / 64 * 64, (dims.width / 2 + 127) / 64 * 64};
    const size_t luma = size_t(strides[0]) * size_t(dims.height);
    const size_t chroma = size_t(strides[1]) * size_t((dims.height + 1) / 2);
    const std::unique_ptr<uint8_t, decltype(&std::free)> memory(static_cast<uint8_t*>(std::aligned_alloc(64, luma + 2 * chroma)), &std::free);
    if (memory == nullptr) {
        return false;
    }
    uint8_t* const planes[3] = {memory.get(), memory.get() + luma, memory.get() + luma + chroma};
    return m_Converter.ToLimited420(frame, planes, strides)
        && SDL_UpdateYUVTexture(m_pVideo, nullptr, planes[0], strides[0], planes[1], strides[1], planes[2], strides[2]) == 0;
}

void TexturePresenter::UploadOverlay(const std::vector<const Layer*>& layers)
{
    CascadeRect box;
    for (const Layer* const layer : layers) {
        box.Unite(layer->box);
    }
    const CascadeDims output = Dims();
    box.Intersect({0, 0, output.width, output.height});
    m_OverlayBox = {};
    if (box.IsEmpty()) {
        return;
    }
    const SurfacePtr composed = CreateSurface(box.width, box.height, 1);
    if (composed == nullptr) {
        return;
    }
    {
        const CairoPtr cairo(cairo_create(composed.get()));
        for (const Layer* const layer : layers) {
            cairo_set_source_surface(cairo.get(), layer->pixels.get(), layer->box.left - box.left, layer->box.top - box.top);
            cairo_paint(cairo.get());
        }
    }
    cairo_surface_flush(composed.get());
    if (m_pOverlay == nullptr || m_OverlayDims.width < box.width || m_OverlayDims.height < box.height) {
        SDL_DestroyTexture(m_pOverlay);
        m_OverlayDims = {std::max(box.width, m_OverlayDims.width), std::max(box.height, m_OverlayDims.height)};
        m_pOverlay = SDL_CreateTexture(m_pRenderer, SDL_PIXELFORMAT_ARGB8888, SDL_TEXTUREACCESS_STREAMING, m_OverlayDims.width, m_OverlayDims.height);
        const SDL_BlendMode premultiplied = SDL_ComposeCustomBlendMode(SDL_BLENDFACTOR_ONE, SDL_BLENDFACTOR_ONE_MINUS_SRC_ALPHA,
            SDL_BLENDOPERATION_ADD, SDL_BLENDFACTOR_ONE, SDL_BLENDFACTOR_ONE_MINUS_SRC_ALPHA, SDL_BLENDOPERATION_ADD);
        if (m_pOverlay == nullptr || SDL_SetTextureBlendMode(m_pOverlay, premultiplied) != 0) {
            return;
        }
    }
    const SDL_Rect part {0, 0, box.width, box.height};
    if (SDL_UpdateTexture(m_pOverlay, &part, cairo_image_surface_get_data(composed.get()), cairo_image_surface_get_stride(composed.get())) == 0) {
        m_OverlayBox = box;
    }
}

void TexturePresenter::Update(const Scene& scene, const Changes& changes)
{
    if (changes.picture || changes.everything) {
        m_bHasPicture = scene.frame != nullptr && *scene.frame && UploadPicture(*scene.frame);
    }
    if (scene.layers != nullptr && (changes.everything || !changes.overlay.IsEmpty())) {
        UploadOverlay(*scene.layers);
    }
}

void TexturePresenter::Draw(const Scene& scene)
{
    SDL_SetRenderDrawColor(m_pRenderer, 0, 0, 0, 255);
    SDL_RenderClear(m_pRenderer);
    if (m_bHasPicture && !scene.geometry.source.IsEmpty()) {
        const SDL_Rect from = ToSdl(scene.geometry.source);
        const SDL_Rect to = ToSdl(scene.geometry.destination);
        SDL_RenderCopy(m_pRenderer, m_pVideo, &from, &to);
    }
    if (!m_OverlayBox.IsEmpty()) {
        const SDL_Rect from {0, 0, m_OverlayBox.width, m_OverlayBox.height};
        const SDL_Rect to = ToSdl(m_OverlayBox);
        SDL_RenderCopy(m_pRenderer, m_pOverlay, &from, &to);
    }
}

bool TexturePresenter::Present(const Scene& scene, const Changes& changes)
{
    Update(scene, changes);
    Draw(scene);
    SDL_RenderPresent(m_pRenderer);
    return true;
}

SurfacePtr TexturePresenter::Capture(const Scene& scene)
{
    const CascadeDims dims = Dims();
    SurfacePtr copy(cairo_image_surface_create(CAIRO_FORMAT_RGB24, dims.width, dims.height));
    if (cairo_surface_status(copy.get()) != CAIRO_STATUS_SUCCESS) {
        return nullptr;
    }
    Changes everything;
    everything.everything = true;
    Update(scene, everything);
    Draw(scene);
    // Before presenting: afterwards the back buffer is undefined.
    if (SDL_RenderReadPixels(
            m_pRenderer, nullptr, SDL_PIXELFORMAT_RGB888, cairo_image_surface_get_data(copy.get()), cairo_image_surface_get_stride(copy.get()))
        != 0) {
        return nullptr;
    }
    cairo_surface_mark_dirty(copy.get());
    SDL_RenderPresent(m_pRenderer);
    return copy;
}

}    // namespace

std::unique_ptr<Presenter> MakeTexturePresenter(SDL_Window* window, bool anyRenderer)
{
    // Waiting for the vertical blank lasts less than a picture and keeps the picture whole.
    SDL_Renderer* const renderer = SDL_CreateRenderer(window, -1, SDL_RENDERER_ACCELERATED | SDL_RENDERER_PRESENTVSYNC);
    if (renderer == nullptr) {
        return nullptr;
    }
    if (!anyRenderer && RunsOnProcessor(renderer)) {
        SDL_DestroyRenderer(renderer);
        return nullptr;
    }
    return std::make_unique<TexturePresenter>(renderer);
}

}    // namespace screen
