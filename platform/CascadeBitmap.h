// A picture that can be drawn into and drawn.
//
// Units:     logical pixels. The pixels behind them may be finer (the output's real scale), so text and
//            shapes stay sharp on every output. Colours as CascadeColor.
// Errors:    answers false and leaves the bitmap empty; drawing into an empty bitmap does nothing.
// Threads:   one thread at a time per bitmap.
// Ownership: owns its pixels.
#pragma once

#include <cstdint>
#include <memory>

#include "platform/CascadeFont.h"
#include "platform/CascadeGeometry.h"

class CascadeSharedMemZone;

class CascadeBitmap {
public:
    CascadeBitmap();
    virtual ~CascadeBitmap();
    CascadeBitmap(CascadeBitmap&&) noexcept;
    CascadeBitmap& operator=(CascadeBitmap&&) noexcept;

    bool Create(int width, int height);              // transparent, at the output's real scale
    bool CreateFromFile(const char* path);           // PNG or JPEG; of "name.png" a finer "name@3x.png" beside it is used where that is sharper
    void Destroy();
    bool IsEmpty() const;
    CascadeDims GetDims() const;

    // Everything drawn until the next SetOrigin is moved by this: a window paints in screen coordinates.
    void SetOrigin(CascadePoint origin);
    CascadeRect GetBounds() const;    // what there is to draw on, moved likewise

    void Fill(CascadeColor color);                                     // replaces everything, alpha included
    void FillRect(const CascadeRect& rect, CascadeColor color);        // blends
    void FillRoundedRect(const CascadeRect& rect, int radius, CascadeColor color);
    void FillGradient(const CascadeRect& rect, int radius, CascadeColor from, CascadeColor to, bool vertical);
    void StrokeRoundedRect(const CascadeRect& rect, int radius, double lineWidth, CascadeColor color);
    void TextOut(CascadePoint at, const char* text, const CascadeFont& font, CascadeColor color);    // `at` is the top left corner
    void WrappedTextOut(const CascadeRect& box, const char* text, const CascadeFont& font, CascadeColor color);
    void Blit(CascadePoint at, const CascadeBitmap& source);           // blends at the source's own size
    void StretchBlit(const CascadeRect& to, const CascadeBitmap& source);
    void FadeEdges(int left, int right);                               // what was drawn fades out over so many pixels; 0: it does not

    // Copies pixels of a shared zone: rows of width * bitsPerPixel / 8 bytes from `offset` on, 32 bits a
    // pixel in the byte order alpha, green, red, blue, or 24 in blue, green, red.
    virtual bool BlitFromSharedZone(CascadePoint at, CascadeSharedMemZone& zone, size_t offset, int width, int height, unsigned long bitsPerPixel,
                                    const CascadeRect& source);

    // For the platform's own rooms and tests: the surface behind (a cairo_surface_t), and one pixel's colour.
    void* NativeSurface() const;
    CascadeColor GetPixel(int x, int y) const;

private:
    friend struct BitmapOverLayer;    // the host's: a bitmap on pixels that it keeps itself
    struct Impl;
    std::unique_ptr<Impl> m_pImpl;
};
