#include "widgets/EUtils.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "platform/CascadeFile.h"
#include "platform/CascadeScreen.h"
#include "platform/CascadeSharedMemZone.h"

bool EUtils::LoadBitmapFromFile(CascadeBitmap& bitmap, const CascadeString& path, const CascadeString& fallback)
{
    if (CascadeFSObject::Exists(path) && bitmap.CreateFromFile(path)) {
        return true;
    }
    if (!fallback.IsEmpty() && CascadeFSObject::Exists(fallback) && bitmap.CreateFromFile(fallback)) {
        return true;
    }
    bitmap.Destroy();
    return false;
}

void EUtils::CenterRectInScreen(CascadeRect& rect)
{
    // Halves of unsigned numbers; a rectangle larger than the screen comes to stand left of it or above it.
    const auto centred
        = [](int screen, int size) { return static_cast<int>((static_cast<uint32_t>(screen) - 1) / 2 - (static_cast<uint32_t>(size) - 1) / 2); };
    const CascadeDims screen = CascadeScreen::GetDims();
    rect.left = centred(screen.width, rect.width);
    rect.top = centred(screen.height, rect.height);
}

bool EUtils::BufferBlit(CascadeBitmap& target, const CascadePoint& at, const unsigned char* pixels, const CascadeDims& dims,
    unsigned long bitsPerPixel, const CascadeRect& source)
{
    const bool hasPixels = pixels != nullptr && dims.width > 0 && dims.height > 0;
    const size_t size = hasPixels ? static_cast<size_t>(dims.width) * static_cast<size_t>(dims.height) * (bitsPerPixel / 8) : 0;

    // Two calls within a second choose the same name; each closes its zone before it returns.
    std::srand(static_cast<unsigned>(std::time(nullptr)));
    const CascadeString name = CascadeString::Format("EUtilsBlitZone%i", std::rand() % 9000 + 1000);
    CascadeSharedMemZone zone;
    if (size == 0 || !zone.Open(name, size, true)) {
        std::printf("Unable to open shared zone.\n");
        return false;
    }
    void* const memory = zone.MapLock();
    if (memory == nullptr || zone.GetSize() < size) {    // a zone of that name may be there and smaller
        std::printf("MapLock failed.\n");
        zone.Unlock();
        zone.Close();
        return false;
    }
    std::memcpy(memory, pixels, size);
    zone.Unlock();
    const CascadeRect part = source == CascadeRect {} ? CascadeRect {0, 0, dims.width, dims.height} : source;
    target.BlitFromSharedZone(at, zone, 0, dims.width, dims.height, bitsPerPixel, part);
    zone.Close();
    return true;
}

void EUtils::ShadowedTextOut(
    CascadeBitmap& bitmap, CascadePoint at, const char* text, const CascadeFont& font, CascadeColor color, CascadeColor shadow, int offset)
{
    bitmap.TextOut({at.x + offset, at.y + offset}, text, font, shadow);
    // A rim as well: the shadow alone leaves the other edges without contrast on a picture as bright as the text.
    const int rim = offset / 2;
    if (rim > 0) {
        for (const CascadePoint corner : {CascadePoint {-rim, -rim}, {rim, -rim}, {-rim, rim}, {rim, rim}}) {
            bitmap.TextOut({at.x + corner.x, at.y + corner.y}, text, font, shadow);
        }
    }
    bitmap.TextOut(at, text, font, color);
}
