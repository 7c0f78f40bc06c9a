// Windows painted: as a whole into a layer of their own, or a part of them into the layer that there is.
//
// Units:     windows and their parts are logical pixels, layers and boxes pixels of the output.
// Errors:    a layer without pixels: there was nothing to paint on, or nothing is to be seen.
// Threads:   the user-interface thread.
// Ownership: the caller's. A window may take itself off the screen while it paints.
#pragma once

#include "host/screen/WindowStack.h"

namespace screen {

Layer PaintOf(CascadeWindow& window, CascadeDims output);

// A part of a window, grown until it ends with whole pixels of the output: others would be painted by halves.
struct WindowPart {
    CascadeRect rect;
    CascadeRect box;    // on the output
};
WindowPart OnOutput(const CascadeWindow& window, const CascadeRect& part, CascadeDims output);

// Straight into what is kept of the window: `area`, in device pixels of `layer`.
void PaintInto(CascadeWindow& window, const CascadeRect& part, cairo_surface_t* layer, const CascadeRect& area, double scale);

}    // namespace screen
