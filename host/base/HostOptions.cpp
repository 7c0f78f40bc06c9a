#include "host/base/HostOptions.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <utility>

namespace host {
namespace {

enum class Value { kNone, kOptional, kNeeded };

constexpr int kLargestWindow = 16384;

bool ParseNumber(std::string_view text, int from, int to, int& number)
{
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() && number >= from && number <= to;
}

bool SetWindow(HostOptions& options, std::string_view value)
{
    options.windowed = true;
    if (value.empty()) {
        return true;
    }
    const size_t by = value.find('x');
    return by != std::string_view::npos && ParseNumber(value.substr(0, by), 1, kLargestWindow, options.windowWidth)
        && ParseNumber(value.substr(by + 1), 1, kLargestWindow, options.windowHeight);
}

bool SetFullscreen(HostOptions& options, std::string_view)
{
    options.fullscreen = true;
    return true;
}

bool SetHeadless(HostOptions& options, std::string_view)
{
    options.headless = true;
    return true;
}

bool IsAddressOrOff(std::string_view value)
{
    const size_t colon = value.rfind(':');
    int port = 0;
    return value == "off" || (colon != std::string_view::npos && colon > 0 && ParseNumber(value.substr(colon + 1), 0, 65535, port));
}

bool SetEcp(HostOptions& options, std::string_view value)
{
    options.ecp = value;
    return IsAddressOrOff(value);
}

bool SetRemote(HostOptions& options, std::string_view value)
{
    options.remote = value;
    return IsAddressOrOff(value);
}

bool SetState(HostOptions& options, std::string_view value)
{
    options.stateFolder = value;
    return true;
}

bool SetVolumes(HostOptions& options, std::string_view value)
{
    options.volumes = value;
    return true;
}

bool SetDeinterlace(HostOptions& options, std::string_view value)
{
    constexpr std::pair<std::string_view, Deinterlace> kWords[]
        = {{"auto", Deinterlace::kAuto}, {"on", Deinterlace::kOn}, {"off", Deinterlace::kOff}};
    for (const auto& [word, meaning] : kWords) {
        if (value == word) {
            options.deinterlace = meaning;
            return true;
        }
    }
    return false;
}

bool SetAspect(HostOptions& options, std::string_view value)
{
    options.stretch = value == "stretch";
    return value == "stretch" || value == "keep";
}

bool SetAudio(HostOptions& options, std::string_view value)
{
    options.audio = value;
    return true;
}

bool SetHelp(HostOptions& options, std::string_view)
{
    options.help = true;
    return true;
}

bool SetVersion(HostOptions& options, std::string_view)
{
    options.version = true;
    return true;
}

struct OptionRow {
    std::string_view word;
    Value value;
    bool (*set)(HostOptions& options, std::string_view value);
    const char* shape;    // of the value, for the help and for errors
    const char* meaning;
};

constexpr OptionRow kOptions[] = {
    {"--window", Value::kOptional, SetWindow, "WxH", "play in a window, of that size if given"},
    {"--fullscreen", Value::kNone, SetFullscreen, "", "play on the full screen (the default)"},
    {"--headless", Value::kNone, SetHeadless, "", "no display and no sound device; all the rest runs"},
    {"--ecp", Value::kNeeded, SetEcp, "HOST:PORT|off", "where external control listens (127.0.0.1:4747)"},
    {"--remote", Value::kNeeded, SetRemote, "HOST:PORT|off", "where the phone remote listens (127.0.0.1:4748)"},
    {"--state", Value::kNeeded, SetState, "DIR", "folder for settings and screenshots"},
    {"--volumes", Value::kNeeded, SetVolumes, "DIR|off", "folder that shows what is mounted (/tmp/Volumes)"},
    {"--deinterlace", Value::kNeeded, SetDeinterlace, "auto|on|off", "when interlaced pictures are deinterlaced (auto)"},
    {"--aspect", Value::kNeeded, SetAspect, "keep|stretch", "keep the picture's shape (the default) or fill"},
    {"--audio", Value::kNeeded, SetAudio, "DEVICE|off", "sound device"},
    {"--help", Value::kNone, SetHelp, "", "say this and leave"},
    {"--version", Value::kNone, SetVersion, "", "say the version and leave"},
};

// Whether the row takes the word; `error` then says what was wrong with it.
bool Take(const OptionRow& row, std::string_view argument, HostOptions& options, std::string& error)
{
    const size_t equals = argument.find('=');
    const bool hasValue = equals != std::string_view::npos;
    if (argument.substr(0, equals) != row.word) {
        return false;
    }
    const std::string_view value = hasValue ? argument.substr(equals + 1) : std::string_view();
    if (hasValue && row.value == Value::kNone) {
        error = std::string(row.word) + " takes no value";
    } else if ((value.empty() && (hasValue || row.value == Value::kNeeded)) || !row.set(options, value)) {
        error = std::string(argument) + ": expected " + std::string(row.word) + "=" + row.shape;
    }
    return true;
}

std::string MakeHelp()
{
    constexpr size_t kColumn = 32;
    std::string text = "Usage: nuvid [options] [parameters] [files, folders, DVD images or http:// streams]\n\nOptions:\n";
    for (const OptionRow& row : kOptions) {
        std::string left = "  " + std::string(row.word);
        if (row.value == Value::kOptional) {
            left += std::string("[=") + row.shape + "]";
        } else if (row.value == Value::kNeeded) {
            left += std::string("=") + row.shape;
        }
        left.resize(std::max(left.size() + 1, kColumn), ' ');
        text += left + row.meaning + "\n";
    }
    return text;
}

HostOptions& Current()
{
    static HostOptions options;
    return options;
}

}    // namespace

ParsedCommandLine ParseHostOptions(int argc, const char* const* argv)
{
    ParsedCommandLine parsed;
    for (int i = 0; i < argc && argv[i] != nullptr; ++i) {
        const std::string_view argument = argv[i];
        bool taken = false;
        if (i > 0 && argument.starts_with("--")) {
            for (const OptionRow& row : kOptions) {
                std::string error;
                taken = taken || Take(row, argument, parsed.options, error);
                if (parsed.error.empty()) {
                    parsed.error = std::move(error);
                }
            }
        }
        if (!taken) {
            constexpr std::string_view kHttp = "http://";
            parsed.options.opensHttp = parsed.options.opensHttp || (i > 0 && argument.starts_with(kHttp));
            parsed.rest.emplace_back(argument);
        }
    }
    return parsed;
}

const char* HostHelpText()
{
    static const std::string text = MakeHelp();
    return text.c_str();
}

const HostOptions& CurrentHostOptions()
{
    return Current();
}

void SetCurrentHostOptions(HostOptions options)
{
    Current() = std::move(options);
}

}    // namespace host
