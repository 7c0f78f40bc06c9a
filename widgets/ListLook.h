// Measures of a list's rows in its three modes.
//
// Units: logical pixels; font sizes in points.
#pragma once

struct ListLook {
    int rowHeight;    // at least: the rows share what the last one leaves
    int icon;    // side
    int mark;    // diameter
    int fontSize;
    int quietSize;
    int gap;    // between icon, name and columns
};

inline constexpr ListLook kListLooks[] = {
    {44, 30, 12, 24, 20, 14},
    {82, 64, 18, 28, 22, 18},
    {148, 128, 26, 34, 24, 24},
};
inline constexpr int kListPadding = 20;    // between the panel's edge and the rows
