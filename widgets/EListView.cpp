#include "widgets/EListView.h"

#include <algorithm>
#include <iterator>

#include "platform/CascadeTime.h"
#include "widgets/EIconLoader.h"
#include "widgets/ListLook.h"

EListView::EListView()
    : m_pIcons(std::make_unique<EIconLoader>(*this))
{
    SetListMode(kSmall);
}

EListView::~EListView() = default;

void EListView::SetGraphicsPath(const char* folder)
{
    m_Palette = EPalette::Load(folder);
    m_Panel.Destroy();
    m_Focus.Destroy();
    Redraw();
}

void EListView::SetListMode(int mode)
{
    if (mode < 0 || mode >= static_cast<int>(std::size(kListLooks))) {
        return;
    }
    m_nMode = mode;
    m_Font.Create("system", kListLooks[mode].fontSize);
    m_QuietFont.Create("system", kListLooks[mode].quietSize);
    m_Trimmed.clear();
    LayOut();
}

int EListView::AddColumn(const char* name, int width)
{
    const auto count = static_cast<int>(m_Columns.size());
    if (count == ListItems::kMaxColumns) {
        return -1;
    }
    m_Columns.push_back({name, width});
    return count;
}

int EListView::GetColumn(const char* name) const
{
    const auto found = std::find_if(m_Columns.begin(), m_Columns.end(), [name](const Column& column) { return column.name == name; });
    return found == m_Columns.end() ? -1 : static_cast<int>(found - m_Columns.begin());
}

void EListView::SetColumnWidth(int column, int width)
{
    if (column >= 0 && column < static_cast<int>(m_Columns.size())) {
        m_Columns[static_cast<size_t>(column)].width = width;
    }
}

void EListView::Clear(bool redraw)
{
    m_Items.Clear();
    m_Scroll.Reset();
    m_Message.Empty();
    m_Trimmed.clear();
    m_pIcons->Stop();
    m_bIcons = false;
    StopMarquee();
    if (redraw) {
        Redraw();
    }
}

int EListView::AddItem(const char* name)
{
    const int item = m_Items.Add(name);
    m_Scroll.SetCount(m_Items.Count());
    return item;
}

void EListView::RemoveItem(int item)
{
    StopMarquee();
    m_Items.Remove(item);
    m_Scroll.Remove(item);
}

void EListView::SetMessage(const char* text)
{
    m_Message = text;
    Redraw();
}

// ---- the cursor

bool EListView::SetSelectedIndex(int index, bool ensureVisible)
{
    return MoveCursor([&] { return m_Scroll.Select(index, ensureVisible); });
}

bool EListView::Move(int steps)
{
    return MoveCursor([&] { return m_Scroll.Move(steps); });
}

bool EListView::Page(int pages)
{
    return MoveCursor([&] { return m_Scroll.Page(pages); });
}

bool EListView::JumpTo(const char* prefix)
{
    return SetSelectedIndex(m_Items.FindPrefix(prefix), true);
}

bool EListView::Step(int direction)
{
    return Move(m_Motion.Step(direction, GetItemCount(), CascadeTime::GetUptimeMilliseconds()));
}

// Where the rows stay, two of them look different: all of a large output again takes longer than a held key's interval.
bool EListView::MoveCursor(const std::function<bool()>& move)
{
    LayOut();    // the rectangle may be new
    const int top = m_Scroll.Top();
    const int left = m_Scroll.Selected();
    const bool moved = move();
    if (top != m_Scroll.Top()) {
        RedrawScrolled(top, left);
    } else if (moved) {
        Redraw(RowRect(left));
        Redraw(RowRect(m_Scroll.Selected()));
    }
    if (moved) {
        StopMarquee();
    }
    return moved;
}

int EListView::GetVisibleCount() const
{
    return std::min(RowsRect().height / kListLooks[m_nMode].rowHeight, GetItemCount() - m_Scroll.Top());
}

void EListView::SetFocused(bool focused)
{
    if (focused != m_bFocused) {
        m_bFocused = focused;
        StopMarquee();
        Redraw();
    }
}

void EListView::LayOut()
{
    m_Scroll.SetPage(RowsRect().height / kListLooks[m_nMode].rowHeight);
}

// ---- icons and the moving name

void EListView::StartIconLoading()
{
    m_bIcons = true;
    m_pIcons->Refresh();
    Redraw();
}

void EListView::StopIconLoading()
{
    m_bIcons = false;
    m_pIcons->Stop();
}

void EListView::OnVanish()
{
    StopMarquee();
    StopIconLoading();
}

void EListView::StopMarquee()
{
    m_Marquee.Stop();
    m_nMarqueeItem = -1;
    if (m_nMarqueeTimer != 0) {
        KillTimer(m_nMarqueeTimer);
        m_nMarqueeTimer = 0;
    }
}

// Started by the painting that finds the name too long.
void EListView::StartMarquee(int item, int overflow)
{
    if (m_nMarqueeItem == item || !IsMaterialized()) {
        return;
    }
    StopMarquee();
    m_nMarqueeItem = item;
    m_nMarqueeShown = 0;
    m_Marquee.Start(overflow, CascadeTime::GetUptimeMilliseconds());
    m_nMarqueeTimer = SetTimer(Marquee::kTickMs);
}

void EListView::OnTimer(unsigned long /*id*/)
{
    const uint32_t now = CascadeTime::GetUptimeMilliseconds();
    const int offset = m_Marquee.Offset(now);
    if (offset != m_nMarqueeShown) {
        m_nMarqueeShown = offset;
        Redraw(RowRect(m_nMarqueeItem));
    }
    if (!m_Marquee.IsRunning(now)) {
        KillTimer(m_nMarqueeTimer);    // the item stays noted: it has had its rounds
        m_nMarqueeTimer = 0;
        Redraw(RowRect(m_nMarqueeItem));
    }
}
