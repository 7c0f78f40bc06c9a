// The services of other rooms as the loop's tests need them: none.
#include "host/base/HostHooks.h"

namespace host {

bool StartNetworkServices()
{
    return true;
}

void StopNetworkServices() { }

bool StartRemoteServices()
{
    return true;
}

void StopRemoteServices() { }
void StartDesktopServices() { }
void StopDesktopServices() { }
void StartLibraryServices() { }
void StopLibraryServices() { }
void ClaimCommandPrefix(const std::string& /*prefix*/, std::function<std::string(const std::string&)> /*handler*/) { }

}    // namespace host
