#include "platform/CascadeUPnP.h"

#include <utility>

#include <malloc.h>

#include "host/upnp/UpnpService.h"

namespace {

constexpr size_t kLargeAnswer = 10000;    // objects, some five megabytes

}    // namespace

// Fills the array of a request and hands it on.
class CascadeUPnPRequests {
public:
    static void Take(CascadeUPnP& asking, host::BrowsePage page)
    {
        CascadeUPnP::AVObjectArray& objects = *asking.m_pResult;
        for (std::unique_ptr<CascadeUPnP::AVObject>& object : page.objects) {
            objects.Append(std::move(object));
        }
        if (page.done) {
            asking.m_nTransaction = 0;
        }
        const bool large = page.done && objects.GetSize() > kLargeAnswer;
        asking.OnAVBrowseResult(page.transaction, page.result, page.matchCount, objects, page.done);
        if (large) {
            malloc_trim(0);    // the objects were another thread's: their memory does not go back by itself
        }
    }
};

CascadeUPnP::~CascadeUPnP()
{
    if (m_nTransaction != 0) {
        host::UpnpService::Get().Drop(m_nTransaction);
    }
}

const char* CascadeUPnP::TransactionResultToString(TransactionResult result)
{
    switch (result) {
    case kTransactionOK:
        return "OK";
    case kTransactionNoDevice:
        return "The server is not there";
    case kTransactionTimedOut:
        return "The server does not answer";
    case kTransactionConnectionLost:
        return "The connection to the server was lost";
    case kTransactionRefused:
        return "The server refused";
    case kTransactionBadAnswer:
        return "The server's answer cannot be read";
    case kTransactionTooMany:
        return "The folder holds more than can be listed";
    case kTransactionCancelled:
        return "Cancelled";
    case kTransactionUnavailable:
        return "Media servers are not available";
    }
    return "Unknown";
}

unsigned long CascadeUPnP::InitiateAVBrowse(const CascadeString& deviceUUID, const CascadeString& objectId, const CascadeString& filter, const CascadeString& sortCriteria, unsigned long startIndex,
                                            unsigned long requestedCount, AVObjectArray& result)
{
    host::UpnpService& service = host::UpnpService::Get();
    if (m_nTransaction != 0) {
        service.Drop(m_nTransaction);
    }
    m_pResult = &result;
    m_nTransaction = service.Browse({0, deviceUUID.Str(), objectId.Str(), filter.Str(), sortCriteria.Str(), startIndex, requestedCount},
        [this](host::BrowsePage page) { CascadeUPnPRequests::Take(*this, std::move(page)); });
    return m_nTransaction;
}

void CascadeUPnP::CancelAVBrowse()
{
    if (m_nTransaction != 0) {
        host::UpnpService::Get().Cancel(m_nTransaction);
    }
}
