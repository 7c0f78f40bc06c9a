#include "host/screen/ScreenshotFile.h"

#include <ctime>
#include <mutex>

#include <sys/stat.h>
#include <unistd.h>

#include "host/base/HostOptions.h"
#include "platform/AtomicFile.h"

namespace screen {
namespace {

cairo_status_t Append(void* closure, const unsigned char* data, unsigned length)
{
    static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
    return CAIRO_STATUS_SUCCESS;
}

std::string FreeName(const std::string& folder)
{
    char date[32];
    const time_t now = std::time(nullptr);
    tm local {};
    localtime_r(&now, &local);
    std::strftime(date, sizeof date, "%Y%m%d-%H%M%S", &local);
    const std::string stem = folder + "/nuvid-" + date;
    std::string path = stem + ".png";
    for (int number = 2; access(path.c_str(), F_OK) == 0; ++number) {
        path = stem + "-" + std::to_string(number) + ".png";
    }
    return path;
}

}    // namespace

std::string WriteScreenshot(cairo_surface_t* surface)
{
    const std::string state = host::HostFolder(true);
    const std::string folder = state + "/screenshots";
    std::string bytes;
    if (state.empty() || cairo_surface_write_to_png_stream(surface, Append, &bytes) != CAIRO_STATUS_SUCCESS) {
        return {};
    }
    // Two at once must not find the same name free.
    static std::mutex naming;
    const std::lock_guard lock(naming);
    mkdir(folder.c_str(), 0700);    // there already, most times; the write below tells of any trouble
    const std::string path = FreeName(folder);
    AtomicFile file(path.c_str());
    return file.Open() && file.Write(bytes) && file.Commit() ? path : std::string();
}

}    // namespace screen
