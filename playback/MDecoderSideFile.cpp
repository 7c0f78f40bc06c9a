// The side file of a recording: read at the opening, saved while playing, on a pause and at the close.
#include "platform/CascadeTime.h"
#include "playback/FileSettings.h"
#include "playback/MDecoder.h"
#include "playback/MHWDecoder.h"
#include "playback/ZoomModes.h"

void MDecoder::ReadFileSettings()
{
    m_Bookmarks.Clear();    // the chapters stay
    m_Resume = tagBookmark();
    FileSettings settings;
    if (!m_SettingsFile.IsEmpty()) {
        settings = ParseFileSettings(ReadSettingsText(m_SettingsFile).value_or(std::string()));
    }
    for (int i = 0; i < settings.chapters.Size(); ++i) {
        m_Chapters.AddBookmark(settings.chapters.Get(i)->name, settings.chapters.Get(i)->position);
    }
    m_Bookmarks = std::move(settings.bookmarks);
    if (settings.state.resume) {
        m_Resume = *settings.state.resume;
    }
    if (settings.state.audioStream) {
        m_nAudioStream = static_cast<uint32_t>(*settings.state.audioStream);
    }
    m_nZoomMode = ZoomModeBefore(settings.state.zoomMode);
    NextZoomMode();
    SwitchToVideoRes(static_cast<unsigned>(settings.state.videoRes));
}

// The last save of a recording is complete when this returns.
void MDecoder::WriteFileSettings()
{
    if (!m_SettingsFile.IsEmpty()) {
        m_SideFile.Finish(FormatSettings(true));
    }
}

// Between the opening and the close the side file is kept fresh, so that a power cut costs seconds only.
void MDecoder::Tick()
{
    if (m_bFileOpen != 0 && m_SaveSchedule.Tick(CascadeTime::GetUptimeMilliseconds(), m_bPlaying) && !m_SettingsFile.IsEmpty()) {
        m_SideFile.Save(FormatSettings(false));
    }
}

std::string MDecoder::FormatSettings(bool closing)
{
    FileState state;
    state.zoomMode = m_nZoomMode;
    state.videoRes = m_nFileVideoRes;
    state.audioStream = static_cast<int>(m_nAudioStream);
    // An open that fails has played nothing, and a stream that could not be opened again stands nowhere:
    // the saved point is kept then. So it is while the viewer is asked whether to go on from there, for as
    // long as that takes, and in a recording's first seconds, which only a close ends early.
    const bool lost = m_bOpening || m_SaveSchedule.IsAsking() || m_pHWDecoder->GetKind() == MHWDecoder::Kind::kNone;
    const bool first = !closing && !m_SaveSchedule.IsPastFirstSeconds();
    if ((first || (lost && !m_pHWDecoder->m_bEOF)) && !m_Resume.name.IsEmpty()) {
        state.resume = m_Resume;
    } else if (!m_pHWDecoder->m_bEOF) {
        state.resume = GetMark();
    }
    return FormatFileSettings(m_Chapters, m_Bookmarks, state);
}
