// The engine's decisions that need no stream and no screen: skips, streams, zoom.
#include <gtest/gtest.h>

#include "playback/SkipMath.h"
#include "playback/StreamChoice.h"
#include "playback/ZoomModes.h"

namespace {

TEST(SkipMath, Distances)
{
    EXPECT_EQ(SkipBackDistance(19660800, 30), -75497472);
    EXPECT_EQ(SkipForwardDistance(5120007, 1), 640000 - 1769472);    // whole bytes a second
    EXPECT_EQ(SkipForwardDistance(0xFFFFFFFF, 0x7FFFFFFF), static_cast<int>(0x1FFFFFFFULL * 0x7FFFFFFF - 1769472));
}

TEST(SkipMath, Progress)
{
    EXPECT_EQ(CurrentProgress(60ULL << 30, 80ULL << 30), 75);
    EXPECT_EQ(TotalProgress(0, 0, 500, 0), 0);
    EXPECT_EQ(TotalProgress(0, 1000, 500, 5000), -10);    // the current file is no member
}

TEST(StreamChoice, AudioOfADVD)
{
    struct Case {
        uint8_t id;
        uint32_t pid;
        bool ac3;
        uint32_t ssid;
    };
    for (const Case& c :
        {Case {0x81, 0xBD, true, 0x81}, {0xA0, 0xBD, false, 0xA0}, {0x88, 0xBD, true, 0x88}, {0xC0, 0xC0, false, 0}, {0xC1, 0xBD, false, 0xC1}}) {
        const AudioChoice choice = ChooseDVDAudio(c.id);
        EXPECT_EQ(choice.nAudioPID, c.pid);
        EXPECT_EQ(choice.bAC3Audio, c.ac3) << unsigned {c.id};
        EXPECT_EQ(choice.nSSID, c.ssid);
    }
}

TEST(ZoomModes, Rectangles)
{
    const CascadeRect full {0, 0, 720, 480};
    const CascadeRect screen {20, 10, 680, 460};
    const auto zoom = [&](int mode) { return ComputeZoom(kZoomModes[mode], full, screen); };
    const CascadeRect grown {14, 6, 692, 468};    // by a hundredth: 6 and 4
    EXPECT_EQ(zoom(0).output, full);
    EXPECT_EQ(zoom(0).scale, grown);
    EXPECT_EQ(zoom(1).scale, full);
    EXPECT_EQ(zoom(2).scale, grown);
    EXPECT_EQ(zoom(5).output, full);
    EXPECT_EQ(zoom(5).scale, (CascadeRect {96, 6, 528, 468}));    // 81 each side, then 5 and 4 back
    EXPECT_EQ(zoom(6).scale, (CascadeRect {14, 62, 692, 356}));    // 55 each side, then 6 and 3 back
    EXPECT_EQ(ZoomModeWithin(ZoomModeBefore(-2000000000) + 1), 0);
    EXPECT_EQ(ZoomModeWithin(ZoomModeBefore(7) + 1), 0);
}

}    // namespace
