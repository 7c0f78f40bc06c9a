// Measures of a list's rows in its three modes.
//
// Units: logical pixels; font sizes in points.
#pragma once

struct ListLook {
    int rowHeight;
    int icon;    // side
    int fontSize;
    int quietSize;
    int gap;    // between icon, name and columns
};

inline constexpr ListLook kListLooks[] = {
    {44, 30, 24, 20, 14},
    {82, 64, 28, 22, 18},
    {148, 128, 34, 24, 24},
};
inline constexpr int kListPadding = 16;    // between the panel's edge and the rows
inline constexpr int kListBar = 6;    // the scroll bar, in the padding at the right
