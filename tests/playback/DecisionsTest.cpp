// The engine's decisions that need no stream and no screen: skips, streams, zoom.
#include <gtest/gtest.h>

#include "playback/SkipMath.h"
#include "playback/StreamChoice.h"
#include "playback/ZoomModes.h"

namespace {

TEST(SkipMath, Distances)
{
    EXPECT_EQ(SkipForwardDistance(19660800, 30), 71958528);
    EXPECT_EQ(SkipBackDistance(19660800, 30), -75497472);
    EXPECT_EQ(SkipForwardDistance(19660800, 0), -1769472);
    EXPECT_EQ(SkipForwardDistance(5120007, 1), 640000 - 1769472);    // whole bytes a second
    EXPECT_EQ(SkipForwardDistance(0xFFFFFFFF, 0x7FFFFFFF), static_cast<int>(0x1FFFFFFFULL * 0x7FFFFFFF - 1769472));
    EXPECT_EQ(TruncateToPack(-2049), -2048);
    EXPECT_EQ(TruncateToPack(2047), 0);
    EXPECT_EQ(RoundDownToPack(4095), 2048);
    EXPECT_EQ(JumpTargetAtEnd(1999999), 0);
}

TEST(SkipMath, Progress)
{
    EXPECT_EQ(CurrentProgress(0, 0), 100);
    EXPECT_EQ(CurrentProgress(999, 1000), 99);
    EXPECT_EQ(CurrentProgress(60ULL << 30, 80ULL << 30), 75);
    EXPECT_EQ(TotalProgress(3000, 1000, 500, 5000), 50);
    EXPECT_EQ(TotalProgress(0, 0, 500, 0), 0);
    EXPECT_EQ(TotalProgress(0, 1000, 500, 5000), -10);    // the current file is no member
}

TEST(StreamChoice, Audio)
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
    const AudioChoice ac3 = ChooseAudio({0xBD, 0x82, CascadeMPEGFile::kAC3, ""}, {});
    EXPECT_EQ(ac3.nAudioPID, 0xBDU);
    EXPECT_TRUE(ac3.bAC3Audio);
    EXPECT_EQ(ac3.nSSID, 0x82U);
    const AudioChoice after = ChooseAudio({0xC0, 0, CascadeMPEGFile::kMPEGAudio, ""}, ac3);
    EXPECT_EQ(after.nAudioPID, 0xC0U);
    EXPECT_TRUE(after.bAC3Audio);    // on purpose kept
    EXPECT_EQ(after.nSSID, 0x82U);
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
    EXPECT_EQ(zoom(2).output, (CascadeRect {111, 0, 498, 480}));
    EXPECT_EQ(zoom(2).scale, grown);
    EXPECT_EQ(zoom(3).output, (CascadeRect {0, 62, 720, 356}));
    EXPECT_EQ(zoom(4).output, (CascadeRect {111, 74, 498, 332}));
    EXPECT_EQ(zoom(5).output, full);
    EXPECT_EQ(zoom(5).scale, (CascadeRect {96, 6, 528, 468}));    // 81 each side, then 5 and 4 back
    EXPECT_EQ(zoom(6).scale, (CascadeRect {14, 62, 692, 356}));    // 55 each side, then 6 and 3 back
    EXPECT_EQ(ZoomModeWithin(ZoomModeBefore(-2000000000) + 1), 0);
    EXPECT_EQ(ZoomModeWithin(ZoomModeBefore(7) + 1), 0);
    EXPECT_EQ(ZoomModeWithin(ZoomModeBefore(6) + 1), 6);
}

}    // namespace
