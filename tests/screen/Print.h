// How rectangles look in a failure's text.
#pragma once

#include <ostream>

#include "platform/CascadeGeometry.h"

inline void PrintTo(const CascadeRect& rect, std::ostream* out)
{
    *out << rect.left << ',' << rect.top << ' ' << rect.width << 'x' << rect.height;
}
inline void PrintTo(const CascadeDims& dims, std::ostream* out)
{
    *out << dims.width << 'x' << dims.height;
}
