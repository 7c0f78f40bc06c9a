#include <array>
#include <charconv>
#include <cstdio>
#include <ctime>

#include <unistd.h>

#include "host/base/HostHooks.h"
#include "host/base/JsonText.h"
#include "host/network/ControlCommands.h"

namespace host {
namespace {

// proc(5): the second number is the resident set in pages.
unsigned long long ResidentKiB()
{
    unsigned long long whole = 0;
    unsigned long long resident = 0;
    if (std::FILE* const file = std::fopen("/proc/self/statm", "re")) {
        if (std::fscanf(file, "%llu %llu", &whole, &resident) != 2) {
            resident = 0;
        }
        std::fclose(file);
    }
    return resident * static_cast<unsigned long long>(sysconf(_SC_PAGESIZE)) / 1024;
}

// Never with a decimal comma, whatever the locale.
std::string CpuSeconds()
{
    timespec used {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
    const double seconds = static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) / 1e9;
    std::array<char, 64> text {};
    const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), seconds, std::chars_format::fixed, 3);
    return error == std::errc() ? std::string(text.data(), end) : "0";
}

void AddMembers(std::string& json, const std::function<std::string()>& hook)
{
    const std::string members = hook ? hook() : std::string();
    if (!members.empty()) {
        json += members + ",";
    }
}

}    // namespace

std::string ControlStats()
{
    std::string json = "{";
    AddMembers(json, Hooks().decoderStats);
    AddMembers(json, Hooks().screenStats);
    json += "\"windows\":[";
    bool first = true;
    for (const std::string& title : Hooks().windowTitles ? Hooks().windowTitles() : std::vector<std::string>()) {
        json += (first ? "" : ",") + JsonText(title);
        first = false;
    }
    json += "],\"rss_kib\":" + std::to_string(ResidentKiB()) + ",\"cpu_s\":" + CpuSeconds() + "}";
    return json;
}

}    // namespace host
