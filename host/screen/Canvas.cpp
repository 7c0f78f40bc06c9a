#include "host/screen/Canvas.h"

#include <atomic>
#include <cmath>

namespace screen {
namespace {

std::atomic<double> g_OutputScale {1.0};    // loaders create bitmaps on threads of their own
cairo_user_data_key_t g_TouchedKey;

bool RowIsClear(const uint32_t* row, int from, int to)
{
    uint32_t any = 0;
    for (int x = from; x < to; ++x) {
        any |= row[x];
    }
    return any == 0;
}

}    // namespace

double OutputScale()
{
    return g_OutputScale;
}
void SetOutputScale(double scale)
{
    g_OutputScale = scale;
}

double ScaleFor(CascadeDims output)
{
    return std::min(double(output.width) / kLogicalScreen.width, double(output.height) / kLogicalScreen.height);
}

CascadePoint OriginOnOutput(CascadeDims output)
{
    const double scale = ScaleFor(output);
    return {
        int(std::lround((output.width - kLogicalScreen.width * scale) / 2)), int(std::lround((output.height - kLogicalScreen.height * scale) / 2))};
}

SurfacePtr CreateSurface(int deviceWidth, int deviceHeight, double scale)
{
    if (deviceWidth <= 0 || deviceHeight <= 0 || deviceWidth > kLargestSurface || deviceHeight > kLargestSurface) {
        return nullptr;
    }
    SurfacePtr surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, deviceWidth, deviceHeight));
    if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) {
        return nullptr;
    }
    cairo_surface_set_device_scale(surface.get(), scale, scale);
    return surface;
}

CascadeDims DeviceDims(cairo_surface_t* surface)
{
    return {cairo_image_surface_get_width(surface), cairo_image_surface_get_height(surface)};
}

void SetSourceColor(cairo_t* cairo, CascadeColor color)
{
    cairo_set_source_rgba(cairo, (color >> 24) / 255.0, ((color >> 16) & 0xFF) / 255.0, ((color >> 8) & 0xFF) / 255.0, (color & 0xFF) / 255.0);
}

void NoteTouchedArea(cairo_surface_t* surface, CascadeRect* area)
{
    cairo_surface_set_user_data(surface, &g_TouchedKey, area, nullptr);
}

const CascadeRect* TouchedArea(cairo_surface_t* surface)
{
    return static_cast<CascadeRect*>(cairo_surface_get_user_data(surface, &g_TouchedKey));
}

CascadeRect VisibleArea(cairo_surface_t* surface, const CascadeRect& within)
{
    cairo_surface_flush(surface);
    const CascadeDims dims = DeviceDims(surface);
    CascadeRect area = within;
    area.Intersect({0, 0, dims.width, dims.height});
    const unsigned char* const pixels = cairo_image_surface_get_data(surface);
    const int stride = cairo_image_surface_get_stride(surface);
    const auto row = [&](int y) { return reinterpret_cast<const uint32_t*>(pixels + size_t(y) * size_t(stride)); };

    int top = area.top;
    int bottom = area.Bottom();
    while (top < bottom && RowIsClear(row(top), area.left, area.Right())) {
        ++top;
    }
    while (bottom > top && RowIsClear(row(bottom - 1), area.left, area.Right())) {
        --bottom;
    }
    int left = area.Right();
    int right = area.left;
    for (int y = top; y < bottom; ++y) {
        const uint32_t* const line = row(y);
        int x = area.left;
        while (x < left && line[x] == 0) {
            ++x;
        }
        left = x;
        x = area.Right();
        while (x > right && line[x - 1] == 0) {
            --x;
        }
        right = x;
    }
    return top < bottom ? CascadeRect {left, top, right - left, bottom - top} : CascadeRect {};
}

}    // namespace screen
