// The module's entry. Built as a module of its own: its libraries bring some twenty others along, and only who uses a
// phone needs them.
#include "host/remote/server/PhoneServer.h"

extern "C" host::RemoteServer* NuvidMakeRemoteServer(host::RemotePlayer& player)
{
    return new host::PhoneServer(player);
}
