// Choosing program, video and audio: what the stream carries, and what of it the decoder is given.
#include <cstdio>
#include <memory>

#include "platform/CascadeMPEGFile.h"
#include "playback/MDecoder.h"
#include "playback/MHWDecoder.h"
#include "playback/StreamChoice.h"

namespace {

// Whether the scanner could read. Close before its end a file has too little left to tell what it carries:
// then its start is asked, if the stream may be moved.
bool Scan(CascadeMPEGFile& scanner, CascadeStream& stream, bool mayMove)
{
    const bool read = scanner.SetStream(&stream);
    if ((read && FindStreamType(scanner.GetStreamType()) != nullptr) || !mayMove || stream.GetPosition() == 0 || !stream.SeekToPosition(0)) {
        return read;
    }
    return scanner.SetStream(&stream);
}

}    // namespace

bool MDecoder::ChangeProgram()
{
    if (m_bFileOpen == 0) {
        return false;
    }
    // A server's stream is looked at where it is, so the feed must not read meanwhile.
    const bool pause = m_bStreaming != 0 && CurStreamIsHTTP();
    if (pause) {
        m_pHWDecoder->PauseStreaming();
    }
    const bool selected = ScanAndSelect();
    if (pause) {
        m_pHWDecoder->ResumeStreaming(true);
    }
    return selected;
}

bool MDecoder::ScanAndSelect()
{
    const MHWDecoder::Place place = m_pHWDecoder->GetPlace();
    const CascadeString& path = place.files.GetCurrent();
    if (path.IsEmpty()) {
        return false;
    }
    std::printf("Cur file: %s, pos: %lld\n", path.Text(), static_cast<long long>(place.position));
    std::fflush(stdout);

    if (place.kind == MHWDecoder::Kind::kHTTP) {
        return SelectFrom(m_pHWDecoder->GetStream(), path, false);    // the scanner leaves it where it stands
    }
    const std::unique_ptr<CascadeStream> scan(OpenStream(path));
    if (scan && place.position != 0 && !scan->SeekToPosition(place.position)) {
        std::printf("Seek failed!\n");    // scanned from its start then
    }
    return SelectFrom(scan.get(), path, true);
}

bool MDecoder::SelectFrom(CascadeStream* scan, const char* path, bool ownStream)
{
    CascadeMPEGFile scanner;
    if (scan == nullptr || !Scan(scanner, *scan, ownStream)) {
        std::printf("Failed to scan file for PIDs\n");
        return false;
    }
    const StreamTypeRow* type = FindStreamType(scanner.GetStreamType());
    if (type == nullptr) {
        std::printf("Nuvid: %s is not a supported stream\n", path);
        return false;
    }
    std::printf(type->text, path);
    m_bProgramStream = type->programStream;
    m_pHWDecoder->m_bProgramStream = type->programStream;

    m_nNumPrograms = scanner.GetNumPrograms();
    m_nProgram = IndexWithin(m_nProgram, m_nNumPrograms);
    m_nNumVideoStreams = scanner.GetNumVideoStreams(m_nProgram);
    m_nVideoStream = IndexWithin(m_nVideoStream, m_nNumVideoStreams);
    m_nNumAudioStreams = m_DVDAudioStreams.empty() ? scanner.GetNumAudioStreams(m_nProgram) : static_cast<uint32_t>(m_DVDAudioStreams.size());
    m_nPCRPID = scanner.GetProgramAt(m_nProgram).pcrPID;
    const CascadeMPEGFile::VideoStream video = scanner.GetVideoStreamAt(m_nProgram, m_nVideoStream);
    std::printf("Video stream reported size: %d x %d\n", video.width, video.height);
    m_nAudioStream = IndexWithin(m_nAudioStream, m_nNumAudioStreams);
    std::printf("Program: %d/%d\n", static_cast<int>(m_nProgram + 1), static_cast<int>(m_nNumPrograms));
    std::printf("Video: %d/%d\n", static_cast<int>(m_nVideoStream + 1), static_cast<int>(m_nNumVideoStreams));
    std::printf("Audio: %d/%d\n", static_cast<int>(m_nAudioStream + 1), static_cast<int>(m_nNumAudioStreams));

    const AudioChoice audio = m_bProgramStream && !m_DVDAudioStreams.empty()
        ? ChooseDVDAudio(static_cast<uint8_t>(m_DVDAudioStreams[m_nAudioStream].streamId))
        : ChooseAudio(scanner.GetAudioStreamAt(m_nProgram, m_nAudioStream), {m_nAudioPID, m_bAC3Audio, m_nSSID});
    m_nAudioPID = audio.nAudioPID;
    m_bAC3Audio = audio.bAC3Audio;
    m_nSSID = audio.nSSID;
    const VideoChoice choice = ChooseVideo(m_nPCRPID, video.pid, m_nNumVideoStreams);
    m_nVideoPID = choice.nVideoPID;
    m_nNumVideoStreams = choice.nNumVideoStreams;

    const bool selected = CallSelectPIDs();
    std::printf("SelectPIDs(\n\tbProgramStream: %s\n\t       nPCRPID: %u\n\t     nVideoPID: %u\n\t     nAudioPID: %u\n\t     bAC3Audio: %s\n\t       "
                "  nSSID: %u\n",
        m_bProgramStream ? "true" : "false", m_nPCRPID, m_nVideoPID, m_nAudioPID, m_bAC3Audio ? "true" : "false", m_nSSID);
    return selected;
}

bool MDecoder::CallSelectPIDs()
{
    if (m_pHWDecoder->SelectPIDs(m_bProgramStream, m_nPCRPID, m_nVideoPID, m_nAudioPID, m_nSSID, m_bAC3Audio)) {
        return true;
    }
    std::printf("Nuvid: SelectPIDs() failed\n");
    return false;
}

bool MDecoder::ReSelectPIDs()
{
    return m_bFileOpen != 0 && CallSelectPIDs();
}

CascadeString MDecoder::GetAudioStr(int index) const
{
    if (m_bFileOpen == 0 || index < 0 || static_cast<size_t>(index) >= m_DVDAudioStreams.size()) {
        return CascadeString::Format("Audio %d of %d", index + 1, static_cast<int>(m_nNumAudioStreams));
    }
    const audio_stream& audio = m_DVDAudioStreams[static_cast<size_t>(index)];
    CascadeString text = CascadeString::Format("%d: ", index + 1) + audio.format;
    if (audio.language != nullptr) {
        text += ": ";
        text += audio.language;
    }
    if (audio.type[0] != '\0') {
        text += ": ";
        text += audio.type;
    }
    return text;
}
