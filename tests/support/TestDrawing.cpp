// Bitmaps that record what is drawn into them, and a font whose every character is equally wide.
#include <algorithm>
#include <mutex>

#include "platform/CascadeBitmap.h"
#include "platform/CascadeFile.h"
#include "platform/CascadeSharedMemZone.h"
#include "tests/support/TestInternals.h"
#include "tests/support/TestPlatform.h"

using TestPlatform::Drawing;

namespace {

std::mutex g_PictureMutex;    // loaders ask from threads of their own
std::map<std::string, CascadeDims> g_Pictures;    // guarded by g_PictureMutex

}    // namespace

CascadeDims TestInternals::SizeOfPicture(const std::string& path)
{
    const std::lock_guard lock(g_PictureMutex);
    const auto known = g_Pictures.find(path);
    return known == g_Pictures.end() ? CascadeDims {} : known->second;
}

struct CascadeBitmap::Impl {
    CascadeDims dims;
    CascadePoint origin;
    std::string source;
    std::vector<Drawing> drawings;

    Drawing& Add(Drawing::Kind kind, const CascadeRect& rect, CascadeColor color = 0)
    {
        Drawing& drawing = drawings.emplace_back();
        drawing.kind = kind;
        drawing.rect = rect;
        drawing.color = color;
        return drawing;
    }
    // An empty bitmap takes nothing.
    static void AddTo(Impl* impl, Drawing::Kind kind, const CascadeRect& rect, CascadeColor color)
    {
        if (impl != nullptr) {
            impl->Add(kind, rect, color);
        }
    }
};

CascadeBitmap::CascadeBitmap() = default;
CascadeBitmap::~CascadeBitmap() = default;
CascadeBitmap::CascadeBitmap(CascadeBitmap&&) noexcept = default;
CascadeBitmap& CascadeBitmap::operator=(CascadeBitmap&&) noexcept = default;

bool CascadeBitmap::Create(int width, int height)
{
    Destroy();
    if (width <= 0 || height <= 0) {
        return false;
    }
    m_pImpl = std::make_unique<Impl>();
    m_pImpl->dims = {width, height};
    return true;
}

bool CascadeBitmap::CreateFromFile(const char* path)
{
    const CascadeDims dims = TestInternals::SizeOfPicture(path == nullptr ? "" : path);
    if (!Create(dims.width, dims.height)) {
        return false;
    }
    m_pImpl->source = CascadeFSObject(path).GetName().Str();
    return true;
}

void CascadeBitmap::Destroy()
{
    m_pImpl.reset();
}

bool CascadeBitmap::IsEmpty() const
{
    return !m_pImpl;
}

CascadeDims CascadeBitmap::GetDims() const
{
    return m_pImpl ? m_pImpl->dims : CascadeDims {};
}

void CascadeBitmap::SetOrigin(CascadePoint origin)
{
    if (m_pImpl) {
        m_pImpl->origin = origin;
    }
}

CascadeRect CascadeBitmap::GetBounds() const
{
    return m_pImpl ? CascadeRect {m_pImpl->origin.x, m_pImpl->origin.y, m_pImpl->dims.width, m_pImpl->dims.height} : CascadeRect {};
}

void CascadeBitmap::Fill(CascadeColor color)
{
    Impl::AddTo(m_pImpl.get(), Drawing::kFill, GetBounds(), color);
}

void CascadeBitmap::FillRect(const CascadeRect& rect, CascadeColor color)
{
    Impl::AddTo(m_pImpl.get(), Drawing::kRect, rect, color);
}

void CascadeBitmap::FillRoundedRect(const CascadeRect& rect, int /*radius*/, CascadeColor color)
{
    Impl::AddTo(m_pImpl.get(), Drawing::kRoundedRect, rect, color);
}

void CascadeBitmap::FillGradient(const CascadeRect& rect, int /*radius*/, CascadeColor from, CascadeColor /*to*/, bool /*vertical*/)
{
    Impl::AddTo(m_pImpl.get(), Drawing::kGradient, rect, from);
}

void CascadeBitmap::StrokeRoundedRect(const CascadeRect& rect, int /*radius*/, double /*lineWidth*/, CascadeColor color)
{
    Impl::AddTo(m_pImpl.get(), Drawing::kStroke, rect, color);
}

void CascadeBitmap::TextOut(CascadePoint at, const char* text, const CascadeFont& font, CascadeColor color)
{
    if (m_pImpl) {
        const CascadeDims extent = font.GetTextExtent(text);
        Drawing& drawing = m_pImpl->Add(Drawing::kText, {at.x, at.y, extent.width, extent.height}, color);
        drawing.text = text == nullptr ? "" : text;
        drawing.fontSize = font.GetSize();
    }
}

void CascadeBitmap::Blit(CascadePoint at, const CascadeBitmap& source)
{
    if (m_pImpl && source.m_pImpl) {
        m_pImpl->Add(Drawing::kBlit, {at.x, at.y, source.m_pImpl->dims.width, source.m_pImpl->dims.height}).source = source.m_pImpl->source;
    }
}

void CascadeBitmap::StretchBlit(const CascadeRect& to, const CascadeBitmap& source)
{
    if (m_pImpl && source.m_pImpl) {
        m_pImpl->Add(Drawing::kStretchBlit, to).source = source.m_pImpl->source;
    }
}

void CascadeBitmap::FadeEdges(int /*left*/, int /*right*/) { }

bool CascadeBitmap::BlitFromSharedZone(
    CascadePoint at, CascadeSharedMemZone& zone, size_t offset, int width, int height, unsigned long bitsPerPixel, const CascadeRect& source)
{
    CascadeRect part = source;
    part.Intersect({0, 0, width, height});
    if (!m_pImpl || part.IsEmpty() || (bitsPerPixel != 24 && bitsPerPixel != 32)) {
        return false;
    }
    const size_t pixelSize = bitsPerPixel / 8;
    const size_t needed = static_cast<size_t>(width) * static_cast<size_t>(height) * pixelSize;
    if (offset > zone.GetSize() || needed > zone.GetSize() - offset) {
        return false;
    }
    const auto* const bytes = static_cast<const unsigned char*>(zone.MapLock());
    Drawing& drawing = m_pImpl->Add(Drawing::kZoneBlit, {at.x, at.y, part.width, part.height});
    for (int y = part.top; y < part.Bottom(); ++y) {
        for (int x = part.left; x < part.Right(); ++x) {
            const unsigned char* const p
                = bytes + offset + (static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)) * pixelSize;
            const unsigned alpha = pixelSize == 4 ? p[0] : 0xFFu;
            const unsigned char blue = p[pixelSize == 4 ? 3 : 0];
            drawing.pixels.push_back(
                static_cast<CascadeColor>(p[2]) << 24 | static_cast<CascadeColor>(p[1]) << 16 | static_cast<CascadeColor>(blue) << 8 | alpha);
        }
    }
    zone.Unlock();
    return true;
}

// Here the surface behind is the record of what was drawn.
void* CascadeBitmap::NativeSurface() const
{
    return m_pImpl ? &m_pImpl->drawings : nullptr;
}

void CascadeFont::Create(const char* family, int size)
{
    m_Family = family;
    m_nSize = size;
}

CascadeDims CascadeFont::GetTextExtent(const char* text) const
{
    const std::string_view bytes = text == nullptr ? "" : text;
    const auto characters = std::count_if(bytes.begin(), bytes.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; });
    return {static_cast<int>(characters) * m_nSize * 6 / 10, m_nSize * 12 / 10};
}

CascadeFont GetWidgetFont(int /*scheme*/)
{
    return {"system", 24};
}

void TestInternals::ResetDrawing()
{
    const std::lock_guard lock(g_PictureMutex);
    g_Pictures.clear();
}

namespace TestPlatform {

const std::vector<Drawing>& DrawingsOn(const CascadeBitmap& bitmap)
{
    static const std::vector<Drawing> nothing;
    const auto* const drawings = static_cast<const std::vector<Drawing>*>(bitmap.NativeSurface());
    return drawings == nullptr ? nothing : *drawings;
}

const Drawing* FindText(const std::vector<Drawing>& drawings, const std::string& text)
{
    const auto found = std::find_if(
        drawings.begin(), drawings.end(), [&](const Drawing& drawing) { return drawing.kind == Drawing::kText && drawing.text == text; });
    return found == drawings.end() ? nullptr : &*found;
}

const Drawing* FindBlit(const std::vector<Drawing>& drawings, const std::string& source)
{
    const auto found = std::find_if(drawings.begin(), drawings.end(), [&](const Drawing& drawing) {
        return (drawing.kind == Drawing::kBlit || drawing.kind == Drawing::kStretchBlit) && drawing.source == source;
    });
    return found == drawings.end() ? nullptr : &*found;
}

void AddPicture(const std::string& path, CascadeDims dims)
{
    const std::lock_guard lock(g_PictureMutex);
    g_Pictures[path] = dims;
}

}    // namespace TestPlatform
