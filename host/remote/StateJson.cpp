#include "host/remote/StateJson.h"

#include <charconv>

#include "host/base/JsonText.h"
#include "platform/CascadeNowPlaying.h"

namespace host {
namespace {

constexpr size_t kMostMarks = 200;    // more than a phone's width can tell apart

// Never with a decimal comma, whatever the locale.
std::string Number(double value)
{
    char text[64];
    const auto [end, error] = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, 2);
    return error == std::errc() ? std::string(text, end) : "0";
}

std::string List(const std::vector<double>& values)
{
    std::string list = "[";
    for (size_t i = 0; i < values.size() && i < kMostMarks; ++i) {
        list += (i == 0 ? "" : ",") + Number(values[i]);
    }
    return list + "]";
}

}    // namespace

std::string StateJson(const CascadeNowPlaying& now)
{
    using State = CascadeNowPlaying::State;
    const char* const state = now.state == State::kPlaying ? "playing" : now.state == State::kPaused ? "paused" : "stopped";
    const double percent = now.sizeBytes == 0 ? 0 : static_cast<double>(now.positionBytes) / static_cast<double>(now.sizeBytes) * 100.0;
    return std::string("{\"state\":\"") + state + "\",\"title\":" + JsonText(now.title.Str()) + ",\"position\":" + std::to_string(now.positionMs)
        + ",\"duration\":" + std::to_string(now.durationMs) + ",\"percent\":" + Number(percent) + ",\"chapters\":" + List(now.chapters)
        + ",\"bookmarks\":" + List(now.bookmarks) + ",\"index\":" + std::to_string(now.queueIndex) + ",\"count\":" + std::to_string(now.queueCount) + "}";
}

}    // namespace host
