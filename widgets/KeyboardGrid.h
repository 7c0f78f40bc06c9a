// The keys of the screen's keyboard, and how the focus goes from one to the next.
//
// Rows of keys of different width: moving up or down goes to the key that lies below or above the middle of the one
// left, and back to the very same key; moving left or right goes round within the row.
//
// Units:   widths and positions are quarters of an ordinary key; every row is kRowUnits wide.
// Threads: one thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

class KeyboardGrid {
public:
    enum class Action : uint8_t { kType, kShift, kPage, kSpace, kBackspace, kCancel, kAccept };
    enum class Page : uint8_t { kLetters, kSigns };
    struct Key {
        Action action;
        const char* text;    // what it types, or its label
        const char* shifted;    // the same with shift
        uint8_t units;    // its width
    };
    using Row = std::span<const Key>;
    static constexpr int kRows = 5;
    static constexpr int kRowUnits = 40;

    void Reset();    // first letter, no shift
    void SetPage(Page page) { m_Page = page; }
    Page CurrentPage() const { return m_Page; }
    void SetShift(bool shift) { m_bShift = shift; }
    bool Shift() const { return m_bShift; }

    Row RowAt(int row) const;
    static int StartOf(Row row, size_t column);    // units left of that key
    const char* LabelOf(const Key& key) const { return m_bShift ? key.shifted : key.text; }

    const Key& Focused() const { return RowAt(m_nRow)[m_nColumn]; }
    int FocusRow() const { return m_nRow; }
    size_t FocusColumn() const { return m_nColumn; }
    void MoveVertical(int rows);    // round and round
    void MoveHorizontal(int keys);
    void FocusAccept();

private:
    Page m_Page = Page::kLetters;
    bool m_bShift = false;    // stays until it is pressed again
    int m_nRow = 1;
    size_t m_nColumn = 0;
    int m_nAim = -1;    // where vertical moves aim at, units; -1: the middle of the focused key
};
