// The demultiplexer's half that works on the packets of the selected streams: which of them are taken, what
// codec they are, their stamps, and the cutting into pictures and sound frames.
#include "host/decoder/Demux.h"
#include "host/decoder/StreamSniff.h"

#include <algorithm>

namespace host {
namespace {

constexpr size_t kCandidatePackets = 16;    // so many of another video identifier, none of the asked one: it is taken
constexpr size_t kHeldPackets = 4096;
constexpr int64_t kEarliestLead = -9000;      // of a presentation stamp before its decoding stamp: 0.1 s
constexpr int64_t kLatestLead = 180000;       // and behind it: 2 s
constexpr size_t kHeldBytes = 512 << 10;
// No picture is larger; a parser of another codec than the bytes are collects for ever, for it finds no end.
constexpr size_t kMostSilentBytes = 8 << 20;

bool IsMpegAudio(AVCodecID codec)
{
    return codec == AV_CODEC_ID_MP1 || codec == AV_CODEC_ID_MP2 || codec == AV_CODEC_ID_MP3;
}

}    // namespace

void Demux::Handle(PacketPtr packet)
{
    const AVStream& stream = *m_pFormat->streams[packet->stream_index];
    switch (RoleOf(stream)) {
    case StreamRole::kVideo:
        if (m_nCandidateId >= 0 && m_nAdoptedId < 0) {    // the asked one is there after all
            m_nCandidateId = -1;
            Of(CodedStore::kVideo).held.clear();
            Of(CodedStore::kVideo).heldBytes = 0;
        }
        Deliver(CodedStore::kVideo, std::move(packet));
        break;
    case StreamRole::kVideoCandidate:
        HandleCandidate(std::move(packet));
        break;
    case StreamRole::kAudio:
        if (m_Selection.programStream && m_nFirstOfKind < 0) {
            m_nFirstOfKind = stream.id;
            SetDiscards();
        }
        Deliver(CodedStore::kAudio, std::move(packet));
        break;
    case StreamRole::kOther:
        break;
    }
}

void Demux::HandleCandidate(PacketPtr packet)
{
    Track& video = Of(CodedStore::kVideo);
    if (video.index >= 0 || m_bCandidatesDiffer) {
        return;    // the asked one has been seen, or there are several to choose from
    }
    const int id = m_pFormat->streams[packet->stream_index]->id;
    if (m_nCandidateId >= 0 && m_nCandidateId != id) {
        m_bCandidatesDiffer = true;
        video.held.clear();
        video.heldBytes = 0;
        return;
    }
    m_nCandidateId = id;
    video.heldBytes += static_cast<size_t>(packet->size);
    video.held.push_back(std::move(packet));
    if (video.held.size() >= kCandidatePackets || video.heldBytes >= kHeldBytes) {
        AdoptCandidate();
    }
}

void Demux::AdoptCandidate()
{
    Track& video = Of(CodedStore::kVideo);
    m_nAdoptedId = m_nCandidateId;
    std::vector<PacketPtr> held = std::move(video.held);
    video.held.clear();
    video.heldBytes = 0;
    for (PacketPtr& packet : held) {
        Deliver(CodedStore::kVideo, std::move(packet));
    }
}

bool Demux::DecideCodec(CodedStore::Kind kind, const AVPacket& packet)
{
    Track& track = Of(kind);
    const AVCodecParameters& told = *m_pFormat->streams[packet.stream_index]->codecpar;
    const AVMediaType type = kind == CodedStore::kVideo ? AVMEDIA_TYPE_VIDEO : AVMEDIA_TYPE_AUDIO;
    AVCodecID codec = avcodec_get_type(told.codec_id) == type ? told.codec_id : AV_CODEC_ID_NONE;
    const auto size = static_cast<size_t>(packet.size);
    if (kind == CodedStore::kVideo && codec == AV_CODEC_ID_NONE) {
        codec = track.codec != AV_CODEC_ID_NONE ? track.codec : SniffVideo(packet.data, size);
    }
    if (kind == CodedStore::kAudio && (codec == AV_CODEC_ID_NONE || IsMpegAudio(codec))) {
        codec = track.codec != AV_CODEC_ID_NONE && track.index == packet.stream_index ? track.codec : SniffMpegAudio(packet.data, size);
    }
    if (codec == AV_CODEC_ID_MPEG1VIDEO) {
        codec = AV_CODEC_ID_MPEG2VIDEO;    // one decoder does both; a stream may change from one to the other
    }
    if (codec == AV_CODEC_ID_NONE) {
        return false;
    }
    if (codec != track.codec || track.index != packet.stream_index) {
        track.codec = codec;
        track.index = packet.stream_index;
        return StartParser(track);
    }
    return true;
}

bool Demux::StartParser(Track& track)
{
    track.silentBytes = 0;
    track.parser.reset(av_parser_init(track.codec));
    track.parserContext.reset(avcodec_alloc_context3(nullptr));
    if (!track.parserContext) {
        m_Ring.ReportError();
        return false;
    }
    track.parserContext->codec_id = track.codec;
    track.parserContext->codec_type = avcodec_get_type(track.codec);
    return true;
}

void Demux::Deliver(CodedStore::Kind kind, PacketPtr packet)
{
    Track& track = Of(kind);
    if (packet->size <= 0 || (packet->flags & AV_PKT_FLAG_DISCARD) != 0) {
        return;
    }
    if (!DecideCodec(kind, *packet)) {
        track.heldBytes += static_cast<size_t>(packet->size);
        track.held.push_back(std::move(packet));
        while (track.heldBytes > kHeldBytes || track.held.size() > kHeldPackets) {
            track.heldBytes -= static_cast<size_t>(track.held.front()->size);
            track.held.erase(track.held.begin());
        }
        return;
    }
    std::vector<PacketPtr> all = std::move(track.held);
    track.held.clear();
    track.heldBytes = 0;
    all.push_back(std::move(packet));
    for (const PacketPtr& one : all) {
        int64_t pts = AV_NOPTS_VALUE;
        int64_t order = AV_NOPTS_VALUE;
        if (one->pts != AV_NOPTS_VALUE) {
            const bool both = one->dts != AV_NOPTS_VALUE;
            track.sawOrder = track.sawOrder || (both && one->dts != one->pts) || kind == CodedStore::kAudio;
            const int64_t raw = both ? one->dts : one->pts;
            order = m_Line.Place(kind == CodedStore::kVideo ? StampLine::kVideo : StampLine::kAudio, raw, track.sawOrder);
            // A damaged stamp would hold the picture, and all behind it, for hours.
            const int64_t lead = StampDifference(one->pts, raw);
            pts = lead < kEarliestLead || lead > kLatestLead ? AV_NOPTS_VALUE : order + lead;
            for (SegmentVerdict verdict = m_Line.NextVerdict(); verdict.kind != SegmentVerdict::kNone; verdict = m_Line.NextVerdict()) {
                m_Offsets.Judge(m_nPlaying, verdict);
            }
        }
        Cut(kind, *one, pts, order);
    }
}

void Demux::Cut(CodedStore::Kind kind, const AVPacket& packet, int64_t pts, int64_t order)
{
    Track& track = Of(kind);
    if (!track.parser) {
        PacketPtr whole(av_packet_alloc());
        if (whole && av_packet_ref(whole.get(), &packet) == 0) {
            Emit(kind, std::move(whole), pts, order);
        }
        return;
    }
    const uint8_t* at = packet.data;
    int left = packet.size;
    while (left > 0 && track.parser) {
        uint8_t* out = nullptr;
        int size = 0;
        const int used = av_parser_parse2(track.parser.get(), track.parserContext.get(), &out, &size, at, left, pts, order, 0);
        if (used < 0) {
            return;
        }
        at += used;
        left -= used;
        track.silentBytes = size > 0 ? 0 : track.silentBytes + static_cast<size_t>(used);
        pts = order = AV_NOPTS_VALUE;
        if (size > 0) {
            PacketPtr unit(av_packet_alloc());
            if (!unit || av_new_packet(unit.get(), size) < 0) {
                m_Ring.ReportError();
                return;
            }
            std::copy(out, out + size, unit->data);
            Emit(kind, std::move(unit), track.parser->pts, track.parser->dts);
        } else if (used == 0) {
            return;
        }
        if (track.silentBytes > kMostSilentBytes) {
            StartParser(track);
        }
    }
}

void Demux::Emit(CodedStore::Kind kind, PacketPtr packet, int64_t pts, int64_t order)
{
    Track& track = Of(kind);
    packet->pts = pts;
    packet->dts = AV_NOPTS_VALUE;
    CodedUnit unit;
    unit.codec = kind == CodedStore::kAudio && track.parserContext->codec_id != AV_CODEC_ID_NONE ? track.parserContext->codec_id : track.codec;
    unit.choice = track.choice;
    unit.order = order;
    unit.packet = std::move(packet);
    if (kind == CodedStore::kVideo && track.parser && track.parser->height > 0) {
        m_Store.SetPictureHeight(track.parser->height);
    }
    m_Store.Push(m_nPlaying, kind, std::move(unit));
}

void Demux::FlushTracks()
{
    for (const CodedStore::Kind kind : {CodedStore::kVideo, CodedStore::kAudio}) {
        Track& track = Of(kind);
        if (!track.parser) {
            continue;
        }
        uint8_t* out = nullptr;
        int size = 0;
        av_parser_parse2(track.parser.get(), track.parserContext.get(), &out, &size, nullptr, 0, AV_NOPTS_VALUE, AV_NOPTS_VALUE, -1);
        PacketPtr unit(size > 0 ? av_packet_alloc() : nullptr);
        if (unit && av_new_packet(unit.get(), size) == 0) {
            std::copy(out, out + size, unit->data);
            Emit(kind, std::move(unit), track.parser->pts, track.parser->dts);
        }
        StartParser(track);
    }
}

}    // namespace host
