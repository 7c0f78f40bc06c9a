// Chapter steps, and the steps to other items and files where a file has no further chapter.
#include "platform/CascadeFile.h"
#include "playback/MDecoder.h"
#include "playback/MHWDecoder.h"

int MDecoder::NextChapter()
{
    if (m_bFileOpen == 0) {
        return 0;
    }
    const tagBookmark here = GetMark();
    const int index = m_Chapters.GetNext(&here);
    if (index <= 0) {
        if (m_pClient != nullptr && m_pClient->NextFile()) {
            return 1;
        }
        if (m_bFileOpen == 0) {
            return VisitChapter(-1);    // the client closed it and could open no other
        }
        SmartFileList files = m_pHWDecoder->GetPlace().files;    // a copy: the feed may walk on meanwhile
        const char* next = files.GetNextFile();
        if (next != nullptr && CascadeFSObject::Exists(next) && GoToStartOf(files.GetCurrentName())) {
            Show("No Chapters... skipping to next file in sequence");
            return 1;
        }
    }
    return VisitChapter(index);
}

int MDecoder::PrevChapter(bool repeated)
{
    if (m_bFileOpen == 0) {
        return 0;
    }
    const tagBookmark here = GetMark();
    const int index = m_Chapters.GetPrev(&here, repeated);
    if (index < 0 || (repeated && index == m_Chapters.Size() - 1)) {
        if (m_pClient != nullptr && m_pClient->PrevFile()) {
            return 1;
        }
        if (m_bFileOpen == 0) {
            return VisitChapter(-1);    // the client closed it and could open no other
        }
        MHWDecoder::Place place = m_pHWDecoder->GetPlace();
        CascadeString target = place.files.GetCurrentName();
        const auto size = static_cast<long long>(place.files.GetCurrentFileSize());
        if (static_cast<long long>(place.position) < size / 20) {
            const char* prev = place.files.GetPrevFile();
            if (prev != nullptr && CascadeFSObject::Exists(prev)) {
                target = place.files.GetCurrentName();
            }
        }
        if (GoToStartOf(target)) {
            Show("No Chapters... skipping to previous file in sequence");
            return 1;
        }
    }
    return VisitChapter(index);
}

bool MDecoder::GoToStartOf(const char* name)
{
    tagBookmark start {name, 0};
    return GoToBookmark(&start);
}

// The list may be another, or empty, since `index` was taken: the client may have opened and closed items.
int MDecoder::VisitChapter(int index)
{
    if (!GoToBookmark(m_Chapters.Get(index))) {
        Show("No Chapters");
        return 0;
    }
    Show(CascadeString::Format("Chapter %d of %d", index + 1, m_Chapters.Size()));
    return index + 1;
}
