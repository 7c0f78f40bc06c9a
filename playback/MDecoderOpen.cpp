// Opening, reopening and closing: path to stream, stream to decoder.
#include <cstdio>
#include <memory>

#include "platform/CascadeHTTPStream.h"
#include "platform/CascadeMPEGFile.h"
#include "platform/CascadeTime.h"
#include "playback/MDecoder.h"
#include "playback/MHWDecoder.h"
#include "playback/StreamChoice.h"
#include "sources/DVDISOStream.h"

namespace {

constexpr unsigned long kServerTimeoutUs = 15000000;

CascadeStream* OpenHTTPStream(const char* url)
{
    auto stream = std::make_unique<CascadeHTTPStream>();
    stream->SetConnectTimeout(kServerTimeoutUs);
    stream->SetReceiveTimeout(kServerTimeoutUs);
    std::printf("opening\n");
    if (!stream->Open(url)) {
        std::printf("Nuvid: failed to http open %s\n", url);
        return nullptr;
    }
    std::printf("opened\n");
    return stream.release();
}

// The sequence's own steps name files with their whole path, and a place is found by comparing such names.
CascadeString WithFolder(const CascadeString& name)
{
    const bool stands = name.IsEmpty() || name.Left(1) == "/" || name.Compare("http://", false, false, 7) == 0;
    return stands ? name : CascadeFile(name).GetFullPath();
}

}    // namespace

CascadeStream* OpenStream(const char* path)
{
    const CascadeString name(path);
    if (name.Compare("http://", false, false, 7) == 0) {
        return OpenHTTPStream(name);
    }
    if (DVDISOStream::IsISOFile(name)) {
        auto image = std::make_unique<DVDISOStream>();
        if (image->Open(name)) {
            return image.release();
        }
        std::printf("Nuvid: failed to open %s\n", name.Text());
        return nullptr;
    }
    auto stream = std::make_unique<CascadeFileStream>();
    if (!stream->Open(CascadeFile(name))) {
        std::printf("Nuvid: failed to open %s\n", name.Text());
        return nullptr;
    }
    return stream.release();
}

void CloseStream(CascadeStream* stream)
{
    delete stream;
}

bool MDecoder::DoTheOpen(const char* path)
{
    if (m_bFileOpen != 0) {
        DoTheClose();    // else the feed would go on while its stream is replaced
    }
    const CascadeString name(path);    // the caller's text may be the engine's own
    std::printf("About to open %s\n", name.Text());
    m_nProgram = 0;
    m_nVideoStream = 0;
    m_nAudioStream = 0;
    m_bOpening = true;
    const bool opened = OpenAndSelect(WithFolder(name));
    if (opened && m_bAskResume != 0 && !m_Resume.name.IsEmpty() && m_pClient != nullptr) {
        m_SaveSchedule.SetAsking(m_pClient->AskForResume());
    }
    m_nCurBookmark = 0;
    if (!opened) {
        DoTheClose();
    }
    m_bOpening = false;
    std::fflush(stdout);
    return opened;
}

bool MDecoder::OpenAndSelect(const char* path)
{
    std::unique_ptr<CascadeStream> stream(OpenStream(path));
    if (!stream) {
        return false;
    }
    const bool isHTTP = dynamic_cast<CascadeHTTPStream*>(stream.get()) != nullptr;
    if (isHTTP) {
        m_nHTTPSize = stream->GetSize();
    }
    m_bProgramStream = false;
    m_nPCRPID = 0;
    m_nVideoPID = 0;
    m_nAudioPID = 0;
    m_bAC3Audio = false;
    m_nSSID = 0;
    m_pHWDecoder->m_bProgramStream = false;
    m_pHWDecoder->PrepareStart();
    if (!OpenDecoder()) {
        return false;    // nobody else has the stream yet, so it ends here
    }
    std::printf("Opened MPEG decoder\n");
    m_pHWDecoder->SetStream(stream.release());
    m_pHWDecoder->m_bEOF = false;
    m_bFileOpen = 1;
    m_pHWDecoder->SetFiles(path);
    const SmartFileList files = m_pHWDecoder->GetPlace().files;
    // A server's folder is no place for a file of ours: such a recording has none, and none is missed.
    m_SettingsFile = isHTTP ? CascadeString() : files.GetPath() + "/" + files.GetBase() + ".nuvid";
    m_SideFile.Begin(m_SettingsFile);
    m_SaveSchedule.Begin(CascadeTime::GetUptimeMilliseconds());

    ReadFileSettings();
    ReadIFO();
    if (!ChangeProgram()) {
        return false;
    }
    m_pHWDecoder->m_nBitrate = StartBitrate(m_bProgramStream);
    if (!ResumeStreaming()) {
        std::printf("Nuvid: failed to engage initial streaming\n");
        return false;
    }
    return true;
}

// The hardware's clock sources and recovery modes are what this player has always asked for.
bool MDecoder::OpenDecoder()
{
    if (m_pHWDecoder->NewOpen(m_nNumBuffers, m_nBufferSize, 5, 1, 3, 1, true, true, true, true, g_nAudioSyncThreshold)) {
        return true;
    }
    std::printf("Nuvid: failed to open MPEG decoder\n");
    return false;
}

bool MDecoder::DoTheClose()
{
    if (m_bFileOpen != 0) {
        WriteFileSettings();
    }
    m_bPlaying = 0;
    m_bStreaming = 0;    // else a switch of resolution inside the next open would start the feed too early
    m_bFileOpen = 0;
    m_pHWDecoder->Close();
    m_pHWDecoder->SetStream(nullptr);
    g_bVideoRunning = false;
    m_Bookmarks.Clear();
    m_Chapters.Clear();
    m_DVDAudioStreams.clear();
    m_nNumPrograms = 0;
    m_nNumVideoStreams = 0;
    m_nNumAudioStreams = 0;
    m_nAudioStream = 0;
    m_nDuration = 0;
    std::fflush(stdout);
    return true;
}

bool MDecoder::ReOpen()
{
    if (m_bFileOpen == 0) {
        return false;
    }
    // Paused first: a fill between the two words and the pause could mark the end anew.
    m_pHWDecoder->PauseStreaming();
    m_pHWDecoder->m_bEOF = false;
    m_pHWDecoder->m_bReopened = true;
    m_pHWDecoder->Close();
    m_pHWDecoder->PrepareStart();
    bool running = OpenDecoder();
    if (running) {
        std::printf("ReOpened decoder\n");
        running = ReSelectPIDs();
    }
    if (running) {
        std::printf("ReSelectedPIDs\n");
        running = ResumeStreaming();
        std::printf(running ? "Resumed playback\n" : "Nuvid: failed to re-engage streaming\n");
    }
    if (!running) {
        DoTheClose();
    }
    std::fflush(stdout);
    return running;
}
