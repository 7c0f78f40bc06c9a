#include "platform/CascadeSharedMemZone.h"

#include <cstring>
#include <thread>

#include <gtest/gtest.h>

#include "platform/CascadeThread.h"

namespace {

TEST(CascadeSharedMemZoneTest, AZoneIsFoundByNameWhileSomebodyHoldsIt)
{
    CascadeSharedMemZone first;
    CascadeSharedMemZone second;
    EXPECT_FALSE(first.Open("zone", 100, false));
    EXPECT_EQ(first.MapLock(), nullptr);
    ASSERT_TRUE(first.Open("zone", 100, true));
    std::memcpy(first.MapLock(), "pixels", 7);
    first.Unlock();

    ASSERT_TRUE(second.Open("zone", 50, true));
    EXPECT_EQ(second.GetSize(), 100U);
    EXPECT_FALSE(second.Open("zone", 101, true));    // smaller than asked for
    first.Close();
    EXPECT_STREQ(static_cast<const char*>(second.MapLock()), "pixels");
    second.Unlock();
    second.Close();

    EXPECT_FALSE(second.Open("zone", 1, false));
    ASSERT_TRUE(second.Open("zone", 100, true));
    EXPECT_STREQ(static_cast<const char*>(second.MapLock()), "");    // a new one, empty
    second.Unlock();

    EXPECT_FALSE(first.Open(nullptr, 1, true));
    EXPECT_FALSE(first.Open("none", 0, true));
    EXPECT_FALSE(first.Open("huge", ~size_t {0} / 2, true));
}

TEST(CascadeSharedMemZoneTest, TwoThreadsWriteInTurn)
{
    static constexpr int kTimes = 50000;
    CascadeSharedMemZone mine;
    ASSERT_TRUE(mine.Open("counter", sizeof(int), true));
    const auto count = [](void*) {
        CascadeSharedMemZone zone;
        ASSERT_TRUE(zone.Open("counter", sizeof(int), false));
        for (int i = 0; i < kTimes; ++i) {
            ++*static_cast<int*>(zone.MapLock());
            zone.Unlock();
            zone.Unlock();    // once too often does no harm
        }
    };
    CascadeThread thread;
    ASSERT_TRUE(thread.Start(count, nullptr));
    count(nullptr);
    ASSERT_TRUE(thread.Start(count, nullptr));    // after the first run has ended
    thread.WaitUntilFinished();
    EXPECT_EQ(*static_cast<const int*>(mine.MapLock()), 3 * kTimes);
    mine.Unlock();
}

}    // namespace
