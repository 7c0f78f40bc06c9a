// One line of time out of stamps that wrap, jump and stand still.
#include "host/decoder/StampLine.h"

#include <gtest/gtest.h>

#include "host/decoder/SegmentOffsets.h"

namespace {

using host::SegmentStamp;
using host::SegmentVerdict;
using host::StampLine;

constexpr int64_t kFrame = 3600;
constexpr int64_t kSecond = 90000;
constexpr int64_t kWrap = int64_t{1} << 33;

unsigned Segment(int64_t stamp)
{
    return SegmentStamp::Segment(stamp);
}

class Stamps : public testing::Test {
protected:
    int64_t Video(int64_t raw) { return line.Place(StampLine::kVideo, raw & (kWrap - 1), true); }
    int64_t Audio(int64_t raw) { return line.Place(StampLine::kAudio, raw & (kWrap - 1), true); }
    // A second of both streams from `from` on, sound a little behind in the multiplex.
    void PlaySecond(int64_t from)
    {
        for (int64_t t = 0; t < kSecond; t += kFrame) {
            Video(from + t);
            Audio(from + t - kSecond / 4);
        }
    }
    StampLine line;
};

TEST_F(Stamps, WrapIsNoJump)
{
    int64_t last = Video(kWrap - 2 * kFrame);
    for (int i = -1; i < 3; ++i) {
        const int64_t next = Video(kWrap + i * kFrame);
        EXPECT_EQ(next - last, kFrame);
        last = next;
    }
    EXPECT_EQ(Segment(Audio(100)), 0u);
    EXPECT_EQ(host::StampDifference(5, kWrap - 5), 10);
    EXPECT_EQ(host::StampDifference(kWrap - 5, 5), -10);
}

TEST_F(Stamps, BothStreamsOfAJointFindTheSameSegmentInEitherOrder)
{
    PlaySecond(100 * kSecond);
    EXPECT_EQ(Segment(Video(5 * kSecond)), 1u);
    EXPECT_EQ(Segment(Audio(101 * kSecond - kSecond / 4)), 0u);    // the rest of the old sound comes after
    const int64_t sound = Audio(5 * kSecond + 100);
    EXPECT_EQ(Segment(sound), 1u);
    EXPECT_EQ(sound - Video(5 * kSecond + kFrame), 100 - kFrame);  // in the same ticks
    EXPECT_EQ(Segment(Audio(60 * kSecond)), 2u);                   // sound first over the next one
    EXPECT_EQ(Segment(Video(60 * kSecond + 50)), 2u);
}

TEST_F(Stamps, SmallStepBackIsAJointForPicturesAndSoundFollows)
{
    PlaySecond(10 * kSecond);
    EXPECT_EQ(Segment(Audio(11 * kSecond - kSecond / 4 - 9000)), 0u);    // alone it is only jitter
    EXPECT_EQ(Segment(Video(11 * kSecond - 9000)), 1u);
    EXPECT_EQ(Segment(Audio(11 * kSecond - kSecond / 4 - 7000)), 1u);
}

TEST_F(Stamps, ReorderedPresentationStampsWithoutDecodingStampsAreNoJumps)
{
    for (const int64_t t : {3, 1, 2, 6, 4, 5, 9, 7, 8}) {
        EXPECT_EQ(Segment(line.Place(StampLine::kVideo, 100 * kSecond + t * kFrame, false)), 0u);
    }
}

TEST_F(Stamps, HoleInOneStreamIsToldFromAJointByWhatTheOtherDoes)
{
    PlaySecond(10 * kSecond);
    EXPECT_EQ(Segment(Video(16 * kSecond)), 1u);
    EXPECT_EQ(line.NextVerdict().kind, SegmentVerdict::kDoubt);
    for (int64_t t = 0; t < kSecond; t += kFrame) {
        EXPECT_EQ(Segment(Audio(11 * kSecond - kSecond / 4 + t)), 0u);
    }
    EXPECT_EQ(line.NextVerdict().kind, SegmentVerdict::kHole);

    EXPECT_EQ(Segment(Video(24 * kSecond)), 2u);
    EXPECT_EQ(Segment(Audio(24 * kSecond + 10)), 2u);
    EXPECT_EQ(line.NextVerdict().kind, SegmentVerdict::kDoubt);
    EXPECT_EQ(line.NextVerdict().kind, SegmentVerdict::kJoint);
    EXPECT_EQ(line.NextVerdict().kind, SegmentVerdict::kNone);
}

TEST_F(Stamps, WildStampsNeverLeaveTheSegmentsRoom)
{
    uint64_t seed = 1;
    unsigned last = 0;
    for (int i = 0; i < 20000; ++i) {
        seed = seed * 6364136223846793005u + 1442695040888963407u;
        const int64_t stamp = line.Place((seed & 1) != 0 ? StampLine::kVideo : StampLine::kAudio, static_cast<int64_t>(seed >> 20), (seed & 2) != 0);
        ASSERT_GE(stamp, 0);
        ASSERT_LE(Segment(stamp), last + 1);
        last = std::max(last, Segment(stamp));
        while (line.NextVerdict().kind != SegmentVerdict::kNone) {
        }
    }
}

TEST(SegmentOffsets, BehindAHoleTheOffsetOfBeforeHoldsAndAnOldOpeningChangesNothing)
{
    host::Opening opening;
    host::SegmentOffsets offsets(opening);
    const auto number = opening.Begin();
    offsets.Set(number, 0, 500);
    offsets.Judge(number, {SegmentVerdict::kDoubt, 1, 0});
    EXPECT_FALSE(offsets.Get(1));
    offsets.Judge(number, {SegmentVerdict::kHole, 1, 0});
    EXPECT_EQ(offsets.Get(1), 500);
    offsets.Judge(number, {SegmentVerdict::kHole, 2, 1});
    EXPECT_EQ(offsets.Get(2), 500);
    EXPECT_FALSE(offsets.Get(16));    // the same slot as 0
    opening.End();
    offsets.Set(number, 3, 7);
    EXPECT_FALSE(offsets.Get(3));
}

}    // namespace
