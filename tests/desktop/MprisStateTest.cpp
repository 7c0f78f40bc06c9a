#include "host/desktop/MprisState.h"

#include <algorithm>

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;
using State = CascadeNowPlaying::State;

CascadeNowPlaying Playing(const char* path, int64_t positionMs, int64_t durationMs = 60000)
{
    CascadeNowPlaying now;
    now.state = State::kPlaying;
    now.path = path;
    now.title = "a film";
    now.positionMs = positionMs;
    now.durationMs = durationMs;
    now.queueIndex = 1;
    now.queueCount = 1;
    return now;
}

std::string Printed(GVariant* value)
{
    g_variant_ref_sink(value);
    char* const text = g_variant_print(value, FALSE);
    const std::string printed = text;
    g_free(text);
    g_variant_unref(value);
    return printed;
}

bool Has(const host::MprisState::Change& change, const char* name)
{
    return std::any_of(change.properties.begin(), change.properties.end(), [name](const std::string& other) { return other == name; });
}

TEST(MprisState, AnnouncesWhatChangedAndNothingElse)
{
    host::MprisState state;
    host::Clock::time_point at(1h);
    EXPECT_EQ("/org/mpris/MediaPlayer2/TrackList/NoTrack", state.TrackId());
    const auto first = state.Take(Playing("/video/a b.mpg", 1000), at);
    EXPECT_TRUE(Has(first, "PlaybackStatus") && Has(first, "Metadata") && Has(first, "CanSeek"));
    EXPECT_FALSE(first.seeked);
    EXPECT_EQ("{'mpris:trackid': <objectpath '/org/nuvid/track/1'>, 'xesam:title': <'a film'>, 'xesam:url': <'file:///video/a%20b.mpg'>, "
              "'mpris:length': <int64 60000000>}",
        Printed(state.Property("Metadata", at)));

    at += 500ms;
    const auto quiet = state.Take(Playing("/video/a b.mpg", 1400, 60400), at);
    EXPECT_TRUE(quiet.properties.empty());
    EXPECT_FALSE(quiet.seeked);
    EXPECT_EQ(1650000, state.PositionUs(at + 250ms));    // goes on by itself

    CascadeNowPlaying paused = Playing("/video/a b.mpg", 1600);
    paused.state = State::kPaused;
    const auto pause = state.Take(paused, at + 500ms);
    EXPECT_EQ(1U, std::count_if(pause.properties.begin(), pause.properties.end(), [](const std::string& name) { return name == "PlaybackStatus"; }));
    EXPECT_EQ(1600000, state.PositionUs(at + 10s));
}

TEST(MprisState, TellsJumpsFromUnevenReading)
{
    host::MprisState state;
    host::Clock::time_point at(1h);
    state.Take(Playing("/a.mpg", 10000), at);
    EXPECT_FALSE(state.Take(Playing("/a.mpg", 12500), at += 500ms).seeked);
    EXPECT_TRUE(state.Take(Playing("/a.mpg", 43000), at += 500ms).seeked);
    CascadeNowPlaying secondFile = Playing("/a.mpg", 33000);
    secondFile.title = "the second file";
    const auto back = state.Take(secondFile, at += 500ms);
    EXPECT_TRUE(back.seeked && Has(back, "Metadata"));
    EXPECT_EQ("/org/nuvid/track/1", state.TrackId());
    EXPECT_FALSE(state.Take(Playing("/b.mpg", 0), at += 500ms).seeked);
    EXPECT_EQ("/org/nuvid/track/2", state.TrackId());
    EXPECT_FALSE(state.Take(Playing("/b.mpg", -1, -1), at += 500ms).seeked);
    EXPECT_EQ(nullptr, state.Property("Shuffle", at));
}

TEST(MprisState, NamesThatAreNoUtf8AndAddresses)
{
    host::MprisState state;
    CascadeNowPlaying now = Playing("http://server/a.mpg", 0);
    now.title = "a\xFF";
    state.Take(now, {});
    const std::string metadata = Printed(state.Property("Metadata", {}));
    EXPECT_NE(std::string::npos, metadata.find("http://server/a.mpg")) << metadata;
    EXPECT_EQ("/video/a b.mpg", host::PathOfUri("file:///video/a%20b.mpg"));
    EXPECT_EQ("http://server/a.mpg", host::PathOfUri("http://server/a.mpg"));
    for (const char* const bad : {"", "a.mpg", "/video/a.mpg", "ftp://server/a", "file://elsewhere%00/a", "file:///a%00b", "javascript:1"}) {
        EXPECT_EQ("", host::PathOfUri(bad)) << bad;
    }
}

}    // namespace
