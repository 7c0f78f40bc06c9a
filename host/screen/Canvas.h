// Cairo surfaces as the screen uses them: finer than logical pixels, with a note of where they were drawn on.
//
// Units:     logical pixels go in; a surface has `scale` device pixels to each. Premultiplied ARGB32.
// Errors:    null when there is no memory or the size is beyond cairo's 32,767 pixels.
// Threads:   OutputScale may be asked from any thread; a surface belongs to one thread at a time.
// Ownership: SurfacePtr and CairoPtr own a reference.
#pragma once

#include <memory>

#include <cairo.h>

#include "platform/CascadeGeometry.h"

namespace screen {

struct SurfaceDeleter {
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};
using SurfacePtr = std::unique_ptr<cairo_surface_t, SurfaceDeleter>;

struct CairoDeleter {
    void operator()(cairo_t* cairo) const { cairo_destroy(cairo); }
};
using CairoPtr = std::unique_ptr<cairo_t, CairoDeleter>;

inline constexpr CascadeDims kLogicalScreen {1280, 720};
inline constexpr int kLargestSurface = 32767;    // cairo keeps coordinates in 16.16 fixed point

// Device pixels of the output to a logical pixel. The logical screen lies centred on an output of another shape.
double OutputScale();
void SetOutputScale(double scale);
double ScaleFor(CascadeDims output);
CascadePoint OriginOnOutput(CascadeDims output);

SurfacePtr CreateSurface(int deviceWidth, int deviceHeight, double scale);
CascadeDims DeviceDims(cairo_surface_t* surface);

// Straight alpha 0xRRGGBBAA.
void SetSourceColor(cairo_t* cairo, CascadeColor color);

// The device pixels of a surface that may differ from transparent, so that nobody has to search a whole
// screen for one line of text. `area` has to live as long as the surface is drawn on.
void NoteTouchedArea(cairo_surface_t* surface, CascadeRect* area);
const CascadeRect* TouchedArea(cairo_surface_t* surface);    // null: not noted

// The smallest rectangle of device pixels that holds everything not transparent within `within`.
CascadeRect VisibleArea(cairo_surface_t* surface, const CascadeRect& within);

}    // namespace screen
