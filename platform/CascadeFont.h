// A font of the platform. Any script is shown: what the family lacks is taken from another one.
//
// Units:   the size is in points; a point is one logical pixel of the 1280 x 720 screen.
// Threads: the user-interface thread, and loaders that draw into bitmaps of their own.
#pragma once

#include <cstdint>

#include "platform/CascadeGeometry.h"
#include "platform/CascadeString.h"

class CascadeFont {
public:
    CascadeFont() = default;
    CascadeFont(const char* family, int size) { Create(family, size); }
    void Create(const char* family, int size);    // "system" is the platform's own family
    int GetSize() const { return m_nSize; }
    const CascadeString& GetFamily() const { return m_Family; }

    // Width of the text on one line and the height of that line; invalid UTF-8 counts as replacement
    // characters, line feeds as blanks.
    CascadeDims GetTextExtent(const char* text) const;

private:
    CascadeString m_Family = "system";
    int m_nSize = 24;
};

// The platform's widget fonts, by scheme; 0 is the ordinary one.
CascadeFont GetWidgetFont(int scheme);
