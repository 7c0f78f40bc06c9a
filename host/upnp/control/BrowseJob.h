// One browse request: asks the server page after page until nothing more comes.
//
// Rules:     The server is asked for all and may give fewer; it is asked on from there until it gives
//            nothing. What it says of the number of matches ends nothing, for servers name the page's size,
//            or 0, or what they like; when it agrees, the last question is only whether there is one more,
//            which costs the server least. One that answers the same page again is not asked on. Of an
//            answer too large its begin is taken; what follows is asked for in pages.
// Units:     limits below.
// Errors:    in the last page's result; what came before is good.
// Threads:   the control point's thread.
// Ownership: destruction ends it without a page. `onPage` may destroy it.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "host/upnp/ControlPoint.h"
#include "host/upnp/control/AddressRule.h"
#include "host/upnp/control/BrowseReader.h"
#include "host/upnp/control/Exchange.h"

namespace host {

struct BrowseTarget {
    std::string serviceType;
    std::string controlUrl;
    AddressRule rule;
};

struct BrowseLimits {
    size_t mostObjects = 100000;    // of a container
    size_t mostBytes = 64 * 1024 * 1024;    // of one answer, which is read as it comes and not kept
    unsigned long page = 500;    // once everything was too large
    unsigned answerSeconds = 60;    // for one answer
    int64_t allSeconds = 180;    // for all pages; none is asked for later
};

class BrowseJob {
public:
    using OnPage = std::function<void(BrowsePage)>;

    BrowseJob(SoupSession* session, BrowseOrder order, BrowseTarget target, OnPage onPage, const BrowseLimits& limits = {});
    BrowseJob(const BrowseJob&) = delete;
    BrowseJob& operator=(const BrowseJob&) = delete;

private:
    void Ask(bool probe = false);    // for what follows; a probe: whether anything does
    void Take(Exchange::Answer answer);
    void TakeFault(int code);
    void TakeTooLarge();
    void TakeBrowse(const BrowseEnvelope& envelope);
    void TakeObjects(DidlObjects didl);
    bool IsSamePage(const BrowseObjects& objects);
    size_t Wanted() const;
    void FinishEarly(CascadeUPnP::TransactionResult result);
    void Finish(CascadeUPnP::TransactionResult result, BrowseObjects objects = {});

    SoupSession* const m_pSession;
    const BrowseOrder m_Order;
    const BrowseTarget m_Target;
    const OnPage m_OnPage;
    const BrowseLimits m_Limits;
    const int64_t m_nBegun;    // microseconds of the monotonic clock
    std::unique_ptr<BrowseReader> m_pReader;    // of the answer under way
    std::unique_ptr<Exchange> m_pExchange;
    std::string m_Sort;
    unsigned long m_nPage = 0;    // how many are asked for at once; 0: all that are wanted
    size_t m_nGot = 0;    // objects that the server sent, in all
    bool m_bProbe = false;    // the question under way is one
    unsigned long m_nMatches = 0;    // as the server said last
    std::string m_FirstId;    // of the page before
};

}    // namespace host
