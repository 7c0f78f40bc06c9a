// Colours and roundness of what the widgets draw themselves, as the theme in use wants them.
//
// A theme's folder holds them in "theme.cfg", one "name=value" a line:
//     accent, accentdeep, onaccent, paneltop, panelbottom, rim, text, quiet, key     colours, #RRGGBB or #RRGGBBAA
//     panelradius, rowradius                                                         logical pixels, 0 to 40
//
// Errors:    a file that is missing, and a line that is not understood, leave the values below.
// Threads:   a value; Load blocks on the disk.
#pragma once

#include "platform/CascadeBitmap.h"
#include "platform/CascadeGeometry.h"

struct EPalette {
    CascadeColor accent = 0x5CC3F2FF;        // marks, carets; halfway to the next one the top of the focus
    CascadeColor accentDeep = 0x1F7DC0FF;    // its bottom
    CascadeColor onAccent = 0xFFFFFFFF;      // text on the focus
    CascadeColor panelTop = 0x1B466DE6;      // behind everything, from top to bottom
    CascadeColor panelBottom = 0x0A2242F0;
    CascadeColor rim = 0xA9E0FF66;           // fine lines around panels and keys
    CascadeColor text = 0xEAF4FFFF;
    CascadeColor quiet = 0xA9C3DDFF;         // sizes, hints
    CascadeColor key = 0xFFFFFF1C;           // a key cap, a field, the groove of a scroll bar
    int panelRadius = 22;
    int rowRadius = 12;

    // `folder` with a trailing "/". Without a file there, that of the platform's own graphics counts.
    static EPalette Load(const char* folder);

    void PaintPanel(CascadeBitmap& bitmap, const CascadeRect& rect) const;    // translucent, with its rim and a soft shadow, all inside `rect`
    void PaintGround(CascadeBitmap& bitmap, const CascadeRect& rect) const;    // below a panel: nothing under it is to be read through it
    void PaintFocus(CascadeBitmap& bitmap, const CascadeRect& rect, int radius) const;
};
