// Fills, rounded rectangles, gradients and pixels of shared memory.
#include <algorithm>
#include <cmath>
#include <numbers>

#include "host/screen/BitmapImpl.h"
#include "platform/CascadeSharedMemZone.h"

using namespace screen;

namespace {

constexpr int kLargestZoneSide = 65500;

void RoundedPath(cairo_t* cairo, double left, double top, double width, double height, double radius)
{
    const double r = std::clamp(radius, 0.0, std::min(width, height) / 2);
    if (r <= 0) {
        cairo_rectangle(cairo, left, top, width, height);
        return;
    }
    const double quarter = std::numbers::pi / 2;
    cairo_new_sub_path(cairo);
    cairo_arc(cairo, left + width - r, top + r, r, -quarter, 0);
    cairo_arc(cairo, left + width - r, top + height - r, r, 0, quarter);
    cairo_arc(cairo, left + r, top + height - r, r, quarter, 2 * quarter);
    cairo_arc(cairo, left + r, top + r, r, 2 * quarter, 3 * quarter);
    cairo_close_path(cairo);
}

void AddStop(cairo_pattern_t* pattern, double at, CascadeColor color)
{
    cairo_pattern_add_color_stop_rgba(
        pattern, at, (color >> 24) / 255.0, ((color >> 16) & 0xFF) / 255.0, ((color >> 8) & 0xFF) / 255.0, (color & 0xFF) / 255.0);
}

uint32_t Premultiplied(const unsigned char* pixel, unsigned bytes)
{
    const unsigned alpha = bytes == 4 ? pixel[0] : 0xFF;
    const auto times = [&](unsigned value) { return (value * alpha + 127) / 255; };
    return alpha << 24 | times(pixel[2]) << 16 | times(pixel[1]) << 8 | times(pixel[bytes == 4 ? 3 : 0]);
}

}    // namespace

void CascadeBitmap::Fill(CascadeColor color)
{
    if (IsEmpty()) {
        return;
    }
    const bool clear = (color & 0xFF) == 0;
    if (clear && m_pImpl->touched.IsEmpty()) {
        return;    // it is so already, and its memory stays untouched
    }
    const CairoPtr cairo = m_pImpl->Begin();
    SetSourceColor(cairo.get(), clear ? 0 : color);
    cairo_set_operator(cairo.get(), CAIRO_OPERATOR_SOURCE);
    cairo_paint(cairo.get());
    const CascadeDims device = DeviceDims(m_pImpl->surface.get());
    m_pImpl->touched = clear ? CascadeRect {} : CascadeRect {0, 0, device.width, device.height};
}

void CascadeBitmap::FillRect(const CascadeRect& rect, CascadeColor color)
{
    FillRoundedRect(rect, 0, color);
}

void CascadeBitmap::FillRoundedRect(const CascadeRect& rect, int radius, CascadeColor color)
{
    if (IsEmpty() || rect.IsEmpty()) {
        return;
    }
    const CairoPtr cairo = m_pImpl->Begin();
    SetSourceColor(cairo.get(), color);
    RoundedPath(cairo.get(), rect.left, rect.top, rect.width, rect.height, radius);
    cairo_fill(cairo.get());
    m_pImpl->Touch(rect);
}

void CascadeBitmap::FillGradient(const CascadeRect& rect, int radius, CascadeColor from, CascadeColor to, bool vertical)
{
    if (IsEmpty() || rect.IsEmpty()) {
        return;
    }
    const CairoPtr cairo = m_pImpl->Begin();
    cairo_pattern_t* const pattern
        = cairo_pattern_create_linear(rect.left, rect.top, vertical ? rect.left : rect.Right(), vertical ? rect.Bottom() : rect.top);
    AddStop(pattern, 0, from);
    AddStop(pattern, 1, to);
    cairo_set_source(cairo.get(), pattern);
    cairo_pattern_destroy(pattern);
    RoundedPath(cairo.get(), rect.left, rect.top, rect.width, rect.height, radius);
    cairo_fill(cairo.get());
    m_pImpl->Touch(rect);
}

void CascadeBitmap::StrokeRoundedRect(const CascadeRect& rect, int radius, double lineWidth, CascadeColor color)
{
    if (IsEmpty() || rect.IsEmpty() || !(lineWidth > 0)) {
        return;
    }
    // The line lies inside the rectangle.
    const double inset = lineWidth / 2;
    const CairoPtr cairo = m_pImpl->Begin();
    SetSourceColor(cairo.get(), color);
    cairo_set_line_width(cairo.get(), lineWidth);
    RoundedPath(cairo.get(), rect.left + inset, rect.top + inset, std::max(0.0, rect.width - lineWidth), std::max(0.0, rect.height - lineWidth),
        std::max(0.0, radius - inset));
    cairo_stroke(cairo.get());
    m_pImpl->Touch(rect);
}

void CascadeBitmap::FadeEdges(int left, int right)
{
    if (IsEmpty()) {
        return;
    }
    const CascadeRect bounds = GetBounds();
    const auto fade = [&](int width, int from, int to) {
        if (width <= 0) {
            return;
        }
        const CairoPtr cairo = m_pImpl->Begin();
        cairo_pattern_t* const mask = cairo_pattern_create_linear(from, 0, to, 0);
        AddStop(mask, 0, 0);
        AddStop(mask, 1, 0xFF);
        cairo_set_source(cairo.get(), mask);
        cairo_pattern_destroy(mask);
        cairo_rectangle(cairo.get(), std::min(from, to), bounds.top, width, bounds.height);
        cairo_clip(cairo.get());
        cairo_set_operator(cairo.get(), CAIRO_OPERATOR_DEST_IN);
        cairo_paint(cairo.get());
    };
    fade(left, bounds.left, bounds.left + left);
    fade(right, bounds.Right(), bounds.Right() - right);
}

bool CascadeBitmap::BlitFromSharedZone(
    CascadePoint at, CascadeSharedMemZone& zone, size_t offset, int width, int height, unsigned long bitsPerPixel, const CascadeRect& source)
{
    const unsigned bytes = unsigned(bitsPerPixel / 8);
    if (IsEmpty() || (bitsPerPixel != 24 && bitsPerPixel != 32) || width <= 0 || height <= 0 || width > kLargestZoneSide
        || height > kLargestZoneSide) {
        return false;
    }
    const size_t needed = size_t(width) * size_t(height) * bytes;    // at most 17 GB: no overflow
    if (offset > zone.GetSize() || zone.GetSize() - offset < needed) {
        return false;
    }
    CascadeRect part = source;
    part.Intersect({0, 0, width, height});
    const SurfacePtr pixels = part.IsEmpty() ? nullptr : CreateSurface(part.width, part.height, 1);
    const auto* const memory = pixels == nullptr ? nullptr : static_cast<const unsigned char*>(zone.MapLock());
    if (memory == nullptr) {
        return false;
    }
    for (int y = 0; y < part.height; ++y) {
        auto* const row = reinterpret_cast<uint32_t*>(
            cairo_image_surface_get_data(pixels.get()) + size_t(y) * size_t(cairo_image_surface_get_stride(pixels.get())));
        const unsigned char* from = memory + offset + (size_t(part.top + y) * size_t(width) + size_t(part.left)) * bytes;
        for (int x = 0; x < part.width; ++x, from += bytes) {
            row[x] = Premultiplied(from, bytes);
        }
    }
    zone.Unlock();
    cairo_surface_mark_dirty(pixels.get());

    const CascadeRect to {at.x, at.y, part.width, part.height};
    const CairoPtr cairo = m_pImpl->Begin();
    cairo_rectangle(cairo.get(), to.left, to.top, to.width, to.height);
    cairo_clip(cairo.get());
    cairo_set_operator(cairo.get(), CAIRO_OPERATOR_SOURCE);
    cairo_set_source_surface(cairo.get(), pixels.get(), at.x, at.y);
    cairo_pattern_set_extend(cairo_get_source(cairo.get()), CAIRO_EXTEND_PAD);
    cairo_paint(cairo.get());
    m_pImpl->Touch(to);
    return true;
}
