#include "host/screen/LayerRuns.h"

#include <algorithm>

#include "host/screen/LayerBlend.h"

namespace screen {

void LayerRuns::Find(const uint8_t* pixels, std::ptrdiff_t stride, CascadeDims dims)
{
    m_Runs.clear();
    m_RowEnds.clear();
    for (int y = 0; y < dims.height; ++y) {
        const auto* const row = reinterpret_cast<const uint32_t*>(pixels + y * stride);
        int begin = 0;    // of what is not yet part of a run
        for (int x = 0; x < dims.width;) {
            const int same = x;
            while (x < dims.width && row[x] == row[same]) {
                ++x;
            }
            // Whole vectors on both sides, so that no pixel but the row's last ones is done alone.
            const int flat = begin + (same - begin + kBlendVector - 1) / kBlendVector * kBlendVector;
            const int end = x == dims.width ? x : flat + std::max(x - flat, 0) / kBlendVector * kBlendVector;
            if (end - flat >= kShortestFlat) {
                if (flat > begin) {
                    m_Runs.push_back({flat, false});
                }
                m_Runs.push_back({end, true});
                begin = end;
            }
        }
        if (begin < dims.width) {
            m_Runs.push_back({dims.width, false});
        }
        m_RowEnds.push_back(m_Runs.size());
    }
}

void LayerRuns::BlendRow(uint32_t* to, const uint32_t* from, int y, int left, int right) const
{
    int begin = 0;
    for (size_t i = y == 0 ? 0 : m_RowEnds[size_t(y) - 1]; i < m_RowEnds[size_t(y)] && begin < right; begin = m_Runs[i++].end) {
        const int first = std::max(begin, left);
        const int count = std::min(m_Runs[i].end, right) - first;
        if (count <= 0) {
            continue;
        }
        if (m_Runs[i].flat) {
            BlendFlat(to + first, from[first], count);
        } else {
            screen::BlendRow(to + first, from + first, count);
        }
    }
}

}    // namespace screen
