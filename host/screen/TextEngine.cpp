#include "host/screen/TextEngine.h"

#include <algorithm>
#include <cmath>

namespace screen {
namespace {

// The platform's own family: it has every sign that the menus use; what it lacks comes from whatever is installed.
constexpr const char* kSystemFamily = "DejaVu Sans";
constexpr int kLargestSize = 500;
// A long folder measured again and again on every step through it; beyond this the table starts anew.
constexpr size_t kMeasuredLines = 8192;
// Longer lines are wider than any screen.
constexpr size_t kLongestText = 16384;
// Smoothing on a coarse output, and colour glyphs that are scaled pictures, reach a little beyond the stated ink.
constexpr int kInkMargin = 3;

int Pixels(int pangoUnits)
{
    return PANGO_PIXELS_CEIL(pangoUnits);
}

}    // namespace

std::string DisplayText(const char* text, bool keepLines)
{
    char* const valid = g_utf8_make_valid(text == nullptr ? "" : text, -1);
    std::string result(valid);
    g_free(valid);
    if (result.size() > kLongestText) {
        result.resize(size_t(g_utf8_find_prev_char(result.c_str(), result.c_str() + kLongestText) - result.c_str()));
    }
    for (char& c : result) {
        if (static_cast<unsigned char>(c) < 0x20 && !(keepLines && c == '\n')) {
            c = ' ';
        }
    }
    return result;
}

TextEngine& TextEngine::ForThisThread()
{
    static thread_local TextEngine engine;
    return engine;
}

TextEngine::TextEngine()
{
    m_pContext = pango_font_map_create_context(pango_cairo_font_map_get_default());
    // Unhinted metrics: a text has the same width in logical pixels on every output.
    cairo_font_options_t* const options = cairo_font_options_create();
    cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
    cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_SLIGHT);
    cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);    // the colours below are the picture's
    pango_cairo_context_set_font_options(m_pContext, options);
    cairo_font_options_destroy(options);
    pango_context_set_round_glyph_positions(m_pContext, FALSE);
    m_pLayout = pango_layout_new(m_pContext);
    pango_layout_set_auto_dir(m_pLayout, TRUE);
}

TextEngine::~TextEngine()
{
    for (auto& [key, face] : m_Faces) {
        pango_font_description_free(face.description);
    }
    g_object_unref(m_pLayout);
    g_object_unref(m_pContext);
}

TextEngine::Face& TextEngine::FaceOf(const CascadeFont& font)
{
    const int size = std::clamp(font.GetSize(), 1, kLargestSize);
    Face& face = m_Faces[{font.GetFamily().Str(), size}];
    if (face.description == nullptr) {
        const bool system = font.GetFamily().IsEmpty() || font.GetFamily() == "system";
        face.description = pango_font_description_new();
        pango_font_description_set_family(face.description, system ? kSystemFamily : font.GetFamily().Text());
        pango_font_description_set_absolute_size(face.description, double(size) * PANGO_SCALE);
        PangoFontMetrics* const metrics = pango_context_get_metrics(m_pContext, face.description, nullptr);
        face.ascent = pango_font_metrics_get_ascent(metrics);
        face.height = Pixels(face.ascent + pango_font_metrics_get_descent(metrics));
        pango_font_metrics_unref(metrics);
    }
    return face;
}

PangoLayout* TextEngine::Layout(const Face& face, const std::string& text)
{
    pango_layout_set_font_description(m_pLayout, face.description);
    pango_layout_set_width(m_pLayout, -1);
    pango_layout_set_text(m_pLayout, text.c_str(), int(text.size()));
    return m_pLayout;
}

CascadeDims TextEngine::Measure(const CascadeFont& font, const char* text)
{
    Face& face = FaceOf(font);
    std::string key(text == nullptr ? "" : text);
    const auto known = face.widths.find(key);
    if (known != face.widths.end()) {
        return {known->second, face.height};
    }
    PangoRectangle logical;
    pango_layout_get_extents(Layout(face, DisplayText(key.c_str(), false)), nullptr, &logical);
    if (face.widths.size() >= kMeasuredLines) {
        face.widths.clear();
    }
    const int width = Pixels(logical.width);
    face.widths.emplace(std::move(key), width);
    return {width, face.height};
}

CascadeRect TextEngine::DrawLine(cairo_t* cairo, CascadePoint at, const CascadeFont& font, const char* text)
{
    const Face& face = FaceOf(font);
    const std::string shown = DisplayText(text, false);
    if (shown.empty()) {
        return {};
    }
    PangoLayout* const layout = Layout(face, shown);
    PangoLayoutLine* const line = pango_layout_get_line_readonly(layout, 0);
    PangoRectangle ink;
    pango_layout_line_get_extents(line, &ink, nullptr);
    const double baseline = at.y + double(face.ascent) / PANGO_SCALE;
    cairo_move_to(cairo, at.x, baseline);
    pango_cairo_show_layout_line(cairo, line);

    const int left = int(std::floor(at.x + double(ink.x) / PANGO_SCALE)) - kInkMargin;
    const int top = int(std::floor(baseline + double(ink.y) / PANGO_SCALE)) - kInkMargin;
    return {left, top, Pixels(ink.width) + 2 * kInkMargin + 1, Pixels(ink.height) + 2 * kInkMargin + 1};
}

void TextEngine::DrawWrapped(cairo_t* cairo, const CascadeRect& box, const CascadeFont& font, const char* text)
{
    if (box.IsEmpty()) {
        return;
    }
    const Face& face = FaceOf(font);
    PangoLayout* const layout = Layout(face, DisplayText(text, true));
    pango_layout_set_width(layout, std::min(box.width, 1 << 20) * PANGO_SCALE);
    pango_layout_set_wrap(layout, PANGO_WRAP_WORD_CHAR);

    cairo_save(cairo);
    cairo_rectangle(cairo, box.left, box.top, box.width, box.height);
    cairo_clip(cairo);
    PangoLayoutIter* const iter = pango_layout_get_iter(layout);
    int top = box.top;
    do {
        PangoRectangle logical;
        pango_layout_iter_get_line_extents(iter, nullptr, &logical);
        cairo_move_to(cairo, box.left + double(logical.x) / PANGO_SCALE, top + double(face.ascent) / PANGO_SCALE);
        pango_cairo_show_layout_line(cairo, pango_layout_iter_get_line_readonly(iter));
        top += face.height + 1;
    } while (top < box.Bottom() && pango_layout_iter_next_line(iter));
    pango_layout_iter_free(iter);
    cairo_restore(cairo);
}

}    // namespace screen
