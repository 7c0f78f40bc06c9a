// Which rows of a list are on screen, and where its cursor is: arithmetic alone.
//
// Units:   rows, counted from 0. A row that fits only partly does not count as visible.
// Threads: one thread at a time.
#pragma once

class ListScroll {
public:
    void SetCount(int count);    // the cursor stays where it is when that item is still there, else goes to the last
    void Remove(int index);    // one row goes; the cursor keeps its item, or stands on the one that takes its place
    void SetPage(int rows);    // whole rows that fit; at least 1. The cursor stays on screen when it was.
    void Reset();    // no items, no cursor

    int Count() const { return m_nCount; }
    int PageRows() const { return m_nPage; }
    int Top() const { return m_nTop; }
    int Selected() const { return m_nSelected; }    // -1: none
    bool IsVisible(int index) const { return index >= m_nTop && index < m_nTop + m_nPage; }

    // Each answers whether the cursor stands elsewhere now. `ensureVisible` scrolls as little as shows the row and, where
    // there is one, a neighbour on either side.
    bool Select(int index, bool ensureVisible);    // ignored outside the list
    bool Move(int steps);    // stops at the ends
    bool Page(int pages);    // the row on screen stays the same when the list scrolls

    // The scroll bar's thumb in a groove of `length`, at least `shortest` long; length 0: everything is on screen.
    struct Thumb {
        int start = 0;
        int length = 0;
    };
    Thumb ThumbIn(int length, int shortest) const;

private:
    int LastTop() const;
    void ShowSelected();
    void SetTop(int top);

    int m_nCount = 0;
    int m_nPage = 1;
    int m_nTop = 0;
    int m_nSelected = -1;
};
