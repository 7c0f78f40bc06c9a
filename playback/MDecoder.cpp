#include "playback/MDecoder.h"

#include <cstdio>

#include "platform/CascadeScreen.h"
#include "playback/MHWDecoder.h"

MDecoder::MDecoder()
    : m_pHWDecoder(std::make_unique<MHWDecoder>())
{
    m_nOutputRes = CascadeScreen::GetCurrentOutputResolution();
    std::printf("Current Output Res: %d\n", static_cast<int>(m_nOutputRes));
    std::printf("Current Screen Res: %d\n", static_cast<int>(CascadeScreen::GetCurrentScreenResolution()));
}

MDecoder::~MDecoder() = default;

void MDecoder::SetBufferSize(unsigned long size)
{
    if (g_bTSFix) {
        return;    // the repair walks whole packs: its buffers keep their size
    }
    if (static_cast<uint32_t>(size) != 0xFFFFFFFFU) {
        std::printf("SetBufferSize only implemented for -1 (max)!\n");
        return;
    }
    m_nNumBuffers = 0;
    m_nBufferSize = 0;
}

bool MDecoder::IsVideoRunning() const
{
    return g_bVideoRunning;
}

bool MDecoder::IsStarving() const
{
    return IsVideoRunning() && m_pHWDecoder->IsStarving();
}

bool MDecoder::CurStreamIsHTTP() const
{
    return m_bFileOpen != 0 && m_pHWDecoder->GetKind() == MHWDecoder::Kind::kHTTP;
}

bool MDecoder::CurStreamIsISO() const
{
    return m_bFileOpen != 0 && m_pHWDecoder->GetKind() == MHWDecoder::Kind::kImage;
}

const char* MDecoder::GetCurFile() const
{
    m_CurFile = m_bFileOpen != 0 ? m_pHWDecoder->GetPlace().files.GetCurrent() : CascadeString();
    return m_CurFile.IsEmpty() ? nullptr : m_CurFile.Text();
}

const char* MDecoder::GetCurFileName() const
{
    m_CurFileName = m_bFileOpen != 0 ? m_pHWDecoder->GetPlace().files.GetCurrentName() : CascadeString();
    return m_CurFileName.IsEmpty() ? nullptr : m_CurFileName.Text();
}

const char* MDecoder::GetOriginalFileName() const
{
    m_OriginalFileName = m_bFileOpen != 0 ? m_pHWDecoder->GetPlace().files.GetName() : CascadeString();
    return m_OriginalFileName.IsEmpty() ? nullptr : m_OriginalFileName.Text();
}

bool MDecoder::SetProgram(int index)
{
    m_nProgram = static_cast<uint32_t>(index);
    return true;
}

bool MDecoder::SetVideoStream(int index)
{
    m_nVideoStream = static_cast<uint32_t>(index);
    return true;
}

bool MDecoder::SetAudioStream(int index)
{
    m_nAudioStream = static_cast<uint32_t>(index);
    return true;
}

void MDecoder::Show(const char* text)
{
    if (m_pClient != nullptr) {
        m_pClient->ShowText(text);
    }
}
