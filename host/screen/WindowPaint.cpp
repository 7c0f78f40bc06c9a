#include "host/screen/WindowPaint.h"

#include <cmath>
#include <cstring>

#include "host/base/DiskCall.h"
#include "host/screen/BitmapImpl.h"

namespace screen {
namespace {

constexpr double kSlack = 1e-6;    // of a product of a whole number of logical pixels with the scale

void PaintOn(CascadeWindow& window, CascadeBitmap& bitmap)
{
    const host::NoTurnScope noTurn;    // a window that asks the disk while it paints is not painted inside that
    window.OnPaint(bitmap);
}

CascadePoint PlaceOnOutput(const CascadeRect& rect, double scale, CascadeDims output)
{
    const CascadePoint origin = OriginOnOutput(output);
    return {origin.x + int(std::lround(rect.left * scale)), origin.y + int(std::lround(rect.top * scale))};
}

// A part of a window, grown until it ends with whole pixels of the output: others would be painted by halves.
CascadeRect OnWholePixels(CascadeRect part, const CascadeRect& window, double scale)
{
    part.Intersect(window);
    const auto whole = [scale](int distance) {
        const double pixels = distance * scale;
        return std::abs(pixels - std::round(pixels)) < kSlack;
    };
    int left = part.left - window.left;
    int top = part.top - window.top;
    int right = left + part.width;
    int bottom = top + part.height;
    const auto grow = [&whole](int& edge, int step, int end) {
        while (edge != end && !whole(edge)) {
            edge += step;
        }
    };
    grow(left, -1, 0);
    grow(top, -1, 0);
    grow(right, 1, window.width);
    grow(bottom, 1, window.height);
    return part.IsEmpty() ? part : CascadeRect {window.left + left, window.top + top, right - left, bottom - top};
}

}    // namespace

WindowPart OnOutput(const CascadeWindow& window, const CascadeRect& part, CascadeDims output)
{
    const CascadeRect rect = window.GetRect();
    const double scale = ScaleFor(output);
    WindowPart due;
    due.rect = OnWholePixels(part, rect, scale);
    const CascadePoint at = PlaceOnOutput(rect, scale, output);
    const auto pixels = [scale](int length) { return int(std::ceil(length * scale - kSlack)); };
    due.box = {at.x + pixels(due.rect.left - rect.left), at.y + pixels(due.rect.top - rect.top), pixels(due.rect.width), pixels(due.rect.height)};
    return due;
}

void PaintInto(CascadeWindow& window, const CascadeRect& part, cairo_surface_t* layer, const CascadeRect& area, double scale)
{
    cairo_surface_flush(layer);
    const int stride = cairo_image_surface_get_stride(layer);
    unsigned char* const pixels = cairo_image_surface_get_data(layer) + std::ptrdiff_t(area.top) * stride + std::ptrdiff_t(area.left) * 4;
    for (int y = 0; y < area.height; ++y) {
        std::memset(pixels + std::ptrdiff_t(y) * stride, 0, size_t(area.width) * 4);
    }
    SurfacePtr over(cairo_image_surface_create_for_data(pixels, CAIRO_FORMAT_ARGB32, area.width, area.height, stride));
    cairo_surface_set_device_scale(over.get(), scale, scale);
    CascadeBitmap bitmap = BitmapOverLayer::Make(std::move(over), {part.width, part.height});
    bitmap.SetOrigin({part.left, part.top});
    PaintOn(window, bitmap);
    bitmap.Destroy();
    cairo_surface_mark_dirty(layer);
}

// What is drawn on nearly everywhere is kept as it is.
Layer PaintOf(CascadeWindow& window, CascadeDims output)
{
    const CascadeRect rect = window.GetRect();
    CascadeBitmap bitmap;
    if (rect.IsEmpty() || !bitmap.Create(rect.width, rect.height)) {
        return {};
    }
    bitmap.SetOrigin({rect.left, rect.top});
    PaintOn(window, bitmap);
    auto* const painted = static_cast<cairo_surface_t*>(bitmap.NativeSurface());
    if (painted == nullptr) {
        return {};
    }
    const CascadeDims device = DeviceDims(painted);
    const CascadeRect* const touched = TouchedArea(painted);
    const CascadeRect visible = VisibleArea(painted, touched != nullptr ? *touched : CascadeRect {0, 0, device.width, device.height});
    if (visible.IsEmpty()) {
        return {};
    }
    cairo_surface_set_device_scale(painted, 1, 1);
    const CascadePoint at = PlaceOnOutput(rect, ScaleFor(output), output);
    Layer layer;
    if (int64_t {visible.width} * visible.height * 8 > int64_t {device.width} * device.height * 7) {
        layer.box = {at.x, at.y, device.width, device.height};
        layer.pixels.reset(cairo_surface_reference(painted));
        NoteTouchedArea(painted, nullptr);    // the note goes with the bitmap
        return layer;
    }
    layer.pixels = CreateSurface(visible.width, visible.height, 1);
    if (layer.pixels == nullptr) {
        return {};
    }
    layer.box = {at.x + visible.left, at.y + visible.top, visible.width, visible.height};
    const CairoPtr cairo(cairo_create(layer.pixels.get()));
    cairo_set_operator(cairo.get(), CAIRO_OPERATOR_SOURCE);
    cairo_set_source_surface(cairo.get(), painted, -visible.left, -visible.top);
    cairo_paint(cairo.get());
    return layer;
}

}    // namespace screen
