// Bookmarks, the resume point, and the side file that keeps them.
#include <cstdio>

#include "platform/AtomicFile.h"
#include "platform/CascadeFile.h"
#include "playback/FileSettings.h"
#include "playback/MDecoder.h"
#include "playback/MHWDecoder.h"
#include "playback/SkipMath.h"
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

void MDecoder::WriteFileSettings()
{
    if (m_SettingsFile.IsEmpty()) {
        return;
    }
    const std::optional<std::string> old = ReadSettingsText(m_SettingsFile);
    if (old && !IsFileSettings(*old)) {
        return;    // somebody else's file of that name
    }
    FileState state;
    state.zoomMode = m_nZoomMode;
    state.videoRes = m_nFileVideoRes;
    state.audioStream = static_cast<int>(m_nAudioStream);
    if (!m_pHWDecoder->m_bEOF) {
        // An open that fails has played nothing, and a stream that could not be opened again stands
        // nowhere: the saved point is kept then.
        const bool lost = m_bOpening || m_pHWDecoder->GetKind() == MHWDecoder::Kind::kNone;
        state.resume = lost && !m_Resume.name.IsEmpty() ? m_Resume : GetMark();
    }
    // What is there but cannot be read is not ours to replace either.
    const bool unreadable = !old && CascadeFSObject::Exists(m_SettingsFile);
    AtomicFile file(m_SettingsFile);
    if (unreadable || !file.Open() || !file.Write(FormatFileSettings(m_Chapters, m_Bookmarks, state)) || !file.Commit()) {
        std::printf("Can not open settings file for writing\n");
    }
}

tagBookmark MDecoder::GetMark() const
{
    const MHWDecoder::Place place = m_pHWDecoder->GetPlace();
    return {place.files.GetCurrentName(), static_cast<long long>(place.position)};
}

bool MDecoder::SetBookmark()
{
    if (m_bFileOpen == 0) {
        return false;
    }
    const tagBookmark mark = GetMark();
    m_Bookmarks.AddBookmark(mark.name, mark.position);
    return true;
}

// On purpose always the first one, whichever was visited last.
bool MDecoder::ClearBookmark()
{
    if (m_bFileOpen == 0) {
        return false;
    }
    m_nCurBookmark = 0;
    return m_Bookmarks.ClearBookmark(0);
}

int MDecoder::NextBookmark()
{
    if (m_bFileOpen == 0) {
        return 0;
    }
    const tagBookmark here = GetMark();
    return VisitBookmark(m_Bookmarks.GetNext(&here));
}

int MDecoder::PrevBookmark(bool skipOne)
{
    if (m_bFileOpen == 0) {
        return 0;
    }
    const tagBookmark here = GetMark();
    return VisitBookmark(m_Bookmarks.GetPrev(&here, skipOne));
}

int MDecoder::VisitBookmark(int index)
{
    if (!GoToBookmark(m_Bookmarks.Get(index))) {
        Show("No Bookmarks");
        return 0;
    }
    m_nCurBookmark = index;
    Show(CascadeString::Format("Bookmark %d of %d", index + 1, m_Bookmarks.Size()));
    return index + 1;
}

bool MDecoder::SkipToResumePoint()
{
    return !m_Resume.name.IsEmpty() && GoToBookmark(&m_Resume);
}

// `mark` may be a record of a list that a failure clears: it is not looked at after the reopen.
bool MDecoder::GoToBookmark(tagBookmark* mark)
{
    if (m_bFileOpen == 0 || mark == nullptr) {
        return false;
    }
    PauseStreaming();
    const CascadeString path = m_pHWDecoder->GetPlace().files.GetPath() + "/" + mark->name;
    m_pHWDecoder->SetStream(nullptr);
    m_pHWDecoder->SetFiles(path);
    m_pHWDecoder->SetStream(OpenStream(path));
    CascadeStream* stream = m_pHWDecoder->GetStream();
    if (stream == nullptr) {
        return false;
    }
    if (m_bProgramStream) {
        mark->position = TruncateToPack(mark->position);
    }
    if (!stream->SeekToPosition(static_cast<unsigned long long>(mark->position))) {
        std::printf("Seek failed!\n");
    }
    return ReOpen();
}
