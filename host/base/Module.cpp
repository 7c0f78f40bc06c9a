#include "host/base/Module.h"

#include <climits>
#include <dlfcn.h>
#include <unistd.h>

namespace host {
namespace {

std::string ProgramFolder()
{
    char path[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    const std::string whole(path, length > 0 ? static_cast<size_t>(length) : 0);
    return whole.substr(0, whole.rfind('/') + 1);
}

}    // namespace

void* OpenModule(const std::string& name, std::string& error)
{
    const std::string folder = ProgramFolder();
    error.clear();
    for (const std::string& path : {folder + name, folder + "../" + name}) {
        if (void* const module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
            return module;
        }
        const char* const text = dlerror();
        error = error.empty() && text != nullptr ? text : error;
    }
    return nullptr;
}

}    // namespace host
