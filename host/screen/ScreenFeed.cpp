#include "host/screen/ScreenFeed.h"

#include <algorithm>
#include <cmath>

namespace screen {

CascadeDims ScreenFeed::DimsFor(CascadeDims output)
{
    if (output.width <= 0 || output.height <= 0) {
        return {};
    }
    const double scale = std::min({1.0, double(host::kFeedWidth) / output.width, double(host::kFeedHeight) / output.height});
    // Whole 4:2:0 blocks, so that the encoder has nothing to make up at the edges.
    const auto even = [scale](int length) { return std::max(2, int(std::lround(length * scale / 2)) * 2); };
    return {even(output.width), even(output.height)};
}

std::shared_ptr<host::FeedPicture> ScreenFeed::Compose(const Scene& scene, CascadeDims output)
{
    const CascadeDims dims = DimsFor(output);
    if (dims.width == 0) {
        return nullptr;
    }
    auto picture = std::make_shared<host::FeedPicture>();
    picture->width = dims.width;
    picture->height = dims.height;
    const int stride = dims.width * 4;
    picture->pixels.resize(size_t(stride) * size_t(dims.height));    // black

    const CascadeRect& to = scene.geometry.destination;
    CascadeRect inside = to;
    inside.Intersect({0, 0, dims.width, dims.height});
    if (scene.frame != nullptr && *scene.frame && !scene.geometry.source.IsEmpty() && inside == to) {
        uint8_t* const target = picture->pixels.data() + std::ptrdiff_t(to.top) * stride + std::ptrdiff_t(to.left) * 4;
        m_Scaler.Scale(*scene.frame, scene.geometry.source, target, stride, {to.width, to.height});
    }
    if (scene.layers != nullptr && !scene.layers->empty()) {
        const SurfacePtr surface(cairo_image_surface_create_for_data(picture->pixels.data(), CAIRO_FORMAT_RGB24, dims.width, dims.height, stride));
        const CairoPtr cairo(cairo_create(surface.get()));
        cairo_scale(cairo.get(), double(dims.width) / output.width, double(dims.height) / output.height);
        for (const Layer* const layer : *scene.layers) {
            cairo_set_source_surface(cairo.get(), layer->pixels.get(), layer->box.left, layer->box.top);
            // At half the size this is the mean of four pixels; the better filters cost ten times as much.
            cairo_pattern_set_filter(cairo_get_source(cairo.get()), CAIRO_FILTER_BILINEAR);
            cairo_paint(cairo.get());
        }
    }
    return picture;
}

}    // namespace screen
