// The zoom modes: which part of the decoder's picture is kept, and where on the screen it goes.
//
// Units:   insets are two-hundredths of the width or height they are taken from, on each side; rectangles
//          are pixels of the output.
// Threads: pure functions.
#pragma once

#include <iterator>

#include "platform/CascadeGeometry.h"

struct ZoomMode {
    const char* name;
    int keepInsetX;    // of the output's width, from the kept part
    int keepInsetY;    // of the output's height
    bool fillsScreen;    // the target is the whole output instead of the screen's scale rectangle
    int targetInsetX;    // of the target's own width
    int targetInsetY;    // of the target's own height
};

inline constexpr ZoomMode kZoomModes[] = {
    {"Full", 0, 0, false, 0, 0},
    {"Full+", 0, 0, true, 0, 0},
    {"16:9 -> 4:3 Zoom", 31, 0, false, 0, 0},
    {"4:3 -> 16:9 Zoom", 0, 26, false, 0, 0},
    {"16:9 window -> 16:9 Zoom", 31, 31, false, 0, 0},
    {"4:3 -> 16:9 Normal", 0, 0, false, 24, 0},
    {"16:9 -> 4:3", 0, 0, false, 0, 24},
};
inline constexpr int kNumZoomModes = static_cast<int>(std::size(kZoomModes));

// A mode outside the table is the first one: the number may come from a side file.
constexpr int ZoomModeWithin(int mode)
{
    return mode >= 0 && mode < kNumZoomModes ? mode : 0;
}

// What m_nZoomMode has to be for the next step to land on `mode`.
constexpr int ZoomModeBefore(int mode)
{
    return ZoomModeWithin(mode) - 1;
}

struct ZoomRects {
    CascadeRect output;
    CascadeRect scale;
};

inline ZoomRects ComputeZoom(const ZoomMode& mode, const CascadeRect& fullScreen, const CascadeRect& screenScale)
{
    ZoomRects rects {fullScreen, mode.fillsScreen ? fullScreen : screenScale};
    rects.output.InsetRect(fullScreen.width * mode.keepInsetX / 200, fullScreen.height * mode.keepInsetY / 200);
    rects.scale.InsetRect(rects.scale.width * mode.targetInsetX / 200, rects.scale.height * mode.targetInsetY / 200);
    // Every mode: a little larger, so that no rim shows, but never beyond the screen.
    rects.scale.InsetRect(-(rects.scale.width / 100), -(rects.scale.height / 100));
    rects.scale.Intersect(fullScreen);
    return rects;
}
