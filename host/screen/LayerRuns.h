// Where the rows of a layer are of one colour. A progress bar's shade and the emptiness around a text are hardly
// anything else, and a stretch of one colour is laid over the picture without reading it again for each picture.
//
// Units:     pixels of the layer.
// Threads:   the user-interface thread.
// Ownership: keeps nothing of the pixels.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/CascadeGeometry.h"

namespace screen {

class LayerRuns {
public:
    void Find(const uint8_t* pixels, std::ptrdiff_t stride, CascadeDims dims);
    bool Found() const { return !m_RowEnds.empty(); }
    // Columns `left` to `right` of the row; `to` and `from` are where its first column would be.
    void BlendRow(uint32_t* to, const uint32_t* from, int y, int left, int right) const;

private:
    static constexpr int kShortestFlat = 32;    // below that, the detour costs more than it saves
    struct Run {
        int end = 0;    // column behind it
        bool flat = false;
    };
    std::vector<Run> m_Runs;            // from left to right, row after row
    std::vector<size_t> m_RowEnds;    // of each row, in m_Runs
};

}    // namespace screen
