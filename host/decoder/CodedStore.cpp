#include "host/decoder/CodedStore.h"

#include "host/decoder/StampLine.h"

namespace host {
namespace {

constexpr size_t kStandardBytes = 229376;            // the decoder buffer of MPEG-2 main profile at main level
constexpr int64_t kHighTicks = 54000;                // 0.6 s
constexpr size_t kHighBytes = 4 << 20;
constexpr size_t kHostileVideo = 4 << 20;            // no interleave of sound justifies more
constexpr size_t kHostileAudio = 1 << 20;
constexpr int64_t kSoundTicks = 36000;               // sound kept while pictures are plenty: 0.4 s
constexpr int64_t kSoundAloneTicks = 45000;
constexpr size_t kSoundAloneBytes = 128 << 10;
constexpr int64_t kSoundGoneTicks = 2 * 90000;       // no sound for so long: it has ended, nobody waits for it
constexpr int64_t kPictureTicks = 3600;              // when stamps are missing

}    // namespace

void CodedStore::Reset()
{
    std::lock_guard lock(m_Mutex);
    for (Line& line : m_Lines) {
        line.units.clear();
        line.bytes = 0;
        line.seen = false;
        line.newest = AV_NOPTS_VALUE;
    }
    m_nHeight = 0;
    m_bVideoPossible = false;
    m_bEnded = false;
}

void CodedStore::Kick()
{
    { std::lock_guard lock(m_Mutex); }
    m_Room.notify_all();
    for (Line& line : m_Lines) {
        line.ready.notify_all();
    }
}

int64_t CodedStore::Span(const Line& line) const
{
    const int64_t counted = static_cast<int64_t>(line.units.size()) * kPictureTicks;
    for (const CodedUnit& unit : line.units) {
        if (unit.order == AV_NOPTS_VALUE) {
            continue;
        }
        if (line.newest == AV_NOPTS_VALUE || SegmentStamp::Segment(line.newest) != SegmentStamp::Segment(unit.order)) {
            return counted;
        }
        const int64_t span = line.newest - unit.order;
        return span < 0 || span > 20 * 90000 ? counted : span;
    }
    return line.units.empty() ? 0 : counted;
}

// `low`: a producer that has been waiting starts again only when a good part is gone, so that it wakes seldom.
bool CodedStore::Wanted(bool low) const
{
    const Line& video = m_Lines[kVideo];
    const Line& audio = m_Lines[kAudio];
    const auto part = [low](auto whole) { return low ? whole * 3 / 4 : whole; };
    const auto half = [low](auto whole) { return low ? whole / 2 : whole; };
    if (!video.seen || !m_bVideoPossible) {
        return Span(audio) < part(kSoundAloneTicks) && audio.bytes < kSoundAloneBytes;
    }
    if (video.bytes >= kHostileVideo || audio.bytes >= kHostileAudio) {
        return false;
    }
    const bool high = m_nHeight > 576;
    const bool enough = high ? (Span(video) >= half(kHighTicks) || video.bytes >= kHighBytes) : video.bytes >= part(kStandardBytes);
    if (!enough) {
        return true;
    }
    const bool soundGone = !audio.seen || (audio.newest != AV_NOPTS_VALUE && video.newest != AV_NOPTS_VALUE && video.newest - audio.newest > kSoundGoneTicks);
    return !soundGone && Span(audio) < part(kSoundTicks) / 4;
}

bool CodedStore::WaitForRoom(Opening::Number opening)
{
    std::unique_lock lock(m_Mutex);
    if (!Wanted(false)) {
        m_bProducerWaits = true;
        m_Room.wait(lock, [&] { return !m_Opening.Is(opening) || Wanted(true); });
        m_bProducerWaits = false;
    }
    return m_Opening.Is(opening);
}

void CodedStore::Push(Opening::Number opening, Kind kind, CodedUnit unit)
{
    std::lock_guard lock(m_Mutex);
    if (!m_Opening.Is(opening)) {
        return;
    }
    Line& line = m_Lines[kind];
    m_bEnded = unit.packet == nullptr;
    if (unit.packet) {
        line.bytes += static_cast<size_t>(unit.packet->size);
        line.seen = true;
    }
    if (unit.order != AV_NOPTS_VALUE) {
        line.newest = unit.order;
    }
    line.units.push_back(std::move(unit));
    if (line.takerWaits) {
        line.ready.notify_one();
    }
}

void CodedStore::DropKind(Kind kind)
{
    std::lock_guard lock(m_Mutex);
    m_Lines[kind].units.clear();
    m_Lines[kind].bytes = 0;
    m_Lines[kind].seen = false;
    m_Lines[kind].newest = AV_NOPTS_VALUE;
    m_Room.notify_all();
}

void CodedStore::SetPictureHeight(int height)
{
    std::lock_guard lock(m_Mutex);
    m_nHeight = height;
}

void CodedStore::SetVideoPossible(bool possible)
{
    std::lock_guard lock(m_Mutex);
    m_bVideoPossible = possible;
    m_Room.notify_all();
}

CodedStore::Got CodedStore::Take(Opening::Number opening, Kind kind, bool wait, CodedUnit& unit)
{
    std::unique_lock lock(m_Mutex);
    Line& line = m_Lines[kind];
    if (wait && line.units.empty()) {
        line.takerWaits = true;
        line.ready.wait(lock, [&] { return !m_Opening.Is(opening) || !line.units.empty(); });
        line.takerWaits = false;
    }
    if (!m_Opening.Is(opening)) {
        return Got::kOver;
    }
    if (line.units.empty()) {
        return Got::kNothing;
    }
    unit = std::move(line.units.front());
    line.units.pop_front();
    if (unit.packet) {
        line.bytes -= static_cast<size_t>(unit.packet->size);
    }
    if (m_bProducerWaits && Wanted(true)) {
        m_Room.notify_one();
    }
    return Got::kUnit;
}

size_t CodedStore::BytesHeld(Kind kind) const
{
    std::lock_guard lock(m_Mutex);
    return m_Lines[kind].bytes;
}

int64_t CodedStore::TicksHeld(Kind kind) const
{
    std::lock_guard lock(m_Mutex);
    return Span(m_Lines[kind]);
}

bool CodedStore::Seen(Kind kind) const
{
    std::lock_guard lock(m_Mutex);
    return m_Lines[kind].seen;
}

bool CodedStore::IsDrained() const
{
    std::lock_guard lock(m_Mutex);
    return m_bEnded && m_Lines[kVideo].units.empty() && m_Lines[kAudio].units.empty();
}

bool CodedStore::HasEnded() const
{
    std::lock_guard lock(m_Mutex);
    return m_bEnded;
}

}    // namespace host
