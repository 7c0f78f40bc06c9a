// External control as the loop's tests need it: claimed handlers are kept and called by the tests themselves.
#include "tests/screen/NetworkStub.h"

#include "host/base/HostHooks.h"

NetworkStub& TheNetwork()
{
    static NetworkStub stub;
    return stub;
}

namespace host {

bool StartNetworkServices()
{
    ++TheNetwork().starts;
    return true;
}

void StopNetworkServices()
{
    ++TheNetwork().stops;
}

bool StartRemoteServices()
{
    return true;
}

void StopRemoteServices() { }
void StartDesktopServices() { }
void StopDesktopServices() { }

void StartLibraryServices() {}
void StopLibraryServices() {}

void ClaimCommandPrefix(const std::string& prefix, std::function<std::string(const std::string&)> handler)
{
    TheNetwork().handlers[prefix] = std::move(handler);
}

}    // namespace host
