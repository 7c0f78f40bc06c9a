#include "playback/FeedSource.h"

FeedSourceSlot::FeedSourceSlot()
    : m_pCurrent(new FeedSource)
{
}

FeedSourceSlot::~FeedSourceSlot()
{
    FreeRetired();
    delete m_pCurrent.load();
}

// Sequentially consistent, as the reader's two steps are: either the reader sees the new source when it
// looks a second time, or it is seen here to hold the old one.
void FeedSourceSlot::Replace(std::unique_ptr<FeedSource> source)
{
    FeedSource* old = m_pCurrent.exchange(source.release());
    if (m_pLookedAt.load() != old) {
        delete old;
        return;
    }
    FeedSource* head = m_pRetired.load();
    do {
        old->m_pNextRetired = head;
    } while (!m_pRetired.compare_exchange_weak(head, old));
}

void FeedSourceSlot::FreeRetired()
{
    FeedSource* retired = m_pRetired.exchange(nullptr);
    while (retired != nullptr) {
        FeedSource* next = retired->m_pNextRetired;
        delete retired;
        retired = next;
    }
}

FeedSourceSlot::View::View(FeedSourceSlot& slot)
    : m_Slot(slot)
    , m_pSource(slot.m_pCurrent.load())
{
    for (;;) {
        m_Slot.m_pLookedAt = m_pSource;
        FeedSource* now = m_Slot.m_pCurrent.load();
        if (now == m_pSource) {
            return;
        }
        m_pSource = now;
    }
}

FeedSourceSlot::View::~View()
{
    m_Slot.m_pLookedAt = nullptr;
    m_Slot.FreeRetired();
}
