#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

#include "host/base/HostOptions.h"

namespace host {
namespace {

std::string Home()
{
    if (const char* const home = std::getenv("HOME"); home != nullptr && *home == '/') {
        return home;
    }
    const passwd* const user = getpwuid(getuid());
    return user != nullptr && user->pw_dir != nullptr ? user->pw_dir : "";
}

// A relative path in such a variable is to be ignored (freedesktop.org, XDG base directories 0.8).
std::string BaseFolder(const char* variable, const char* underHome)
{
    if (const char* const folder = std::getenv(variable); folder != nullptr && *folder == '/') {
        return folder;
    }
    const std::string home = Home();
    return home.empty() ? "" : home + underHome;
}

// Makes the folder and what is missing above it, closed to other users (XDG base directories 0.8).
bool MakeFolder(const std::string& folder)
{
    for (size_t slash = folder.find('/', 1); slash != std::string::npos; slash = folder.find('/', slash + 1)) {
        mkdir(folder.substr(0, slash).c_str(), 0700);    // the last step shows whether it worked
    }
    mkdir(folder.c_str(), 0700);
    struct stat status { };
    return stat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

}    // namespace

std::string HostFolder(bool state)
{
    std::string folder = CurrentHostOptions().stateFolder;
    if (folder.empty()) {
        folder = state ? BaseFolder("XDG_STATE_HOME", "/.local/state") : BaseFolder("XDG_CONFIG_HOME", "/.config");
        if (folder.empty()) {
            return {};
        }
        folder += "/nuvid";
    }
    while (folder.size() > 1 && folder.back() == '/') {
        folder.pop_back();
    }
    return MakeFolder(folder) ? folder : "";
}

}    // namespace host
