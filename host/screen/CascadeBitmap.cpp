#include "platform/CascadeBitmap.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <unistd.h>

#include "host/screen/BitmapImpl.h"
#include "host/screen/PictureFile.h"
#include "host/screen/TextEngine.h"

using namespace screen;

CascadeBitmap::CascadeBitmap() = default;
CascadeBitmap::~CascadeBitmap() = default;
CascadeBitmap::CascadeBitmap(CascadeBitmap&&) noexcept = default;
CascadeBitmap& CascadeBitmap::operator=(CascadeBitmap&&) noexcept = default;

bool CascadeBitmap::Create(int width, int height)
{
    Destroy();
    const double scale = OutputScale();
    if (width <= 0 || height <= 0 || width > kLargestSurface || height > kLargestSurface) {
        return false;
    }
    auto impl = std::make_unique<Impl>();
    impl->surface = CreateSurface(int(std::ceil(width * scale)), int(std::ceil(height * scale)), scale);
    if (impl->surface == nullptr) {
        return false;
    }
    impl->dims = {width, height};
    NoteTouchedArea(impl->surface.get(), &impl->touched);
    m_pImpl = std::move(impl);
    return true;
}

CascadeBitmap BitmapOverLayer::Make(SurfacePtr pixels, CascadeDims dims)
{
    CascadeBitmap bitmap;
    bitmap.m_pImpl = std::make_unique<CascadeBitmap::Impl>();
    bitmap.m_pImpl->surface = std::move(pixels);
    bitmap.m_pImpl->dims = dims;
    NoteTouchedArea(bitmap.m_pImpl->surface.get(), &bitmap.m_pImpl->touched);
    return bitmap;
}

bool CascadeBitmap::CreateFromFile(const char* path)
{
    Destroy();
    if (path == nullptr) {
        return false;
    }
    Picture picture = LoadPicture(path);
    if (picture.surface == nullptr) {
        return false;
    }
    m_pImpl = std::make_unique<Impl>();
    m_pImpl->surface = std::move(picture.surface);
    m_pImpl->dims = picture.dims;
    const CascadeDims device = DeviceDims(m_pImpl->surface.get());
    m_pImpl->touched = {0, 0, device.width, device.height};
    NoteTouchedArea(m_pImpl->surface.get(), &m_pImpl->touched);
    const std::string name(path);
    if (name.ends_with(".png")) {
        m_pImpl->finePath = name.substr(0, name.size() - 4) + "@3x.png";
    }
    return true;
}

void CascadeBitmap::Destroy()
{
    m_pImpl.reset();
}
bool CascadeBitmap::IsEmpty() const
{
    return m_pImpl == nullptr;
}
CascadeDims CascadeBitmap::GetDims() const
{
    return IsEmpty() ? CascadeDims {} : m_pImpl->dims;
}
void* CascadeBitmap::NativeSurface() const
{
    return IsEmpty() ? nullptr : m_pImpl->surface.get();
}

void CascadeBitmap::SetOrigin(CascadePoint origin)
{
    if (!IsEmpty()) {
        m_pImpl->origin = origin;
    }
}

CascadeRect CascadeBitmap::GetBounds() const
{
    return IsEmpty() ? CascadeRect {} : CascadeRect {m_pImpl->origin.x, m_pImpl->origin.y, m_pImpl->dims.width, m_pImpl->dims.height};
}

CairoPtr CascadeBitmap::Impl::Begin()
{
    finePath.clear();    // from now on the picture is no longer that of the file
    fine.reset();
    CairoPtr cairo(cairo_create(surface.get()));
    cairo_translate(cairo.get(), -origin.x, -origin.y);
    return cairo;
}

void CascadeBitmap::Impl::Touch(const CascadeRect& rect)
{
    double scale = 1;
    cairo_surface_get_device_scale(surface.get(), &scale, &scale);
    const double left = std::floor((rect.left - origin.x) * scale);
    const double top = std::floor((rect.top - origin.y) * scale);
    const double right = std::ceil((rect.left - origin.x + double(rect.width)) * scale);
    const double bottom = std::ceil((rect.top - origin.y + double(rect.height)) * scale);
    const CascadeDims device = DeviceDims(surface.get());
    const auto within = [](double value, int end) { return int(std::clamp(value, 0.0, double(end))); };
    const int l = within(left, device.width);
    const int t = within(top, device.height);
    touched.Unite({l, t, within(right, device.width) - l, within(bottom, device.height) - t});
}

// The surface to take the picture from when `deviceWidth` pixels are to show it.
cairo_surface_t* CascadeBitmap::Impl::Source(double deviceWidth) const
{
    constexpr double kWorthwhile = 1.05;
    if (deviceWidth > DeviceDims(surface.get()).width * kWorthwhile && !finePath.empty() && fine == nullptr) {
        Picture picture = LoadPicture(finePath.c_str());
        if (picture.surface == nullptr) {
            finePath.clear();
        } else {
            cairo_surface_set_device_scale(picture.surface.get(), double(picture.dims.width) / dims.width, double(picture.dims.height) / dims.height);
            fine = std::move(picture.surface);
        }
    }
    const bool useFine = fine != nullptr && deviceWidth > DeviceDims(surface.get()).width * kWorthwhile;
    return useFine ? fine.get() : surface.get();
}

void CascadeBitmap::Blit(CascadePoint at, const CascadeBitmap& source)
{
    if (!source.IsEmpty()) {
        StretchBlit({at.x, at.y, source.m_pImpl->dims.width, source.m_pImpl->dims.height}, source);
    }
}

void CascadeBitmap::StretchBlit(const CascadeRect& to, const CascadeBitmap& source)
{
    if (IsEmpty() || source.IsEmpty() || to.IsEmpty() || this == &source) {
        return;
    }
    double scale = 1;
    cairo_surface_get_device_scale(m_pImpl->surface.get(), &scale, &scale);
    cairo_surface_t* const pixels = source.m_pImpl->Source(to.width * scale);
    const CairoPtr cairo = m_pImpl->Begin();
    const CascadeDims dims = source.m_pImpl->dims;
    cairo_rectangle(cairo.get(), to.left, to.top, to.width, to.height);
    // Where an edge falls inside a pixel of the output that pixel is in or out: two pictures side by side would each
    // cover a part of it, and what is below them would shine through.
    cairo_set_antialias(cairo.get(), CAIRO_ANTIALIAS_NONE);
    cairo_clip(cairo.get());
    cairo_translate(cairo.get(), to.left, to.top);
    cairo_scale(cairo.get(), double(to.width) / dims.width, double(to.height) / dims.height);
    cairo_set_source_surface(cairo.get(), pixels, 0, 0);
    // Without this the edge pixels of a stretched picture fade into transparency.
    cairo_pattern_set_extend(cairo_get_source(cairo.get()), CAIRO_EXTEND_PAD);
    cairo_pattern_set_filter(cairo_get_source(cairo.get()), CAIRO_FILTER_GOOD);
    if (m_pImpl->touched.IsEmpty()) {
        cairo_set_operator(cairo.get(), CAIRO_OPERATOR_SOURCE);    // the same over nothing, and a mere copy where nothing is scaled
    }
    cairo_paint(cairo.get());
    m_pImpl->Touch(to);
}

void CascadeBitmap::TextOut(CascadePoint at, const char* text, const CascadeFont& font, CascadeColor color)
{
    if (!IsEmpty()) {
        const CairoPtr cairo = m_pImpl->Begin();
        SetSourceColor(cairo.get(), color);
        m_pImpl->Touch(TextEngine::ForThisThread().DrawLine(cairo.get(), at, font, text));
    }
}

void CascadeBitmap::WrappedTextOut(const CascadeRect& box, const char* text, const CascadeFont& font, CascadeColor color)
{
    if (!IsEmpty()) {
        const CairoPtr cairo = m_pImpl->Begin();
        SetSourceColor(cairo.get(), color);
        TextEngine::ForThisThread().DrawWrapped(cairo.get(), box, font, text);
        m_pImpl->Touch(box);
    }
}

CascadeColor CascadeBitmap::GetPixel(int x, int y) const
{
    if (IsEmpty() || x < 0 || y < 0 || x >= m_pImpl->dims.width || y >= m_pImpl->dims.height) {
        return 0;
    }
    cairo_surface_t* const surface = m_pImpl->surface.get();
    cairo_surface_flush(surface);
    double scale = 1;
    cairo_surface_get_device_scale(surface, &scale, &scale);
    const CascadeDims device = DeviceDims(surface);
    const int column = std::min(int((x + 0.5) * scale), device.width - 1);
    const int row = std::min(int((y + 0.5) * scale), device.height - 1);
    const unsigned char* const line = cairo_image_surface_get_data(surface) + size_t(row) * size_t(cairo_image_surface_get_stride(surface));
    uint32_t pixel = 0;
    std::memcpy(&pixel, line + size_t(column) * 4, sizeof pixel);
    const unsigned alpha = cairo_image_surface_get_format(surface) == CAIRO_FORMAT_ARGB32 ? pixel >> 24 : 0xFF;
    if (alpha == 0) {
        return 0;
    }
    const auto straight = [&](unsigned shift) { return std::min(255U, (((pixel >> shift) & 0xFF) * 255 + alpha / 2) / alpha); };
    return straight(16) << 24 | straight(8) << 16 | straight(0) << 8 | alpha;
}
