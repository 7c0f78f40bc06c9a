#include "widgets/KeyboardGrid.h"

#include <algorithm>

namespace {

using Action = KeyboardGrid::Action;
using Key = KeyboardGrid::Key;

constexpr Key Type(const char* text, const char* shifted)
{
    return {Action::kType, text, shifted, 4};
}
constexpr Key Wide(Action action, const char* label, uint8_t units)
{
    return {action, label, label, units};
}

constexpr Key kShiftKey = Wide(Action::kShift, "Shift", 6);
constexpr Key kBackspaceKey = Wide(Action::kBackspace, "Delete", 6);
constexpr Key kSpaceKey = Wide(Action::kSpace, "Space", 12);
constexpr Key kCancelKey = Wide(Action::kCancel, "Cancel", 9);
constexpr Key kAcceptKey = Wide(Action::kAccept, "OK", 9);

constexpr Key kDigits[] = {Type("1", "!"), Type("2", "@"), Type("3", "#"), Type("4", "$"), Type("5", "%"), Type("6", "&"), Type("7", "/"),
    Type("8", "("), Type("9", ")"), Type("0", "=")};
constexpr Key kLetters1[] = {Type("q", "Q"), Type("w", "W"), Type("e", "E"), Type("r", "R"), Type("t", "T"), Type("y", "Y"), Type("u", "U"),
    Type("i", "I"), Type("o", "O"), Type("p", "P")};
constexpr Key kLetters2[] = {Type("a", "A"), Type("s", "S"), Type("d", "D"), Type("f", "F"), Type("g", "G"), Type("h", "H"), Type("j", "J"),
    Type("k", "K"), Type("l", "L"), Type("-", "_")};
constexpr Key kLetters3[]
    = {kShiftKey, Type("z", "Z"), Type("x", "X"), Type("c", "C"), Type("v", "V"), Type("b", "B"), Type("n", "N"), Type("m", "M"), kBackspaceKey};
constexpr Key kLetters4[] = {Wide(Action::kPage, "#+=", 6), Type(".", ","), kSpaceKey, kCancelKey, kAcceptKey};

constexpr Key kSigns1[] = {Type("!", "["), Type("\"", "]"), Type("#", "{"), Type("$", "}"), Type("%", "<"), Type("&", ">"), Type("/", "\\"),
    Type("(", "|"), Type(")", "~"), Type("=", "^")};
constexpr Key kSigns2[] = {Type("@", "€"), Type("*", "£"), Type("+", "§"), Type("-", "°"), Type("_", "ä"), Type(":", "ö"), Type(";", "ü"),
    Type("?", "ß"), Type("'", "é"), Type("`", "è")};
constexpr Key kSigns3[]
    = {kShiftKey, Type("å", "Å"), Type("ø", "Ø"), Type("æ", "Æ"), Type("ñ", "Ñ"), Type("ç", "Ç"), Type("à", "À"), Type("ê", "Ê"), kBackspaceKey};
constexpr Key kSigns4[] = {Wide(Action::kPage, "abc", 6), Type(",", "."), kSpaceKey, kCancelKey, kAcceptKey};

using Row = KeyboardGrid::Row;
constexpr Row kPages[][KeyboardGrid::kRows] = {{kDigits, kLetters1, kLetters2, kLetters3, kLetters4}, {kDigits, kSigns1, kSigns2, kSigns3, kSigns4}};

constexpr bool RowsAreFull()
{
    for (const auto& page : kPages) {
        for (const Row row : page) {
            int units = 0;
            for (const Key& key : row) {
                units += key.units;
            }
            if (units != KeyboardGrid::kRowUnits) {
                return false;
            }
        }
    }
    return true;
}
static_assert(RowsAreFull());

}    // namespace

void KeyboardGrid::Reset()
{
    *this = KeyboardGrid();
}

void KeyboardGrid::FocusAccept()
{
    m_nRow = kRows - 1;
    m_nColumn = RowAt(m_nRow).size() - 1;
    m_nAim = -1;
}

KeyboardGrid::Row KeyboardGrid::RowAt(int row) const
{
    return kPages[static_cast<size_t>(m_Page)][std::clamp(row, 0, kRows - 1)];
}

int KeyboardGrid::StartOf(Row row, size_t column)
{
    int start = 0;
    for (size_t i = 0; i < column; ++i) {
        start += row[i].units;
    }
    return start;
}

void KeyboardGrid::MoveVertical(int rows)
{
    if (m_nAim < 0) {
        m_nAim = StartOf(RowAt(m_nRow), m_nColumn) + Focused().units / 2;
    }
    m_nRow = ((m_nRow + rows) % kRows + kRows) % kRows;
    const Row row = RowAt(m_nRow);
    m_nColumn = 0;
    while (m_nColumn + 1 < row.size() && StartOf(row, m_nColumn + 1) <= m_nAim) {
        ++m_nColumn;
    }
}

void KeyboardGrid::MoveHorizontal(int keys)
{
    const auto count = static_cast<int>(RowAt(m_nRow).size());
    m_nColumn = static_cast<size_t>(((static_cast<int>(m_nColumn) + keys) % count + count) % count);
    m_nAim = -1;
}
