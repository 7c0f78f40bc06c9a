#include "host/screen/SurfacePresenter.h"

#include <algorithm>
#include <cstring>

#include "host/screen/LayerBlend.h"

namespace screen {
namespace {

struct RegionDeleter {
    void operator()(cairo_region_t* region) const { cairo_region_destroy(region); }
};
using RegionPtr = std::unique_ptr<cairo_region_t, RegionDeleter>;

cairo_rectangle_int_t ToCairo(const CascadeRect& rect)
{
    return {rect.left, rect.top, rect.width, rect.height};
}

RegionPtr MakeRegion(const Damage& damage)
{
    RegionPtr region(cairo_region_create());
    for (const CascadeRect& rect : damage.Rects()) {
        const cairo_rectangle_int_t rectangle = ToCairo(rect);
        cairo_region_union_rectangle(region.get(), &rectangle);
    }
    return region;
}

std::vector<CascadeRect> Rectangles(const RegionPtr& region)
{
    std::vector<CascadeRect> rectangles;
    for (int i = 0; i < cairo_region_num_rectangles(region.get()); ++i) {
        cairo_rectangle_int_t rectangle;
        cairo_region_get_rectangle(region.get(), i, &rectangle);
        rectangles.push_back({rectangle.x, rectangle.y, rectangle.width, rectangle.height});
    }
    return rectangles;
}

void Blacken(const SurfaceTarget::Pixels& pixels, const std::vector<CascadeRect>& areas)
{
    for (const CascadeRect& area : areas) {
        for (int y = area.top; y < area.Bottom(); ++y) {
            std::memset(pixels.data + std::ptrdiff_t(y) * pixels.stride + std::ptrdiff_t(area.left) * 4, 0, size_t(area.width) * 4);
        }
    }
}

void BlendLayers(const SurfaceTarget::Pixels& pixels, const Scene& scene, const std::vector<CascadeRect>& areas)
{
    if (scene.layers == nullptr) {
        return;
    }
    for (const Layer* const layer : *scene.layers) {
        for (const CascadeRect& area : areas) {
            BlendLayer(pixels.data, pixels.stride, *layer, area);
        }
    }
}

// Where there is no picture the lowest layer is all that is seen of what lies below the others.
void DrawOnBlack(const SurfaceTarget::Pixels& pixels, const Scene& scene, const RegionPtr& where)
{
    const RegionPtr bare(cairo_region_copy(where.get()));    // nothing is drawn there yet
    static const std::vector<const Layer*> kNone;
    for (const Layer* const layer : scene.layers != nullptr ? *scene.layers : kNone) {
        const cairo_rectangle_int_t box = ToCairo(layer->box);
        const RegionPtr lowest(cairo_region_copy(bare.get()));
        cairo_region_intersect_rectangle(lowest.get(), &box);
        const RegionPtr above(cairo_region_copy(where.get()));
        cairo_region_subtract(above.get(), bare.get());
        for (const CascadeRect& area : Rectangles(lowest)) {
            CopyLayer(pixels.data, pixels.stride, *layer, area);
        }
        for (const CascadeRect& area : Rectangles(above)) {
            BlendLayer(pixels.data, pixels.stride, *layer, area);
        }
        cairo_region_subtract_rectangle(bare.get(), &box);
    }
    Blacken(pixels, Rectangles(bare));
}

}    // namespace

bool MemoryTarget::Resize(CascadeDims dims)
{
    SurfacePtr surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, dims.width, dims.height));
    if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) {
        return false;
    }
    m_Surface = std::move(surface);
    m_bNew = true;
    return true;
}

CascadeDims MemoryTarget::Dims() const
{
    return m_Surface == nullptr ? CascadeDims {} : DeviceDims(m_Surface.get());
}

bool MemoryTarget::Lock(Pixels& pixels)
{
    if (m_Surface == nullptr) {
        return false;
    }
    pixels = {cairo_image_surface_get_data(m_Surface.get()), cairo_image_surface_get_stride(m_Surface.get()), DeviceDims(m_Surface.get()), m_bNew};
    m_bNew = false;
    return true;
}

// With what lies above it.
bool SurfacePresenter::DrawPicture(const Scene& scene, const SurfaceTarget::Pixels& pixels)
{
    const CascadeRect& to = scene.geometry.destination;
    uint8_t* const target = pixels.data + std::ptrdiff_t(to.top) * pixels.stride + std::ptrdiff_t(to.left) * 4;
    return m_Scaler.Scale(*scene.frame, scene.geometry.source, target, pixels.stride, {to.width, to.height}, [&](int top, int bottom) {
        BlendLayers(pixels, scene, {{to.left, to.top + top, to.width, bottom - top}});
    });
}

bool SurfacePresenter::Present(const Scene& scene, const Changes& changes)
{
    SurfaceTarget::Pixels pixels;
    if (!m_pTarget->Lock(pixels)) {
        return false;
    }
    const CascadeRect whole {0, 0, pixels.dims.width, pixels.dims.height};
    Damage area = changes.everything || pixels.isNew ? Damage(whole) : changes.overlay;
    area.Intersect(whole);
    CascadeRect picture = scene.frame != nullptr && *scene.frame && !scene.geometry.source.IsEmpty() ? scene.geometry.destination : CascadeRect {};
    picture.Intersect(whole);
    if (!(picture == scene.geometry.destination)) {
        picture = {};    // laid out for an output that has just changed its size
    }
    Damage disturbed = area;
    disturbed.Intersect(picture);

    const RegionPtr damage = MakeRegion(area);
    const RegionPtr black = MakeRegion(area);
    const cairo_rectangle_int_t pictureBox = ToCairo(picture);
    // The picture is always drawn whole, so everything above it is due again.
    if (!picture.IsEmpty() && (changes.picture || !disturbed.IsEmpty())) {
        cairo_region_union_rectangle(damage.get(), &pictureBox);
        if (changes.picture && scene.layers != nullptr) {
            std::for_each(scene.layers->begin(), scene.layers->end(), [](const Layer* layer) { PrepareLayer(*layer); });
        }
        if (DrawPicture(scene, pixels)) {
            cairo_region_subtract_rectangle(black.get(), &pictureBox);
        } else {
            cairo_region_union_rectangle(black.get(), &pictureBox);
        }
    }
    DrawOnBlack(pixels, scene, black);
    const std::vector<CascadeRect> areas = Rectangles(damage);
    return areas.empty() || m_pTarget->Show(areas);
}

SurfacePtr SurfacePresenter::Capture(const Scene& scene)
{
    Changes everything;
    everything.everything = true;
    SurfaceTarget::Pixels pixels;
    if (!Present(scene, everything) || !m_pTarget->Lock(pixels)) {
        return nullptr;
    }
    SurfacePtr copy(cairo_image_surface_create(CAIRO_FORMAT_RGB24, pixels.dims.width, pixels.dims.height));
    if (cairo_surface_status(copy.get()) != CAIRO_STATUS_SUCCESS) {
        return nullptr;
    }
    for (int y = 0; y < pixels.dims.height; ++y) {
        std::memcpy(cairo_image_surface_get_data(copy.get()) + std::ptrdiff_t(y) * cairo_image_surface_get_stride(copy.get()),
            pixels.data + std::ptrdiff_t(y) * pixels.stride, size_t(pixels.dims.width) * 4);
    }
    cairo_surface_mark_dirty(copy.get());
    return copy;
}

}    // namespace screen
