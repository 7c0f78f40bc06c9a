// Where something looks different: a few rectangles that may overlap.
//
// Units:   the caller's: pixels of the output, or logical ones.
// Threads: values.
#pragma once

#include <vector>

#include "platform/CascadeGeometry.h"

namespace screen {

class Damage {
public:
    Damage() = default;
    Damage(const CascadeRect& rect) { Unite(rect); }    // NOLINT: a rectangle is one

    bool IsEmpty() const { return m_Rects.empty(); }
    const std::vector<CascadeRect>& Rects() const { return m_Rects; }

    void Unite(const CascadeRect& rect)
    {
        if (rect.IsEmpty()) {
            return;
        }
        m_Rects.push_back(rect);
        if (m_Rects.size() > kMost) {
            CascadeRect all;
            for (const CascadeRect& one : m_Rects) {
                all.Unite(one);
            }
            m_Rects = {all};
        }
    }
    void Unite(const Damage& other)
    {
        for (const CascadeRect& rect : other.m_Rects) {
            Unite(rect);
        }
    }
    void Intersect(const CascadeRect& within)
    {
        for (CascadeRect& rect : m_Rects) {
            rect.Intersect(within);
        }
        std::erase_if(m_Rects, [](const CascadeRect& rect) { return rect.IsEmpty(); });
    }

private:
    static constexpr size_t kMost = 48;    // beyond it one that holds all costs less than minding each

    std::vector<CascadeRect> m_Rects;
};

}    // namespace screen
