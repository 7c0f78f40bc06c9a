// What must hold whatever the input is.
#pragma once

#include <cstdlib>

inline void Require(bool condition)
{
    if (!condition) {
        std::abort();
    }
}
