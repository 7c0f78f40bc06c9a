// Codes, devices and what is stored of them.
#include <set>

#include <gtest/gtest.h>

#include "host/remote/PairedDevices.h"
#include "host/remote/PairingCode.h"

namespace {

using namespace std::chrono_literals;
using host::PairAnswer;
using host::PairingCode;

std::string Other(std::string code)
{
    code[5] = code[5] == '0' ? '1' : '0';
    return code;
}

TEST(PairingCode, CountsOnceForTwoMinutes)
{
    PairingCode code;
    const host::Clock::time_point start(1h);
    EXPECT_EQ(PairAnswer::kNoCode, code.Try("000000", start));
    const std::string shown = code.Show(start);
    ASSERT_EQ(6U, shown.size());
    EXPECT_EQ(shown, code.Show(start + 60s));    // who asks again sees the same one
    EXPECT_EQ(PairAnswer::kWrong, code.Try("", start));
    EXPECT_EQ(PairAnswer::kWrong, code.Try(shown + "0", start));
    EXPECT_EQ(PairAnswer::kWrong, code.Try(Other(shown), start));
    EXPECT_EQ(PairAnswer::kPaired, code.Try(shown, start + 119s));
    EXPECT_EQ(PairAnswer::kNoCode, code.Try(shown, start + 119s));

    const std::string next = code.Show(start + 120s);
    EXPECT_EQ(PairAnswer::kNoCode, code.Try(next, start + 240s));
}

TEST(PairingCode, GuessingEndsSoon)
{
    PairingCode code;
    host::Clock::time_point now(1h);
    for (size_t round = 0; round < PairingCode::kCodes; ++round) {
        const std::string shown = code.Show(now);
        ASSERT_FALSE(shown.empty());
        for (int guess = 1; guess < PairingCode::kTries; ++guess) {
            EXPECT_EQ(PairAnswer::kWrong, code.Try(Other(shown), now));
        }
        EXPECT_EQ(PairAnswer::kTooOften, code.Try(Other(shown), now));
        EXPECT_EQ(PairAnswer::kNoCode, code.Try(shown, now));
        now += 1s;
    }
    EXPECT_EQ("", code.Show(now));
    EXPECT_EQ("", code.Show(now + PairingCode::kSpan - 5s));
    EXPECT_NE("", code.Show(now + PairingCode::kSpan));
    // Those who read the code are not kept waiting.
    PairingCode used;
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(PairAnswer::kPaired, used.Try(used.Show(now), now));
    }
}

TEST(PairingCode, CodesAndTokensDiffer)
{
    std::set<std::string> codes;
    std::set<std::string> tokens;
    for (int i = 0; i < 200; ++i) {
        PairingCode code;
        codes.insert(code.Show(host::Clock::now()));
        tokens.insert(host::RandomHex(16));
    }
    EXPECT_GT(codes.size(), 190U);
    EXPECT_EQ(200U, tokens.size());
    EXPECT_EQ(32U, tokens.begin()->size());
}

TEST(PairedDevices, AreKnownByHashesThatSurviveTheStore)
{
    host::PairedDevices devices;
    const std::string token = host::RandomHex(16);
    devices.Add(token, "192.168.1.7, paired today");
    EXPECT_TRUE(devices.Knows(token));
    EXPECT_FALSE(devices.Knows(""));
    EXPECT_FALSE(devices.Knows(host::RandomHex(16)));
    EXPECT_FALSE(devices.Knows(devices.All()[0].hash));

    host::PairedDevices loaded;
    for (const std::string& line : devices.Lines()) {
        EXPECT_EQ(std::string::npos, line.find(token));
        loaded.Take(line);
    }
    for (const char* const bad : {"", " ", "abc label", "zz"}) {
        loaded.Take(bad);
    }
    ASSERT_EQ(1U, loaded.All().size());
    EXPECT_EQ("192.168.1.7, paired today", loaded.All()[0].label);
    EXPECT_TRUE(loaded.Knows(token));
    EXPECT_TRUE(loaded.Forget(token));
    EXPECT_FALSE(loaded.Knows(token));
    EXPECT_FALSE(loaded.ForgetAt(0));
}

TEST(PairedDevices, TheOldestMakesRoom)
{
    host::PairedDevices devices;
    const std::string first = host::RandomHex(16);
    devices.Add(first, "first");
    for (size_t i = 1; i < host::PairedDevices::kMost; ++i) {
        devices.Add(host::RandomHex(16), "more");
    }
    EXPECT_TRUE(devices.Knows(first));
    devices.Add(host::RandomHex(16), "last");
    EXPECT_FALSE(devices.Knows(first));
    EXPECT_EQ(host::PairedDevices::kMost, devices.All().size());
}

}    // namespace
