// What is behind a CascadeBitmap: shared by the files that draw into one.
//
// Units:   `dims`, `origin` and the rectangles of Touch are logical pixels; `touched` is device pixels.
// Threads: one thread at a time, as the bitmap's own.
#pragma once

#include <string>

#include "host/screen/Canvas.h"
#include "platform/CascadeBitmap.h"

struct CascadeBitmap::Impl {
    screen::SurfacePtr surface;
    CascadeDims dims;
    CascadePoint origin;
    CascadeRect touched;

    // A finer version of the same file, read when first something shows the picture larger than it is.
    mutable std::string finePath;
    mutable screen::SurfacePtr fine;

    screen::CairoPtr Begin();    // for drawing in the caller's coordinates
    void Touch(const CascadeRect& rect);
    cairo_surface_t* Source(double deviceWidth) const;
};

struct BitmapOverLayer {
    // Nothing is drawn on it yet; `pixels` outlive it.
    static CascadeBitmap Make(screen::SurfacePtr pixels, CascadeDims dims);
};
