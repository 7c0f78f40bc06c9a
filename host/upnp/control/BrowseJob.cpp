#include "host/upnp/control/BrowseJob.h"

#include <algorithm>
#include <utility>

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
    Ask(0);
}

size_t BrowseJob::Wanted() const
{
    return m_Order.count == 0 ? m_Limits.mostObjects : std::min<size_t>(m_Order.count, m_Limits.mostObjects);
}

void BrowseJob::Ask(size_t after, bool probe)
{
    m_nAskedAfter = after;
    m_bProbe = probe;
    BrowseQuestion question {m_Target.serviceType, m_Order.objectId, m_Order.filter, m_Sort, m_Order.start + static_cast<unsigned long>(after), m_nPage};
    if (probe) {
        question.filter = "id";
        question.sortCriteria.clear();
        question.count = 1;
    } else if (m_Order.count != 0) {
        const auto left = static_cast<unsigned long>(m_Order.count - after);
        question.count = m_nPage == 0 ? left : std::min(left, m_nPage);
    }
    Exchange::Question exchange {m_Target.controlUrl, BrowseAction(question), BrowseBody(question), m_Limits.mostBytes, m_Limits.answerSeconds, {}};
    if (m_Held) {
        exchange.onWritten = [this] { ReadHeld(); };
    }
    m_pExchange = std::make_unique<Exchange>(m_pSession, std::move(exchange), [this](Exchange::Answer answer) { Take(std::move(answer)); });
}

void BrowseJob::Take(Exchange::Answer answer)
{
    // What came before comes first. It may have ended all, or asked another question instead.
    if (m_Held) {
        const size_t after = m_nAskedAfter;
        if (!ReadHeld() || m_nAskedAfter != after) {
            return;
        }
    }
    if (m_bProbe && answer.outcome != Exchange::Outcome::kAnswered) {
        Finish(CascadeUPnP::kTransactionOK);    // all that was promised is there
        return;
    }
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
            Ask(m_nGot);
        } else {
            Finish(CascadeUPnP::kTransactionBadAnswer);
        }
        return;
    case Exchange::Outcome::kAnswered:
        break;
    }
    BrowseAnswer browse = ReadBrowseAnswer(std::move(answer.body));
    if (browse.errorCode != 0 || answer.status == kFault) {
        TakeFault(browse.errorCode);
    } else if (answer.status != SOUP_STATUS_OK) {
        Finish(CascadeUPnP::kTransactionRefused);
    } else if (!browse.read) {
        Finish(CascadeUPnP::kTransactionBadAnswer);
    } else {
        TakeBrowse(std::move(browse));
    }
}

void BrowseJob::TakeFault(int code)
{
    if (code == kUnsupportedSort && !m_Sort.empty()) {
        m_Sort.clear();
        Ask(m_nGot);
    } else {
        // Some servers refuse to be asked beyond their end instead of answering nothing.
        Finish(m_nGot > 0 && m_nGot >= m_nMatches ? CascadeUPnP::kTransactionOK : CascadeUPnP::kTransactionRefused);
    }
}

void BrowseJob::TakeBrowse(BrowseAnswer answer)
{
    if (m_bProbe) {
        if (answer.numberReturned == 0) {
            Finish(CascadeUPnP::kTransactionOK);
        } else {
            Ask(m_nGot);
        }
        return;
    }
    m_nMatches = answer.totalMatches;
    const size_t after = m_nGot + answer.numberReturned;
    m_Held = std::move(answer);
    // The server looks for what follows while this page is read here.
    if (m_Held->numberReturned > 0 && after < Wanted()) {
        Ask(after, m_nMatches == after);
    } else {
        ReadHeld();
    }
}

// False: that was the end, and this may be gone.
bool BrowseJob::ReadHeld()
{
    if (!m_Held) {
        return true;
    }
    const BrowseAnswer answer = std::move(*m_Held);
    m_Held.reset();
    return TakeObjects(ReadDidl(answer.didl, m_Target.rule, Wanted() - m_nGot));
}

// A server that does not mind where it is asked to begin would be asked for ever.
bool BrowseJob::IsSamePage(const BrowseObjects& objects)
{
    const std::string first = objects.empty() ? std::string() : objects.front()->id.Str();
    return !first.empty() && std::exchange(m_FirstId, first) == first;
}

bool BrowseJob::TakeObjects(DidlObjects didl)
{
    if (IsSamePage(didl.objects) && m_nGot > 0) {
        return Finish(CascadeUPnP::kTransactionOK);
    }
    m_nGot += didl.count;
    if (m_Order.count == 0 && m_nGot >= m_Limits.mostObjects) {
        return Finish(CascadeUPnP::kTransactionTooMany, std::move(didl.objects));
    }
    if (!didl.whole) {
        return Finish(CascadeUPnP::kTransactionBadAnswer, std::move(didl.objects));
    }
    if (didl.count == 0 || m_nGot >= Wanted()) {
        return Finish(CascadeUPnP::kTransactionOK, std::move(didl.objects));
    }
    if (g_get_monotonic_time() - m_nBegun > m_Limits.allSeconds * kSecond) {
        return Finish(CascadeUPnP::kTransactionTimedOut, std::move(didl.objects));
    }
    if (m_nAskedAfter != m_nGot) {
        Ask(m_nGot);    // the server had miscounted
    }
    m_OnPage({m_Order.transaction, CascadeUPnP::kTransactionOK, m_nMatches, false, std::move(didl.objects)});
    return true;
}

bool BrowseJob::Finish(CascadeUPnP::TransactionResult result, BrowseObjects objects)
{
    const OnPage onPage = m_OnPage;    // the call may end this
    onPage({m_Order.transaction, result, std::max(m_nMatches, static_cast<unsigned long>(m_nGot)), true, std::move(objects)});
    return false;
}

}    // namespace host
