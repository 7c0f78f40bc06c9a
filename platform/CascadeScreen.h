// The screen: the logical screen that windows are laid out on, and the output's resolutions.
//
// Units:   GetDims is the logical screen, always 1280 x 720. Output resolutions and scale rectangles are
//          pixels of the output.
// Errors:  false, and nothing changes.
// Threads: the user-interface thread.
//
// Output resolutions are numbered from 0: 0 is the one the screen had at the start, the others are those
// that the display offers (in a window or without a display: a fixed table of the usual ones).
#pragma once

#include "platform/CascadeGeometry.h"

class CascadeScreen {
public:
    static CascadeDims GetDims();
    static unsigned GetNumSupportedOutputResolutions();
    static bool GetSupportedOutputResolutionAt(unsigned index, CascadeDims& dims);
    static unsigned GetCurrentOutputResolution();
    static unsigned GetCurrentScreenResolution();    // of the logical screen: always 0
    static bool SetOutputResolution(unsigned index);

    // The part of the output that a picture at full size fills.
    static bool GetOutputResolutionScaleRect(unsigned index, CascadeRect& rect);
};

// Where the platform keeps its own pictures ("common/dialog.png" and so on), with a trailing "/":
// "/usr/local/cascade/graphics/" in an installed program, the build's own folder in the build tree.
const char* CascadeGraphicsFolder();
