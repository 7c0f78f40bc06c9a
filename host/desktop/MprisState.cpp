#include "host/desktop/MprisState.h"

#include <algorithm>
#include <cstring>
#include <memory>

namespace host {
namespace {

using State = CascadeNowPlaying::State;
using GText = std::unique_ptr<char, decltype(&g_free)>;

constexpr const char* kNoTrack = "/org/mpris/MediaPlayer2/TrackList/NoTrack";

GVariant* Text(const std::string& text)
{
    const GText valid(g_utf8_make_valid(text.c_str(), -1), &g_free);
    return g_variant_new_string(valid.get());
}

const char* StatusOf(const CascadeNowPlaying& now)
{
    return now.state == State::kPlaying ? "Playing" : now.state == State::kPaused ? "Paused" : "Stopped";
}

std::string UriOf(const std::string& path)
{
    if (!path.starts_with('/')) {
        return path;
    }
    const GText uri(g_filename_to_uri(path.c_str(), nullptr, nullptr), &g_free);
    return uri == nullptr ? std::string() : uri.get();
}

}    // namespace

MprisState::Change MprisState::Take(const CascadeNowPlaying& now, Clock::time_point at)
{
    Change change;
    const bool otherTrack = now.path.Str() != m_Now.path.Str() || now.queueIndex != m_Now.queueIndex;
    const bool otherTitle = now.title.Str() != m_Now.title.Str();    // the files of a recording have names of their own
    if (!otherTrack && now.positionMs >= 0 && m_Now.positionMs >= 0) {
        const auto away = std::chrono::microseconds(now.positionMs * 1000 - PositionUs(at));
        change.seeked = away > kJump || away < -kJump;
    }
    const bool otherStatus = now.state != m_Now.state;
    const bool otherQueue = now.queueIndex != m_Now.queueIndex || now.queueCount != m_Now.queueCount;
    // The length is measured while it plays, from the bit rate; only what one can see is worth an announcement.
    const bool otherLength = now.durationMs / 1000 != m_Now.durationMs / 1000;
    m_nTrack += otherTrack ? 1 : 0;
    m_Now = now;
    m_At = at;
    if (otherStatus) {
        change.properties.push_back("PlaybackStatus");
    }
    if (otherTrack || otherTitle || otherLength) {
        change.properties.push_back("Metadata");
    }
    if (otherTrack || otherQueue) {
        change.properties.insert(change.properties.end(), {"CanGoNext", "CanGoPrevious", "CanPlay", "CanPause", "CanSeek"});
    }
    return change;
}

int64_t MprisState::PositionUs(Clock::time_point at) const
{
    if (m_Now.positionMs < 0) {
        return 0;
    }
    const int64_t since = IsPlaying() ? std::chrono::duration_cast<std::chrono::microseconds>(at - m_At).count() : 0;
    const int64_t position = m_Now.positionMs * 1000 + std::max<int64_t>(0, since);
    return LengthUs() < 0 ? position : std::min(position, LengthUs());
}

std::string MprisState::TrackId() const
{
    return HasTrack() ? "/org/nuvid/track/" + std::to_string(m_nTrack) : kNoTrack;
}

GVariant* MprisState::Metadata() const
{
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE_VARDICT);
    g_variant_builder_add(&builder, "{sv}", "mpris:trackid", g_variant_new_object_path(TrackId().c_str()));
    if (HasTrack()) {
        g_variant_builder_add(&builder, "{sv}", "xesam:title", Text(m_Now.title.Str()));
        const std::string uri = UriOf(m_Now.path.Str());
        if (!uri.empty()) {
            g_variant_builder_add(&builder, "{sv}", "xesam:url", Text(uri));
        }
        if (LengthUs() >= 0) {
            g_variant_builder_add(&builder, "{sv}", "mpris:length", g_variant_new_int64(LengthUs()));
        }
    }
    return g_variant_builder_end(&builder);
}

GVariant* MprisState::Property(const char* name, Clock::time_point at) const
{
    const auto is = [name](const char* other) { return std::strcmp(name, other) == 0; };
    if (is("PlaybackStatus")) {
        return g_variant_new_string(StatusOf(m_Now));
    }
    if (is("Metadata")) {
        return Metadata();
    }
    if (is("Position")) {
        return g_variant_new_int64(PositionUs(at));
    }
    if (is("Rate") || is("MinimumRate") || is("MaximumRate") || is("Volume")) {
        return g_variant_new_double(1.0);
    }
    if (is("CanGoNext") || is("CanGoPrevious") || is("CanPause") || is("CanSeek")) {
        return g_variant_new_boolean(HasTrack());
    }
    if (is("CanPlay")) {
        return g_variant_new_boolean(m_Now.queueCount > 0 || HasTrack());
    }
    return is("CanControl") ? g_variant_new_boolean(TRUE) : nullptr;
}

std::string PathOfUri(const char* uri)
{
    const GText scheme(g_uri_parse_scheme(uri), &g_free);
    if (scheme == nullptr) {
        return {};
    }
    if (g_ascii_strcasecmp(scheme.get(), "http") == 0) {
        return uri;
    }
    const GText path(g_ascii_strcasecmp(scheme.get(), "file") == 0 ? g_filename_from_uri(uri, nullptr, nullptr) : nullptr, &g_free);
    return path == nullptr ? std::string() : path.get();
}

}    // namespace host
