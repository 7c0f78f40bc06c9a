#include "host/decoder/StreamScan.h"

#include <algorithm>
#include <cstring>

#include "host/decoder/AvPointers.h"
#include "host/decoder/StreamSniff.h"

namespace host {
namespace {

constexpr int kIoBytes = 32 << 10;
constexpr size_t kMostBytes = 2 << 20;
// The looking ends as soon as every stream is known; a stream that is entered between two of its headers
// takes longer, one that never comes ends it here.
constexpr int64_t kProbeBytes = 1000000;
constexpr int64_t kProbeMicroseconds = 700000;

struct Source {
    CascadeStream* stream;
    const std::vector<uint8_t>* seen;
    size_t at = 0;

    int Read(uint8_t* to, int length)
    {
        if (length <= 0 || at >= kMostBytes) {
            return AVERROR_EOF;
        }
        size_t count = std::min<size_t>(static_cast<size_t>(length), kMostBytes - at);
        if (at < seen->size()) {
            count = std::min(count, seen->size() - at);
            std::memcpy(to, seen->data() + at, count);
        } else {
            count = stream->ReadBytes(count, to);
        }
        at += count;
        return count == 0 ? AVERROR_EOF : static_cast<int>(count);
    }
};

int ReadSource(void* opaque, uint8_t* to, int length)
{
    return static_cast<Source*>(opaque)->Read(to, length);
}

struct AudioKind {
    AVCodecID codec;
    CascadeMPEGFile::AudioType type;
};

constexpr AudioKind kAudioKinds[] = {
    {AV_CODEC_ID_MP1, CascadeMPEGFile::kMPEGAudio},  {AV_CODEC_ID_MP2, CascadeMPEGFile::kMPEGAudio}, {AV_CODEC_ID_MP3, CascadeMPEGFile::kMPEGAudio},
    {AV_CODEC_ID_AC3, CascadeMPEGFile::kAC3},        {AV_CODEC_ID_DTS, CascadeMPEGFile::kDTS},       {AV_CODEC_ID_PCM_DVD, CascadeMPEGFile::kLPCM},
};

CascadeMPEGFile::AudioType AudioTypeOf(AVCodecID codec)
{
    for (const AudioKind& kind : kAudioKinds) {
        if (kind.codec == codec) {
            return kind.type;
        }
    }
    return CascadeMPEGFile::kOtherAudio;
}

CascadeMPEGFile::VideoStream VideoOf(const AVStream& stream, bool programStream)
{
    CascadeMPEGFile::VideoStream video;
    video.pid = static_cast<uint32_t>(programStream ? stream.id & 0xFF : stream.id);
    video.width = stream.codecpar->width;
    video.height = stream.codecpar->height;
    return video;
}

CascadeMPEGFile::AudioStream AudioOf(const AVStream& stream, bool programStream)
{
    CascadeMPEGFile::AudioStream audio;
    audio.type = AudioTypeOf(stream.codecpar->codec_id);
    if (!programStream) {
        audio.pid = static_cast<uint32_t>(stream.id);
        const AVDictionaryEntry* entry = av_dict_get(stream.metadata, "language", nullptr, 0);
        if (entry != nullptr && std::strlen(entry->value) >= 3) {
            std::memcpy(audio.language, entry->value, 3);
        }
    } else if (stream.id >= 0x100) {
        audio.pid = static_cast<uint32_t>(stream.id & 0xFF);
    } else {
        const auto sub = static_cast<uint32_t>(stream.id);
        audio.pid = audio.type == CascadeMPEGFile::kAC3 ? 0xBD : sub << 8 | 0xBD;
        audio.subStreamId = sub;
    }
    return audio;
}

bool IsAudioId(int id)
{
    return (id >= 0x1C0 && id <= 0x1DF) || (id >= 0x80 && id <= 0xCF);
}

void Add(ScannedProgram& to, const AVStream& stream, bool programStream)
{
    const AVMediaType type = stream.codecpar->codec_type;
    if (type == AVMEDIA_TYPE_VIDEO) {
        to.video.push_back(VideoOf(stream, programStream));
    } else if (type == AVMEDIA_TYPE_AUDIO && (!programStream || IsAudioId(stream.id))) {
        to.audio.push_back(AudioOf(stream, programStream));
    }
}

void SortProgramStream(ScannedProgram& program)
{
    std::sort(program.video.begin(), program.video.end(), [](const auto& a, const auto& b) { return a.pid < b.pid; });
    std::sort(program.audio.begin(), program.audio.end(), [](const auto& a, const auto& b) {
        return a.subStreamId != b.subStreamId ? a.subStreamId < b.subStreamId : a.pid < b.pid;
    });
    program.program.pcrPID = !program.video.empty() ? program.video.front().pid : !program.audio.empty() ? program.audio.front().pid : 0;
}

std::vector<ScannedProgram> ListPrograms(const AVFormatContext& format, bool programStream)
{
    std::vector<ScannedProgram> result;
    for (unsigned p = 0; !programStream && p < format.nb_programs; ++p) {
        const AVProgram& program = *format.programs[p];
        ScannedProgram scanned;
        scanned.program.number = static_cast<uint32_t>(program.program_num);
        scanned.program.pcrPID = static_cast<uint32_t>(std::max(program.pcr_pid, 0));
        for (unsigned i = 0; i < program.nb_stream_indexes; ++i) {
            Add(scanned, *format.streams[program.stream_index[i]], false);
        }
        if (!scanned.video.empty() || !scanned.audio.empty()) {
            result.push_back(std::move(scanned));
        }
    }
    if (!result.empty()) {
        return result;
    }
    ScannedProgram all;
    all.program.number = 1;
    for (unsigned i = 0; i < format.nb_streams; ++i) {
        Add(all, *format.streams[i], programStream);
    }
    if (programStream) {
        SortProgramStream(all);
    } else if (!all.video.empty()) {
        all.program.pcrPID = all.video.front().pid;
    } else if (!all.audio.empty()) {
        all.program.pcrPID = all.audio.front().pid;
    }
    result.push_back(std::move(all));
    return result;
}

}    // namespace

std::vector<ScannedProgram> ScanStream(CascadeStream& stream, CascadeMPEGFile::StreamType type, const std::vector<uint8_t>& seen)
{
    const bool programStream = type != CascadeMPEGFile::kMPEG2TransportStream;
    Source source{&stream, &seen};
    auto* memory = static_cast<unsigned char*>(av_malloc(kIoBytes));
    IoPtr io(memory == nullptr ? nullptr : avio_alloc_context(memory, kIoBytes, 0, &source, ReadSource, nullptr, nullptr));
    AVFormatContext* format = io ? avformat_alloc_context() : nullptr;
    if (format == nullptr) {
        if (!io) {
            av_free(memory);
        }
        return {};
    }
    io->seekable = 0;
    format->pb = io.get();
    format->flags |= AVFMT_FLAG_CUSTOM_IO;
    format->probesize = kProbeBytes;
    format->max_analyze_duration = kProbeMicroseconds;
    format->correct_ts_overflow = 0;
    format->fps_probe_size = 0;    // the frame rate is nobody's question here
    if (avformat_open_input(&format, "", av_find_input_format(programStream ? "mpeg" : "mpegts"), nullptr) < 0) {
        return {};
    }
    FormatPtr owner(format);
    avformat_find_stream_info(format, nullptr);
    return ListPrograms(*format, programStream);
}

}    // namespace host
