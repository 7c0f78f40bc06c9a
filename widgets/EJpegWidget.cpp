#include "widgets/EJpegWidget.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>

#include "platform/CascadeFile.h"
#include "widgets/ELoader.h"
#include "widgets/EUtils.h"

namespace {

constexpr double kLoadingSize = 0.12;    // of the widget's width
constexpr CascadeColor kLoadingColor = 0xFFFFFFFF;
constexpr size_t kBytesDecoded = 3;    // of a pixel

// The corner of something of this size that is centred.
int Centred(int start, int room, int size)
{
    return start + (room - 1) / 2 - (size - 1) / 2;
}

}    // namespace

// What one path gives. The loader writes, then sets `loaded`; afterwards only the widget reads.
struct EJpegWidget::Picture {
    CascadeString path;
    CascadeDims box;
    CascadeDims dims;
    std::unique_ptr<unsigned char[]> pixels;    // null: could not be had
    std::atomic<bool> loaded {false};
};

EJpegWidget::EJpegWidget()
    : m_pLoader(std::make_unique<ELoader>(*this))
{
}

EJpegWidget::~EJpegWidget() = default;

bool EJpegWidget::IsValidJpegFile(const char* path, bool checkExtension)
{
    if (path == nullptr || *path == '\0' || !CascadeFSObject::Exists(path)) {
        return false;
    }
    const CascadeString extension = CascadeFile(path).GetFilenameExtension();
    return !checkExtension || extension.Compare("jpg", false) == 0 || extension.Compare("thm", false) == 0;
}

bool EJpegWidget::GetJpegBitmap(const char* path, const CascadeDims& largest, CascadeDims& used, std::unique_ptr<unsigned char[]>& pixels,
    bool alphaFirst, const std::atomic<bool>* stop)
{
    CascadeJpegFile file;
    return file.Open(path) && GetJpegBitmap(file, largest, used, pixels, alphaFirst, stop);
}

bool EJpegWidget::GetJpegBitmap(CascadeJpegFile& file, const CascadeDims& largest, CascadeDims& used, std::unique_ptr<unsigned char[]>& pixels,
    bool alphaFirst, const std::atomic<bool>* stop)
{
    const double width = file.GetImageWidth();
    const double height = file.GetImageHeight();
    if (!(width > 0 && height > 0) || largest.width <= 0 || largest.height <= 0) {
        return false;
    }
    const double ratio = std::max(width / largest.width, height / largest.height);
    used = {static_cast<int>(width / ratio), static_cast<int>(height / ratio)};

    const size_t size = file.GetBitmapDataSize(static_cast<unsigned>(used.width), static_cast<unsigned>(used.height));
    const auto decoded = std::make_unique_for_overwrite<unsigned char[]>(size);
    if (size == 0 || !file.GetBitmapData({0, 0, used.width, used.height}, decoded.get(), stop)) {
        if (stop == nullptr || !*stop) {
            std::printf("Unable to get bitmap data from jpeg.\n");
        }
        return false;
    }
    const size_t count = size / kBytesDecoded;
    pixels = std::make_unique_for_overwrite<unsigned char[]>(size + count);
    const unsigned char* from = decoded.get();
    unsigned char* to = pixels.get();
    for (size_t i = 0; i < count; ++i, from += kBytesDecoded, to += 4) {
        // Two consumers, two orders; that the second is not the first one backwards is on purpose.
        to[0] = alphaFirst ? 0xFF : from[2];
        to[1] = from[1];
        to[2] = from[0];
        to[3] = alphaFirst ? from[2] : 0xFF;
    }
    return true;
}

void EJpegWidget::SetDefaultImage(const CascadeBitmap* image)
{
    m_pDefaultImage = image;
    if (!HasPicture()) {
        m_bBitmapMade = false;
        m_Bitmap.Destroy();
        Redraw();
    }
}

bool EJpegWidget::IsLoaded() const
{
    return m_pPicture != nullptr && m_pPicture->loaded.load(std::memory_order_acquire);
}

bool EJpegWidget::HasPicture() const
{
    return IsLoaded() && m_pPicture->pixels != nullptr;
}

void EJpegWidget::SetJpegFilePath(const CascadeString& path)
{
    const CascadeDims box = {GetRect().width, GetRect().height};
    if (m_pPicture != nullptr && path == m_Path && m_pPicture->box == box && (HasPicture() || m_pLoader->IsBusy())) {
        return;
    }
    m_Path = path;
    m_Bitmap.Destroy();
    m_bBitmapMade = false;
    m_pPicture = std::make_shared<Picture>();
    m_pPicture->path = path;
    m_pPicture->box = box;
    Redraw();
    m_pLoader->Start([picture = m_pPicture](const std::atomic<bool>& stop) { ThreadProc(*picture, stop); });
}

void EJpegWidget::ThreadProc(Picture& picture, const std::atomic<bool>& stop)
{
    if (IsValidJpegFile(picture.path, false)) {
        // In the order in which OnPaint's blit takes pixels: alpha first.
        GetJpegBitmap(picture.path, picture.box, picture.dims, picture.pixels, true, &stop);
    }
    picture.loaded.store(true, std::memory_order_release);
}

void EJpegWidget::WaitUntilFinished()
{
    m_pLoader->Stop();
}

// Once for each picture: later paintings only draw it.
void EJpegWidget::MakeBitmap()
{
    m_bBitmapMade = true;
    const CascadeRect& rect = GetRect();
    if (HasPicture()) {
        const CascadeDims& dims = m_pPicture->dims;
        if (m_Bitmap.Create(dims.width, dims.height)) {
            EUtils::BufferBlit(m_Bitmap, {0, 0}, m_pPicture->pixels.get(), dims, 32, {});
        }
    } else if (m_pDefaultImage != nullptr && m_Bitmap.Create(rect.width, rect.height)) {
        m_Bitmap.StretchBlit({0, 0, rect.width, rect.height}, *m_pDefaultImage);
    }
}

void EJpegWidget::OnPaint(CascadeBitmap& bitmap)
{
    bitmap.Fill(0);
    if (IsLoaded()) {
        if (!m_bBitmapMade) {
            MakeBitmap();
        }
        const CascadeRect& rect = GetRect();
        const CascadeDims dims = m_Bitmap.GetDims();
        bitmap.Blit({Centred(rect.left, rect.width, dims.width), Centred(rect.top, rect.height, dims.height)}, m_Bitmap);
    } else if (!m_Path.IsEmpty()) {
        PaintLoading(bitmap);
    }
}

void EJpegWidget::PaintLoading(CascadeBitmap& bitmap) const
{
    constexpr const char* kText = "Loading...";
    const CascadeRect& rect = GetRect();
    const CascadeFont font("system", static_cast<uint8_t>(rect.width * kLoadingSize));
    const CascadeDims extent = font.GetTextExtent(kText);
    bitmap.TextOut({Centred(rect.left, rect.width, extent.width), Centred(rect.top, rect.height, extent.height)}, kText, font, kLoadingColor);
}
