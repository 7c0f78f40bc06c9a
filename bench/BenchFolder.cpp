#include "bench/BenchFolder.h"

#include <cstdlib>
#include <filesystem>

const std::string& BenchFolder()
{
    static const struct Temporary {
        Temporary()
        {
            char name[] = "/tmp/nuvid-bench-XXXXXX";
            made = mkdtemp(name) != nullptr;
            path = made ? name : "/tmp";
        }
        ~Temporary()
        {
            if (made) {
                std::filesystem::remove_all(path);
            }
        }
        bool made = false;
        std::string path;
    } folder;
    return folder.path;
}
