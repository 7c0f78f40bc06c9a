// Draws the picture of a button at any width while its round ends keep their shape: only what lies between
// them is stretched.
//
// Units:     logical pixels. Even rectangles give joints that fall on whole pixels of the usual outputs.
// Errors:    an empty picture draws nothing; a target too narrow for the ends squeezes the whole picture.
// Threads:   the user-interface thread.
// Ownership: nothing is kept.
#pragma once

#include "platform/CascadeBitmap.h"

class ESlices {
public:
    // `end` is how far an end reaches in.
    static void Draw(CascadeBitmap& target, const CascadeRect& to, const CascadeBitmap& picture, int end);
};
