// What the feed reads: the stream on one file and the sequence that the file belongs to; and the slot
// through which the feeding thread changes it under the eyes of the user-interface thread.
//
// Threads:   one writer at a time: the feeding thread while streaming, else the user-interface thread.
//            One reader: the user-interface thread, at any time, through a View. No lock: the reader says
//            which source it looks at, and the writer leaves that one alone.
// Ownership: the slot owns its sources. Nothing that a View answers outlives it.
#pragma once

#include <atomic>
#include <memory>

#include "platform/CascadeStream.h"
#include "sources/SmartFileList.h"

struct FeedSource {
    std::unique_ptr<CascadeStream> m_pStream;    // null: closed, or a file that could not be opened
    SmartFileList m_FileList;
    FeedSource* m_pNextRetired = nullptr;    // the slot's
};

class FeedSourceSlot {
public:
    FeedSourceSlot();
    ~FeedSourceSlot();
    FeedSourceSlot(const FeedSourceSlot&) = delete;
    FeedSourceSlot& operator=(const FeedSourceSlot&) = delete;

    // The writer's. While nothing streams the user-interface thread may change the current source in place.
    FeedSource& Current() { return *m_pCurrent.load(); }
    void Replace(std::unique_ptr<FeedSource> source);

    // Keeps one source alive while the reader looks at it. Short-lived; one at a time.
    class View {
    public:
        explicit View(FeedSourceSlot& slot);
        ~View();
        View(const View&) = delete;
        View& operator=(const View&) = delete;
        const FeedSource* operator->() const { return m_pSource; }

    private:
        FeedSourceSlot& m_Slot;
        FeedSource* m_pSource;
    };

private:
    void FreeRetired();

    std::atomic<FeedSource*> m_pCurrent;    // never null
    std::atomic<FeedSource*> m_pLookedAt {nullptr};    // what the reader's View holds
    std::atomic<FeedSource*> m_pRetired {nullptr};    // replaced while looked at: the reader frees them
};
