#include "platform/CascadeMediaServers.h"

#include "host/upnp/UpnpService.h"

void CascadeMediaServers::Watch(MountListCallback callback, void* context)
{
    host::UpnpService::Get().Watch(context, [callback, context](const host::ServerReport& report) {
        callback(report.name, report.uuid, report.present ? kAppeared : kVanished, context);
    });
}

void CascadeMediaServers::Unwatch(void* context)
{
    host::UpnpService::Get().Unwatch(context);
}
