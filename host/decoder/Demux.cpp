#include "host/decoder/Demux.h"

namespace host {
namespace {

constexpr int kIoBytes = 32 << 10;
// How far into a transport stream its tables are looked for before streams are taken as they come.
constexpr int64_t kTableReach = 1 << 20;
constexpr int kBadReadsInARow = 64;

int ReadFromRing(void* opaque, uint8_t* to, int length);

struct IoTarget {
    FeedRing* ring;
    Opening::Number opening;
};

int ReadFromRing(void* opaque, uint8_t* to, int length)
{
    const IoTarget& target = *static_cast<IoTarget*>(opaque);
    const int got = target.ring->Read(target.opening, to, length);
    return got > 0 ? got : got == 0 ? AVERROR_EOF : AVERROR_EXIT;
}

}    // namespace

// Stream identifiers as the library forms them: 0x100 | stream id, sub-streams of private stream 1 bare.
StreamRole RoleInProgramStream(const Selection& selection, int id)
{
    const uint32_t named = selection.audio & 0xFF;
    if (id >= 0x1E0 && id <= 0x1EF) {
        const bool wantsVideo = (selection.video & 0xF0) == 0xE0;
        if (!wantsVideo) {
            return StreamRole::kOther;
        }
        return (selection.video & 0xFF) == static_cast<uint32_t>(id & 0xFF) ? StreamRole::kVideo : StreamRole::kVideoCandidate;
    }
    if (id >= 0x1C0 && id <= 0x1DF) {
        return named == static_cast<uint32_t>(id & 0xFF) ? StreamRole::kAudio : StreamRole::kOther;
    }
    if (named != 0xBD || id < 0x80 || id > 0xCF) {
        return StreamRole::kOther;
    }
    const uint32_t second = selection.audio >> 8 & 0xFF;
    const uint32_t sub = second != 0 ? second : selection.subStream;
    if (sub != 0) {
        return sub == static_cast<uint32_t>(id) ? StreamRole::kAudio : StreamRole::kOther;
    }
    const bool isAc3 = (id & 0xF8) == 0x80 || (id & 0xF0) == 0xC0;
    return isAc3 == selection.ac3 ? StreamRole::kAudio : StreamRole::kOther;
}

void Demux::Track::Drop()
{
    index = -1;
    codec = AV_CODEC_ID_NONE;
    parser.reset();
    parserContext.reset();
    held.clear();
    heldBytes = 0;
    sawOrder = false;
}

Demux::Demux(Opening& opening, FeedRing& ring, CodedStore& store, SegmentOffsets& offsets) : m_Opening(opening), m_Ring(ring), m_Store(store), m_Offsets(offsets) {}

Demux::~Demux() = default;

void Demux::Forget()
{
    std::lock_guard lock(m_Mutex);
    m_Wanted = Selection();
}

void Demux::Select(const Selection& selection)
{
    {
        std::lock_guard lock(m_Mutex);
        m_Wanted = selection;
        m_Wanted.valid = true;
        ++m_nWantedSerial;
    }
    m_Selected.notify_all();
}

bool Demux::HasSelection() const
{
    std::lock_guard lock(m_Mutex);
    return m_Wanted.valid;
}

void Demux::Kick()
{
    { std::lock_guard lock(m_Mutex); }
    m_Selected.notify_all();
}

bool Demux::WaitForSelection(Opening::Number opening)
{
    std::unique_lock lock(m_Mutex);
    m_Selected.wait(lock, [&] { return !m_Opening.Is(opening) || m_Wanted.valid; });
    m_Selection = m_Wanted;
    m_nSerial = m_nWantedSerial;
    return m_Opening.Is(opening);
}

void Demux::Run()
{
    Opening::Number opening = 0;
    while ((opening = m_Opening.WaitForOther(opening)) != 0) {
        m_nPlaying = opening;
        m_Line.Reset();
        for (Track& track : m_Tracks) {
            track.Drop();
        }
        m_nCandidateId = m_nAdoptedId = m_nFirstOfKind = -1;
        m_bCandidatesDiffer = false;
        if (WaitForSelection(opening)) {
            ++m_nChoice;
            Of(CodedStore::kVideo).choice = Of(CodedStore::kAudio).choice = m_nChoice;
            m_Store.SetVideoPossible(m_Selection.video != 0);
            Play(opening);
        }
    }
}

void Demux::Play(Opening::Number opening)
{
    IoTarget target{&m_Ring, opening};
    auto* memory = static_cast<unsigned char*>(av_malloc(kIoBytes));
    m_pIo.reset(memory == nullptr ? nullptr : avio_alloc_context(memory, kIoBytes, 0, &target, ReadFromRing, nullptr, nullptr));
    if (!m_pIo) {
        av_free(memory);
        m_Ring.ReportError();
        return;
    }
    m_pIo->seekable = 0;
    PacketPtr packet(av_packet_alloc());
    while (packet && m_Opening.Is(opening)) {
        if (!m_pFormat && !OpenContainer(opening)) {
            continue;
        }
        if (!m_Store.WaitForRoom(opening)) {
            break;
        }
        if (m_nWantedSerial != m_nSerial) {
            ApplySelection();
            continue;
        }
        if (ReadOne(opening, packet.get())) {
            PacketPtr taken(av_packet_alloc());
            if (!taken) {
                m_Ring.ReportError();
                break;
            }
            av_packet_move_ref(taken.get(), packet.get());
            Handle(std::move(taken));
        }
    }
    m_pFormat.reset();
    m_pIo.reset();
}

bool Demux::OpenContainer(Opening::Number opening)
{
    m_pFormat.reset();
    m_nStreamsSeen = 0;
    AVFormatContext* format = avformat_alloc_context();
    if (format == nullptr) {
        m_Ring.ReportError();
        m_Opening.WaitForOther(opening);
        return false;
    }
    format->pb = m_pIo.get();
    format->flags |= AVFMT_FLAG_CUSTOM_IO | AVFMT_FLAG_NOPARSE | AVFMT_FLAG_NOFILLIN | AVFMT_FLAG_NOBUFFER;
    format->probesize = kTableReach;
    format->correct_ts_overflow = 0;
    const AVInputFormat* kind = av_find_input_format(m_Selection.programStream ? "mpeg" : "mpegts");
    const int result = avformat_open_input(&format, "", kind, nullptr);    // frees `format` when it fails
    if (result < 0) {
        if (m_pIo->eof_reached != 0 || result == AVERROR_EOF) {
            PassEnd(opening);
        }
        return false;
    }
    m_pFormat.reset(format);
    // Streams of unknown codec are not to be collected by the library: what they are is found out here.
    m_pFormat->probesize = 32;
    SetDiscards();
    return true;
}

bool Demux::ReadOne(Opening::Number opening, AVPacket* packet)
{
    for (int bad = 0; bad < kBadReadsInARow; ++bad) {
        const int result = av_read_frame(m_pFormat.get(), packet);
        if (!m_Opening.Is(opening)) {
            av_packet_unref(packet);
            return false;
        }
        if (m_nStreamsSeen != m_pFormat->nb_streams) {
            SetDiscards();
        }
        if (result >= 0) {
            return true;
        }
        if (result == AVERROR_EOF || m_pIo->eof_reached != 0) {
            PassEnd(opening);
            return false;
        }
        if (result == AVERROR(ENOMEM)) {
            m_Ring.ReportError();
        }
    }
    return false;
}

// Everything fed so far has been taken: hands out what the cutting still holds, and waits for more.
bool Demux::PassEnd(Opening::Number opening)
{
    if (m_nAdoptedId < 0 && m_nCandidateId >= 0 && Of(CodedStore::kVideo).codec == AV_CODEC_ID_NONE) {
        AdoptCandidate();
    }
    FlushTracks();
    m_Store.Push(opening, CodedStore::kVideo, {});
    m_Store.Push(opening, CodedStore::kAudio, {});
    if (!m_Ring.WaitForData(opening)) {
        return false;
    }
    m_pIo->buf_ptr = m_pIo->buf_end = m_pIo->buffer;
    m_pIo->eof_reached = 0;
    m_pIo->error = 0;
    if (m_pFormat) {
        avformat_flush(m_pFormat.get());
    }
    return true;
}

void Demux::ApplySelection()
{
    const Selection before = m_Selection;
    {
        std::lock_guard lock(m_Mutex);
        m_nSerial = m_nWantedSerial;
        m_Selection = m_Wanted;
    }
    if (m_Selection == before) {
        return;
    }
    ++m_nChoice;
    const bool otherContainer = before.programStream != m_Selection.programStream;
    if (otherContainer || before.video != m_Selection.video) {
        Of(CodedStore::kVideo).Drop();
        Of(CodedStore::kVideo).choice = m_nChoice;
        m_nCandidateId = m_nAdoptedId = -1;
        m_bCandidatesDiffer = false;
        m_Store.DropKind(CodedStore::kVideo);
        m_Line.Break();
    }
    if (otherContainer || before.audio != m_Selection.audio || before.subStream != m_Selection.subStream || before.ac3 != m_Selection.ac3) {
        Of(CodedStore::kAudio).Drop();
        Of(CodedStore::kAudio).choice = m_nChoice;
        m_nFirstOfKind = -1;
        m_Store.DropKind(CodedStore::kAudio);
    }
    m_Store.SetVideoPossible(m_Selection.video != 0);
    if (otherContainer) {
        m_pFormat.reset();
    } else if (m_pFormat) {
        SetDiscards();
    }
}

StreamRole Demux::RoleOf(const AVStream& stream) const
{
    if (!m_Selection.programStream) {
        const auto pid = static_cast<uint32_t>(stream.id);
        const AVMediaType type = stream.codecpar->codec_type;
        const bool open = type == AVMEDIA_TYPE_UNKNOWN || type == AVMEDIA_TYPE_DATA;
        if (pid == m_Selection.audio && (open || type == AVMEDIA_TYPE_AUDIO)) {
            return StreamRole::kAudio;
        }
        return pid == m_Selection.video && (open || type == AVMEDIA_TYPE_VIDEO) ? StreamRole::kVideo : StreamRole::kOther;
    }
    const StreamRole role = RoleInProgramStream(m_Selection, stream.id);
    if (role == StreamRole::kVideoCandidate && stream.id == m_nAdoptedId) {
        return StreamRole::kVideo;
    }
    return role == StreamRole::kAudio && m_nFirstOfKind >= 0 && stream.id != m_nFirstOfKind ? StreamRole::kOther : role;
}

void Demux::SetDiscards()
{
    m_nStreamsSeen = m_pFormat->nb_streams;
    for (unsigned i = 0; i < m_pFormat->nb_streams; ++i) {
        AVStream& stream = *m_pFormat->streams[i];
        stream.discard = RoleOf(stream) == StreamRole::kOther ? AVDISCARD_ALL : AVDISCARD_DEFAULT;
    }
}

}    // namespace host
