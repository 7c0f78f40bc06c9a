#include "sources/IFOCells.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "sources/ByteReader.h"

namespace {

constexpr char VTSIdentifier[] = "DVDVIDEO-VTS";
constexpr size_t kIdentifierSize = sizeof VTSIdentifier - 1;
constexpr uint32_t kSectorSize = 2048;
// A cell must be larger to be a chapter: stills, credits and menus inside the title are none.
constexpr int64_t kLargestNoChapter = 392 * 2048;

// DVD-Video, VTSI_MAT: the management table at the start of the file.
constexpr size_t kHeaderSize = 984;
constexpr size_t kLastSectorOfTitleSet = 12;
constexpr size_t kLastSectorOfInformation = 28;
constexpr size_t kFirstSectorOfTitle = 196;
constexpr size_t kChainTableSector = 204;
constexpr size_t kAddressTableSector = 224;
constexpr size_t kVideoAttributes = 512;
constexpr size_t kAudioCount = 514;
constexpr size_t kAudioAttributes = 516;
constexpr size_t kAudioAttributesSize = 8;
constexpr unsigned kMaxAudioStreams = 8;    // a program stream numbers them with three bits

// VTS_C_ADT: the cell address table.
constexpr size_t kAddressTableHeaderSize = 8;
constexpr size_t kAddressTableEnd = 4;
constexpr size_t kAddressEntrySize = 12;
// A disc has hundreds; a table that states millions must not take the time to sort them.
constexpr int64_t kMaxAddressEntries = 65536;

// VTS_PGCI: the program chain table.
constexpr size_t kChainTableHeaderSize = 8;
constexpr size_t kSearchPointerSize = 8;
constexpr size_t kChainOffset = 4;
// A disc has at most some hundred. Chains may overlap, so the file's size alone does not bound the reads.
constexpr unsigned kMaxChains = 4096;

// PGC: one program chain.
constexpr size_t kChainSize = 236;
constexpr size_t kCellCount = 3;
constexpr size_t kPlayingTime = 4;
constexpr size_t kAudioControl = 12;
constexpr size_t kAudioControlSize = 2;
constexpr uint8_t kAudioAvailable = 0x80;
constexpr uint8_t kStreamNumber = 0x07;
constexpr size_t kPositionTableOffset = 234;
constexpr size_t kPositionEntrySize = 4;

// Read in pieces, so that a length that lies takes no more memory than the file has bytes.
constexpr size_t kReadPiece = 16 * 1024;

// The bytes of a part of the stream; fewer when it ends before.
std::vector<uint8_t> ReadPart(CascadeStream& stream, unsigned long long position, size_t size)
{
    std::vector<uint8_t> bytes;
    if (!stream.SeekToPosition(position)) {
        return bytes;
    }
    while (bytes.size() < size) {
        const size_t before = bytes.size();
        const size_t piece = std::min(size - before, kReadPiece);
        bytes.resize(before + piece);
        const unsigned long got = stream.ReadBytes(piece, bytes.data() + before);
        bytes.resize(before + got);
        if (got == 0) {
            break;
        }
    }
    return bytes;
}

// Sectors as bytes in 32 bits, as the format's own arithmetic goes: half of the range is below zero, and no
// stream can be asked for it.
int64_t SectorsToBytes32(uint32_t sectors)
{
    return static_cast<int32_t>(sectors * kSectorSize);
}

constexpr uint32_t CellKey(uint16_t vobId, uint16_t cellId)
{
    return uint32_t {vobId} << 16 | cellId;
}

// Two decimal digits of a byte. Digits above 9 end the number: 0x5A is 5, 0xA5 is 0.
constexpr int32_t FromBCD(uint8_t byte)
{
    const int32_t high = byte >> 4;
    const int32_t low = byte & 0x0F;
    if (high > 9) {
        return 0;
    }
    if (low > 9) {
        return high;
    }
    return high * 10 + low;
}
static_assert(FromBCD(0x59) == 59 && FromBCD(0x5A) == 5 && FromBCD(0xA5) == 0 && FromBCD(0x0F) == 0);

}    // namespace

IFOCells::IFOCells(const char* path)
    : m_Name(path)
{
    CascadeFileStream stream;
    // A file that cannot be opened reads as an empty one and is told as such.
    static_cast<void>(stream.Open(CascadeFile(path)));
    Parse(stream);
}

IFOCells::IFOCells(CascadeStream& stream)
    : m_Name("CascadeStream")
{
    Parse(stream);
}

void IFOCells::Parse(CascadeStream& stream)
{
    m_nTitleSize = 0;
    m_nDuration = 0;
    m_Cells.clear();
    m_AudioStreams.clear();
    m_Video = {};
    Header header;
    if (!ReadHeader(stream, header)) {
        std::printf("Invalid IFO file: %s\n", m_Name.Text());
        return;
    }
    AddressCells addressCells = ReadAddressTable(stream, header);
    ReadChains(stream, header, addressCells);
}

bool IFOCells::ReadHeader(CascadeStream& stream, Header& header)
{
    const std::vector<uint8_t> bytes = ReadPart(stream, 0, kHeaderSize);
    if (bytes.size() < kHeaderSize || std::memcmp(bytes.data(), VTSIdentifier, kIdentifierSize) != 0) {
        return false;
    }
    ByteReader reader(bytes);
    header.chainTableSector = reader.BE32(kChainTableSector);
    header.addressTableSector = reader.BE32(kAddressTableSector);
    header.titleSectors
        = static_cast<int32_t>(reader.BE32(kLastSectorOfTitleSet) - reader.BE32(kFirstSectorOfTitle) - reader.BE32(kLastSectorOfInformation));
    m_nTitleSize = int64_t {header.titleSectors} * kSectorSize;

    video_attributes video;
    std::copy_n(&bytes[kVideoAttributes], video.bytes.size(), video.bytes.begin());
    m_Video = parseVideoStream(video);
    const unsigned count = std::min<unsigned>(reader.BE16(kAudioCount), kMaxAudioStreams);
    for (unsigned i = 0; i < count; ++i) {
        audio_attributes audio;
        std::copy_n(&bytes[kAudioAttributes + i * kAudioAttributesSize], audio.bytes.size(), audio.bytes.begin());
        header.audio.push_back(parseAudioStream(audio));
    }
    return true;
}

IFOCells::AddressCells IFOCells::ReadAddressTable(CascadeStream& stream, const Header& header)
{
    AddressCells cells;
    const auto start = static_cast<unsigned long long>(SectorsToBytes32(header.addressTableSector));
    const std::vector<uint8_t> head = ReadPart(stream, start, kAddressTableHeaderSize);
    ByteReader headReader(head);
    const int64_t last = headReader.BE32(kAddressTableEnd);    // byte of the table
    const int64_t stated = (last - 7) / static_cast<int64_t>(kAddressEntrySize);
    const auto count = static_cast<size_t>(std::clamp<int64_t>(stated, 0, kMaxAddressEntries));
    const std::vector<uint8_t> table = ReadPart(stream, start + kAddressTableHeaderSize, count * kAddressEntrySize);
    for (size_t at = 0; table.size() - at >= kAddressEntrySize; at += kAddressEntrySize) {
        ByteReader entry = ByteReader(table).Sub(at, kAddressEntrySize);
        const uint32_t first = entry.BE32(4);
        cell_info cell;
        cell.vobId = entry.BE16(0);
        cell.cellId = entry.U8(2);
        cell.location = int64_t {first} * kSectorSize;
        // On purpose one sector short of what the cell takes.
        cell.size = SectorsToBytes32(entry.BE32(8) - first);
        cell.position = header.titleSectors == 0 ? 0.0F : static_cast<float>(static_cast<double>(first) / header.titleSectors);
        cells.try_emplace(CellKey(cell.vobId, cell.cellId), cell);    // the first of equal ones counts
    }
    return cells;
}

void IFOCells::ReadChains(CascadeStream& stream, const Header& header, AddressCells& addressCells)
{
    const unsigned long long tableStart = static_cast<unsigned long long>(header.chainTableSector) * kSectorSize;
    const std::vector<uint8_t> head = ReadPart(stream, tableStart, kChainTableHeaderSize);
    const size_t count = std::min<unsigned>(ByteReader(head).BE16(0), kMaxChains);
    const std::vector<uint8_t> pointers = ReadPart(stream, tableStart + kChainTableHeaderSize, count * kSearchPointerSize);
    for (size_t at = 0; pointers.size() - at >= kSearchPointerSize; at += kSearchPointerSize) {
        const unsigned long long start = tableStart + ByteReader(pointers).BE32(at + kChainOffset);
        const std::vector<uint8_t> chain = ReadPart(stream, start, kChainSize);
        if (chain.size() < kChainSize) {
            continue;
        }
        if (at == 0) {
            AddDuration(chain);
        }
        AddAudioStreams(chain, header.audio);
        const size_t size = chain[kCellCount] * kPositionEntrySize;
        AddCells(ReadPart(stream, start + ByteReader(chain).BE16(kPositionTableOffset), size), addressCells);
    }
}

void IFOCells::AddDuration(std::span<const uint8_t> chain)
{
    m_nDuration += FromBCD(chain[kPlayingTime]) * 3600 + FromBCD(chain[kPlayingTime + 1]) * 60 + FromBCD(chain[kPlayingTime + 2]);
    std::printf("Duration: %ld\n", static_cast<long>(m_nDuration));
}

void IFOCells::AddAudioStreams(std::span<const uint8_t> chain, const std::vector<audio_stream>& listed)
{
    for (size_t i = 0; i < listed.size(); ++i) {
        const uint8_t control = chain[kAudioControl + i * kAudioControlSize];
        const int32_t number = control & kStreamNumber;
        const auto sameNumber = [&](const audio_stream& stream) { return (stream.streamId & kStreamNumber) == number; };
        if ((control & kAudioAvailable) == 0 || std::any_of(m_AudioStreams.begin(), m_AudioStreams.end(), sameNumber)) {
            continue;
        }
        m_AudioStreams.push_back(listed[i]);
        m_AudioStreams.back().streamId |= number;
    }
}

void IFOCells::AddCells(std::span<const uint8_t> positions, AddressCells& addressCells)
{
    ByteReader reader(positions);
    for (size_t at = 0; positions.size() - at >= kPositionEntrySize; at += kPositionEntrySize) {
        const auto found = addressCells.find(CellKey(reader.BE16(at), reader.U8(at + 3)));
        if (found == addressCells.end()) {
            continue;
        }
        if (found->second.size > kLargestNoChapter) {
            m_Cells.push_back(found->second);
        }
        addressCells.erase(found);    // a chain that comes here again adds nothing
    }
}
