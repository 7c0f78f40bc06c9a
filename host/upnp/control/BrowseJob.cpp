#include "host/upnp/control/BrowseJob.h"

#include <algorithm>
#include <utility>

#include "host/upnp/control/DidlObjects.h"

namespace host {
namespace {

constexpr unsigned kFault = 500;    // the status of a SOAP fault
constexpr int64_t kSecond = 1000000;

}    // namespace

BrowseJob::BrowseJob(SoupSession* session, BrowseOrder order, BrowseTarget target, OnPage onPage, const BrowseLimits& limits)
    : m_pSession(session)
    , m_Order(std::move(order))
    , m_Target(std::move(target))
    , m_OnPage(std::move(onPage))
    , m_Limits(limits)
    , m_nBegun(g_get_monotonic_time())
    , m_Sort(m_Order.sortCriteria)
{
    Ask();
}

void BrowseJob::Ask()
{
    unsigned long count = m_nPage;
    if (m_Order.count != 0) {
        const auto left = static_cast<unsigned long>(m_Order.count - m_nGot);
        count = m_nPage == 0 ? left : std::min(left, m_nPage);
    }
    const BrowseQuestion question {m_Target.serviceType, m_Order.objectId, m_Order.filter, m_Sort, m_Order.start + static_cast<unsigned long>(m_nGot), count};
    m_pExchange = std::make_unique<Exchange>(m_pSession, Exchange::Question {m_Target.controlUrl, BrowseAction(question), BrowseBody(question), m_Limits.mostBytes, m_Limits.answerSeconds},
        [this](const Exchange::Answer& answer) { Take(answer); });
}

void BrowseJob::Take(const Exchange::Answer& answer)
{
    switch (answer.outcome) {
    case Exchange::Outcome::kLost:
        Finish(CascadeUPnP::kTransactionConnectionLost);
        return;
    case Exchange::Outcome::kTimedOut:
        Finish(CascadeUPnP::kTransactionTimedOut);
        return;
    case Exchange::Outcome::kTooLarge:
        if (m_nPage == 0) {
            m_nPage = m_Limits.page;
            Ask();
        } else {
            Finish(CascadeUPnP::kTransactionBadAnswer);
        }
        return;
    case Exchange::Outcome::kAnswered:
        break;
    }
    const BrowseAnswer browse = ReadBrowseAnswer(answer.body);
    if (browse.errorCode != 0 || answer.status == kFault) {
        TakeFault(browse.errorCode);
    } else if (answer.status != SOUP_STATUS_OK) {
        Finish(CascadeUPnP::kTransactionRefused);
    } else if (!browse.read) {
        Finish(CascadeUPnP::kTransactionBadAnswer);
    } else {
        TakeObjects(browse);
    }
}

void BrowseJob::TakeFault(int code)
{
    if (code == kUnsupportedSort && !m_Sort.empty()) {
        m_Sort.clear();
        Ask();
    } else {
        // Some servers refuse to be asked beyond their end instead of answering nothing.
        Finish(m_nGot > 0 && m_nGot >= m_nMatches ? CascadeUPnP::kTransactionOK : CascadeUPnP::kTransactionRefused);
    }
}

// A server that does not mind where it is asked to begin would be asked for ever.
bool BrowseJob::IsSamePage(const BrowseObjects& objects)
{
    if (objects.empty()) {
        return false;
    }
    const std::string first = std::exchange(m_FirstId, objects.front()->id.Str());
    return first == m_FirstId;
}

void BrowseJob::TakeObjects(const BrowseAnswer& answer)
{
    m_nMatches = answer.totalMatches;
    const size_t wanted = m_Order.count == 0 ? m_Limits.mostObjects : std::min<size_t>(m_Order.count, m_Limits.mostObjects);
    DidlObjects didl = ReadDidl(answer.didl, m_Target.rule, wanted - m_nGot);
    if (m_nGot > 0 && IsSamePage(didl.objects)) {
        Finish(CascadeUPnP::kTransactionOK);
        return;
    }
    if (m_nGot == 0) {
        IsSamePage(didl.objects);
    }
    m_nGot += didl.count;
    const bool isOut = g_get_monotonic_time() - m_nBegun > m_Limits.allSeconds * kSecond;
    if (!didl.whole) {
        Finish(CascadeUPnP::kTransactionBadAnswer, std::move(didl.objects));
    } else if (m_Order.count == 0 && m_nGot >= m_Limits.mostObjects) {
        Finish(CascadeUPnP::kTransactionTooMany, std::move(didl.objects));
    } else if (didl.count == 0 || m_nGot >= wanted) {
        Finish(CascadeUPnP::kTransactionOK, std::move(didl.objects));
    } else if (isOut) {
        Finish(CascadeUPnP::kTransactionTimedOut, std::move(didl.objects));
    } else {
        Ask();
        m_OnPage({m_Order.transaction, CascadeUPnP::kTransactionOK, m_nMatches, false, std::move(didl.objects)});
    }
}

void BrowseJob::Finish(CascadeUPnP::TransactionResult result, BrowseObjects objects)
{
    const OnPage onPage = m_OnPage;    // the call may end this
    onPage({m_Order.transaction, result, std::max(m_nMatches, static_cast<unsigned long>(m_nGot)), true, std::move(objects)});
}

}    // namespace host
