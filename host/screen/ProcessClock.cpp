#include "host/screen/ProcessClock.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include <unistd.h>

namespace screen {

long MillisecondsSinceProcessStart()
{
    char line[1024] = {};
    std::FILE* const file = std::fopen("/proc/self/stat", "re");
    if (file == nullptr) {
        return 0;
    }
    const size_t length = std::fread(line, 1, sizeof line - 1, file);
    std::fclose(file);
    line[length] = '\0';
    // proc(5): the name in parentheses may hold blanks; "starttime" is the 22nd field, the 20th behind it.
    const char* field = std::strrchr(line, ')');
    for (int i = 0; field != nullptr && i < 20; ++i) {
        field = std::strchr(field + 1, ' ');
    }
    if (field == nullptr) {
        return 0;
    }
    const long long startTicks = std::strtoll(field, nullptr, 10);
    timespec now {};
    clock_gettime(CLOCK_BOOTTIME, &now);
    return long(now.tv_sec * 1000LL + now.tv_nsec / 1'000'000 - startTicks * 1000 / sysconf(_SC_CLK_TCK));
}

}    // namespace screen
