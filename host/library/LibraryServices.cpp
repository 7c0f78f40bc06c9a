#include <memory>

#include "host/base/HostHooks.h"
#include "host/base/HostOptions.h"
#include "host/library/ThumbnailService.h"
#include "host/library/VolumeKeeper.h"

namespace host {
namespace {

std::unique_ptr<VolumeKeeper>& Keeper()
{
    static std::unique_ptr<VolumeKeeper> keeper;
    return keeper;
}

}    // namespace

void StartLibraryServices()
{
    const std::string& folder = CurrentHostOptions().volumes;
    if (folder != "off" && Keeper() == nullptr) {
        Keeper() = std::make_unique<VolumeKeeper>();
        Keeper()->Start(folder);    // without it the player plays all the same
    }
}

void StopLibraryServices()
{
    Keeper() = nullptr;
    StopThumbnails();
}

}    // namespace host
