// The items to play, in order, and the one that is playing.
//
// Units:     the cursor is an index; it may stand one past the end, when every item has failed.
// Threads:   the user-interface thread.
// Ownership: owns copies of the items. What Entry answers dies with the next change of the queue: opening
//            an item may replace the whole queue, so a caller takes a copy first.
#pragma once

#include <vector>

#include "browser/EFileBrowser.h"

class PlayQueue {
public:
    int Size() const { return static_cast<int>(m_FileList.size()); }
    bool IsEmpty() const { return m_FileList.empty(); }
    int Cursor() const { return m_CurFileIdx; }
    const EFileBrowser::FileInfo* Entry() const;    // at the cursor; null past the end
    bool HasNext() const { return m_CurFileIdx + 1 < Size(); }

    void Clear();    // the cursor goes to 0
    void Append(const EFileBrowser::FileInfo& entry) { m_FileList.push_back(entry); }
    // Never further than one past the end, where the next item to be appended comes to stand.
    void SkipFailedEntry() { m_CurFileIdx += m_CurFileIdx < Size() ? 1 : 0; }
    std::vector<CascadeString> Paths() const;

    // One step back; false at the first item.
    bool StepBack();

    // The steps from the end of one item to the next that opens. An item whose path begins with ":repeat"
    // is never opened: it sends the cursor to the first item, once in a walk.
    class Forward {
    public:
        explicit Forward(PlayQueue& queue)
            : m_Queue(queue)
        {
        }
        bool Step();    // false: no further item

    private:
        PlayQueue& m_Queue;
        bool m_bWrapped = false;
    };

private:
    std::vector<EFileBrowser::FileInfo> m_FileList;
    int m_CurFileIdx = 0;
};
