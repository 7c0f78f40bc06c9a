// Points, extents and rectangles of the platform.
//
// Units:   logical pixels of the 1280 x 720 screen for windows and drawing; pixels of the output
//          resolution where CascadeScreen or the decoder says so. x grows right, y grows down.
// Threads: values.
#pragma once

#include <algorithm>
#include <cstdint>

struct CascadePoint {
    int x = 0;
    int y = 0;
};

struct CascadeDims {
    int width = 0;
    int height = 0;
    friend bool operator==(const CascadeDims&, const CascadeDims&) = default;
};

struct CascadeRect {
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;

    friend bool operator==(const CascadeRect&, const CascadeRect&) = default;

    int Right() const { return left + width; }
    int Bottom() const { return top + height; }
    bool IsEmpty() const { return width <= 0 || height <= 0; }

    // Moves each vertical edge inwards by dx and each horizontal edge by dy; negative values grow.
    void InsetRect(int dx, int dy)
    {
        left += dx;
        top += dy;
        width -= 2 * dx;
        height -= 2 * dy;
    }

    // The common part; an empty rectangle (0, 0, 0, 0) when there is none.
    void Intersect(const CascadeRect& other)
    {
        const int l = std::max(left, other.left);
        const int t = std::max(top, other.top);
        const int r = std::min(Right(), other.Right());
        const int b = std::min(Bottom(), other.Bottom());
        *this = (r > l && b > t) ? CascadeRect{l, t, r - l, b - t} : CascadeRect{};
    }

    // The smallest rectangle that holds both; an empty one counts for nothing.
    void Unite(const CascadeRect& other)
    {
        if (other.IsEmpty()) {
            return;
        }
        if (IsEmpty()) {
            *this = other;
            return;
        }
        const int l = std::min(left, other.left);
        const int t = std::min(top, other.top);
        const int r = std::max(Right(), other.Right());
        const int b = std::max(Bottom(), other.Bottom());
        *this = CascadeRect{l, t, r - l, b - t};
    }
};

// A colour value: red in the top byte, then green, blue, alpha (0xFF opaque); 0 is fully transparent.
using CascadeColor = uint32_t;
