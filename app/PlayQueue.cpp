#include "app/PlayQueue.h"

namespace {

bool IsRepeatMark(const EFileBrowser::FileInfo& entry)
{
    return entry.path.Compare(":repeat", true, false, 7) == 0;
}

}    // namespace

const EFileBrowser::FileInfo* PlayQueue::Entry() const
{
    return m_CurFileIdx < Size() ? &m_FileList[static_cast<size_t>(m_CurFileIdx)] : nullptr;
}

void PlayQueue::Clear()
{
    m_FileList.clear();
    m_CurFileIdx = 0;
}

std::vector<CascadeString> PlayQueue::Paths() const
{
    std::vector<CascadeString> paths;
    for (const EFileBrowser::FileInfo& entry : m_FileList) {
        paths.push_back(entry.path);
    }
    return paths;
}

bool PlayQueue::StepBack()
{
    if (m_CurFileIdx < 1) {
        return false;
    }
    --m_CurFileIdx;
    return true;
}

bool PlayQueue::Forward::Step()
{
    if (!m_Queue.HasNext()) {
        return false;
    }
    ++m_Queue.m_CurFileIdx;
    if (!IsRepeatMark(*m_Queue.Entry())) {
        return true;
    }
    if (m_bWrapped) {
        return false;
    }
    m_bWrapped = true;
    m_Queue.m_CurFileIdx = 0;
    return true;
}
