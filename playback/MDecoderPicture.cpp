// Zoom and output resolution.
#include <cstdio>

#include "platform/CascadeScreen.h"
#include "playback/MDecoder.h"
#include "playback/MHWDecoder.h"
#include "playback/ZoomModes.h"

void MDecoder::NextZoomMode()
{
    if (m_bFileOpen == 0) {
        return;
    }
    const unsigned resolution = CascadeScreen::GetCurrentOutputResolution();
    CascadeRect screenScale;
    CascadeDims dims;
    CascadeScreen::GetOutputResolutionScaleRect(resolution, screenScale);
    CascadeScreen::GetSupportedOutputResolutionAt(resolution, dims);

    m_nZoomMode = ZoomModeWithin(m_nZoomMode + 1);
    const ZoomRects rects = ComputeZoom(kZoomModes[m_nZoomMode], {0, 0, dims.width, dims.height}, screenScale);
    std::printf("Mode: %d output: %d, %d scale: %d %d\n", m_nZoomMode, dims.width, dims.height, rects.scale.width, rects.scale.height);
    if (!m_pHWDecoder->SetOutputAndScaleRects(rects.output, rects.scale)) {
        std::printf("Nuvid: failed to SetOutputAndScaleRects()\n");
        Show("Zoom mode unavailable");
    }
}

int MDecoder::GetCurZoomStr(char* buffer, int size) const
{
    if (buffer == nullptr || size <= 0) {
        return 0;
    }
    buffer[0] = '\0';
    if (m_bFileOpen == 0) {
        return 0;
    }
    return std::snprintf(buffer, static_cast<size_t>(size), "Z%d: %s", m_nZoomMode, kZoomModes[ZoomModeWithin(m_nZoomMode)].name);
}

bool MDecoder::SetVideoRes(unsigned index, int value)
{
    if (index >= std::size(m_nVideoRes)) {
        return false;
    }
    m_nVideoRes[index] = value;
    std::printf("VideoMode %d = %d\n", static_cast<int>(index), value);
    return true;
}

int MDecoder::GetVideoRes(unsigned index) const
{
    return m_nVideoRes[index < std::size(m_nVideoRes) ? index : 0];
}

// The decoder is built anew on the other resolution, and goes on where it stood.
bool MDecoder::SwitchToVideoRes(unsigned index)
{
    if (index >= std::size(m_nVideoRes)) {
        index = 0;
    }
    if (static_cast<int>(index) == m_nFileVideoRes) {
        return false;
    }
    const uint32_t resolution = m_nVideoRes[index] == -1 ? m_nOutputRes : static_cast<uint32_t>(m_nVideoRes[index]);
    MHWDecoder::Place place;
    if (m_bFileOpen != 0) {
        m_pHWDecoder->PauseStreaming();
        place = m_pHWDecoder->GetPlace();
        std::printf("Need to resume at file %s\n", place.files.GetCurrent().Text());
        m_pHWDecoder->Close();
        m_pHWDecoder->SetStream(nullptr);
    }
    m_pHWDecoder.reset();
    const bool changed = CascadeScreen::SetOutputResolution(resolution);
    if (changed) {
        m_nFileVideoRes = static_cast<int>(index);
    } else {
        std::printf("SetOutputResolution failed!\n");
    }
    m_pHWDecoder = std::make_unique<MHWDecoder>();
    if (m_bFileOpen == 0) {
        return changed;
    }
    const bool resumed = ResumeOnNewFeeder(place.files.GetCurrent(), place.position);
    std::fflush(stdout);
    return changed && resumed;
}

bool MDecoder::ResumeOnNewFeeder(const char* path, unsigned long long position)
{
    CascadeStream* stream = OpenStream(path);
    if (stream == nullptr) {
        return false;
    }
    m_pHWDecoder->SetStream(stream);
    if (!stream->SeekToPosition(position)) {
        std::printf("Seek failed!\n");
    }
    m_pHWDecoder->SetFiles(path);
    m_pHWDecoder->PrepareStart();
    if (!OpenDecoder()) {
        DoTheClose();
        return false;
    }
    std::printf("Opened MPEG decoder\n");
    // The same zoom on the new resolution.
    m_nZoomMode -= 1;
    NextZoomMode();
    m_pHWDecoder->m_bProgramStream = m_bProgramStream;
    if (!ChangeProgram()) {
        ReSelectPIDs();    // a decoder without a choice would neither play nor end
    }
    if (m_bStreaming != 0) {
        m_pHWDecoder->ResumeStreaming(true);
    }
    return true;
}
