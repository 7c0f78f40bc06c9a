// Who is answered at all, and what a phone may say.
#include <gtest/gtest.h>

#include "host/base/JsonText.h"
#include "host/base/ListenAddress.h"
#include "host/remote/StateJson.h"
#include "host/remote/server/PhoneMessage.h"
#include "host/remote/server/RateLimit.h"
#include "host/remote/server/RequestRules.h"
#include "platform/CascadeNowPlaying.h"
#include "platform/RemoteKeys.h"

namespace {

using namespace std::chrono_literals;

TEST(RequestRules, OnlyNumbersOfThisDeviceAreItsHosts)
{
    for (const char* const good : {"127.0.0.1:4748", "localhost:4748"}) {
        EXPECT_TRUE(host::IsOurHost(good, "127.0.0.1", 4748)) << good;
    }
    EXPECT_TRUE(host::IsOurHost("[::1]:4748", "::1", 4748));
    EXPECT_TRUE(host::IsOurHost("192.168.1.5:4748", "192.168.1.5", 4748));
    EXPECT_TRUE(host::IsOurHost("192.168.1.5", "192.168.1.5", 80));
    for (const char* const bad : {"", ":4748", "127.0.0.1", "127.0.0.1:4749", "127.0.0.1:4748x", "127.0.0.1:", "evil.example:4748", "evil.example",
             "localhost.evil.example:4748", "127.0.0.1.evil.example:4748", "[::1]:4748", "[127.0.0.1:4748", "127.0.0.1:99999999999",
             "user@127.0.0.1:4748", "0.0.0.0:4748"}) {
        EXPECT_FALSE(host::IsOurHost(bad, "127.0.0.1", 4748)) << bad;
    }
    EXPECT_FALSE(host::IsOurHost("localhost:4748", "192.168.1.5", 4748));
    EXPECT_FALSE(host::IsOurHost("[::1]x:4748", "::1", 4748));

    EXPECT_TRUE(host::IsOurOrigin("http://127.0.0.1:4748", "127.0.0.1:4748"));
    for (const char* const bad : {"", "null", "https://127.0.0.1:4748", "http://127.0.0.1", "http://evil.example", "http://127.0.0.1:4748/", "http://"}) {
        EXPECT_FALSE(host::IsOurOrigin(bad, "127.0.0.1:4748")) << bad;
    }
}

TEST(RequestRules, CookiesAndCodes)
{
    EXPECT_EQ("abc", host::CookieNamed("T", "T=abc"));
    EXPECT_EQ("abc", host::CookieNamed("T", "XT=1; T=abc; U=2"));
    for (const char* const none : {"", ";", "T", "TT=abc", "=T", "; ;", "t=abc"}) {
        EXPECT_EQ("", host::CookieNamed("T", none)) << none;
    }
    EXPECT_EQ("123456", host::CodeIn("123 456"));
    for (const char* const none : {"", "12345", "1234567", "12345a", "+123456", "123456\n"}) {
        EXPECT_EQ("", host::CodeIn(none)) << none;
    }
    EXPECT_EQ("", host::CodeIn(std::string(1000, ' ') + "123456"));
}

TEST(RateLimit, ARowThenSoManyASecond)
{
    host::RateLimit limit(3, 2);
    const host::Clock::time_point start(1h);
    EXPECT_TRUE(limit.Take(start) && limit.Take(start) && limit.Take(start));
    EXPECT_FALSE(limit.Take(start));
    EXPECT_TRUE(limit.Take(start + 500ms));
    EXPECT_FALSE(limit.Take(start + 600ms));
    EXPECT_TRUE(limit.Take(start + 1h) && limit.Take(start + 1h) && limit.Take(start + 1h));
    EXPECT_FALSE(limit.Take(start + 1h));
}

TEST(PhoneMessage, WhatAPhoneMaySay)
{
    using Kind = host::PhoneMessage::Kind;
    const auto down = host::ParsePhoneMessage("7 down left");
    ASSERT_TRUE(down);
    EXPECT_EQ(Kind::kDown, down->kind);
    EXPECT_EQ(7U, down->number);
    EXPECT_EQ(Remote::kLeft, down->key);
    EXPECT_EQ(Kind::kKeep, host::ParsePhoneMessage("8 keep left")->kind);
    EXPECT_EQ("é", host::ParsePhoneMessage("1 type é")->text);
    EXPECT_EQ(" ", host::ParsePhoneMessage("1 type  ")->text);
    EXPECT_EQ("", host::ParsePhoneMessage("1 type")->text);
    EXPECT_EQ(Kind::kViewOff, host::ParsePhoneMessage("view off")->kind);
    for (const char* const bad : {"", " ", "7", "7 ", "7 down", "7 down nokey", "7 down left ", "-1 down left", "x down left", "4294967296 up left",
             "7  down left", "7 type ab", "7 type \x01", "7 type \x7F", "7 type \xC3", "7 type \xED\xA0\x80", "view", "view on ", "got", "7 devices"}) {
        EXPECT_FALSE(host::ParsePhoneMessage(bad)) << bad;
    }
    EXPECT_FALSE(host::ParsePhoneMessage("1 type " + std::string(host::PhoneMessage::kLongest, 'a')));
}

TEST(StateJson, IsCleanWhateverTheFileIsCalled)
{
    CascadeNowPlaying now;
    EXPECT_EQ(R"({"state":"stopped","title":"","position":-1,"duration":-1,"percent":0.00,"chapters":[],"bookmarks":[],"index":0,"count":0})", host::StateJson(now));
    now.state = CascadeNowPlaying::State::kPaused;
    now.title = "a\"b\\c\n\xFF\xE6\x97\xA5.mpg";
    now.positionMs = 1500;
    now.positionBytes = 1;
    now.sizeBytes = 8;
    now.chapters = {0, 12.5};
    EXPECT_EQ("{\"state\":\"paused\",\"title\":\"a\\\"b\\\\c\\u000a\xEF\xBF\xBD\xE6\x97\xA5.mpg\",\"position\":1500,\"duration\":-1,\"percent\":12.50,"
              "\"chapters\":[0.00,12.50],\"bookmarks\":[],\"index\":0,\"count\":0}",
        host::StateJson(now));
}

TEST(ListenAddress, IsANumber)
{
    const auto parse = [](const char* text) {
        const host::ListenAddress address = host::ParseListenAddress(text);
        return address.error.empty() ? address.Text(address.port) + (address.isLoopback ? "" : " for all") : "error";
    };
    EXPECT_EQ(parse("127.0.0.1:4747"), "127.0.0.1:4747");
    EXPECT_EQ(parse("localhost:0"), "127.0.0.1:0");
    EXPECT_EQ(parse(":65535"), "127.0.0.1:65535");
    EXPECT_EQ(parse("[::1]:80"), "[::1]:80");
    EXPECT_EQ(parse("127.8.9.10:80"), "127.8.9.10:80");
    EXPECT_EQ(parse("0.0.0.0:4747"), "0.0.0.0:4747 for all");
    EXPECT_EQ(parse("[::]:4747"), "[::]:4747 for all");
    EXPECT_EQ(parse("[::ffff:127.0.0.1]:1"), "[::ffff:127.0.0.1]:1 for all");
    EXPECT_EQ(parse("192.168.1.2:4747"), "192.168.1.2:4747 for all");
    for (const char* const bad : {"", "4747", "127.0.0.1:", "127.0.0.1:65536", "127.0.0.1:-1", "127.0.0.1:80x", "example.org:80", "127.1:80"}) {
        EXPECT_EQ(parse(bad), "error") << bad;
    }
}

}    // namespace
