// Media servers as a test tells them: requests are recorded, answers and reports come when the test says so.
#include <algorithm>
#include <utility>

#include "platform/CascadeMediaServers.h"
#include "platform/CascadeUPnP.h"
#include "tests/support/TestInternals.h"
#include "tests/support/TestPlatform.h"

namespace {

struct Watch {
    CascadeMediaServers::MountListCallback callback;
    void* context;
};

std::vector<TestUPnP::Request> g_Requests;
CascadeUPnP* g_pAsking = nullptr;    // of the last request
bool g_bCancelled = false;
std::vector<Watch> g_Watches;

}    // namespace

class CascadeUPnPRequests {
public:
    static void Begin(CascadeUPnP& asking, CascadeUPnP::AVObjectArray& result)
    {
        asking.m_nTransaction = g_Requests.size();
        asking.m_pResult = &result;
        g_pAsking = &asking;
    }
    static void Answer(CascadeUPnP& asking, TestUPnP::AnswerScript answer)
    {
        CascadeUPnP::AVObjectArray& objects = *asking.m_pResult;
        for (CascadeUPnP::AVObject& object : answer.objects) {
            objects.Append(std::make_unique<CascadeUPnP::AVObject>(std::move(object)));
        }
        asking.OnAVBrowseResult(std::exchange(asking.m_nTransaction, 0), answer.result, 0, objects, true);
    }
    static void Forget(CascadeUPnP& asking)
    {
        if (g_pAsking == &asking) {
            g_pAsking = nullptr;
        }
    }
};

CascadeUPnP::~CascadeUPnP()
{
    CascadeUPnPRequests::Forget(*this);
}

const char* CascadeUPnP::TransactionResultToString(TransactionResult result)
{
    return result == kTransactionOK ? "OK" : "failed";
}

unsigned long CascadeUPnP::InitiateAVBrowse(const CascadeString& deviceUUID, const CascadeString& objectId, const CascadeString& filter, const CascadeString& sortCriteria, unsigned long /*startIndex*/,
                                            unsigned long /*requestedCount*/, AVObjectArray& result)
{
    g_Requests.push_back({deviceUUID.Str(), objectId.Str(), filter.Str(), sortCriteria.Str()});
    CascadeUPnPRequests::Begin(*this, result);
    return m_nTransaction;
}

void CascadeUPnP::CancelAVBrowse()
{
    g_bCancelled = g_bCancelled || m_nTransaction != 0;
}

void CascadeMediaServers::Watch(MountListCallback callback, void* context)
{
    Unwatch(context);
    g_Watches.push_back({callback, context});
}

void CascadeMediaServers::Unwatch(void* context)
{
    std::erase_if(g_Watches, [context](const ::Watch& watch) { return watch.context == context; });
}

void TestInternals::ResetUPnP()
{
    g_Requests.clear();
    g_pAsking = nullptr;
    g_bCancelled = false;
    g_Watches.clear();
}

const std::vector<TestUPnP::Request>& TestUPnP::Requests()
{
    return g_Requests;
}

bool TestUPnP::WasCancelled()
{
    return g_bCancelled;
}

bool TestUPnP::Answer(AnswerScript answer)
{
    if (g_pAsking == nullptr || !g_pAsking->IsBrowsing()) {
        return false;
    }
    CascadeUPnPRequests::Answer(*g_pAsking, std::move(answer));
    return true;
}

int TestUPnP::Report(const std::string& name, const std::string& uuid, CascadeMediaServers::Change change)
{
    const auto watches = g_Watches;
    for (const ::Watch& watch : watches) {
        watch.callback(name, uuid, change, watch.context);
    }
    return static_cast<int>(watches.size());
}
