// What the information file of a DVD title set (VTS_nn_0.IFO) says of its title: chapters, playing time and
// streams.
//
// Units:     sizes and locations are bytes from the first byte of the first title file; playing time is seconds.
// Errors:    a file that is none has no cells, no streams and a playing time of 0, and is told on standard
//            output. What lies behind the end of the file is left out.
// Threads:   one thread at a time per object. Parse blocks on the disk.
// Ownership: owns its records; the stream is borrowed for the call and its position moves.
#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <vector>

#include "platform/CascadeStream.h"
#include "platform/CascadeString.h"
#include "sources/IFOAttributes.h"

struct cell_info {
    uint16_t cellId = 0;
    uint16_t vobId = 0;
    int64_t size = 0;    // one sector less than the cell takes
    int64_t location = 0;
    float position = 0;    // of the title, 0 to 1
};

class IFOCells {
public:
    explicit IFOCells(const char* path);
    explicit IFOCells(CascadeStream& stream);
    virtual ~IFOCells() = default;

    void Parse(CascadeStream& stream);

    const CascadeString& GetName() const { return m_Name; }    // for messages
    int64_t GetTitleSize() const { return m_nTitleSize; }    // as the file states it
    int32_t GetDuration() const { return m_nDuration; }    // of the first program chain
    // The chapters, in the order in which the program chains first reach them.
    const std::vector<cell_info>& GetCells() const { return m_Cells; }
    const std::vector<audio_stream>& GetAudioStreams() const { return m_AudioStreams; }
    const video_stream& GetVideo() const { return m_Video; }

private:
    using AddressCells = std::map<uint32_t, cell_info>;    // by CellKey

    struct Header {
        uint32_t chainTableSector = 0;
        uint32_t addressTableSector = 0;
        int32_t titleSectors = 0;
        std::vector<audio_stream> audio;    // as listed, without stream numbers
    };

    bool ReadHeader(CascadeStream& stream, Header& header);
    static AddressCells ReadAddressTable(CascadeStream& stream, const Header& header);
    void ReadChains(CascadeStream& stream, const Header& header, AddressCells& addressCells);
    void AddDuration(std::span<const uint8_t> chain);
    void AddAudioStreams(std::span<const uint8_t> chain, const std::vector<audio_stream>& listed);
    void AddCells(std::span<const uint8_t> positions, AddressCells& addressCells);

    CascadeString m_Name;
    int64_t m_nTitleSize = 0;
    int32_t m_nDuration = 0;
    std::vector<cell_info> m_Cells;
    std::vector<audio_stream> m_AudioStreams;
    video_stream m_Video;
};
