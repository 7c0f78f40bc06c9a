// The platform's media-server service: says which UPnP media servers there are, and when one comes or goes.
//
// Errors:    a server whose description cannot be had or is not trusted is not reported at all; a system
//            without a network reports none.
// Threads:   the user-interface thread, also for the reports. A report never comes out of Watch itself.
// Ownership: `context` is the caller's; after Unwatch no report comes for it.
#pragma once

#include "platform/CascadeString.h"

class CascadeMediaServers {
public:
    enum Change : int { kAppeared = 0, kVanished = 1 };
    using MountListCallback = void (*)(const CascadeString& name, const CascadeString& uuid, Change change, void* context);

    // Reports the servers that are known, then each that appears or vanishes; the network is searched anew.
    // A context that watches already keeps one watch, with the new callback, and is told of all again.
    static void Watch(MountListCallback callback, void* context);
    static void Unwatch(void* context);
};
