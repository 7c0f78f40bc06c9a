// The information file of a DVD title set.
#include <cstdint>
#include <set>
#include <string>

#include "sources/IFOCells.h"
#include "tests/fuzz/Require.h"
#include "tests/sources/MemoryStream.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    MemoryStream stream(std::string(reinterpret_cast<const char*>(data), size));
    const IFOCells cells(stream);
    std::set<std::pair<uint16_t, uint16_t>> seen;
    for (const cell_info& cell : cells.GetCells()) {
        Require(cell.size > 802816 && cell.location >= 0 && seen.emplace(cell.vobId, cell.cellId).second);
    }
    std::set<int32_t> numbers;
    for (const audio_stream& audio : cells.GetAudioStreams()) {
        Require(numbers.insert(audio.streamId & 7).second);
    }
    // A table that lies about its length must not be read again and again.
    Require(seen.size() <= size / 12 && stream.BytesRead() <= (16U << 20));
    return DescribeStreams(cells.GetAudioStreams()).IsEmpty() || DescribeStream(cells.GetVideo()).IsEmpty() ? -1 : 0;
}
