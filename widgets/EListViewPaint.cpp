// How the list is drawn: its panel, the rows on screen, the scroll bar.
#include <algorithm>
#include <array>
#include <cstring>

#include "platform/CascadeScreen.h"
#include "widgets/EIconLoader.h"
#include "widgets/EListView.h"
#include "widgets/EUtils.h"
#include "widgets/ListLook.h"

namespace {

constexpr int kNarrowestColumn = 20;    // a narrower one is hidden
constexpr int kRowInset = 12;    // of what stands in a row
constexpr int kInkBeside = 6;    // of a text beyond its extent
constexpr int kInkAbove = 3;
constexpr int kFade = 28;    // at the ends of a moving name
constexpr int kMessageSize = 28;
constexpr int kMessageMargin = 24;
constexpr int kBar = 6;    // width, in the padding at the right
constexpr int kBarInset = 10;    // from the panel's right edge
constexpr int kShortestThumb = 36;
constexpr double kPictureRight = 0.91;    // of an icon: its margin stays free
constexpr double kPictureBottom = 0.81;
constexpr int kMarkRimWidth = 2;
constexpr size_t kMostTrimmed = 128;
constexpr CascadeColor kMarkRim = 0x00000090;
constexpr int kUnfocusedLine = 2;

// Only a part of the list may be painted; shaping a text that is not in it is the larger part of the work.
bool IsDue(const CascadeBitmap& bitmap, CascadeRect rect)
{
    rect.Intersect(bitmap.GetBounds());
    return !rect.IsEmpty();
}

}    // namespace

CascadeRect EListView::RowsRect() const
{
    CascadeRect rows = GetRect();
    rows.InsetRect(kListPadding, kListPadding);
    return rows;
}

CascadeRect EListView::RowRect(int item) const
{
    const CascadeRect rows = RowsRect();
    const int height = rows.height / m_Scroll.PageRows();
    const int place = item - m_Scroll.Top();
    return place >= 0 && place < m_Scroll.PageRows() && item < GetItemCount() ? CascadeRect {rows.left, rows.top + place * height, rows.width, height}
                                                                             : CascadeRect {};
}

CascadeRect EListView::GrooveRect() const
{
    const CascadeRect rows = RowsRect();
    return {GetRect().Right() - kBarInset - kBar, rows.top + kListPadding / 2, kBar, rows.height - kListPadding};
}

// Drawn once and kept: a large gradient costs more than all rows.
void EListView::PaintPanel(CascadeBitmap& bitmap)
{
    const CascadeRect& rect = GetRect();
    if (m_Panel.GetDims() != CascadeDims {rect.width, rect.height} || m_nPanelResolution != CascadeScreen::GetCurrentOutputResolution()) {
        m_nPanelResolution = CascadeScreen::GetCurrentOutputResolution();
        m_Panel.Create(rect.width, rect.height);
        m_Palette.PaintPanel(m_Panel, {0, 0, rect.width, rect.height});
        m_Focus.Destroy();
    }
    bitmap.Fill(0);
    bitmap.Blit({rect.left, rect.top}, m_Panel);
}

void EListView::OnPaint(CascadeBitmap& bitmap)
{
    LayOut();
    PaintPanel(bitmap);
    const CascadeRect rows = RowsRect();
    const int end = std::min(m_Scroll.Top() + m_Scroll.PageRows(), GetItemCount());
    int bottom = rows.top;
    for (int item = m_Scroll.Top(); item < end; ++item) {
        const CascadeRect row = RowRect(item);
        if (IsDue(bitmap, row)) {
            PaintRow(bitmap, item, row);
        }
        bottom = row.Bottom();
    }
    if (const CascadeRect room {rows.left, bottom, rows.width, rows.Bottom() - bottom}; IsDue(bitmap, room)) {
        PaintMessage(bitmap, room);
    }
    if (IsDue(bitmap, GrooveRect())) {
        PaintScrollBar(bitmap);
    }
    if (m_bIcons) {
        m_pIcons->LoadWanted();
    }
}

void EListView::PaintRow(CascadeBitmap& bitmap, int item, const CascadeRect& row)
{
    const ListLook& look = kListLooks[m_nMode];
    const bool selected = item == m_Scroll.Selected();
    const bool focused = selected && m_bFocused;
    if (focused) {
        if (m_Focus.GetDims() != CascadeDims {row.width, row.height - 2}) {
            m_Focus.Create(row.width, row.height - 2);
            m_Palette.PaintFocus(m_Focus, {0, 0, row.width, row.height - 2}, m_Palette.rowRadius);
        }
        bitmap.Blit({row.left, row.top + 1}, m_Focus);
    } else if (selected) {
        bitmap.StrokeRoundedRect({row.left, row.top + 1, row.width, row.height - 2}, m_Palette.rowRadius, kUnfocusedLine, m_Palette.accent);
    }

    const CascadeRect icon = {row.left + kRowInset, row.top + (row.height - look.icon) / 2, look.icon, look.icon};
    if (const CascadeBitmap* const picture = IconOf(item); picture != nullptr && IsDue(bitmap, icon)) {
        bitmap.Blit({icon.left, icon.top}, *picture);
    }
    if (m_Items.GetMark(item)) {
        PaintMark(bitmap, icon, focused);
    }
    const CascadeRect name = NameBox(item, row);
    CascadeRect ink = name;
    ink.InsetRect(-kInkBeside, 0);
    if (IsDue(bitmap, ink)) {
        PaintName(bitmap, item, name, selected, focused);
    }
    if (IsDue(bitmap, {name.Right() - kInkBeside, row.top, row.Right() - name.Right() + kInkBeside, row.height})) {
        PaintColumns(bitmap, item, row, focused);
    }
}

// Where rows are high enough, the picture of the recording itself; until it is there, and without one, the icon.
const CascadeBitmap* EListView::IconOf(int item)
{
    if (!m_bIcons) {
        return nullptr;
    }
    const int size = kListLooks[m_nMode].icon;
    const CascadeBitmap* const own = m_nMode == kExtraLarge ? m_pIcons->Find(m_Items.GetThumbnail(item), size) : nullptr;
    return own != nullptr ? own : m_pIcons->Find(m_Items.GetIcons(item)[static_cast<size_t>(m_nMode)], size);
}

// A dot at the corner of what the icon shows.
void EListView::PaintMark(CascadeBitmap& bitmap, const CascadeRect& icon, bool focused) const
{
    const int size = kListLooks[m_nMode].mark;
    const CascadeRect dot = {icon.left + static_cast<int>(icon.width * kPictureRight) - size / 2,
        icon.top + static_cast<int>(icon.height * kPictureBottom) - size / 2, size, size};
    CascadeRect rim = dot;
    rim.InsetRect(-kMarkRimWidth, -kMarkRimWidth);
    bitmap.FillRoundedRect(rim, rim.width / 2, kMarkRim);
    bitmap.FillRoundedRect(dot, size / 2, focused ? m_Palette.onAccent : m_Palette.accent);
}

template <typename Visit>
int EListView::VisitColumns(int item, const CascadeRect& row, Visit visit) const
{
    const int gap = kListLooks[m_nMode].gap;
    int right = row.Right() - kRowInset;
    for (size_t i = m_Columns.size(); i-- > 1;) {
        const int width = m_Columns[i].width;
        if (width < kNarrowestColumn) {
            continue;
        }
        const char* const text = m_Items.GetText(item, static_cast<int>(i));
        // A figure is never shortened: the name gives way.
        const CascadeDims extent = *text == '\0' ? CascadeDims {} : m_QuietFont.GetTextExtent(text);
        if (extent.width > 0) {
            visit(text, CascadeRect {right - extent.width, row.top + (row.height - extent.height) / 2, extent.width, extent.height});
        }
        right -= std::max(width, extent.width) + gap;
    }
    return right;
}

void EListView::PaintColumns(CascadeBitmap& bitmap, int item, const CascadeRect& row, bool focused) const
{
    VisitColumns(item, row, [&](const char* text, const CascadeRect& box) {
        bitmap.TextOut({box.left, box.top}, text, m_QuietFont, focused ? m_Palette.onAccent : m_Palette.quiet);
    });
}

CascadeRect EListView::NameBox(int item, const CascadeRect& row) const
{
    const ListLook& look = kListLooks[m_nMode];
    const int left = row.left + kRowInset + look.icon + look.gap;
    return {left, row.top, VisitColumns(item, row, [](const char*, const CascadeRect&) {}) - left, row.height};
}

// Where a text's ink may be. Signs of other scripts reach beyond the line of the font that was asked for.
CascadeRect EListView::InkOf(const char* text, const CascadeFont& font, const CascadeRect& box, const CascadeRect& row)
{
    const bool plain = std::none_of(text, text + std::strlen(text), [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
    const int height = plain ? std::min(row.height, EUtils::GetLineHeight(font) + 2 * kInkAbove) : row.height;
    return {box.left - kInkBeside, row.top + (row.height - height) / 2, box.width + 2 * kInkBeside, height};
}

// Of rows without the cursor only texts and pictures differ, the ground stays.
void EListView::RedrawScrolled(int top, int selected)
{
    Redraw(GrooveRect());
    const int end = std::min(m_Scroll.Top() + m_Scroll.PageRows(), GetItemCount());
    for (int now = m_Scroll.Top(); now < end; ++now) {
        const int before = top + now - m_Scroll.Top();
        if (before >= GetItemCount() || before == selected || now == m_Scroll.Selected() || m_nMode == kExtraLarge) {
            Redraw(RowRect(now));
        } else {
            RedrawReplaced(before, now);
        }
    }
}

void EListView::RedrawReplaced(int before, int now)
{
    const CascadeRect row = RowRect(now);
    CascadeRect name;
    CascadeRect columns;
    std::array<CascadeString, 2> texts;    // of the columns
    for (const int item : {before, now}) {
        CascadeRect box = NameBox(item, row);
        box.width = std::min(box.width, TrimmedName(m_Items.GetText(item, 0), box.width).wholeWidth);
        name.Unite(InkOf(m_Items.GetText(item, 0), m_Font, box, row));
        VisitColumns(item, row, [&](const char* text, const CascadeRect& at) {
            columns.Unite(InkOf(text, m_QuietFont, at, row));
            texts[item == now ? 1 : 0] += CascadeString(text) + "\t";
        });
    }
    Redraw(name);
    if (!(texts[0] == texts[1])) {
        Redraw(columns);
    }
    const auto mode = static_cast<size_t>(m_nMode);
    if (m_Items.GetMark(before) != m_Items.GetMark(now) || std::strcmp(m_Items.GetIcons(before)[mode], m_Items.GetIcons(now)[mode]) != 0) {
        Redraw({row.left, row.top, name.left - row.left, row.height});
    }
}

const EListView::Trimmed& EListView::TrimmedName(const char* name, int width)
{
    const auto found
        = std::find_if(m_Trimmed.begin(), m_Trimmed.end(), [&](const Trimmed& entry) { return entry.name == name && entry.width == width; });
    if (found != m_Trimmed.end()) {
        return *found;
    }
    if (m_Trimmed.size() >= kMostTrimmed) {
        m_Trimmed.clear();
    }
    const int whole = m_Font.GetTextExtent(name).width;
    m_Trimmed.push_back({name, width, whole <= width ? CascadeString(name) : EUtils::TrimStringToWidth(name, width, m_Font, false), whole});
    return m_Trimmed.back();
}

void EListView::PaintName(CascadeBitmap& bitmap, int item, const CascadeRect& box, bool selected, bool focused)
{
    const Trimmed& name = TrimmedName(m_Items.GetText(item, 0), box.width);
    const int height = EUtils::GetLineHeight(m_Font);
    const CascadePoint at = {box.left, box.top + (box.height - height) / 2};
    const CascadeColor color = focused ? m_Palette.onAccent : m_Palette.text;
    if (selected && m_bFocused && name.wholeWidth > box.width) {
        StartMarquee(item, name.wholeWidth - box.width);
    }
    CascadeBitmap window;
    if (m_nMarqueeItem != item || m_nMarqueeShown == 0 || !window.Create(box.width, height)) {
        bitmap.TextOut(at, name.shown, m_Font, color);
        return;
    }
    window.TextOut({-m_nMarqueeShown, 0}, name.name, m_Font, color);
    const int ahead = name.wholeWidth - box.width - m_nMarqueeShown;
    window.FadeEdges(std::min(kFade, m_nMarqueeShown), std::clamp(ahead, 0, kFade));
    bitmap.Blit(at, window);
}

void EListView::PaintMessage(CascadeBitmap& bitmap, const CascadeRect& room) const
{
    const CascadeFont font("system", kMessageSize);
    const int height = EUtils::GetLineHeight(font);
    if (m_Message.IsEmpty() || room.height < height) {
        return;
    }
    const CascadeString shown = EUtils::TrimStringToWidth(m_Message, room.width - 2 * kMessageMargin, font, false);
    const int width = font.GetTextExtent(shown).width;
    bitmap.TextOut({room.left + (room.width - width) / 2, room.top + (room.height - height) / 2}, shown, font, m_Palette.quiet);
}

void EListView::PaintScrollBar(CascadeBitmap& bitmap) const
{
    const CascadeRect groove = GrooveRect();
    const ListScroll::Thumb thumb = m_Scroll.ThumbIn(groove.height, kShortestThumb);
    if (thumb.length > 0) {
        bitmap.FillRoundedRect(groove, kBar / 2, m_Palette.key);
        bitmap.FillRoundedRect({groove.left, groove.top + thumb.start, kBar, thumb.length}, kBar / 2, m_Palette.accent);
    }
}
