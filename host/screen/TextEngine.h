// Text by Pango: one set of font tables and measured lines for each thread.
//
// Units:   logical pixels. A line is as high as the family's own line, whatever other fonts its characters are
//          taken from, so the rows of a list stay even.
// Errors:  none: invalid UTF-8 is shown as replacement characters, controls as blanks.
// Threads: ForThisThread answers the calling thread's own engine.
#pragma once

#include <map>
#include <string>
#include <unordered_map>

#include <pango/pangocairo.h>

#include "platform/CascadeFont.h"

namespace screen {

// UTF-8 that is valid; `keepLines` leaves line feeds in, else they become blanks like every control character.
std::string DisplayText(const char* text, bool keepLines);

class TextEngine {
public:
    static TextEngine& ForThisThread();
    ~TextEngine();
    TextEngine(const TextEngine&) = delete;
    TextEngine& operator=(const TextEngine&) = delete;

    CascadeDims Measure(const CascadeFont& font, const char* text);

    // Draws with the source set in `cairo` and answers what may have been touched, ink beyond the line included.
    CascadeRect DrawLine(cairo_t* cairo, CascadePoint at, const CascadeFont& font, const char* text);
    // Lines stand one pixel further apart than their height; what does not fit the box is cut off.
    void DrawWrapped(cairo_t* cairo, const CascadeRect& box, const CascadeFont& font, const char* text);

private:
    struct Face {
        PangoFontDescription* description = nullptr;
        int ascent = 0;    // Pango units
        int height = 0;    // logical pixels
        std::unordered_map<std::string, int> widths;
    };

    TextEngine();
    Face& FaceOf(const CascadeFont& font);
    PangoLayout* Layout(const Face& face, const std::string& text);

    PangoContext* m_pContext = nullptr;
    PangoLayout* m_pLayout = nullptr;
    std::map<std::pair<std::string, int>, Face> m_Faces;
};

}    // namespace screen
