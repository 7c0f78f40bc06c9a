#include "host/upnp/control/BrowseJob.h"

#include <algorithm>
#include <utility>

#include "host/upnp/control/BrowseMessage.h"

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

size_t BrowseJob::Wanted() const
{
    return m_Order.count == 0 ? m_Limits.mostObjects : std::min<size_t>(m_Order.count, m_Limits.mostObjects);
}

void BrowseJob::Ask(bool probe)
{
    m_bProbe = probe;
    BrowseQuestion question {m_Target.serviceType, m_Order.objectId, m_Order.filter, m_Sort, m_Order.start + static_cast<unsigned long>(m_nGot), m_nPage};
    if (probe) {
        question.filter = "id";
        question.sortCriteria.clear();
        question.count = 1;
    } else if (m_Order.count != 0) {
        const auto left = static_cast<unsigned long>(m_Order.count - m_nGot);
        question.count = m_nPage == 0 ? left : std::min(left, m_nPage);
    }
    m_pReader = std::make_unique<BrowseReader>(m_Target.rule, Wanted() - m_nGot);
    Exchange::Question exchange {m_Target.controlUrl, BrowseAction(question), BrowseBody(question), m_Limits.mostBytes, m_Limits.answerSeconds, {}};
    exchange.onPiece = [reader = m_pReader.get()](std::string_view piece) { reader->Take(piece); };
    m_pExchange = std::make_unique<Exchange>(m_pSession, std::move(exchange), [this](Exchange::Answer answer) { Take(std::move(answer)); });
}

void BrowseJob::Take(Exchange::Answer answer)
{
    if (m_bProbe && answer.outcome != Exchange::Outcome::kAnswered) {
        Finish(CascadeUPnP::kTransactionOK);    // all that was promised is there
        return;
    }
    switch (answer.outcome) {
    case Exchange::Outcome::kLost:
        FinishEarly(CascadeUPnP::kTransactionConnectionLost);
        return;
    case Exchange::Outcome::kTimedOut:
        FinishEarly(CascadeUPnP::kTransactionTimedOut);
        return;
    case Exchange::Outcome::kTooLarge:
        TakeTooLarge();
        return;
    case Exchange::Outcome::kAnswered:
        break;
    }
    const BrowseEnvelope envelope = m_pReader->FinishEnvelope();
    if (envelope.errorCode != 0 || answer.status == kFault) {
        TakeFault(envelope.errorCode);
    } else if (answer.status != SOUP_STATUS_OK) {
        Finish(CascadeUPnP::kTransactionRefused);
    } else if (!envelope.read) {
        FinishEarly(CascadeUPnP::kTransactionBadAnswer);
    } else {
        TakeBrowse(envelope);
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

void BrowseJob::TakeTooLarge()
{
    DidlObjects didl = m_pReader->FinishObjects();
    const bool paged = std::exchange(m_nPage, m_Limits.page) != 0;
    if (didl.count > 0) {
        didl.whole = true;    // as far as it was to be read
        TakeObjects(std::move(didl));
    } else if (!paged) {
        Ask();
    } else {
        Finish(CascadeUPnP::kTransactionBadAnswer);
    }
}

void BrowseJob::TakeBrowse(const BrowseEnvelope& envelope)
{
    if (m_bProbe) {
        if (envelope.numberReturned == 0) {
            Finish(CascadeUPnP::kTransactionOK);
        } else {
            Ask();
        }
        return;
    }
    m_nMatches = envelope.totalMatches;
    TakeObjects(m_pReader->FinishObjects());
}

// A server that does not mind where it is asked to begin would be asked for ever.
bool BrowseJob::IsSamePage(const BrowseObjects& objects)
{
    const std::string first = objects.empty() ? std::string() : objects.front()->id.Str();
    return !first.empty() && std::exchange(m_FirstId, first) == first;
}

void BrowseJob::TakeObjects(DidlObjects didl)
{
    if (IsSamePage(didl.objects) && m_nGot > 0) {
        Finish(CascadeUPnP::kTransactionOK);
        return;
    }
    m_nGot += didl.count;
    if (m_Order.count == 0 && m_nGot >= m_Limits.mostObjects) {
        Finish(CascadeUPnP::kTransactionTooMany, std::move(didl.objects));
    } else if (!didl.whole) {
        Finish(CascadeUPnP::kTransactionBadAnswer, std::move(didl.objects));
    } else if (didl.count == 0 || m_nGot >= Wanted()) {
        Finish(CascadeUPnP::kTransactionOK, std::move(didl.objects));
    } else if (g_get_monotonic_time() - m_nBegun > m_Limits.allSeconds * kSecond) {
        Finish(CascadeUPnP::kTransactionTimedOut, std::move(didl.objects));
    } else {
        Ask(m_nMatches == m_nGot);
        m_OnPage({m_Order.transaction, CascadeUPnP::kTransactionOK, m_nMatches, false, std::move(didl.objects)});
    }
}

// What came of the answer is good.
void BrowseJob::FinishEarly(CascadeUPnP::TransactionResult result)
{
    DidlObjects didl = m_pReader->FinishObjects();
    if (IsSamePage(didl.objects) && m_nGot > 0) {
        didl.objects.clear();
    }
    m_nGot += didl.objects.size();
    Finish(result, std::move(didl.objects));
}

void BrowseJob::Finish(CascadeUPnP::TransactionResult result, BrowseObjects objects)
{
    const OnPage onPage = m_OnPage;    // the call may end this
    onPage({m_Order.transaction, result, std::max(m_nMatches, static_cast<unsigned long>(m_nGot)), true, std::move(objects)});
}

}    // namespace host
