// Lays a window's picture over what is already drawn. The general library does the same at half the speed, and with
// the display up this is all that a picture costs beyond its conversion.
//
// Units:     pixels of the output.
// Threads:   any; touches nothing but its arguments.
// Ownership: none is taken.
#pragma once

#include <cstdint>

#include "host/screen/WindowStack.h"

namespace screen {

constexpr int kBlendVector = 8;    // pixels that are blended at a time

// `from`: premultiplied ARGB32; `to`: 32 bits a pixel, whose fourth byte does not count.
void BlendRow(uint32_t* to, const uint32_t* from, int count);
void BlendFlat(uint32_t* to, uint32_t from, int count);    // the same of one colour

// Before a new picture is drawn below it: one that lies above a second picture is worth a closer look.
void PrepareLayer(const Layer& layer);

// The part of the layer inside `area`; both lie inside the output.
void BlendLayer(uint8_t* pixels, int stride, const Layer& layer, CascadeRect area);
void CopyLayer(uint8_t* pixels, int stride, const Layer& layer, CascadeRect area);    // the same over black

}    // namespace screen
