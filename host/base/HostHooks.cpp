#include "host/base/HostHooks.h"

host::HostHooks& host::Hooks()
{
    static HostHooks hooks;
    return hooks;
}
