// Where playback stands, and the transport: pause, resume, skip.
#include <sys/stat.h>

#include <cstdio>

#include "platform/CascadeTime.h"
#include "playback/MDecoder.h"
#include "playback/MHWDecoder.h"
#include "playback/SkipMath.h"
#include "playback/StreamChoice.h"

namespace {

// Size of the file that a file stream reads, as it is now; false for every other stream and when the disk does not tell.
bool CurrentFileSize(const MHWDecoder::Place& place, long long& size)
{
    struct stat status { };
    if (place.kind != MHWDecoder::Kind::kFile || !CascadeFSObject::IsAwake(place.files.GetCurrent()) || stat(place.files.GetCurrent(), &status) != 0) {
        return false;
    }
    size = status.st_size;
    return true;
}

}    // namespace

unsigned long long MDecoder::GetCurFilePosition()
{
    return m_bFileOpen != 0 ? m_pHWDecoder->GetPosition() : 0;
}

unsigned long long MDecoder::GetCurFileSize()
{
    if (m_bFileOpen == 0) {
        return 0;
    }
    return CurStreamIsHTTP() ? m_nHTTPSize : m_pHWDecoder->GetStreamSize();
}

int MDecoder::GetCurFileProgress()
{
    if (m_bFileOpen == 0) {
        return 0;
    }
    const MHWDecoder::Place place = m_pHWDecoder->GetPlace();
    long long size = 0;
    if (CurrentFileSize(place, size)) {
        return CurrentProgress(place.position, static_cast<unsigned long long>(size));
    }
    return CurrentProgress(place.position, place.kind == MHWDecoder::Kind::kImage ? m_pHWDecoder->GetStreamSize() : m_nHTTPSize);
}

// On purpose the size of every stream but a file, that of a DVD image too, is the one of the server stream
// opened last, which is never forgotten: 100 when there has been none.
int MDecoder::GetTotalFileProgress()
{
    if (m_bFileOpen == 0) {
        return 0;
    }
    const MHWDecoder::Place place = m_pHWDecoder->GetPlace();
    long long size = 0;
    if (!CurrentFileSize(place, size)) {
        return CurrentProgress(place.position, m_nHTTPSize);
    }
    long long throughCurrent = 0;
    const unsigned long long total = place.files.GetTotalFileSize(throughCurrent);
    return TotalProgress(throughCurrent, size, place.position, static_cast<long long>(total));
}

int MDecoder::GetBitrate()
{
    return m_bFileOpen != 0 ? static_cast<int>(m_pHWDecoder->m_nBitrate) : 0;
}

bool MDecoder::IsBitrateMeasured()
{
    return m_bFileOpen != 0 && m_pHWDecoder->m_nBitrate != StartBitrate(m_bProgramStream);
}

bool MDecoder::PauseStreaming()
{
    if (m_bFileOpen == 0) {
        return false;
    }
    m_bStreaming = 0;
    m_bPlaying = m_pHWDecoder->m_bEOF ? 0 : 2;
    g_bVideoRunning = false;
    return m_pHWDecoder->PauseStreaming();
}

bool MDecoder::ResumeStreaming()
{
    if (m_bFileOpen == 0) {
        return false;
    }
    m_bStreaming = 1;
    m_bPlaying = 1;
    m_pHWDecoder->m_nWarmup = 0;
    g_bVideoRunning = true;
    g_LastUITick_ms = CascadeTime::GetUptimeMilliseconds();    // an open that waited for a server is no starving
    return m_pHWDecoder->ResumeStreaming(true);
}

void MDecoder::SkipFW(int seconds)
{
    if (m_bFileOpen != 0) {
        Skip(SkipForwardDistance(m_pHWDecoder->m_nBitrate, seconds));
    }
}

void MDecoder::SkipBack(int seconds)
{
    if (m_bFileOpen != 0) {
        Skip(SkipBackDistance(m_pHWDecoder->m_nBitrate, seconds));
    }
}

void MDecoder::Skip(int distance)
{
    PauseStreaming();
    m_SaveSchedule.Moved();
    std::printf("To Skip: %d\n", distance);
    m_pHWDecoder->Jump(distance);
}
