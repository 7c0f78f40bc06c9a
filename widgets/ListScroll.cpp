#include "widgets/ListScroll.h"

#include <algorithm>
#include <cstdint>

namespace {

constexpr int kFewestRowsForContext = 3;    // on a shorter page a neighbour would push the cursor's own row about

}    // namespace

int ListScroll::LastTop() const
{
    return std::max(0, m_nCount - m_nPage);
}

void ListScroll::SetTop(int top)
{
    m_nTop = std::clamp(top, 0, LastTop());
}

void ListScroll::SetCount(int count)
{
    m_nCount = std::max(0, count);
    m_nSelected = std::min(m_nSelected, m_nCount - 1);
    SetTop(m_nTop);
}

void ListScroll::Remove(int index)
{
    if (index < 0 || index >= m_nCount) {
        return;
    }
    m_nSelected -= index < m_nSelected ? 1 : 0;
    m_nTop -= index < m_nTop ? 1 : 0;
    SetCount(m_nCount - 1);
}

void ListScroll::SetPage(int rows)
{
    const bool wasVisible = IsVisible(m_nSelected);
    m_nPage = std::max(1, rows);
    SetTop(m_nTop);
    if (wasVisible && !IsVisible(m_nSelected)) {
        ShowSelected();
    }
}

void ListScroll::Reset()
{
    m_nCount = 0;
    m_nTop = 0;
    m_nSelected = -1;
}

void ListScroll::ShowSelected()
{
    const int context = m_nPage >= kFewestRowsForContext ? 1 : 0;
    if (m_nSelected - context < m_nTop) {
        SetTop(m_nSelected - context);
    } else if (m_nSelected + context >= m_nTop + m_nPage) {
        SetTop(m_nSelected + context - m_nPage + 1);
    }
}

bool ListScroll::Select(int index, bool ensureVisible)
{
    if (index < 0 || index >= m_nCount) {
        return false;
    }
    const bool moved = index != m_nSelected;
    m_nSelected = index;
    if (ensureVisible) {
        ShowSelected();
    }
    return moved;
}

bool ListScroll::Move(int steps)
{
    if (m_nCount == 0) {
        return false;
    }
    const int64_t wanted = m_nSelected < 0 ? 0 : int64_t {m_nSelected} + steps;
    return Select(static_cast<int>(std::clamp<int64_t>(wanted, 0, m_nCount - 1)), true);
}

bool ListScroll::Page(int pages)
{
    if (m_nCount == 0) {
        return false;
    }
    const int64_t rows = int64_t {pages} * m_nPage;
    const int64_t wanted = std::max(m_nSelected, 0) + rows;
    const int index = static_cast<int>(std::clamp<int64_t>(wanted, 0, m_nCount - 1));
    SetTop(static_cast<int>(std::clamp<int64_t>(m_nTop + rows, 0, LastTop())));
    return Select(index, !IsVisible(index));
}

ListScroll::Thumb ListScroll::ThumbIn(int length, int shortest) const
{
    if (m_nCount <= m_nPage || length <= 0) {
        return {};
    }
    const int64_t share = int64_t {length} * m_nPage / m_nCount;
    const int thumb = static_cast<int>(std::clamp<int64_t>(share, std::min(shortest, length), length));
    return {static_cast<int>(int64_t {length - thumb} * m_nTop / LastTop()), thumb};
}
