// Bookmarks and the resume point.
#include <cstdio>

#include "playback/MDecoder.h"
#include "playback/MHWDecoder.h"
#include "playback/SkipMath.h"

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
    m_SaveSchedule.Moved();
    return ReOpen();
}
