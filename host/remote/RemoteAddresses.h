// Where a phone finds the remote: what to type into its browser.
//
// Threads: any; asks the system for this device's addresses.
#pragma once

#include <string>
#include <vector>

#include "host/base/ListenAddress.h"

namespace host {

// One for an address; for "every address" (0.0.0.0, ::) those that this device has on its networks.
std::vector<std::string> RemoteAddresses(const ListenAddress& address, uint16_t port);

}    // namespace host
